#include "script/fault_injection.h"

#include "platform/failure.h"

namespace vf {

void FaultInjectingFileSystem::AddFailure(const std::string& winpath, int number) {
  std::string place = inner_.Normalize(winpath);
  if (!place.empty() && number != kOk) rules_.emplace_back(std::move(place), number);
}

int FaultInjectingFileSystem::RuleFor(const std::string& path) {
  if (rules_.empty()) return kOk;
  const std::string place = inner_.Normalize(path);
  for (const auto& [rule, number] : rules_) {
    if (rule == place) return number;
  }
  return kOk;
}

int FaultInjectingFileSystem::OpenInput(const std::string& path, std::unique_ptr<InputFile>* file) {
  return inner_.OpenInput(path, file);
}

int FaultInjectingFileSystem::OpenOutput(const std::string& path,
                                         std::unique_ptr<OutputFile>* file) {
  if (int number = RuleFor(path)) return number;
  return inner_.OpenOutput(path, file);
}

int FaultInjectingFileSystem::Copy(const std::string& from, const std::string& to) {
  if (int number = RuleFor(to)) return number;
  return inner_.Copy(from, to);
}

int FaultInjectingFileSystem::MakeFolder(const std::string& path) {
  if (int number = RuleFor(path)) return number;
  return inner_.MakeFolder(path);
}

int FaultInjectingFileSystem::Rename(const std::string& from, const std::string& to) {
  if (int number = RuleFor(to)) return number;
  return inner_.Rename(from, to);
}

int FaultInjectingFileSystem::SetCurrentFolder(const std::string& path) {
  return inner_.SetCurrentFolder(path);
}

int FaultInjectingFileSystem::SetCurrentDrive(const std::string& drive) {
  return inner_.SetCurrentDrive(drive);
}

FolderListing FaultInjectingFileSystem::ListFolder(const std::string& path) {
  return inner_.ListFolder(path);
}

int FaultInjectingFileSystem::Attributes(const std::string& path, int* attributes) {
  return inner_.Attributes(path, attributes);
}

std::string FaultInjectingFileSystem::Normalize(const std::string& path) {
  return inner_.Normalize(path);
}

std::string FaultInjectingFileSystem::CurrentFolder() { return inner_.CurrentFolder(); }

}  // namespace vf
