#include "publish/clean_store_prune.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <vector>

#include "platform/host_files.h"
#include "publish/clean_store.h"
#include "publish/host_site_disk.h"

namespace vf {
namespace {

constexpr int64_t kMostIdleNs = int64_t{60} * 24 * 3600 * 1'000'000'000;

// True when the store's site file names a folder that is not there; false
// when the file cannot be read, since then nothing says the site is gone.
bool SiteGone(const std::string& store) {
  std::string text;
  if (!HostSiteDisk().Read(store + "/" + std::string(CleanStore::kSiteFile), &text).ok() ||
      text.size() < 2 || !text.ends_with('\n')) {
    return false;
  }
  text.pop_back();
  struct stat st;
  if (::stat(text.c_str(), &st) == 0) return !S_ISDIR(st.st_mode);
  return errno == ENOENT || errno == ENOTDIR;
}

}  // namespace

void PruneCleanStores(const std::string& stores, const std::set<std::string>& in_use) {
  std::vector<std::string> names;
  if (!HostSiteDisk().List(stores, &names).ok()) return;
  const int64_t now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
  for (const std::string& name : names) {
    if (in_use.contains(name)) continue;
    const std::string store = stores + "/" + name;
    // A pass that holds the store is using it; one that comes after the
    // removal makes it anew.
    Fd held(::open(store.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat st;
    if (!held.valid() || ::flock(held.get(), LOCK_EX | LOCK_NB) != 0 ||
        ::fstat(held.get(), &st) != 0) {
      continue;
    }
    if (now - Nanoseconds(st) > kMostIdleNs || SiteGone(store)) {
      std::error_code error;
      std::filesystem::remove_all(store, error);
    }
  }
}

}  // namespace vf
