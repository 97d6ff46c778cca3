#ifndef VF_METADATA_TIFF_WALK_H_
#define VF_METADATA_TIFF_WALK_H_

#include <cstdint>
#include <functional>
#include <string_view>

namespace vf {

inline constexpr uint32_t kExifIfdTag = 0x8769, kGpsIfdTag = 0x8825, kInteropIfdTag = 0xA005;

// One entry of an IFD, as WalkTiff hands it over; its views point into the
// block walked.
struct TiffEntry {
  // The pointer tag that led to the entry's IFD (kExifIfdTag, kGpsIfdTag or
  // kInteropIfdTag); 0 for IFD0 and for an IFD linked after another.
  uint32_t via = 0;
  bool first = false;  // the entry is in IFD0
  uint32_t tag = 0, type = 0, count = 0;
  uint32_t field = 0;        // the value field as a 4-byte number: a LONG, or where the value is
  uint32_t short_value = 0;  // the value field's first two bytes as a SHORT
  // The value's bytes, in the field itself or where it points, when the
  // type is known and they all lie inside the block; else empty.
  std::string_view bytes;
};

// Hands `visit` each entry of the IFDs of a TIFF block (from its "II*\0" or
// "MM\0*" header on, as EXIF is), starting at IFD0 and following the EXIF,
// GPS and interoperability pointers and the links to a next IFD. Each IFD is
// visited once, and a bounded number of them and of their entries, so that
// any bytes take little work; an IFD or entry outside the block is passed
// over, and a block without a TIFF header has none.
void WalkTiff(std::string_view tiff, const std::function<void(const TiffEntry&)>& visit);

}  // namespace vf

#endif  // VF_METADATA_TIFF_WALK_H_
