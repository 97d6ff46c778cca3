#ifndef VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
#define VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/case_blind_file_system.h"

namespace vf {

// A file layer held in memory, with the same Windows path rules as the host
// one, for tests of the program's logic. It starts with an empty drive C:
// and keeps a journal of every change it was asked for, each with the path
// as the program typed it: "MKDIR C:\sito\dir_0001", "WRITE C:\sito\index.htm"
// (when the file is closed), "COPY C:\a.jpg -> C:\sito\img_001.jpg",
// "RENAME C:\A.JPG -> C:\a.jpg". Files opened from it must not outlive it.
class MemoryFileSystem : public CaseBlindFileSystem {
 public:
  MemoryFileSystem();

  void AddDrive(char letter, bool readonly = false);
  // Seeding, outside the journal and the read-only rule: every name is made
  // exactly as given, folders on the way as needed, and a drive that is not
  // there yet is added.
  void AddFile(const std::string& winpath, const std::string& bytes);
  void AddFolder(const std::string& winpath);
  // The bytes of a file, found as a read finds it.
  std::optional<std::string> Contents(const std::string& winpath);
  const std::vector<std::string>& log() const { return log_; }

  int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) override;
  int Copy(const std::string& from, const std::string& to) override;
  int MakeFolder(const std::string& path) override;
  int Rename(const std::string& from, const std::string& to) override;

 protected:
  bool IsMapped(char drive) const override;
  bool IsReadOnly(char drive) const override;
  int CheckFolder(const Place& folder) override;
  int Find(const Place& folder, const std::string& part, std::optional<Match>* found) override;
  int ReadFile(const Place& file, std::unique_ptr<InputFile>* out) override;
  int WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) override;
  int CopyFile(const Place& from, const Place& to) override;
  bool SameFile(const Place& a, const Place& b) override;
  int MakeFolderAt(const Place& folder) override;
  int Move(const Place& from, const Place& to) override;
  int List(const Place& folder, FolderListing* listing) override;

 private:
  struct Node {
    uint64_t id = 0;
    bool folder = false;
    std::shared_ptr<std::string> data;  // a file's bytes, shared with its open files
    std::map<std::string, std::unique_ptr<Node>> children;
  };
  struct Drive {
    bool readonly = false;
    std::unique_ptr<Node> root;
  };

  std::unique_ptr<Node> NewNode(bool folder);
  Node* NodeAt(const Place& place);
  Node* ParentOf(const Place& place);
  void Seed(const std::string& winpath, bool folder, const std::string& bytes);
  // The path as typed, made absolute: the journal's form.
  std::string Typed(const std::string& path) const;

  std::map<char, Drive> drives_;
  uint64_t next_id_ = 1;
  std::vector<std::string> log_;
};

}  // namespace vf

#endif  // VF_TESTS_SUPPORT_MEMORY_FILE_SYSTEM_H_
