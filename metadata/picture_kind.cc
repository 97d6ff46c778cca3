#include "metadata/picture_kind.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace vf {
namespace {

using namespace std::string_view_literals;

// A walk over boxes stops here: no picture has so many at its top level.
constexpr int kMostBoxes = 1 << 16;

uint32_t Little32(std::string_view bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

uint64_t Big(std::string_view bytes, size_t at, size_t count) {
  uint64_t value = 0;
  for (size_t i = 0; i < count; ++i) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

// True when the ISO file type box at the start names one of `brands`, as its
// major brand or a compatible one.
bool HasBrand(std::string_view start, std::initializer_list<std::string_view> brands) {
  if (start.size() < 12 || start.substr(4, 4) != "ftyp") return false;
  const size_t end = std::min<uint64_t>(start.size(), Big(start, 0, 4));
  for (size_t at = 8; at + 4 <= end; at += 4) {
    if (at == 12) continue;  // the minor version
    for (std::string_view brand : brands) {
      if (start.substr(at, 4) == brand) return true;
    }
  }
  return false;
}

// True when the ISO boxes that make up a file of `size` bytes do not end
// where it ends: the last box runs past the end, or the end cuts a box's
// header. A box of a size no box can have is damage, not a cut.
bool BoxesCut(int fd, int64_t size) {
  int64_t at = 0;
  for (int boxes = 0; at < size && boxes < kMostBoxes; ++boxes) {
    std::string header(16, '\0');
    const ssize_t got = ::pread(fd, header.data(), header.size(), at);
    if (got < 8) return true;
    uint64_t box = Big(header, 0, 4);
    size_t header_size = 8;
    if (box == 0) return false;  // the last box, to the end of the file
    if (box == 1) {
      if (got < 16) return true;
      box = Big(header, 8, 8);
      header_size = 16;
    }
    if (box < header_size || box > static_cast<uint64_t>(INT64_MAX)) return false;
    if (static_cast<int64_t>(box) > size - at) return true;
    at += static_cast<int64_t>(box);
  }
  return false;
}

}  // namespace

std::optional<PictureKind> KindOfLoader(std::string_view loader) {
  auto is = [loader](std::string_view prefix) { return loader.starts_with(prefix); };
  if (is("VipsForeignLoadJpeg")) return PictureKind::kJpeg;
  if (is("VipsForeignLoadPng")) return PictureKind::kPng;
  if (is("VipsForeignLoadNsgif") || is("VipsForeignLoadGif")) return PictureKind::kGif;
  if (is("VipsForeignLoadWebp")) return PictureKind::kWebp;
  if (is("VipsForeignLoadTiff")) return PictureKind::kTiff;
  if (is("VipsForeignLoadHeif")) return PictureKind::kHeif;
  if (is("VipsForeignLoadJxl")) return PictureKind::kJxl;
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
  if (start.starts_with("\xFF\x0A"sv) || start.starts_with("\0\0\0\x0CJXL \r\n\x87\n"sv)) {
    return PictureKind::kJxl;
  }
  if (HasBrand(start,
               {"heic", "heix", "hevc", "hevx", "heim", "heis", "mif1", "msf1", "avif", "avis"})) {
    return PictureKind::kHeif;
  }
  return std::nullopt;
}

bool AnnouncesAvif(std::string_view start) { return HasBrand(start, {"avif", "avis"}); }

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
      return int64_t{head[0] == 'I' ? Little32(head, 4) : static_cast<uint32_t>(Big(head, 4, 4))} +
                 2 >
             size;
    case PictureKind::kHeif:
      return BoxesCut(fd, size);
    case PictureKind::kJxl:  // a bare code stream tells no end of its own
      return head.starts_with("\0\0\0\x0CJXL "sv) && BoxesCut(fd, size);
  }
  return false;
}

}  // namespace vf
