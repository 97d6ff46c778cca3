#include "publish/clean_copies.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vips/vips8>

#include "metadata/metadata_sift.h"
#include "metadata/picture_kind.h"
#include "platform/failure.h"
#include "platform/host_files.h"
#include "publish/clean_store.h"
#include "publish/clean_store_prune.h"
#include "publish/derive_pool.h"
#include "publish/host_site_disk.h"
#include "publish/rewritten_picture.h"

namespace vf {
namespace {

using What = Reason::What;

// A copy is read whole into memory, so a huge one is left as it is.
constexpr int64_t kMostBytes = int64_t{512} << 20;

// What cleaning one copy came to; filled by its worker.
struct Job {
  CleanResult result = CleanResult::kQuiet;
  Reason why;
  // The clean file's status, when one was written over the copy.
  std::optional<struct stat> written;
  // The copy's entry in its site's store, when it was taken back or kept.
  std::optional<StoredClean> stored;

  void Carry(Reason reason) {
    result = CleanResult::kCarrying;
    why = std::move(reason);
  }
};

// The whole file into `bytes`: 0, or the errno of the read that failed.
int ReadWhole(int fd, size_t size, std::string* bytes) {
  bytes->resize(size);
  size_t done = 0;
  while (done < size) {
    const ssize_t got = ::pread(fd, bytes->data() + done, size - done, static_cast<off_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    if (got == 0) return EIO;  // the file shrank on the way
    done += static_cast<size_t>(got);
  }
  return 0;
}

// True when a file that starts as a BMP has the size its header says and a
// header of a known size, so that it is one and not some text that starts
// with "BM".
bool WholeBmp(std::string_view start, int64_t size) {
  if (start.size() < 18) return false;
  auto little32 = [start](size_t at) {
    uint32_t value = 0;
    for (size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(start[at + i]);
    return value;
  };
  const uint32_t header = little32(14);
  return little32(2) == size && (header == 12 || header == 40 || header == 52 || header == 56 ||
                                 header == 64 || header == 108 || header == 124);
}

// Writes `bytes` over the copy through a temporary file; on a failure the
// copy stays whole, and carries what it carried.
bool WriteOver(const std::string& path, const std::string& bytes, Job* job) {
  const size_t slash = path.rfind('/');
  struct stat written;
  const DiskResult result = WriteFileInPlace(
      slash == std::string::npos ? "." : path.substr(0, slash),
      slash == std::string::npos ? path : path.substr(slash + 1),
      [&bytes](int out) { return WriteAll(out, bytes); }, &written);
  if (!result.ok()) job->Carry(WriteReason(result.error, result.path));
  if (result.ok()) job->written = written;
  return result.ok();
}

// Cleans a JPEG, PNG, WebP or GIF copy, read whole into `bytes`, in place.
void Sift(const std::string& path, int fd, PictureKind kind, std::string* bytes, Job* job) {
  Removed removed;
  if (!CleanCopy(bytes, &removed)) {
    return job->Carry({LooksCut(fd, kind) ? What::kCut : What::kDamaged, false, ""});
  }
  if (removed.anything && WriteOver(path, *bytes, job) &&
      (removed.position || removed.device || removed.person)) {
    job->result = CleanResult::kIdentifying;
  }
}

// Cleans the copy open as `fd`, whose status is `st`.
void CleanOpen(const std::string& path, int fd, const struct stat& st, bool vips_ready, Job* job) {
  char first[64] = {};
  const ssize_t got = ::pread(fd, first, sizeof first, 0);
  const std::string_view start(first, got > 0 ? static_cast<size_t>(got) : 0);
  const std::optional<RewriteKind> rewrite = RewriteKindOfStart(start);
  const std::optional<PictureKind> picture = KindOfStart(start);
  // Nothing to carry, or a format with no place for metadata.
  if (st.st_size == 0 || (picture == PictureKind::kBmp && WholeBmp(start, st.st_size))) return;
  if (!rewrite && !picture) return job->Carry({What::kNotAPicture, false, path});
  if (st.st_size > kMostBytes) return job->Carry({What::kTooLarge, false, ""});
  std::string bytes;
  if (int error = ReadWhole(fd, static_cast<size_t>(st.st_size), &bytes); error != 0) {
    return job->Carry(ErrnoReason(What::kSourceUnreadable, error, path));
  }
  if (!rewrite) return Sift(path, fd, *picture, &bytes, job);
  if (!vips_ready) return job->Carry({What::kNoScaler, false, ""});
  Reason why;
  const std::optional<std::string> again = RewrittenPicture(bytes, *rewrite, &why);
  if (!again) return job->Carry(std::move(why));
  if (WriteOver(path, *again, job)) job->result = CleanResult::kRewritten;
}

// Cleans one copy and keeps the clean file in its store; runs on a worker
// thread and touches nothing but the job and the copy's files.
void Clean(const CopyRecord& copy, bool vips_ready, const CleanStore* store, Job* job) {
  Fd fd;
  struct stat st;
  const std::string& path = copy.copy;
  if (int failure = OpenHostInput(path, &fd); failure != kOk || ::fstat(fd.get(), &st) != 0) {
    // A copy the build could not make publishes nothing.
    if (failure != kFileNonTrovato) {
      job->Carry(
          ErrnoReason(What::kSourceUnreadable, failure != kOk ? ErrnoOf(failure) : errno, path));
    }
    return;
  }
  CleanOpen(path, fd.get(), st, vips_ready, job);
  // Only a copy that cleaning wrote again is kept: one that lost nothing
  // costs the next build a read, never a write.
  if (store != nullptr && job->written) {
    job->stored = store->Keep(copy, st, *job->written, job->result);
  }
}

}  // namespace

CleanOutcome CleanCopies(const std::vector<CopyRecord>& copies, size_t workers,
                         const std::string& stores) {
  const bool vips_ready = VIPS_INIT("vetrina-foto") == 0;
  if (!vips_ready) vips_error_clear();
  // One store for each site folder the copies stand in, each locked until
  // its index is written.
  std::map<std::string, CleanStore> by_site;
  std::vector<CleanStore*> store_of(copies.size(), nullptr);
  for (size_t i = 0; i < copies.size() && !stores.empty(); ++i) {
    const std::string site = SiteFolderOf(copies[i].copy);
    CleanStore& store = by_site.try_emplace(site, stores, site).first->second;
    if (store.usable()) store_of[i] = &store;
  }
  // Taking a copy back is a link and a rename, done here: threads would
  // only contend for the lock of the album folder, and spin on it.
  std::vector<Job> jobs(copies.size());
  std::vector<size_t> to_clean;
  for (size_t i = 0; i < copies.size(); ++i) {
    std::optional<StoredClean> back;
    if (store_of[i] != nullptr) back = store_of[i]->Reuse(copies[i]);
    if (!back) {
      to_clean.push_back(i);
      continue;
    }
    jobs[i].result = back->result;
    jobs[i].stored = std::move(back);
  }
  PoolWork calls;
  calls.work = [&](size_t k) {
    const size_t i = to_clean[k];
    Clean(copies[i], vips_ready, store_of[i], &jobs[i]);
  };
  calls.finished = [](size_t) {};
  if (vips_ready) calls.leaving = [] { vips_thread_shutdown(); };
  RunPool(to_clean.size(), workers, calls);
  // What libvips' cache keeps of the pictures written again is of no use.
  if (vips_ready) {
    const int most = vips_cache_get_max();
    vips_cache_set_max(0);
    vips_cache_set_max(most);
  }

  std::map<CleanStore*, CleanIndex> kept;
  for (size_t i = 0; i < jobs.size(); ++i) {
    if (jobs[i].stored) kept[store_of[i]].Put(PathDigest(copies[i].copy), *jobs[i].stored);
  }
  std::set<std::string> in_use;
  for (auto& [site, store] : by_site) {
    in_use.insert(PathDigest(site));
    store.Finish(kept[&store]);
  }
  if (!stores.empty()) PruneCleanStores(stores, in_use);

  CleanOutcome outcome;
  for (size_t i = 0; i < jobs.size(); ++i) {
    CleanNote note{copies[i].source, copies[i].copy, std::nullopt};
    switch (jobs[i].result) {
      case CleanResult::kQuiet:
        break;
      case CleanResult::kIdentifying:
        ++outcome.identifying;
        break;
      case CleanResult::kRewritten:
        outcome.rewritten.push_back(std::move(note));
        break;
      case CleanResult::kCarrying:
        note.why = std::move(jobs[i].why);
        outcome.carrying.push_back(std::move(note));
        break;
    }
  }
  return outcome;
}

}  // namespace vf
