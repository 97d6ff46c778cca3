#include "metadata/clean_walk.h"

#include <array>
#include <utility>

namespace vf {
namespace {

constexpr size_t kNone = std::string_view::npos;

constexpr std::array<uint32_t, 256> kCrcTable = [] {
  std::array<uint32_t, 256> table{};
  for (uint32_t n = 0; n < 256; ++n) {
    uint32_t c = n;
    for (int k = 0; k < 8; ++k) c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
    table[n] = c;
  }
  return table;
}();

// Where the entropy-coded data from `at` ends: at the marker after it, with
// any fill bytes before that marker left in the data; kNone when the file
// ends first. Stuffed zeros and restart markers belong to the data.
size_t ScanEnd(std::string_view in, size_t at) {
  for (at = in.find('\xFF', at); at != kNone && at + 1 < in.size(); at = in.find('\xFF', at + 1)) {
    const unsigned char next = Byte(in, at + 1);
    if (next != 0x00 && next != 0xFF && (next < 0xD0 || next > 0xD7)) return at;
  }
  return kNone;
}

// Where a GIF's data sub-blocks from `at` end, past their terminator; kNone
// when the file ends first.
size_t SubBlocksEnd(std::string_view in, size_t at) {
  while (at < in.size()) {
    const size_t size = Byte(in, at);
    at += 1 + size;
    if (size == 0) return at;
  }
  return kNone;
}

// The size of the colour table a GIF's packed field announces.
size_t ColourTable(unsigned char packed) { return packed & 0x80 ? 3u << ((packed & 7) + 1) : 0; }

}  // namespace

uint32_t PngCrc(std::string_view type_and_data) {
  uint32_t c = 0xFFFFFFFFu;
  for (char b : type_and_data) c = kCrcTable[(c ^ static_cast<unsigned char>(b)) & 0xFF] ^ (c >> 8);
  return c ^ 0xFFFFFFFFu;
}

bool WalkJpeg(std::string_view in, bool strict, const KeepPiece& keep, std::string* out) {
  if (in.size() < 4 || in.substr(0, 2) != "\xFF\xD8") return false;
  std::string copy(in.substr(0, 2));
  size_t at = 2;
  bool scanned = false;
  while (true) {
    if (at + (strict ? 2 : 4) > in.size() || Byte(in, at) != 0xFF) return false;
    const unsigned char marker = Byte(in, at + 1);
    if (marker == 0xFF) {
      ++at;
      continue;
    }
    if (!strict && marker == 0xDA) {
      copy.append(in.substr(at));
      break;
    }
    if (strict && marker == 0xD9 && scanned) {
      copy.append(in.substr(at, 2));
      break;
    }
    // Between segments no marker stands alone but the end of image.
    if (strict && (marker < 0x02 || (marker >= 0xD0 && marker <= 0xD9))) return false;
    if (at + 4 > in.size()) return false;
    const size_t length = Byte(in, at + 2) << 8 | Byte(in, at + 3);
    if (length < 2 || at + 2 + length > in.size()) return false;
    const Piece piece{in.substr(at + 1, 1), in.substr(at + 4, length - 2),
                      in.substr(at, 2 + length)};
    at += 2 + length;
    if (marker == 0xDA) {
      const size_t end = ScanEnd(in, at);
      if (end == kNone) return false;
      copy.append(piece.whole).append(in.substr(at, end - at));
      at = end;
      scanned = true;
    } else if (keep(piece, &copy)) {
      copy.append(piece.whole);
    }
  }
  *out = std::move(copy);
  return true;
}

bool WalkPng(std::string_view in, bool strict, const KeepPiece& keep, std::string* out) {
  if (in.size() < 8 || in.substr(0, 8) != "\x89PNG\r\n\x1A\n") return false;
  std::string copy(in.substr(0, 8));
  bool ended = false;
  for (size_t at = 8; at < in.size() && !ended;) {
    if (at + 12 > in.size()) return false;
    const size_t length = Number(in, at, 4, true);
    if (length > in.size() - at - 12) return false;
    const Piece piece{in.substr(at + 4, 4), in.substr(at + 8, length), in.substr(at, 12 + length)};
    if (strict && (PngCrc(in.substr(at + 4, 4 + length)) != Number(in, at + 8 + length, 4, true) ||
                   (at == 8) != (piece.type == "IHDR"))) {
      return false;
    }
    ended = strict && piece.type == "IEND";
    at += 12 + length;
    if (keep(piece, &copy)) copy.append(piece.whole);
  }
  if (strict && !ended) return false;
  *out = std::move(copy);
  return true;
}

bool WalkWebp(std::string_view in, bool strict, unsigned char gone, const KeepPiece& keep,
              std::string* out) {
  if (in.size() < 12 || in.substr(0, 4) != "RIFF" || in.substr(8, 4) != "WEBP") return false;
  size_t end = in.size();
  if (strict) {
    const size_t riff = Number(in, 4, 4, false);
    if (riff < 12 || riff > in.size() - 8) return false;
    end = 8 + riff;
  }
  std::string copy(in.substr(0, 12));
  for (size_t at = 12; at < end;) {
    if (at + 8 > end) return false;
    const size_t length = Number(in, at + 4, 4, false), padded = length + (length & 1);
    if (padded > end - at - 8) return false;
    const Piece piece{in.substr(at, 4), in.substr(at + 8, length), in.substr(at, 8 + padded)};
    if (strict && at == 12 && piece.type != "VP8 " && piece.type != "VP8L" &&
        (piece.type != "VP8X" || length < 10)) {
      return false;
    }
    at += 8 + padded;
    if (!keep(piece, &copy)) continue;
    const size_t start = copy.size();
    copy.append(piece.whole);
    if (piece.type == "VP8X" && length > 0)
      copy[start + 8] = static_cast<char>(copy[start + 8] & ~gone);
  }
  std::string riff;
  PutNumber(&riff, static_cast<uint32_t>(copy.size() - 8), 4, false);
  copy.replace(4, 4, riff);
  *out = std::move(copy);
  return true;
}

bool WalkGif(std::string_view in, const KeepPiece& keep, std::string* out) {
  if (in.size() < 13 || (in.substr(0, 6) != "GIF87a" && in.substr(0, 6) != "GIF89a")) return false;
  size_t at = 13 + ColourTable(Byte(in, 10));
  if (at > in.size()) return false;
  std::string copy(in.substr(0, at));
  while (at < in.size()) {
    const unsigned char kind = Byte(in, at);
    if (kind == 0x3B) {
      *out = std::move(copy.append(1, ';'));
      return true;
    }
    size_t end = kNone;
    if (kind == 0x2C && at + 10 < in.size()) {
      // The image descriptor, its own colour table, the LZW code size, the data.
      end = SubBlocksEnd(in, at + 11 + ColourTable(Byte(in, at + 9)));
    } else if (kind == 0x21) {
      end = SubBlocksEnd(in, at + 2);
    }
    if (end == kNone) return false;
    const Piece piece{in.substr(at + 1, 1), in.substr(at + 2, end - at - 2),
                      in.substr(at, end - at)};
    if (kind == 0x2C || keep(piece, &copy)) copy.append(piece.whole);
    at = end;
  }
  return false;
}

}  // namespace vf
