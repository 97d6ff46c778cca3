#include "platform/host_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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

}  // namespace

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
  if (fd_ < 0) return kOk;
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
  return OpenPlain(path, O_WRONLY | O_CREAT | O_TRUNC, fd);
}

int HostInputFile::Read(char* buffer, size_t capacity, size_t* got) {
  *got = 0;
  while (true) {
    ssize_t done = ::read(fd_.get(), buffer, capacity);
    if (done >= 0) {
      *got = static_cast<size_t>(done);
      return kOk;
    }
    if (errno != EINTR && errno != EAGAIN) return kErroreAccesso;
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
      ssize_t done = ::copy_file_range(in, nullptr, out, nullptr, size_t{1} << 30, 0);
      if (done == 0) return kOk;
      if (done > 0) continue;
      if (errno == EINTR) continue;
      if (errno != EXDEV && errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP &&
          errno != EPERM) {
        return FailureFromErrno(errno);
      }
      // Both offsets have moved past what was copied, so plain reads go on
      // from there.
      kernel_copy = false;
    }
    ssize_t got = ::read(in, buffer, sizeof buffer);
    if (got == 0) return kOk;
    if (got < 0) {
      if (errno == EINTR) continue;
      return kErroreAccesso;
    }
    int failure = WriteAll(out, std::string_view(buffer, static_cast<size_t>(got)));
    if (failure != kOk) return failure;
  }
}

}  // namespace vf
