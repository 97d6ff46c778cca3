#include "publish/metadata_sift.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace vf {
namespace {

uint32_t Big32(const std::string& s, size_t at) {
  return uint32_t{static_cast<unsigned char>(s[at])} << 24 |
         uint32_t{static_cast<unsigned char>(s[at + 1])} << 16 |
         uint32_t{static_cast<unsigned char>(s[at + 2])} << 8 |
         uint32_t{static_cast<unsigned char>(s[at + 3])};
}

uint32_t Little32(const std::string& s, size_t at) {
  return uint32_t{static_cast<unsigned char>(s[at])} |
         uint32_t{static_cast<unsigned char>(s[at + 1])} << 8 |
         uint32_t{static_cast<unsigned char>(s[at + 2])} << 16 |
         uint32_t{static_cast<unsigned char>(s[at + 3])} << 24;
}

}  // namespace

bool SiftJpeg(std::string* bytes) {
  const std::string& in = *bytes;
  if (in.size() < 4 || in.compare(0, 2, "\xFF\xD8") != 0) return false;
  std::string out = in.substr(0, 2);
  size_t at = 2;
  while (true) {
    if (at + 4 > in.size() || static_cast<unsigned char>(in[at]) != 0xFF) return false;
    auto marker = static_cast<unsigned char>(in[at + 1]);
    if (marker == 0xFF) {
      ++at;
      continue;
    }
    if (marker == 0xDA) break;  // start of scan: the rest is the picture
    size_t length =
        static_cast<unsigned char>(in[at + 2]) << 8 | static_cast<unsigned char>(in[at + 3]);
    if (length < 2 || at + 2 + length > in.size()) return false;
    bool metadata = (marker >= 0xE1 && marker <= 0xEF && marker != 0xEE) || marker == 0xFE;
    if (!metadata) out.append(in, at, 2 + length);
    at += 2 + length;
  }
  out.append(in, at);
  *bytes = std::move(out);
  return true;
}

bool SiftPng(std::string* bytes) {
  const std::string& in = *bytes;
  if (in.size() < 8 || in.compare(0, 8, "\x89PNG\r\n\x1A\n") != 0) return false;
  std::string out = in.substr(0, 8);
  size_t at = 8;
  while (at < in.size()) {
    if (at + 12 > in.size()) return false;
    size_t length = Big32(in, at);
    if (length > in.size() - at - 12) return false;
    std::string_view type(in.data() + at + 4, 4);
    if (type != "iCCP" && type != "eXIf" && type != "tEXt" && type != "zTXt" && type != "iTXt" &&
        type != "tIME") {
      out.append(in, at, 12 + length);
    }
    at += 12 + length;
  }
  *bytes = std::move(out);
  return true;
}

bool SiftWebp(std::string* bytes) {
  const std::string& in = *bytes;
  if (in.size() < 12 || in.compare(0, 4, "RIFF") != 0 || in.compare(8, 4, "WEBP") != 0) {
    return false;
  }
  std::string out = in.substr(0, 12);
  size_t at = 12;
  while (at < in.size()) {
    if (at + 8 > in.size()) return false;
    size_t length = Little32(in, at + 4);
    size_t padded = length + (length & 1);
    if (padded > in.size() - at - 8) return false;
    std::string_view type(in.data() + at, 4);
    if (type != "ICCP" && type != "EXIF" && type != "XMP ") {
      size_t start = out.size();
      out.append(in, at, 8 + padded);
      if (type == "VP8X" && length > 0) out[start + 8] = static_cast<char>(out[start + 8] & ~0x2C);
    }
    at += 8 + padded;
  }
  uint32_t riff = static_cast<uint32_t>(out.size() - 8);
  for (int i = 0; i < 4; ++i) out[4 + i] = static_cast<char>(riff >> (8 * i) & 0xFF);
  *bytes = std::move(out);
  return true;
}

bool CleanCopy(std::string* bytes, Removed* removed) {
  (void)bytes;
  *removed = {};
  return false;
}

}  // namespace vf
