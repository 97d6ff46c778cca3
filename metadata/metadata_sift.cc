#include "metadata/metadata_sift.h"

#include <string_view>
#include <utility>

#include "metadata/clean_walk.h"
#include "metadata/exif_read.h"

namespace vf {
namespace {

constexpr std::string_view kExifHead("Exif\0\0", 6), kIccHead("ICC_PROFILE\0", 12);

unsigned char Code(const Piece& piece) { return Byte(piece.type, 0); }

// The JPEG segments that the sifting and the cleaning both take out: APP1 to
// APP15 but Adobe's APP14, and comments.
bool JpegMetadata(unsigned char marker) {
  return (marker >= 0xE1 && marker <= 0xEF && marker != 0xEE) || marker == 0xFE;
}

// The PNG chunks that the sifting and the cleaning both take out.
bool PngMetadata(std::string_view type) {
  return type == "eXIf" || type == "tEXt" || type == "zTXt" || type == "iTXt" || type == "tIME";
}

bool Tilted(int orientation) { return orientation >= 2 && orientation <= 8; }

// PNG and WebP hold EXIF from its TIFF header, some writers after "Exif".
std::string_view Tiff(std::string_view exif) {
  return exif.starts_with(kExifHead) ? exif.substr(kExifHead.size()) : exif;
}

bool CleanJpeg(std::string_view in, std::string* out, Removed* found) {
  bool exif_seen = false;
  const auto keep = [&](const Piece& piece, std::string*) {
    const unsigned char marker = Code(piece);
    if (marker == 0xE1 && piece.data.starts_with(kExifHead)) {
      const int orientation = ReadExif(piece.data.substr(kExifHead.size()), found);
      if (!exif_seen) found->orientation = orientation;
      exif_seen = true;
    } else if (marker == 0xE1) {
      ReadXmp(piece.data, found);
    } else if (marker == 0xED) {
      ReadPhotoshop(piece.data, found);
    }
    return !JpegMetadata(marker) || (marker == 0xE2 && piece.data.starts_with(kIccHead));
  };
  if (!WalkJpeg(in, true, keep, out)) return false;
  if (!Tilted(found->orientation)) {
    found->orientation = 0;
    return true;
  }
  // JFIF wants its APP0 first; EXIF's APP1 comes right after it.
  size_t at = 2;
  if (Byte(*out, 3) == 0xE0) at += 2 + Number(*out, 4, 2, true);
  std::string segment("\xFF\xE1");
  const std::string exif = std::string(kExifHead) + OrientationExif(found->orientation);
  PutNumber(&segment, static_cast<uint32_t>(2 + exif.size()), 2, true);
  out->insert(at, segment + exif);
  return true;
}

bool CleanPng(std::string_view in, std::string* out, Removed* found) {
  bool exif_seen = false;
  const auto keep = [&](const Piece& piece, std::string* copy) {
    if (!PngMetadata(piece.type)) return true;
    const std::string_view keyword = piece.data.substr(0, piece.data.find('\0'));
    if (piece.type != "tIME" && (keyword == "Author" || keyword == "Copyright")) {
      found->person = true;
    }
    if (piece.type == "iTXt") ReadXmp(piece.data, found);
    if (piece.type != "eXIf") return false;
    const int orientation = ReadExif(Tiff(piece.data), found);
    if (!exif_seen && Tilted(orientation)) {
      const std::string chunk = "eXIf" + OrientationExif(orientation);
      PutNumber(copy, static_cast<uint32_t>(chunk.size() - 4), 4, true);
      copy->append(chunk);
      PutNumber(copy, PngCrc(chunk), 4, true);
      found->orientation = orientation;
    }
    exif_seen = true;
    return false;
  };
  return WalkPng(in, true, keep, out);
}

bool CleanWebp(std::string_view in, std::string* out, Removed* found) {
  // Without VP8X's flags an EXIF chunk would not be read: none goes back.
  const bool extended = in.substr(12, 4) == "VP8X";
  bool exif_seen = false;
  const auto keep = [&](const Piece& piece, std::string* copy) {
    if (piece.type == "XMP ") ReadXmp(piece.data, found);
    if (piece.type != "EXIF") return piece.type != "XMP ";
    const int orientation = ReadExif(Tiff(piece.data), found);
    if (!exif_seen && extended && Tilted(orientation)) {
      const std::string exif = OrientationExif(orientation);
      copy->append("EXIF");
      PutNumber(copy, static_cast<uint32_t>(exif.size()), 4, false);
      copy->append(exif);
      found->orientation = orientation;
    }
    exif_seen = true;
    return false;
  };
  if (!WalkWebp(in, true, 0x0C, keep, out)) return false;
  if (found->orientation != 0) (*out)[20] = static_cast<char>((*out)[20] | 0x08);
  return true;
}

bool CleanGif(std::string_view in, std::string* out, Removed* found) {
  const auto keep = [found](const Piece& piece, std::string*) {
    const bool xmp = Code(piece) == 0xFF && piece.data.starts_with(
                                                "\x0B"
                                                "XMP DataXMP");
    if (xmp) ReadXmp(piece.data, found);
    return Code(piece) != 0xFE && !xmp;
  };
  return WalkGif(in, keep, out);
}

}  // namespace

bool SiftJpeg(std::string* bytes) {
  const auto keep = [](const Piece& piece, std::string*) { return !JpegMetadata(Code(piece)); };
  return WalkJpeg(*bytes, false, keep, bytes);
}

bool SiftPng(std::string* bytes) {
  const auto keep = [](const Piece& piece, std::string*) {
    return piece.type != "iCCP" && !PngMetadata(piece.type);
  };
  return WalkPng(*bytes, false, keep, bytes);
}

bool SiftWebp(std::string* bytes) {
  const auto keep = [](const Piece& piece, std::string*) {
    return piece.type != "ICCP" && piece.type != "EXIF" && piece.type != "XMP ";
  };
  return WalkWebp(*bytes, false, 0x2C, keep, bytes);
}

bool CleanCopy(std::string* bytes, Removed* removed) {
  *removed = {};
  const std::string_view in = *bytes;
  bool (*clean)(std::string_view, std::string*, Removed*) = nullptr;
  if (in.starts_with("\xFF\xD8")) {
    clean = CleanJpeg;
  } else if (in.starts_with("\x89PNG")) {
    clean = CleanPng;
  } else if (in.starts_with("RIFF") && in.size() >= 12 && in.substr(8, 4) == "WEBP") {
    clean = CleanWebp;
  } else if (in.starts_with("GIF8")) {
    clean = CleanGif;
  }
  std::string out;
  Removed found;
  if (clean == nullptr || !clean(in, &out, &found)) return false;
  found.anything = out != in;
  *removed = found;
  *bytes = std::move(out);
  return true;
}

}  // namespace vf
