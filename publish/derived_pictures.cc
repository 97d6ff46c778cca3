#include "publish/derived_pictures.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vips/vips8>

#include "platform/case_fold.h"
#include "platform/failure.h"
#include "platform/host_files.h"
#include "publish/derive_plan.h"
#include "publish/derive_pool.h"
#include "publish/derived_memory.h"
#include "publish/host_site_disk.h"
#include "publish/picture.h"

namespace vf {
namespace {

using What = Reason::What;

std::string_view Extension(std::string_view path) {
  size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return {};
  return path.substr(dot + 1);
}

// One copy of the pass: what the plan decided, then what its worker did.
struct Job {
  size_t copy = 0;
  size_t album = 0;
  CopyPlan plan;
  // Filled by the worker that makes the job, read once it is finished.
  std::vector<DerivedEntry> made;
  int64_t cost = 0;  // the decoded memory it was let in with
};

// The decoded memory a picture was let in with, given back when this goes.
// Declared before the picture, it goes after it, once its memory is free.
class Admitted {
 public:
  Admitted() = default;
  Admitted(const Admitted&) = delete;
  Admitted& operator=(const Admitted&) = delete;
  ~Admitted() {
    if (gate_) gate_->Release(cost_);
  }
  void Admit(MemoryGate* gate, int64_t cost) {
    gate->Admit(cost);
    gate_ = gate;
    cost_ = cost;
  }

 private:
  MemoryGate* gate_ = nullptr;
  int64_t cost_ = 0;
};

// Makes the planned sizes of one picture once `gate` lets its decoded memory
// in; with `unscalable`, libvips is not there and each is a plain copy. Runs
// on a worker thread and touches nothing but the job.
void Make(Job* job, const AlbumFolder& album, const CopyRecord& copy,
          const std::vector<DerivedSize>& sizes, const std::optional<Reason>& unscalable,
          MemoryGate* gate) {
  std::vector<size_t>& to_make = job->plan.to_make;
  if (to_make.empty()) return;
  const std::string& name = job->plan.name;
  auto derived = [&](size_t s) { return album.path + "/" + album.folders[s] + "/" + name; };
  Fd fd;
  struct stat st;
  if (int failure = OpenHostInput(copy.source, &fd);
      failure != kOk || ::fstat(fd.get(), &st) != 0) {
    const What what = failure == kFileNonTrovato ? What::kSourceMissing : What::kSourceUnreadable;
    const Reason why = ErrnoReason(what, failure != kOk ? ErrnoOf(failure) : errno, copy.source);
    for (size_t s : to_make) job->plan.failed.push_back({s, {copy.source, derived(s), why}});
    return;
  }
  // Largest first, so that the smaller sizes are scaled from it.
  std::stable_sort(to_make.begin(), to_make.end(),
                   [&](size_t a, size_t b) { return sizes[a].pixels > sizes[b].pixels; });
  Admitted admitted;
  SourcePicture picture;
  const bool scalable = !unscalable && picture.Open(fd.get(), copy.source);
  if (scalable) {
    job->cost = picture.Cost(sizes[to_make.front()].pixels, to_make.size() > 1);
    admitted.Admit(gate, job->cost);
  }
  for (size_t s : to_make) {
    std::optional<std::string> scaled;
    if (scalable) scaled = picture.Scale(sizes[s].pixels, s != to_make.back());
    struct stat written;
    const DiskResult result = WriteFileInPlace(
        album.path + "/" + album.folders[s], name,
        [&](int out) {
          if (scaled) return WriteAll(out, *scaled);
          if (::lseek(fd.get(), 0, SEEK_SET) != 0) return static_cast<int>(kErroreAccesso);
          return CopyHostData(fd.get(), out);
        },
        &written);
    if (!result.ok()) {
      job->plan.failed.push_back(
          {s, {copy.source, derived(s), WriteReason(result.error, result.path)}});
      continue;
    }
    std::optional<Reason> plain;
    if (!scaled) plain = unscalable ? *unscalable : picture.why();
    if (plain) job->plan.plain.push_back({s, {copy.source, derived(s), *plain}});
    job->made.push_back(DerivedEntry{album.folders[s], sizes[s].pixels, name,
                                     SourceKey(copy.source), st.st_size, Nanoseconds(st),
                                     written.st_size, Nanoseconds(written), std::move(plain)});
  }
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
  for (std::string_view known : {"jpg", "jpeg", "png", "gif", "webp", "tif", "tiff", "bmp"}) {
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
  std::vector<Job> jobs;
  for (size_t i = 0; i < copies.size(); ++i) {
    if (!album_of[i]) continue;
    auto album = std::find_if(albums.begin(), albums.end(),
                              [&](const AlbumFolder& a) { return a.path == *album_of[i]; });
    if (album == albums.end()) {
      albums.push_back(OpenAlbumFolder(disk, *album_of[i], sizes, capitals));
      pending.push_back(0);
      album = albums.end() - 1;
    }
    Job& job = jobs.emplace_back();
    job.copy = i;
    job.album = static_cast<size_t>(album - albums.begin());
    job.plan =
        PlanCopy(disk, &*album, copies[i], copies[i].copy.substr(album_of[i]->size() + 1), sizes);
    ++pending[job.album];
  }
  for (AlbumFolder& album : albums) WriteRecordIfChanged(disk, &album);

  // The records, the outcome and the callback stay on this thread.
  MemoryGate gate(options.memory_budget > 0 ? options.memory_budget : DefaultDecodeBudget());
  PoolWork calls;
  calls.work = [&](size_t i) {
    Make(&jobs[i], albums[jobs[i].album], copies[jobs[i].copy], sizes, unscalable, &gate);
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

  for (Job& job : jobs) {
    Report(&job.plan.plain, &outcome.plain_copies);
    Report(&job.plan.failed, &outcome.failed);
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
