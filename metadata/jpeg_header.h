#ifndef VF_METADATA_JPEG_HEADER_H_
#define VF_METADATA_JPEG_HEADER_H_

#include <optional>
#include <string>
#include <string_view>

namespace vf {

// What the segments of a JPEG before its first scan say: the frame's size
// and the metadata blocks in the forms libvips gives them (EXIF from its
// "Exif" header on, the XMP packet, the APP13 payload).
struct JpegHeader {
  int width = 0;
  int height = 0;
  std::string exif = {};
  std::string xmp = {};
  std::string iptc = {};
};

// Reads the header from the first bytes of a file. Nothing when they are no
// JPEG, when a segment is malformed, or when they end before the frame
// header and the first scan: the caller then asks a full decoder. Reads only
// inside `start`.
std::optional<JpegHeader> ReadJpegHeader(std::string_view start);

}  // namespace vf

#endif  // VF_METADATA_JPEG_HEADER_H_
