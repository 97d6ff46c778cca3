#ifndef VF_SCRIPT_FAULT_INJECTION_H_
#define VF_SCRIPT_FAULT_INJECTION_H_

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/file_system.h"

namespace vf {

// Makes chosen changes fail on purpose, for failures the host cannot give on
// demand (a full disk above all). Every open for writing, copy onto, folder
// made at or rename onto a path that names the same place as a rule fails
// with the rule's number; a file already open when its rule came keeps
// writing. Everything else goes to the wrapped file layer, which must
// outlive this one.
class FaultInjectingFileSystem : public FileSystem {
 public:
  explicit FaultInjectingFileSystem(FileSystem& inner) : inner_(inner) {}

  // The path is taken after the drive and current-folder rules of now. Rules
  // add up; a path with two rules fails with the number of the first.
  void AddFailure(const std::string& winpath, int number);

  int OpenInput(const std::string& path, std::unique_ptr<InputFile>* file) override;
  int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) override;
  int Copy(const std::string& from, const std::string& to) override;
  int MakeFolder(const std::string& path) override;
  int Rename(const std::string& from, const std::string& to) override;
  int SetCurrentFolder(const std::string& path) override;
  int SetCurrentDrive(const std::string& drive) override;
  FolderListing ListFolder(const std::string& path) override;
  int Attributes(const std::string& path, int* attributes) override;
  std::string Normalize(const std::string& path) override;
  std::string CurrentFolder() override;

 private:
  // The number of the rule for `path`, or 0.
  int RuleFor(const std::string& path);

  FileSystem& inner_;
  std::vector<std::pair<std::string, int>> rules_;  // by the normalized path
};

}  // namespace vf

#endif  // VF_SCRIPT_FAULT_INJECTION_H_
