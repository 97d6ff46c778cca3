#include "metadata/iptc_walk.h"

#include "metadata/clean_walk.h"

namespace vf {

std::string_view PhotoshopIptc(std::string_view resources, bool header) {
  constexpr std::string_view kHead("Photoshop 3.0\0", 14);
  size_t at = 0;
  if (header) {
    if (!resources.starts_with(kHead)) return {};
    at = kHead.size();
  }
  while (at + 12 <= resources.size()) {
    if (resources.substr(at, 4) != "8BIM") return {};
    const size_t name = 1 + Byte(resources, at + 6);
    const size_t size_at = at + 6 + name + (name & 1);
    if (size_at + 4 > resources.size()) return {};
    const size_t size = Number(resources, size_at, 4, true);
    if (size > resources.size() - size_at - 4) return {};
    if (Number(resources, at + 4, 2, true) == 0x0404) return resources.substr(size_at + 4, size);
    at = size_at + 4 + size + (size & 1);
  }
  return {};
}

void WalkIptc(std::string_view iptc, const std::function<void(const IptcDataset&)>& visit) {
  for (size_t at = 0; at + 5 <= iptc.size() && iptc[at] == 0x1C;) {
    size_t size = Number(iptc, at + 3, 2, true), head = 5;
    const bool extended = size & 0x8000;
    if (extended) {  // its size follows, in this many bytes
      const size_t digits = size & 0x7FFF;
      if (digits > 4 || at + 5 + digits > iptc.size()) return;
      size = Number(iptc, at + 5, static_cast<int>(digits), true);
      head += digits;
    }
    const bool whole = size <= iptc.size() - at - head;
    visit({.record = Byte(iptc, at + 1),
           .dataset = Byte(iptc, at + 2),
           .size = size,
           .data = whole && !extended ? iptc.substr(at + head, size) : std::string_view()});
    if (!whole) return;
    at += head + size;
  }
}

}  // namespace vf
