#ifndef VF_METADATA_IPTC_WALK_H_
#define VF_METADATA_IPTC_WALK_H_

#include <functional>
#include <string_view>

namespace vf {

// The IPTC records among Photoshop's image resources (resource 0x0404),
// those of a JPEG's APP13: "8BIM", an id, a Pascal name and a size, each
// padded to an even length, after a "Photoshop 3.0\0" header when `header`
// is told so (then bytes without it hold nothing). Empty when there are
// none or the resources before them are not well formed.
std::string_view PhotoshopIptc(std::string_view resources, bool header);

// One IPTC-NAA dataset; `data` points into the records walked.
struct IptcDataset {
  unsigned record = 0, dataset = 0;
  size_t size = 0;  // as the dataset says
  // Its bytes, when they are all there and the size was not given in the
  // extended form, which no short text uses; else empty.
  std::string_view data;
};

// Hands `visit` each dataset of IPTC records (each starting with 0x1C),
// reading only inside `iptc`; the walk ends at the first byte that does not
// start a dataset, or after a dataset whose size reaches past the end.
void WalkIptc(std::string_view iptc, const std::function<void(const IptcDataset&)>& visit);

}  // namespace vf

#endif  // VF_METADATA_IPTC_WALK_H_
