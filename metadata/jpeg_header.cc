#include "metadata/jpeg_header.h"

#include "metadata/clean_walk.h"

namespace vf {
namespace {

constexpr std::string_view kExif("Exif\0\0", 6);
constexpr std::string_view kXmp("http://ns.adobe.com/xap/1.0/\0", 29);
constexpr std::string_view kPhotoshop("Photoshop 3.0\0", 14);

// A start of frame: C0 to CF but for DHT (C4), JPG (C8) and DAC (CC).
bool IsFrame(unsigned char marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

}  // namespace

std::optional<JpegHeader> ReadJpegHeader(std::string_view start) {
  JpegHeader header;
  bool framed = false, broken = false;
  // The loose walk ends at the first scan; no segment is copied.
  const KeepPiece note = [&](const Piece& piece, std::string*) {
    const unsigned char marker = Byte(piece.type, 0);
    const std::string_view data = piece.data;
    if (IsFrame(marker)) {
      broken = broken || data.size() < 5;
      if (broken) return false;
      header.height = static_cast<int>(Number(data, 1, 2, true));
      header.width = static_cast<int>(Number(data, 3, 2, true));
      framed = header.width > 0 && header.height > 0;
    } else if (marker == 0xE1 && data.starts_with(kExif) && header.exif.empty()) {
      header.exif = std::string(data);
    } else if (marker == 0xE1 && data.starts_with(kXmp) && header.xmp.empty()) {
      header.xmp = std::string(data.substr(kXmp.size()));
    } else if (marker == 0xED && data.starts_with(kPhotoshop)) {
      header.iptc += std::string(header.iptc.empty() ? data : data.substr(kPhotoshop.size()));
    }
    return false;
  };
  std::string rest;
  if (!WalkJpeg(start, false, note, &rest) || broken || !framed) return std::nullopt;
  return header;
}

}  // namespace vf
