#ifndef VF_PUBLISH_DERIVED_MEMORY_H_
#define VF_PUBLISH_DERIVED_MEMORY_H_

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace vf {

// The decoded memory that the pictures in work may hold at once on a machine
// with `physical_bytes` of memory: a quarter of it, at most 2 GB; 512 MB
// when the size is not known (0 or less).
int64_t DecodeBudgetFor(int64_t physical_bytes);
// The same for this machine, from sysconf.
int64_t DefaultDecodeBudget();

// Lets pictures into the workers while the decoded memory in flight stays
// within a budget. Pictures are let in in the order they asked, so a large
// one is not passed over for ever by small ones; one that alone exceeds the
// budget waits until nothing else is in flight and then runs alone.
class MemoryGate {
 public:
  explicit MemoryGate(int64_t budget) : budget_(budget) {}

  // Waits until `cost` may join the pictures in flight, then counts it.
  void Admit(int64_t cost);
  // Counts `cost` in when it may join now and nobody waits before it; false,
  // and nothing counted, otherwise.
  bool TryAdmit(int64_t cost);
  // Gives back what Admit or TryAdmit counted.
  void Release(int64_t cost);
  // The most that was ever in flight at once.
  int64_t peak();

 private:
  bool Fits(int64_t cost) const { return in_flight_ == 0 || in_flight_ + cost <= budget_; }

  const int64_t budget_;
  std::mutex mutex_;
  std::condition_variable changed_;
  int64_t in_flight_ = 0;  // guarded by mutex_, as are the three below
  int64_t peak_ = 0;
  uint64_t next_ticket_ = 0;
  uint64_t serving_ = 0;
};

}  // namespace vf

#endif  // VF_PUBLISH_DERIVED_MEMORY_H_
