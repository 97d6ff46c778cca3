#include "platform/host_files.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "platform/failure.h"

namespace vf {
namespace {

constexpr size_t kFlushSize = 64 * 1024;

// A non-blocking open keeps a pipe or a device from hanging the program; the
// type is checked on the open descriptor so that it cannot change meanwhile.
int OpenPlain(const std::string& path, int flags, Fd* fd) {
  Fd opened(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666));
  if (!opened.valid()) return FailureFromErrno(errno);
  struct stat st;
  if (::fstat(opened.get(), &st) != 0 || !S_ISREG(st.st_mode)) return kErroreAccesso;
  *fd = std::move(opened);
  return kOk;
}

// The folder part of a host path, with its slash ("dir/" or "/"); "" for a
// bare name, which stands in the working folder.
std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// A hidden name in the folder of `beside`: `prefix` and 16 random hex digits.
std::string HiddenName(const std::string& beside, std::string_view prefix, int attempt) {
  // getrandom is one cheap call; opening a random device for every copy
  // would cost more than a small copy itself. Should it fail, the clock and
  // the attempt still make names that O_EXCL or link keep apart.
  uint64_t draw = 0;
  if (::getrandom(&draw, sizeof draw, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof draw)) {
    draw = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) *
               0x9E3779B97F4A7C15u +
           static_cast<uint64_t>(attempt);
  }
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(draw));
  return FolderOf(beside) + std::string(prefix) + digits;
}

}  // namespace

int MakeHiddenTemporary(const std::string& beside, std::string* temporary, Fd* fd,
                        std::string_view prefix) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::string path = HiddenName(beside, prefix, attempt);
    // The mode the system gives a new file (0666 less the umask), so that a
    // web server running as another user can read it.
    Fd opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (opened.valid()) {
      *temporary = path;
      *fd = std::move(opened);
      return kOk;
    }
    if (errno != EEXIST) return FailureFromErrno(errno);
  }
  return kErroreAccesso;
}

int LinkHiddenTemporary(const std::string& existing, const std::string& beside,
                        std::string* temporary, std::string_view prefix) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::string path = HiddenName(beside, prefix, attempt);
    if (::link(existing.c_str(), path.c_str()) == 0) {
      *temporary = path;
      return kOk;
    }
    if (errno != EEXIST) return FailureFromErrno(errno);
  }
  return kErroreAccesso;
}

int WriteAll(int fd, std::string_view data) {
  while (!data.empty()) {
    ssize_t done = ::write(fd, data.data(), data.size());
    if (done < 0) {
      if (errno == EINTR) continue;
      return FailureFromErrno(errno);
    }
    data.remove_prefix(static_cast<size_t>(done));
  }
  return kOk;
}

int FailureFromErrno(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return kDiscoPieno;
    case ENOENT:
    case ENOTDIR:
      return kPercorsoNonTrovato;
    default:
      return kErroreAccesso;
  }
}

Fd& Fd::operator=(Fd&& other) noexcept {
  if (this != &other) {
    Close();
    fd_ = other.Release();
  }
  return *this;
}

Fd::~Fd() { Close(); }

int Fd::Release() { return std::exchange(fd_, -1); }

int Fd::Close() {
  if (!valid()) return kOk;
  int result = ::close(std::exchange(fd_, -1));
  // After EINTR the descriptor is gone on Linux; only real errors count.
  if (result != 0 && errno != EINTR) return FailureFromErrno(errno);
  return kOk;
}

int OpenHostInput(const std::string& path, Fd* fd) {
  int failure = OpenPlain(path, O_RDONLY, fd);
  return failure == kPercorsoNonTrovato ? kFileNonTrovato : failure;
}

int OpenHostOutput(const std::string& path, Fd* fd) {
  struct stat st;
  if (::lstat(path.c_str(), &st) != 0 || S_ISREG(st.st_mode)) {
    // Without following a link that came meanwhile, and without waiting for
    // a pipe: both are refused.
    return OpenPlain(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, fd);
  }
  // A link, a pipe, a socket or a device: opening it would write into what
  // it stands for, so a new empty file takes its place. Over a folder the
  // rename fails.
  std::string temporary;
  Fd fresh;
  int failure = MakeHiddenTemporary(path, &temporary, &fresh);
  if (failure != kOk) return failure;
  if (::rename(temporary.c_str(), path.c_str()) != 0) {
    failure = FailureFromErrno(errno);
    ::unlink(temporary.c_str());
    return failure;
  }
  *fd = std::move(fresh);
  return kOk;
}

int CopyHostFile(int in, const std::string& target) {
  // A new target is written in place and removed when the copy fails; an
  // existing one (a file, a link, anything) is replaced through a hidden
  // temporary file renamed over it, so it stays as it was until the copy is
  // whole. Either way a half copy is this program's own, never the user's.
  std::string written = target;
  Fd out(::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  const bool in_place = out.valid();
  if (!in_place) {
    if (errno != EEXIST) return FailureFromErrno(errno);
    int failure = MakeHiddenTemporary(target, &written, &out);
    if (failure != kOk) return failure;
  }
  int failure = CopyHostData(in, out.get());
  const int closed = out.Close();
  if (failure == kOk) failure = closed;
  if (failure == kOk && !in_place && ::rename(written.c_str(), target.c_str()) != 0) {
    failure = FailureFromErrno(errno);
  }
  if (failure != kOk) ::unlink(written.c_str());
  return failure;
}

int HostInputFile::Read(char* buffer, size_t capacity, size_t* got) {
  *got = 0;
  while (true) {
    ssize_t done = ::read(fd_.get(), buffer, capacity);
    if (done >= 0) {
      *got = static_cast<size_t>(done);
      return kOk;
    }
    if (errno != EINTR) return kErroreAccesso;
  }
}

HostOutputFile::~HostOutputFile() { Close(); }

int HostOutputFile::Write(const char* data, size_t size) {
  if (failure_ != kOk) return failure_;
  if (!fd_.valid()) return kNomeNonValido;
  buffer_.append(data, size);
  if (buffer_.size() >= kFlushSize) return Flush();
  return kOk;
}

int HostOutputFile::Flush() {
  if (failure_ == kOk) failure_ = WriteAll(fd_.get(), buffer_);
  buffer_.clear();
  return failure_;
}

int HostOutputFile::Close() {
  if (!fd_.valid()) return failure_;
  Flush();
  int closed = fd_.Close();
  if (failure_ == kOk) failure_ = closed;
  return failure_;
}

int CopyHostData(int in, int out) {
  bool kernel_copy = true;
  char buffer[64 * 1024];
  while (true) {
    if (kernel_copy) {
      const ssize_t done = ::copy_file_range(in, nullptr, out, nullptr, size_t{1} << 30, 0);
      if (done > 0) continue;
      if (done == 0) return kOk;
      // Between file systems, or wherever the kernel cannot copy, plain reads
      // and writes go on from where it stopped (both offsets have moved past
      // what was copied); a real fault, a full disk, shows again there.
      if (errno != EINTR) kernel_copy = false;
      continue;
    }
    const ssize_t got = ::read(in, buffer, sizeof buffer);
    if (got > 0) {
      const int failure = WriteAll(out, std::string_view(buffer, static_cast<size_t>(got)));
      if (failure != kOk) return failure;
    } else if (got == 0) {
      return kOk;
    } else if (errno != EINTR) {
      return kErroreAccesso;
    }
  }
}

}  // namespace vf
