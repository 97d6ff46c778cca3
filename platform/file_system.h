#ifndef VF_PLATFORM_FILE_SYSTEM_H_
#define VF_PLATFORM_FILE_SYSTEM_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vf {

// A file opened for reading. Read gives up to `capacity` bytes in `*got`;
// *got == 0 with kOk means the end of the file.
class InputFile {
 public:
  virtual ~InputFile() = default;
  virtual int Read(char* buffer, size_t capacity, size_t* got) = 0;
};

// A file opened for writing. Bytes pass through unchanged. Close reports a
// failure that only shows when the data reaches the disk (a full disk).
class OutputFile {
 public:
  virtual ~OutputFile() = default;
  virtual int Write(const char* data, size_t size) = 0;
  // Hands what was written so far to the system now, so that a full disk
  // shows here rather than at a later write or at Close (no sync to the disk).
  virtual int Flush() = 0;
  virtual int Close() = 0;
};

// One name of a folder listing, given exactly in its bytes.
struct FolderEntry {
  enum Kind { kFile, kFolder, kSystem };
  std::string name;
  Kind kind = kFile;
  bool hidden = false;  // the name starts with "."
};

// A folder's names, sorted ignoring case (names equal ignoring case in byte
// order), without "." and "..". A name that cannot stand in a page's link
// (see NameFitsAPage) is not among `entries` but in `unusable`, in the same
// order, so that a scan can tell the user what it left out. `device` and
// `inode` name the folder itself, so that a scan can tell a folder it has
// already read.
struct FolderListing {
  int failure = 0;
  std::vector<FolderEntry> entries;
  std::vector<FolderEntry> unusable;
  uint64_t device = 0;
  uint64_t inode = 0;
};

// The file layer. Every path is a Windows path text (drive letters,
// backslashes, a file system that ignores case); each implementation maps it
// onto its own storage. Every operation returns a failure number of
// platform/failure.h, kOk on success, and never throws: a path of any bytes
// gives a number, never a crash or a write outside the drive's folder.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Opens an existing file for reading. On success *file is set.
  virtual int OpenInput(const std::string& path, std::unique_ptr<InputFile>* file) = 0;
  // Creates the file or empties an existing one. On success *file is set.
  // A target that is a link, a pipe, a socket or a device is replaced by a new
  // plain file, never written through.
  virtual int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) = 0;
  // Copies a file, replacing an existing target (a link, not what it points
  // to). The copy is whole or not there: a failed copy leaves the old target
  // as it was, or no target. A copy of a file onto itself fails with 75 and
  // leaves it untouched.
  virtual int Copy(const std::string& from, const std::string& to) = 0;
  // Makes one folder; fails when it exists or its parent is missing.
  virtual int MakeFolder(const std::string& path) = 0;
  // Renames a file. Onto another existing file: 58. A case-only rename of the
  // file itself gives it the typed spelling.
  virtual int Rename(const std::string& from, const std::string& to) = 0;
  // The current folder (ChDir) and the current drive (ChDrive: the first
  // character of `drive` names it).
  virtual int SetCurrentFolder(const std::string& path) = 0;
  virtual int SetCurrentDrive(const std::string& drive) = 0;
  // Lists a folder.
  virtual FolderListing ListFolder(const std::string& path) = 0;
  // Attributes of a path: the bit of value 16 means folder.
  virtual int Attributes(const std::string& path, int* attributes) = 0;
  // The absolute form of a path after the drive and current-folder rules,
  // "." and ".." resolved, folded to capitals: two paths name the same place
  // exactly when their forms are equal. "" for a path that names nothing.
  virtual std::string Normalize(const std::string& path) = 0;
  // The current folder as a Windows path with its trailing backslash.
  virtual std::string CurrentFolder() = 0;
};

}  // namespace vf

#endif  // VF_PLATFORM_FILE_SYSTEM_H_
