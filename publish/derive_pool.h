#ifndef VF_PUBLISH_DERIVE_POOL_H_
#define VF_PUBLISH_DERIVE_POOL_H_

#include <cstddef>
#include <functional>

namespace vf {

// What a pool of workers runs, and what the caller hears of it.
struct PoolWork {
  // Runs on a worker thread, once for each job index.
  std::function<void(size_t)> work;
  // Runs on the caller's thread after each job's `work`, in the order the
  // jobs finish; it may touch what `work` wrote for that job.
  std::function<void(size_t)> finished;
  // Runs on the caller's thread after each `finished` with the jobs done and
  // the jobs in all, until it returns false; may be empty.
  std::function<bool(size_t, size_t)> progress;
  // Runs on each worker thread as it ends (libvips keeps buffers per
  // thread); may be empty.
  std::function<void()> leaving;
};

// Runs `count` jobs on up to `workers` threads (0 for one per core), fewer
// when the system gives no more, and on the caller's own thread when it
// gives none. Once `progress` returns false, no job starts; the jobs in hand
// end and are `finished`, but `progress` is not called again. Returns when
// every worker has ended: true when `progress` stopped the pool.
bool RunPool(size_t count, size_t workers, const PoolWork& calls);

}  // namespace vf

#endif  // VF_PUBLISH_DERIVE_POOL_H_
