#include "publish/derived_pictures.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vips/vips8>

#include "platform/case_fold.h"
#include "platform/host_files.h"
#include "publish/derive_copy.h"
#include "publish/derive_plan.h"
#include "publish/derive_pool.h"
#include "publish/derived_memory.h"
#include "publish/host_site_disk.h"

namespace vf {
namespace {

using What = Reason::What;

std::string_view Extension(std::string_view path) {
  size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return {};
  return path.substr(dot + 1);
}

void Report(SizeProblems* problems, std::vector<DeriveProblem>* out) {
  std::stable_sort(problems->begin(), problems->end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& [size, problem] : *problems) out->push_back(std::move(problem));
}

// Takes an exclusive lock on each folder, in sorted order so that two
// passes never hold one each and wait for the other's. A folder that cannot
// be opened or locked is passed over: the lock only keeps passes apart.
std::vector<Fd> LockFolders(const std::set<std::string>& folders) {
  std::vector<Fd> held;
  for (const std::string& folder : folders) {
    Fd fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd.valid()) continue;
    int locked;
    do {
      locked = ::flock(fd.get(), LOCK_EX);
    } while (locked != 0 && errno == EINTR);
    if (locked == 0) held.push_back(std::move(fd));
  }
  return held;
}

// The sizes that are made: safe, not empty, each folder once in any case.
std::vector<DerivedSize> UsableSizes(const std::vector<DerivedSize>& all_sizes) {
  std::vector<DerivedSize> sizes;
  for (const DerivedSize& size : all_sizes) {
    auto same_folder = [&](const DerivedSize& kept) {
      return EqualIgnoringCase(kept.folder, size.folder);
    };
    if (SizeFolderIsSafe(size.folder) && size.pixels > 0 &&
        std::none_of(sizes.begin(), sizes.end(), same_folder)) {
      sizes.push_back(size);
    }
  }
  return sizes;
}

}  // namespace

bool SizeFolderIsSafe(const std::string& folder) {
  return !folder.empty() && folder[0] != '.' &&
         folder.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos;
}

bool IsDerivablePicture(const std::string& path) {
  std::string extension = ToLower(Extension(path));
  for (std::string_view known : {"jpg", "jpeg", "png", "gif", "webp", "tif", "tiff", "bmp", "heic",
                                 "heif", "hif", "avif", "jxl"}) {
    if (extension == known) return true;
  }
  return false;
}

DeriveOutcome DerivePictures(const std::vector<CopyRecord>& copies,
                             const std::vector<DerivedSize>& all_sizes, bool capitals,
                             const std::function<bool(size_t, size_t)>& progress,
                             const DeriveOptions& options) {
  DeriveOutcome outcome;
  const std::vector<DerivedSize> sizes = UsableSizes(all_sizes);
  if (sizes.empty()) return outcome;

  // The album folder of each copy that gets derived pictures, or nothing.
  std::vector<std::optional<std::string>> album_of(copies.size());
  std::set<std::string> sites;
  for (size_t i = 0; i < copies.size(); ++i) {
    const std::string& copy = copies[i].copy;
    const size_t slash = copy.rfind('/');
    if (!IsDerivablePicture(copies[i].source) || slash == std::string::npos ||
        slash + 1 == copy.size()) {
      continue;
    }
    album_of[i] = copy.substr(0, slash);
    const std::string site = std::filesystem::path(*album_of[i]).parent_path().string();
    sites.insert(site.empty() ? "." : site);
  }
  if (sites.empty()) return outcome;
  const std::vector<Fd> locks = LockFolders(sites);
  // Without libvips every derived picture is a plain copy.
  std::optional<Reason> unscalable;
  if (VIPS_INIT("vetrina-foto") != 0) {
    unscalable = Reason{What::kNoScaler, false, vips_error_buffer()};
    vips_error_clear();
  }

  HostSiteDisk disk;
  std::vector<AlbumFolder> albums;
  std::vector<size_t> pending;  // per album, the jobs not finished
  std::vector<CopyJob> jobs;
  for (size_t i = 0; i < copies.size(); ++i) {
    if (!album_of[i]) continue;
    auto album = std::find_if(albums.begin(), albums.end(),
                              [&](const AlbumFolder& a) { return a.path == *album_of[i]; });
    if (album == albums.end()) {
      albums.push_back(OpenAlbumFolder(disk, *album_of[i], sizes, capitals));
      pending.push_back(0);
      album = albums.end() - 1;
    }
    CopyJob& job = jobs.emplace_back();
    job.copy = i;
    job.album = static_cast<size_t>(album - albums.begin());
    job.plan = PlanCopy(disk, &*album, copies[i], copies[i].copy.substr(album_of[i]->size() + 1),
                        sizes, options.avif);
    ++pending[job.album];
  }
  for (AlbumFolder& album : albums) WriteRecordIfChanged(disk, &album);

  // The records, the outcome and the callback stay on this thread.
  MemoryGate gate(options.memory_budget > 0 ? options.memory_budget : DefaultDecodeBudget());
  PoolWork calls;
  calls.work = [&](size_t i) {
    MakeCopy(&jobs[i], albums[jobs[i].album], copies[jobs[i].copy], sizes, unscalable, &gate);
  };
  calls.finished = [&](size_t i) {
    AlbumFolder& album = albums[jobs[i].album];
    for (DerivedEntry& entry : jobs[i].made) album.record.Put(std::move(entry));
    album.dirty = album.dirty || !jobs[i].made.empty();
    if (--pending[jobs[i].album] == 0) WriteRecordIfChanged(disk, &album);
  };
  calls.progress = progress;
  calls.leaving = [] { vips_thread_shutdown(); };
  outcome.stopped = RunPool(jobs.size(), options.workers, calls);
  for (AlbumFolder& album : albums) WriteRecordIfChanged(disk, &album);
  // What libvips' cache keeps of the pass (open sources, decoded tiles) is
  // of no use to the next: emptying it closes the files now.
  if (!unscalable) {
    int most = vips_cache_get_max();
    vips_cache_set_max(0);
    vips_cache_set_max(most);
  }

  for (CopyJob& job : jobs) {
    Report(&job.plan.plain, &outcome.plain_copies);
    Report(&job.plan.failed, &outcome.failed);
    Report(&job.avif_missing, &outcome.avif_missing);
    outcome.largest_cost = std::max(outcome.largest_cost, job.cost);
  }
  // A record that could not be written costs nothing but time: the next
  // build makes its pictures again. It is told all the same.
  for (AlbumFolder& album : albums) {
    if (album.record_failure) {
      outcome.failed.push_back({album.path,
                                album.path + "/" + std::string(DerivedRecord::kFileName),
                                *album.record_failure});
    }
    for (DiskResult& failure : album.harmless_failures) {
      outcome.harmless_failures.push_back(std::move(failure));
    }
  }
  outcome.peak_cost = gate.peak();
  return outcome;
}

}  // namespace vf
