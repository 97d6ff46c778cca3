#include "platform/host_file_system.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <unordered_map>

#include "platform/failure.h"
#include "platform/host_files.h"

namespace vf {
namespace {

namespace fs = std::filesystem;

// An absolute, lexically clean host path without a trailing slash.
std::string CleanHostPath(const std::string& path) {
  std::error_code error;
  fs::path absolute = fs::absolute(path.empty() ? fs::path(".") : fs::path(path), error);
  if (error) absolute = path;
  std::string clean = absolute.lexically_normal().string();
  while (clean.size() > 1 && clean.back() == '/') clean.pop_back();
  return clean;
}

char InitialDrive(const std::vector<DriveMapping>& drives) {
  char first = 0;
  for (const DriveMapping& mapping : drives) {
    char letter = DriveLetter(mapping.letter);
    if (letter == 'C') return letter;
    if (first == 0) first = letter;
  }
  return first != 0 ? first : 'C';
}

}  // namespace

HostFileSystem::HostFileSystem(const std::vector<DriveMapping>& drives)
    : CaseBlindFileSystem(InitialDrive(drives)) {
  for (const DriveMapping& mapping : drives) {
    char letter = DriveLetter(mapping.letter);
    if (letter == 0) continue;
    drives_[letter - 'A'] = Drive{true, mapping.readonly, CleanHostPath(mapping.host_folder)};
  }
}

const HostFileSystem::Drive* HostFileSystem::DriveOf(char letter) const {
  char drive = DriveLetter(letter);
  if (drive == 0 || !drives_[drive - 'A'].mapped) return nullptr;
  return &drives_[drive - 'A'];
}

bool HostFileSystem::IsMapped(char drive) const { return DriveOf(drive) != nullptr; }

bool HostFileSystem::IsReadOnly(char drive) const {
  const Drive* mapped = DriveOf(drive);
  return mapped != nullptr && mapped->readonly;
}

std::string HostFileSystem::HostOf(const Place& place) const {
  std::string path = DriveOf(place.drive)->root;
  for (const std::string& name : place.names) {
    if (path.back() != '/') path += '/';
    path += name;
  }
  return path;
}

std::string HostFileSystem::HostFolderOf(const Place& place) const {
  Place folder = place;
  folder.names.pop_back();
  return HostOf(folder);
}

std::optional<std::string> HostFileSystem::HostPath(const std::string& winpath) {
  BeginOperation();
  Resolved resolved;
  if (Resolve(winpath, false, &resolved) != kOk) return std::nullopt;
  return HostOf(resolved.place);
}

std::optional<std::string> HostFileSystem::WindowsPath(const std::string& host_path) const {
  const std::string path = CleanHostPath(host_path);
  const Drive* best = nullptr;
  char letter = 0;
  for (char drive = 'A'; drive <= 'Z'; ++drive) {
    const Drive& candidate = drives_[drive - 'A'];
    if (!candidate.mapped) continue;
    const std::string& root = candidate.root;
    const bool holds = root == "/" || path == root || path.starts_with(root + '/');
    if (holds && (best == nullptr || root.size() > best->root.size())) {
      best = &candidate;
      letter = drive;
    }
  }
  if (best == nullptr) return std::nullopt;
  std::string text{letter, ':', '\\'};
  size_t pos = best->root.size();
  for (size_t i = pos; i < path.size(); ++i) {
    if (path[i] == '\\') return std::nullopt;  // a host name no Windows path can hold
    if (path[i] != '/') {
      text += path[i];
    } else if (i > pos) {  // the slash right after the root is the root's own
      text += '\\';
    }
  }
  ParsedPath check;
  if (ParseWindowsPath(text, ParsedPath{letter, {}}, &check) != kOk) return std::nullopt;
  return text;
}

int HostFileSystem::CheckFolder(const Place& folder) {
  struct stat st;
  if (::stat(HostOf(folder).c_str(), &st) != 0) return FailureFromErrno(errno);
  return S_ISDIR(st.st_mode) ? kOk : kPercorsoNonTrovato;
}

int HostFileSystem::Find(const Place& folder, const std::string& part,
                         std::optional<Match>* found) {
  return cache_.Find(HostOf(folder), part, found);
}

int HostFileSystem::ReadFile(const Place& file, std::unique_ptr<InputFile>* out) {
  Fd fd;
  int failure = OpenHostInput(HostOf(file), &fd);
  if (failure != kOk) return failure;
  *out = std::make_unique<HostInputFile>(std::move(fd));
  return kOk;
}

int HostFileSystem::WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) {
  Fd fd;
  int failure = OpenHostOutput(HostOf(file), &fd);
  if (failure != kOk) return failure;
  cache_.Added(HostFolderOf(file), file.names.back(), FolderEntry::kFile);
  *out = std::make_unique<HostOutputFile>(std::move(fd));
  return kOk;
}

int HostFileSystem::CopyFile(const Place& from, const Place& to) {
  Fd in;
  int failure = OpenHostInput(HostOf(from), &in);
  if (failure != kOk) return failure;
  failure = CopyHostFile(in.get(), HostOf(to));
  if (failure != kOk) return failure;
  cache_.Added(HostFolderOf(to), to.names.back(), FolderEntry::kFile);
  return kOk;
}

bool HostFileSystem::SameFile(const Place& a, const Place& b) {
  struct stat first;
  struct stat second;
  return ::stat(HostOf(a).c_str(), &first) == 0 && ::stat(HostOf(b).c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

int HostFileSystem::MakeFolderAt(const Place& folder) {
  if (::mkdir(HostOf(folder).c_str(), 0777) != 0) return FailureFromErrno(errno);
  cache_.Added(HostFolderOf(folder), folder.names.back(), FolderEntry::kFolder);
  return kOk;
}

int HostFileSystem::Move(const Place& from, const Place& to) {
  const std::string source = HostOf(from);
  const std::string target = HostOf(to);
  if (std::rename(source.c_str(), target.c_str()) != 0) {
    return errno == EEXIST || errno == ENOTEMPTY ? kFileEsistente : FailureFromErrno(errno);
  }
  cache_.Moved(HostFolderOf(from), from.names.back(), HostFolderOf(to), to.names.back());
  if (HostKind(target) == FolderEntry::kFolder) cache_.ForgetTree(source);
  return kOk;
}

int HostFileSystem::List(const Place& folder, FolderListing* listing) {
  const std::string dir = HostOf(folder);
  struct stat st;
  if (::stat(dir.c_str(), &st) != 0) return FailureFromErrno(errno);
  if (!S_ISDIR(st.st_mode)) return kPercorsoNonTrovato;
  std::unique_ptr<DIR, int (*)(DIR*)> stream(::opendir(dir.c_str()), &::closedir);
  if (!stream) return FailureFromErrno(errno);
  listing->device = st.st_dev;
  listing->inode = st.st_ino;
  while (const dirent* entry = ::readdir(stream.get())) {
    const char* name = entry->d_name;
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
    FolderEntry found;
    found.name = name;
    found.kind = HostKind(JoinHostPath(dir, found.name), entry->d_type);
    listing->entries.push_back(std::move(found));
  }
  return kOk;
}

}  // namespace vf
