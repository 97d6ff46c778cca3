#include "publish/derive_pool.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vf {

bool RunPool(size_t count, size_t workers, const PoolWork& calls) {
  if (count == 0) return false;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<size_t> finished;  // guarded by `mutex`, as is `running`
  std::atomic<size_t> next = 0;
  std::atomic<bool> stop = false;
  const size_t wanted = workers > 0 ? workers : std::max(1u, std::thread::hardware_concurrency());
  const size_t threads = std::min(wanted, count);
  size_t running = threads;
  auto work = [&] {
    while (!stop) {
      const size_t i = next++;
      if (i >= count) break;
      calls.work(i);
      std::lock_guard lock(mutex);
      finished.push_back(i);
      changed.notify_one();
    }
    std::lock_guard lock(mutex);
    --running;
    changed.notify_one();
  };
  std::vector<std::jthread> pool;
  for (size_t w = 0; w < threads; ++w) {
    try {
      pool.emplace_back([&work, &calls] {
        work();
        if (calls.leaving) calls.leaving();
      });
    } catch (const std::system_error&) {
      // No more threads to be had: the ones there do the work, or this one.
      std::lock_guard lock(mutex);
      running -= threads - w - (pool.empty() ? 1 : 0);
      break;
    }
  }
  if (pool.empty()) work();

  size_t done = 0;
  std::unique_lock lock(mutex);
  while (true) {
    changed.wait(lock, [&] { return !finished.empty() || running == 0; });
    if (finished.empty()) break;
    const std::vector<size_t> batch = std::exchange(finished, {});
    lock.unlock();
    for (size_t i : batch) {
      calls.finished(i);
      ++done;
      if (!stop && calls.progress && !calls.progress(done, count)) stop = true;
    }
    lock.lock();
  }
  lock.unlock();
  pool.clear();
  return stop;
}

}  // namespace vf
