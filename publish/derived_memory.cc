#include "publish/derived_memory.h"

#include <unistd.h>

#include <algorithm>

namespace vf {

namespace {
constexpr int64_t kMegabyte = int64_t{1} << 20;
constexpr int64_t kMostBudget = 2048 * kMegabyte;
constexpr int64_t kUnknownMachineBudget = 512 * kMegabyte;
}  // namespace

int64_t DecodeBudgetFor(int64_t physical_bytes) {
  if (physical_bytes <= 0) return kUnknownMachineBudget;
  return std::min(physical_bytes / 4, kMostBudget);
}

int64_t DefaultDecodeBudget() {
  const long pages = ::sysconf(_SC_PHYS_PAGES), page = ::sysconf(_SC_PAGE_SIZE);
  return DecodeBudgetFor(pages > 0 && page > 0 ? int64_t{pages} * page : 0);
}

void MemoryGate::Admit(int64_t cost) {
  std::unique_lock lock(mutex_);
  const uint64_t ticket = next_ticket_++;
  changed_.wait(lock, [&] { return ticket == serving_ && Fits(cost); });
  ++serving_;
  in_flight_ += cost;
  peak_ = std::max(peak_, in_flight_);
  // The next in line may fit beside this one.
  changed_.notify_all();
}

bool MemoryGate::TryAdmit(int64_t cost) {
  std::lock_guard lock(mutex_);
  if (next_ticket_ != serving_ || !Fits(cost)) return false;
  ++next_ticket_;
  ++serving_;
  in_flight_ += cost;
  peak_ = std::max(peak_, in_flight_);
  return true;
}

void MemoryGate::Release(int64_t cost) {
  std::lock_guard lock(mutex_);
  in_flight_ -= cost;
  changed_.notify_all();
}

int64_t MemoryGate::peak() {
  std::lock_guard lock(mutex_);
  return peak_;
}

}  // namespace vf
