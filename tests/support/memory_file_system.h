#ifndef VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
#define VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/case_blind_file_system.h"

namespace vf {

// A file layer held in memory with the host one's Windows path rules, for
// the logic's tests. It starts with an empty drive C: and journals every
// change it made, with the path as typed: "MKDIR C:\sito\dir_0001",
// "WRITE C:\sito\index.htm" (at the open), "COPY C:\a.jpg -> C:\sito\x.jpg",
// "RENAME C:\A.JPG -> C:\a.jpg".
class MemoryFileSystem : public CaseBlindFileSystem {
 public:
  MemoryFileSystem() : CaseBlindFileSystem('C') { nodes_["C:"] = nullptr; }

  // Seeding, outside the journal: names as given, with the folders and the
  // drive on the way.
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
  bool IsReadOnly(char) const override { return false; }
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
  // "C:" for a root, "C:\a\b" below it, names as they stand.
  static std::string Key(const Place& place);
  // The names directly below `key` in byte order, with their bytes (null for
  // a folder).
  std::vector<std::pair<std::string, const std::string*>> Children(const std::string& key) const;
  void Seed(const std::string& winpath, const std::string* bytes);
  std::string Typed(const std::string& path) const;
  int Log(int failure, std::string line);

  // Every file (its bytes, shared with the files open on it) and folder (null).
  std::map<std::string, std::shared_ptr<std::string>> nodes_;
  std::vector<std::string> log_;
};

}  // namespace vf

#endif  // VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
