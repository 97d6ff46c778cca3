#include "platform/folder_cache.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "platform/case_fold.h"
#include "platform/failure.h"
#include "platform/host_files.h"

namespace vf {
namespace {

// Beyond this many folders the whole cache starts again, which bounds its
// memory on a scan of a large tree.
constexpr size_t kMaxFolders = 4096;

FolderEntry::Kind KindOfMode(mode_t mode) {
  if (S_ISDIR(mode)) return FolderEntry::kFolder;
  if (S_ISREG(mode)) return FolderEntry::kFile;
  return FolderEntry::kSystem;
}

unsigned char TypeOfKind(FolderEntry::Kind kind) {
  return kind == FolderEntry::kFolder ? DT_DIR : kind == FolderEntry::kFile ? DT_REG : DT_UNKNOWN;
}

}  // namespace

std::string JoinHostPath(const std::string& dir, const std::string& name) {
  std::string path = dir;
  if (path.empty() || path.back() != '/') path += '/';
  path += name;
  return path;
}

FolderEntry::Kind HostKind(const std::string& path, unsigned char dirent_type) {
  switch (dirent_type) {
    case DT_DIR:
      return FolderEntry::kFolder;
    case DT_REG:
      return FolderEntry::kFile;
    case DT_LNK:
    case DT_UNKNOWN:
      break;
    default:
      return FolderEntry::kSystem;
  }
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return FolderEntry::kSystem;
  return KindOfMode(st.st_mode);
}

int FolderCache::StampOf(const std::string& dir, Stamp* stamp) {
  struct stat st;
  if (::stat(dir.c_str(), &st) != 0) return FailureFromErrno(errno);
  if (!S_ISDIR(st.st_mode)) return kPercorsoNonTrovato;
  constexpr int64_t kBillion = 1000000000;
  stamp->device = st.st_dev;
  stamp->inode = st.st_ino;
  stamp->modified_ns = st.st_mtim.tv_sec * kBillion + st.st_mtim.tv_nsec;
  stamp->changed_ns = st.st_ctim.tv_sec * kBillion + st.st_ctim.tv_nsec;
  return kOk;
}

int FolderCache::Load(const std::string& dir, Folders::iterator* it) {
  Folder folder;
  int failure = StampOf(dir, &folder.stamp);
  std::unique_ptr<DIR, int (*)(DIR*)> stream(nullptr, &::closedir);
  if (failure == kOk) {
    stream.reset(::opendir(dir.c_str()));
    if (!stream) failure = FailureFromErrno(errno);
  }
  // What was kept of a folder that cannot be read stays: its stamp no longer
  // matches, so it is never taken for the folder's names.
  if (failure != kOk) return failure;
  // "." and ".." are kept among the names; no part of a path is ever one of
  // them, so they are never asked for.
  while (const dirent* entry = ::readdir(stream.get())) {
    folder.by_lower[ToLower(entry->d_name)].push_back(Name{entry->d_name, entry->d_type});
  }
  if (folders_.size() >= kMaxFolders) folders_.clear();
  folder.checked = operation_;
  *it = folders_.insert_or_assign(dir, std::move(folder)).first;
  return kOk;
}

int FolderCache::Current(const std::string& dir, Folders::iterator* it) {
  if ((*it)->second.checked == operation_) return kOk;
  Stamp now;
  int failure = StampOf(dir, &now);
  // A folder that is gone keeps its entry: a folder made again in its place
  // has another stamp, so the entry is never taken for it.
  if (failure != kOk) return failure;
  if (now != (*it)->second.stamp) return Load(dir, it);
  (*it)->second.checked = operation_;
  return kOk;
}

const FolderCache::Name* FolderCache::Pick(const Folder& folder, const std::string& part) {
  auto found = folder.by_lower.find(ToLower(part));
  if (found == folder.by_lower.end()) return nullptr;
  const std::vector<Name>& names = found->second;  // never empty
  for (const Name& candidate : names) {
    if (candidate.name == part) return &candidate;
  }
  return &*std::ranges::min_element(names, {}, &Name::name);
}

int FolderCache::Find(const std::string& dir, const std::string& part,
                      std::optional<NameMatch>* found) {
  found->reset();
  const std::string exact = JoinHostPath(dir, part);
  auto it = folders_.find(dir);
  struct stat st;
  int failure;
  if (it == folders_.end()) {
    // An exact spelling needs no listing at all.
    if (::stat(exact.c_str(), &st) == 0) {
      *found = NameMatch{part, KindOfMode(st.st_mode)};
      return kOk;
    }
    failure = Load(dir, &it);
  } else {
    failure = Current(dir, &it);
  }
  if (failure != kOk) return failure;
  const Name* name = Pick(it->second, part);
  // A name made by someone else within the clock tick of the last change
  // leaves the folder's time as it was; its exact spelling is still seen.
  if (name == nullptr && ::stat(exact.c_str(), &st) == 0) {
    failure = Load(dir, &it);
    if (failure != kOk) return failure;
    name = Pick(it->second, part);
  }
  if (name == nullptr) return kOk;
  *found = NameMatch{name->name, HostKind(JoinHostPath(dir, name->name), name->type)};
  return kOk;
}

void FolderCache::Insert(Folder* folder, const std::string& name, unsigned char type) {
  std::vector<Name>& names = folder->by_lower[ToLower(name)];
  for (Name& known : names) {
    if (known.name == name) {
      known.type = type;
      return;
    }
  }
  names.push_back(Name{name, type});
}

unsigned char FolderCache::Remove(Folder* folder, const std::string& name) {
  auto found = folder->by_lower.find(ToLower(name));
  if (found == folder->by_lower.end()) return DT_UNKNOWN;
  std::vector<Name>& names = found->second;
  for (auto known = names.begin(); known != names.end(); ++known) {
    if (known->name != name) continue;
    unsigned char type = known->type;
    names.erase(known);
    if (names.empty()) folder->by_lower.erase(found);
    return type;
  }
  return DT_UNKNOWN;
}

void FolderCache::Restamp(const std::string& dir) {
  auto it = folders_.find(dir);
  if (it == folders_.end()) return;
  if (StampOf(dir, &it->second.stamp) != kOk) {
    folders_.erase(it);
  } else {
    it->second.checked = operation_;
  }
}

void FolderCache::Added(const std::string& dir, const std::string& name, FolderEntry::Kind kind) {
  auto it = folders_.find(dir);
  if (it == folders_.end()) return;
  Insert(&it->second, name, TypeOfKind(kind));
  Restamp(dir);
}

void FolderCache::Moved(const std::string& from_dir, const std::string& from_name,
                        const std::string& to_dir, const std::string& to_name) {
  unsigned char type = DT_UNKNOWN;
  auto from = folders_.find(from_dir);
  if (from != folders_.end()) type = Remove(&from->second, from_name);
  auto to = folders_.find(to_dir);
  if (to != folders_.end()) Insert(&to->second, to_name, type);
  Restamp(from_dir);
  if (to_dir != from_dir) Restamp(to_dir);
}

void FolderCache::ForgetTree(const std::string& dir) {
  const std::string below = JoinHostPath(dir, "");
  std::erase_if(folders_, [&](const auto& kept) {
    return kept.first == dir || kept.first.compare(0, below.size(), below) == 0;
  });
}

}  // namespace vf
