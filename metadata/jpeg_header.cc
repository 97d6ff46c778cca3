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
  if (start.size() < 4 || Byte(start, 0) != 0xFF || Byte(start, 1) != 0xD8) return std::nullopt;
  JpegHeader header;
  bool framed = false;
  size_t at = 2;
  while (true) {
    if (at >= start.size() || Byte(start, at) != 0xFF) return std::nullopt;
    while (at < start.size() && Byte(start, at) == 0xFF) ++at;  // fill bytes
    if (at >= start.size()) return std::nullopt;
    const unsigned char marker = Byte(start, at++);
    if (marker == 0xDA) return framed ? std::optional<JpegHeader>(header) : std::nullopt;
    if (marker == 0xD9 || marker == 0x00) return std::nullopt;
    if ((marker >= 0xD0 && marker <= 0xD7) || marker == 0x01) continue;  // no length
    if (at + 2 > start.size()) return std::nullopt;
    const size_t length = Number(start, at, 2, true);
    if (length < 2 || at + length > start.size()) return std::nullopt;
    const std::string_view data = start.substr(at + 2, length - 2);
    at += length;
    if (IsFrame(marker)) {
      if (data.size() < 5) return std::nullopt;
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
  }
}

}  // namespace vf
