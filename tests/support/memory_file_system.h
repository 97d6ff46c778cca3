#ifndef VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
#define VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/case_blind_file_system.h"

namespace vf {

// A file layer held in memory with the host one's Windows path rules. It
// starts with an empty drive C: and journals every change it made, with the
// path as typed: "MKDIR C:\sito\dir_0001", "WRITE C:\sito\index.htm" (at the
// open), "COPY C:\a.jpg -> C:\sito\img_001.jpg", "RENAME C:\A.JPG -> C:\a.jpg".
class MemoryFileSystem : public CaseBlindFileSystem {
 public:
  MemoryFileSystem() : CaseBlindFileSystem('C') { AddDrive('C'); }

  void AddDrive(char letter, bool readonly = false);
  // Seeding, outside the journal and the read-only rule: names are made as
  // given, with the folders and the drive on the way.
  void AddFile(const std::string& winpath, const std::string& bytes) { Seed(winpath, &bytes); }
  void AddFolder(const std::string& winpath) { Seed(winpath, nullptr); }
  // The bytes of a file, found as a read finds it.
  std::optional<std::string> Contents(const std::string& winpath);
  const std::vector<std::string>& log() const { return log_; }

  int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) override {
    return Log(CaseBlindFileSystem::OpenOutput(path, file), "WRITE " + Typed(path));
  }
  int Copy(const std::string& from, const std::string& to) override {
    return Log(CaseBlindFileSystem::Copy(from, to), "COPY " + Typed(from) + " -> " + Typed(to));
  }
  int MakeFolder(const std::string& path) override {
    return Log(CaseBlindFileSystem::MakeFolder(path), "MKDIR " + Typed(path));
  }
  int Rename(const std::string& from, const std::string& to) override {
    return Log(CaseBlindFileSystem::Rename(from, to), "RENAME " + Typed(from) + " -> " + Typed(to));
  }

 protected:
  bool IsMapped(char drive) const override { return nodes_.count(std::string{drive, ':'}) != 0; }
  bool IsReadOnly(char drive) const override { return readonly_.count(drive) != 0; }
  int CheckFolder(const Place& folder) override;
  int Find(const Place& folder, const std::string& part, std::optional<Match>* found) override;
  int ReadFile(const Place& file, std::unique_ptr<InputFile>* out) override;
  int WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) override;
  int CopyFile(const Place& from, const Place& to) override;
  bool SameFile(const Place& a, const Place& b) override { return Key(a) == Key(b); }
  int MakeFolderAt(const Place& folder) override;
  int Move(const Place& from, const Place& to) override;
  int List(const Place& folder, FolderListing* listing) override;

 private:
  struct Node {
    uint64_t id = 0;
    std::shared_ptr<std::string> data;  // null for a folder; shared with open files
  };
  // "C:" for a root, "C:\a\b" below it, names as they stand.
  static std::string Key(const Place& place);
  Node& Make(const std::string& key, bool folder);
  // The entries directly below `key`, in byte order of their names.
  std::vector<std::pair<std::string, Node*>> Children(const std::string& key);
  void Seed(const std::string& winpath, const std::string* bytes);
  std::string Typed(const std::string& path) const;
  int Log(int failure, std::string line);

  std::map<std::string, Node> nodes_;
  std::set<char> readonly_;
  uint64_t next_id_ = 1;
  std::vector<std::string> log_;
};

}  // namespace vf

#endif  // VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
