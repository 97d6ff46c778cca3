#ifndef VF_PLATFORM_HOST_FILES_H_
#define VF_PLATFORM_HOST_FILES_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace vf {

// The failure number of a host error: a full disk or quota is 61, a missing
// file or folder on the way 76, anything else 75.
int FailureFromErrno(int error);

// Writes all of `data` to a host descriptor, going on after an interrupted
// write; the failure number of the first real error.
int WriteAll(int fd, std::string_view data);

// An open host file descriptor, closed when the holder goes.
class Fd {
 public:
  explicit Fd(int fd = -1) : fd_(fd) {}
  Fd(Fd&& other) noexcept : fd_(other.Release()) {}
  Fd& operator=(Fd&& other) noexcept;
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  ~Fd();

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  int Release();
  // Closes now; the failure number of a late error.
  int Close();

 private:
  int fd_;
};

// Opens a host file for reading; only a plain file is accepted (75 for
// anything else), and a missing one gives 53.
int OpenHostInput(const std::string& path, Fd* fd);
// Creates the host file or empties the existing plain file. A symbolic link,
// a pipe, a socket or a device there is replaced by a new empty file (through
// a hidden temporary name and a rename), never opened; a folder gives 75.
int OpenHostOutput(const std::string& path, Fd* fd);
// Creates a new file with a hidden name (`prefix`, which starts with ".",
// and random digits) in the folder of `beside`, with the mode a new file gets
// (0666 less the umask, not mkstemp's 0600, which a rename would keep);
// *temporary is its host path.
int MakeHiddenTemporary(const std::string& beside, std::string* temporary, Fd* fd,
                        std::string_view prefix = ".vetrina-");
// Links the file `existing` to a new hidden name (`prefix` and random
// digits) in the folder of `beside`; *temporary is its host path. Nothing is
// read or written: the name shares the file. Between two file systems this
// fails (EXDEV, 75), as does anything link(2) refuses.
int LinkHiddenTemporary(const std::string& existing, const std::string& beside,
                        std::string* temporary, std::string_view prefix = ".vetrina-");
// Copies the bytes of `in` to `target`, which is the whole copy or as it was:
// a new target is removed when the copy fails, an existing one (a link
// included, never written through) is replaced by a hidden temporary file
// renamed over it.
int CopyHostFile(int in, const std::string& target);

class HostInputFile : public InputFile {
 public:
  explicit HostInputFile(Fd fd) : fd_(std::move(fd)) {}
  int Read(char* buffer, size_t capacity, size_t* got) override;

 private:
  Fd fd_;
};

// Writes through a buffer; a full disk shows at the Write that flushes or at
// Close, and every later call gives the same failure.
class HostOutputFile : public OutputFile {
 public:
  explicit HostOutputFile(Fd fd) : fd_(std::move(fd)) {}
  ~HostOutputFile() override;
  int Write(const char* data, size_t size) override;
  int Flush() override;
  int Close() override;

 private:
  Fd fd_;
  std::string buffer_;
  int failure_ = 0;
};

// Copies all the bytes of `in` into `out` through the kernel.
int CopyHostData(int in, int out);

}  // namespace vf

#endif  // VF_PLATFORM_HOST_FILES_H_
