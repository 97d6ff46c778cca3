#ifndef VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
#define VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_

#include <optional>
#include <string>
#include <vector>

#include "platform/host_file_system.h"

namespace vf {

// The folder a MemoryFileSystem keeps its drives in: a fresh one in memory
// (/dev/shm when there is one), gone with the object.
struct MemoryFolder {
  MemoryFolder();
  ~MemoryFolder();
  std::string root;
};

// The file layer of the logic's tests: the host layer itself, with drives C:
// and D: in memory, and a journal of every change it made with the path as
// typed: "MKDIR C:\sito\dir_0001", "WRITE C:\sito\index.htm" (at the open),
// "COPY C:\a.jpg -> C:\sito\x.jpg", "RENAME C:\A.JPG -> C:\a.jpg".
class MemoryFileSystem : private MemoryFolder, public HostFileSystem {
 public:
  MemoryFileSystem();

  // Seeding, outside the journal: names exactly as given, folders on the way.
  void AddFile(const std::string& winpath, const std::string& bytes) { Seed(winpath, &bytes); }
  void AddFolder(const std::string& winpath) { Seed(winpath, nullptr); }
  // The bytes of a file, found as a read finds it.
  std::optional<std::string> Contents(const std::string& winpath);
  const std::vector<std::string>& log() const { return log_; }

  int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) override {
    return Log(HostFileSystem::OpenOutput(path, file), "WRITE " + Typed(path));
  }
  int Copy(const std::string& from, const std::string& to) override {
    return Log(HostFileSystem::Copy(from, to), "COPY " + Typed(from) + " -> " + Typed(to));
  }
  int MakeFolder(const std::string& path) override {
    return Log(HostFileSystem::MakeFolder(path), "MKDIR " + Typed(path));
  }
  int Rename(const std::string& from, const std::string& to) override {
    return Log(HostFileSystem::Rename(from, to), "RENAME " + Typed(from) + " -> " + Typed(to));
  }

 private:
  void Seed(const std::string& winpath, const std::string* bytes);
  std::string Typed(const std::string& path) const;
  int Log(int failure, std::string line);

  std::vector<std::string> log_;
};

}  // namespace vf

#endif  // VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
