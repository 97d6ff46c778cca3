#include "publish/clean_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/failure.h"
#include "publish/derived_record.h"
#include "publish/host_site_disk.h"

namespace vf {
namespace {

namespace fs = std::filesystem;

// Links made in a store before they are renamed into place; Finish removes
// any that a crash left.
constexpr std::string_view kStoreTemporaryPrefix = ".nuova-";

// True when `stores` would stand inside the site folder (or is it), or when
// that cannot be told: the site is uploaded whole, and a second copy of each
// picture would double the upload.
bool InsideSite(const std::string& stores, const std::string& site) {
  std::error_code error;
  const fs::path store = fs::weakly_canonical(stores, error);
  if (error) return true;
  const fs::path root = fs::weakly_canonical(site, error);
  if (error) return true;
  auto store_part = store.begin();
  for (auto part = root.begin(); part != root.end(); ++part, ++store_part) {
    // A trailing slash shows as an empty last part.
    if (part->empty() && std::next(part) == root.end()) break;
    if (store_part == store.end() || *store_part != *part) return false;
  }
  return true;
}

// Makes the folder and those above it that are missing, each with mode
// 0700: the store is the user's own, as the cache it stands in should be.
bool MakePrivateFolders(const std::string& folder) {
  for (size_t slash = folder.find('/', 1);; slash = folder.find('/', slash + 1)) {
    const std::string step = folder.substr(0, slash);
    if (::mkdir(step.c_str(), 0700) != 0 && errno != EEXIST) return false;
    if (slash == std::string::npos) break;
  }
  struct stat st;
  return ::stat(folder.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// An exclusive lock on the folder, held as long as the descriptor; invalid
// when it cannot be had, or when the folder was removed (by the pruning of
// another pass) while this one waited.
Fd LockFolder(const std::string& folder) {
  Fd held(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!held.valid()) return Fd();
  int locked;
  do {
    locked = ::flock(held.get(), LOCK_EX);
  } while (locked != 0 && errno == EINTR);
  struct stat mine, named;
  if (locked != 0 || ::fstat(held.get(), &mine) != 0 || ::stat(folder.c_str(), &named) != 0 ||
      mine.st_ino != named.st_ino || mine.st_dev != named.st_dev) {
    return Fd();
  }
  return held;
}

}  // namespace

std::string SiteFolderOf(const std::string& copy) {
  // Without a slash, or with one only at the start, no folder holds the
  // album folder: the search finds nothing, or the root.
  const size_t album = copy.rfind('/');
  const size_t site = copy.rfind('/', album - 1);
  if (site == std::string::npos || site == 0) return "";
  return copy.substr(0, site);
}

CleanStore::CleanStore(const std::string& stores, const std::string& site) : site_(site) {
  if (stores.empty() || site.empty() || InsideSite(stores, site)) return;
  const std::string folder = stores + "/" + PathDigest(site);
  if (!MakePrivateFolders(folder)) return;
  lock_ = LockFolder(folder);
  if (!lock_.valid()) return;
  std::string text;
  if (HostSiteDisk().Read(folder + "/" + std::string(CleanIndex::kFileName), &text).ok()) {
    index_ = CleanIndex::Parse(text);
  }
  folder_ = folder;
}

std::optional<StoredClean> CleanStore::Reuse(const CopyRecord& copy) const {
  if (!usable()) return std::nullopt;
  const std::string key = PathDigest(copy.copy);
  const StoredClean* entry = index_.Find(key);
  if (entry == nullptr) return std::nullopt;
  const std::string stored = folder_ + "/" + key;
  struct stat source, kept, there;
  if (::stat(copy.source.c_str(), &source) != 0 || source.st_size != entry->source_bytes ||
      Nanoseconds(source) != entry->source_mtime_ns || ::lstat(stored.c_str(), &kept) != 0 ||
      !S_ISREG(kept.st_mode) || kept.st_size != entry->bytes ||
      Nanoseconds(kept) != entry->mtime_ns || kept.st_ino != entry->inode ||
      SourceKey(copy.source) != entry->source) {
    return std::nullopt;
  }
  // A copy the build could not make publishes nothing.
  if (::lstat(copy.copy.c_str(), &there) != 0 || !S_ISREG(there.st_mode)) return std::nullopt;
  // rename(2) between two names of one file does nothing, and would leave
  // the link behind: the copy is the stored one already.
  if (there.st_ino == kept.st_ino && there.st_dev == kept.st_dev) return *entry;
  std::string temporary;
  if (LinkHiddenTemporary(stored, copy.copy, &temporary, kDerivedTemporaryPrefix) != kOk) {
    return std::nullopt;
  }
  if (std::rename(temporary.c_str(), copy.copy.c_str()) != 0) {
    ::unlink(temporary.c_str());
    return std::nullopt;
  }
  return *entry;
}

std::optional<StoredClean> CleanStore::Keep(const CopyRecord& copy, const struct stat& copied,
                                            const struct stat& written, CleanResult result) const {
  if (!usable() || result == CleanResult::kCarrying) return std::nullopt;
  // The byte copy is of the source as it stands only when the source has its
  // size and has not changed since the copy was made; else the stamp to
  // record is not that of the bytes cleaned. Its change time, which nobody
  // can set back, tells a file put in its place with an older time too.
  struct stat source;
  if (::stat(copy.source.c_str(), &source) != 0 || source.st_size != copied.st_size ||
      int64_t{source.st_ctim.tv_sec} * 1'000'000'000 + source.st_ctim.tv_nsec >
          Nanoseconds(copied)) {
    return std::nullopt;
  }
  const std::string stored = folder_ + "/" + PathDigest(copy.copy);
  std::string temporary;
  if (LinkHiddenTemporary(copy.copy, stored, &temporary, kStoreTemporaryPrefix) != kOk) {
    return std::nullopt;
  }
  // The copy may have been replaced since it was written.
  struct stat linked;
  if (::lstat(temporary.c_str(), &linked) != 0 || linked.st_ino != written.st_ino ||
      linked.st_dev != written.st_dev || std::rename(temporary.c_str(), stored.c_str()) != 0) {
    ::unlink(temporary.c_str());
    return std::nullopt;
  }
  return StoredClean{SourceKey(copy.source),
                     source.st_size,
                     Nanoseconds(source),
                     written.st_size,
                     Nanoseconds(written),
                     written.st_ino,
                     result};
}

void CleanStore::Finish(const CleanIndex& kept) {
  if (!usable()) return;
  const std::string folder = std::exchange(folder_, "");
  std::error_code error;
  if (kept.empty()) {
    fs::remove_all(folder, error);
  } else {
    // Whatever fails here costs the next build a cleaning, nothing more:
    // an entry is taken back only when its file is as it recorded.
    HostSiteDisk disk;
    (void)disk.Write(folder, std::string(kSiteFile), site_ + "\n");
    (void)disk.Write(folder, std::string(CleanIndex::kFileName), kept.Text());
    std::vector<std::string> names;
    (void)disk.List(folder, &names);
    for (const std::string& name : names) {
      if (name == kSiteFile || name == CleanIndex::kFileName || kept.Find(name)) continue;
      (void)disk.Remove(folder + "/" + name);
    }
  }
  lock_.Close();
}

}  // namespace vf
