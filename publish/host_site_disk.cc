#include "publish/host_site_disk.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/failure.h"
#include "platform/host_files.h"

namespace vf {
namespace {

DiskResult Failed(int error, const std::string& path) { return {error, path}; }

DiskResult StatusOf(int called, const struct stat& st, const std::string& path,
                    DiskStatus* status) {
  if (called != 0) return Failed(errno, path);
  status->type = S_ISREG(st.st_mode)   ? DiskStatus::Type::kFile
                 : S_ISDIR(st.st_mode) ? DiskStatus::Type::kFolder
                                       : DiskStatus::Type::kOther;
  status->bytes = st.st_size;
  status->mtime_ns = Nanoseconds(st);
  return {};
}

DiskResult Done(int called, const std::string& path) {
  return called == 0 ? DiskResult{} : Failed(errno, path);
}

}  // namespace

int ErrnoOf(int failure) {
  const int error = errno;
  // Opening a missing input is told apart from a missing folder; errno is not.
  const int expected = failure == kFileNonTrovato ? kPercorsoNonTrovato : failure;
  if (error != 0 && FailureFromErrno(error) == expected) return error;
  return expected == kDiscoPieno ? ENOSPC : expected == kPercorsoNonTrovato ? ENOENT : EIO;
}

int64_t Nanoseconds(const struct stat& st) {
  return int64_t{st.st_mtim.tv_sec} * 1'000'000'000 + st.st_mtim.tv_nsec;
}

DiskResult HostSiteDisk::Stat(const std::string& path, DiskStatus* status) {
  struct stat st;
  return StatusOf(::stat(path.c_str(), &st), st, path, status);
}

DiskResult HostSiteDisk::Lstat(const std::string& path, DiskStatus* status) {
  struct stat st;
  return StatusOf(::lstat(path.c_str(), &st), st, path, status);
}

DiskResult HostSiteDisk::List(const std::string& folder, std::vector<std::string>* names) {
  std::error_code error;
  std::vector<std::string> found;
  for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
       it.increment(error)) {
    found.push_back(it->path().filename().string());
  }
  if (error) return Failed(error.value(), folder);
  *names = std::move(found);
  return {};
}

DiskResult HostSiteDisk::MakeFolder(const std::string& path) {
  return Done(::mkdir(path.c_str(), 0777), path);
}

DiskResult HostSiteDisk::Rename(const std::string& from, const std::string& to) {
  return Done(std::rename(from.c_str(), to.c_str()), from);
}

DiskResult HostSiteDisk::Remove(const std::string& path) {
  return Done(::unlink(path.c_str()), path);
}

DiskResult HostSiteDisk::Read(const std::string& path, std::string* content) {
  Fd fd;
  if (int failure = OpenHostInput(path, &fd); failure != kOk) return Failed(ErrnoOf(failure), path);
  HostInputFile file(std::move(fd));
  std::string text;
  char buffer[64 * 1024];
  size_t got = 0;
  do {
    if (int failure = file.Read(buffer, sizeof buffer, &got); failure != kOk) {
      return Failed(ErrnoOf(failure), path);
    }
    text.append(buffer, got);
  } while (got > 0);
  *content = std::move(text);
  return {};
}

DiskResult HostSiteDisk::Write(const std::string& folder, const std::string& name,
                               std::string_view content) {
  return WriteFileInPlace(folder, name, [content](int fd) { return WriteAll(fd, content); });
}

DiskResult WriteFileInPlace(const std::string& folder, const std::string& name,
                            const std::function<int(int)>& fill, struct stat* written) {
  const std::string target = folder + "/" + name;
  std::string temporary;
  Fd fd;
  if (int failure = MakeHiddenTemporary(target, &temporary, &fd, kDerivedTemporaryPrefix)) {
    return Failed(ErrnoOf(failure), target);
  }
  DiskResult result;
  if (int failure = fill(fd.get()); failure != kOk) {
    result = Failed(ErrnoOf(failure), temporary);
  } else if (written && ::fstat(fd.get(), written) != 0) {
    result = Failed(errno, temporary);
  }
  if (int failure = fd.Close(); failure != kOk && result.ok()) {
    result = Failed(ErrnoOf(failure), temporary);
  }
  if (result.ok() && std::rename(temporary.c_str(), target.c_str()) != 0) {
    result = Failed(errno, target);
  }
  // A temporary file that cannot be removed is a leftover the next pass clears.
  if (!result.ok()) (void)::unlink(temporary.c_str());
  return result;
}

}  // namespace vf
