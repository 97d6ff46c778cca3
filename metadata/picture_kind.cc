#include "metadata/picture_kind.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace vf {
namespace {

uint32_t Little32(std::string_view bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

uint32_t Big32(std::string_view bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

}  // namespace

std::optional<PictureKind> KindOfLoader(std::string_view loader) {
  auto is = [loader](std::string_view prefix) { return loader.starts_with(prefix); };
  if (is("VipsForeignLoadJpeg")) return PictureKind::kJpeg;
  if (is("VipsForeignLoadPng")) return PictureKind::kPng;
  if (is("VipsForeignLoadNsgif") || is("VipsForeignLoadGif")) return PictureKind::kGif;
  if (is("VipsForeignLoadWebp")) return PictureKind::kWebp;
  if (is("VipsForeignLoadTiff")) return PictureKind::kTiff;
  return std::nullopt;
}

std::optional<PictureKind> KindOfStart(std::string_view start) {
  if (start.starts_with("\xFF\xD8\xFF")) return PictureKind::kJpeg;
  if (start.starts_with("\x89PNG\r\n\x1A\n")) return PictureKind::kPng;
  if (start.starts_with("GIF8")) return PictureKind::kGif;
  if (start.starts_with("RIFF") && start.size() >= 12 && start.substr(8, 4) == "WEBP") {
    return PictureKind::kWebp;
  }
  if (start.starts_with("II*") || start.starts_with("MM\0*")) return PictureKind::kTiff;
  if (start.starts_with("BM")) return PictureKind::kBmp;
  return std::nullopt;
}

bool LooksCut(int fd, PictureKind kind) {
  struct stat st;
  if (::fstat(fd, &st) != 0) return false;
  const off_t size = st.st_size, tail_size = std::min<off_t>(size, 4096);
  std::string head(16, '\0'), tail(static_cast<size_t>(tail_size), '\0');
  if (::pread(fd, head.data(), head.size(), 0) != static_cast<ssize_t>(head.size()) ||
      ::pread(fd, tail.data(), tail.size(), size - tail_size) != tail_size) {
    return true;  // shorter than any header
  }
  switch (kind) {
    case PictureKind::kJpeg:  // the scan's data cannot hold FF D9, the end mark
      return tail.find("\xFF\xD9") == std::string::npos;
    case PictureKind::kPng:
      return tail.find("IEND") == std::string::npos;
    case PictureKind::kGif:
      return tail.back() != ';';
    case PictureKind::kWebp:
      return int64_t{Little32(head, 4)} + 8 > size;
    case PictureKind::kBmp:
      return int64_t{Little32(head, 2)} > size;
    case PictureKind::kTiff:  // the first directory past the end
      return int64_t{head[0] == 'I' ? Little32(head, 4) : Big32(head, 4)} + 2 > size;
  }
  return false;
}

}  // namespace vf
