#ifndef VF_TESTS_SUPPORT_TEST_PICTURES_H_
#define VF_TESTS_SUPPORT_TEST_PICTURES_H_

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>
#include <vips/vips8>

namespace vf::test {

struct Colour {
  double red = 0, green = 0, blue = 0;
};

// A picture of one colour with, when `mark` is above 0, a red square of side
// `mark` at its top left corner, to see where a turn took it.
vips::VImage Painted(int width, int height, Colour colour, int mark = 0);
// A picture of grain, which compresses badly: a JPEG of it is mostly data.
vips::VImage Grain(int width, int height);

// What the tests look at in a picture file, as libvips reads it.
struct PictureFacts {
  bool read = false;  // false when libvips cannot read the file
  int width = 0;
  int height = 0;
  int bands = 0;
  std::string loader;                 // "jpegload", "pngload", ...
  std::vector<std::string> metadata;  // EXIF, XMP, IPTC, profile, text fields
  vips::VImage image;                 // decoded in memory
  Colour Pixel(int x, int y) const;
};
PictureFacts Inspect(const std::filesystem::path& path);

// The inode and modification time of a file: a file rewritten, even with the
// same bytes, gets another inode through the rename that puts it in place.
struct FileStamp {
  ino_t inode = 0;
  int64_t mtime_ns = 0;
  bool operator==(const FileStamp&) const = default;
};
FileStamp StampOf(const std::filesystem::path& path);

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_TEST_PICTURES_H_
