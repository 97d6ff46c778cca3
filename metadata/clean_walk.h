#ifndef VF_METADATA_CLEAN_WALK_H_
#define VF_METADATA_CLEAN_WALK_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace vf {

// One piece of a picture file, as its format lays it out: a JPEG marker
// segment (its type the marker byte), a PNG or RIFF chunk (its four-letter
// type) or a GIF extension (its label byte). `data` is what it holds, past its
// length or label; `whole` is every byte of it, as copied.
struct Piece {
  std::string_view type;
  std::string_view data;
  std::string_view whole;
};

// Says whether a piece stays in the copy; one that does not may have
// something else appended to `copy` in its place.
using KeepPiece = std::function<bool(const Piece& piece, std::string* copy)>;

// Each walker copies a whole file of its format into `out` (the file's
// header, then the pieces `keep` lets stay) and returns false, leaving `out`
// as it was, when the file is not well-formed. The loose walks are those of
// the saved pictures' sifting; the strict ones read a file that anyone may
// have written, to its very end, and leave out whatever follows that end.

// JPEG. Loose: the walk ends at the first start of scan, which is copied
// with every byte after it. Strict: the scans' entropy-coded data is read
// too, the segments between scans are offered to `keep` as well, and the
// copy ends with the end of image, which the file must have. Scans and the
// end of image always stay; fill bytes before a segment go, while those
// that end a scan's data stay with it.
bool WalkJpeg(std::string_view in, bool strict, const KeepPiece& keep, std::string* out);

// PNG. Strict: each chunk's CRC is checked, IHDR comes first and IEND ends
// the file.
bool WalkPng(std::string_view in, bool strict, const KeepPiece& keep, std::string* out);

// WebP. The RIFF size is written afresh, and the VP8X flags in `gone`
// cleared. Strict: the RIFF size must reach no further than the file and end
// with a chunk, and an image chunk or a whole VP8X header comes first.
bool WalkWebp(std::string_view in, bool strict, unsigned char gone, const KeepPiece& keep,
              std::string* out);

// GIF, always strict: `keep` is offered the extensions, never the images.
bool WalkGif(std::string_view in, const KeepPiece& keep, std::string* out);

// The CRC of a PNG chunk, over its type and data.
uint32_t PngCrc(std::string_view type_and_data);

inline unsigned char Byte(std::string_view s, size_t at) {
  return static_cast<unsigned char>(s[at]);
}

// The unsigned number in `size` bytes (0 to 4) of `s` from `at`, in either
// byte order; the caller has checked that the bytes are there.
inline uint32_t Number(std::string_view s, size_t at, int size, bool big) {
  uint32_t n = 0;
  for (int i = 0; i < size; ++i) {
    n |= uint32_t{static_cast<unsigned char>(s[at + i])} << 8 * (big ? size - 1 - i : i);
  }
  return n;
}

// Appends `n` to `out` in `size` bytes, in either byte order.
inline void PutNumber(std::string* out, uint32_t n, int size, bool big) {
  for (int i = 0; i < size; ++i)
    out->push_back(static_cast<char>(n >> 8 * (big ? size - 1 - i : i)));
}

}  // namespace vf

#endif  // VF_METADATA_CLEAN_WALK_H_
