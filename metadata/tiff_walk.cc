#include "metadata/tiff_walk.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "metadata/clean_walk.h"

namespace vf {
namespace {

// Real files have a handful of IFDs of a few hundred entries at most.
constexpr size_t kMostIfds = 16, kMostEntries = 1000;

// The size of one value of each TIFF type, 0 for a type TIFF does not know.
uint64_t TypeSize(uint32_t type) {
  constexpr uint8_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
  return type < std::size(kSizes) ? kSizes[type] : 0;
}

}  // namespace

void WalkTiff(std::string_view tiff, const std::function<void(const TiffEntry&)>& visit) {
  if (tiff.size() < 8) return;
  const bool big = tiff.substr(0, 4) == std::string_view("MM\0*", 4);
  if (!big && tiff.substr(0, 4) != std::string_view("II*\0", 4)) return;
  const auto read = [tiff, big](size_t at, int size) { return Number(tiff, at, size, big); };
  // The IFDs still to visit, each with the pointer tag that led to it.
  std::vector<std::pair<uint32_t, uint32_t>> todo{{read(4, 4), 0}};
  std::vector<uint32_t> seen;
  while (!todo.empty() && seen.size() < kMostIfds) {
    const auto [ifd, via] = todo.back();
    todo.pop_back();
    if (ifd > tiff.size() - 2 || std::find(seen.begin(), seen.end(), ifd) != seen.end()) continue;
    const bool first = seen.empty();
    seen.push_back(ifd);
    const size_t count = read(ifd, 2);
    const size_t fits = std::min({count, (tiff.size() - ifd - 2) / 12, kMostEntries});
    for (size_t at = ifd + 2; at < ifd + 2 + 12 * fits; at += 12) {
      TiffEntry entry{.via = via,
                      .first = first,
                      .tag = read(at, 2),
                      .type = read(at + 2, 2),
                      .count = read(at + 4, 4),
                      .field = read(at + 8, 4),
                      .short_value = read(at + 8, 2),
                      .bytes = {}};
      const uint64_t size = TypeSize(entry.type) * entry.count;
      if (size > 0 && size <= 4) {
        entry.bytes = tiff.substr(at + 8, size);
      } else if (size > 4 && entry.field <= tiff.size() && size <= tiff.size() - entry.field) {
        entry.bytes = tiff.substr(entry.field, size);
      }
      if (entry.tag == kExifIfdTag || entry.tag == kGpsIfdTag || entry.tag == kInteropIfdTag) {
        todo.emplace_back(entry.field, entry.tag);
      }
      visit(entry);
    }
    // The next IFD (IFD1, the thumbnail's, after IFD0) follows the entries.
    const size_t next = ifd + 2 + 12 * count;
    if (next + 4 <= tiff.size() && read(next, 4) != 0) todo.emplace_back(read(next, 4), 0);
  }
}

}  // namespace vf
