#include "tests/support/test_pictures.h"

#include <sys/stat.h>

namespace vf::test {
namespace {

// Makes sure libvips is started; it may be called any number of times.
void StartVips() { VIPS_INIT("vf_tests"); }

bool IsMetadata(const std::string& field) {
  for (const char* prefix : {"exif-", "xmp-", "iptc-", "icc-", "png-comment", "gif-comment"}) {
    if (field.starts_with(prefix)) return true;
  }
  return false;
}

}  // namespace

vips::VImage Painted(int width, int height, Colour colour, int mark) {
  StartVips();
  auto paint = [](int w, int h, Colour c) {
    return (vips::VImage::black(w, h, vips::VImage::option()->set("bands", 3)) +
            std::vector<double>{c.red, c.green, c.blue})
        .cast(VIPS_FORMAT_UCHAR);
  };
  vips::VImage image = paint(width, height, colour);
  if (mark > 0) image = image.insert(paint(mark, mark, {255, 0, 0}), 0, 0);
  return image.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

vips::VImage Grain(int width, int height) {
  StartVips();
  vips::VImage noise =
      vips::VImage::gaussnoise(width, height, vips::VImage::option()->set("sigma", 60.0));
  return vips::VImage::bandjoin(std::vector<vips::VImage>{noise, noise.rot180(),
                                                          noise.flip(VIPS_DIRECTION_HORIZONTAL)})
      .cast(VIPS_FORMAT_UCHAR)
      .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

Colour PictureFacts::Pixel(int x, int y) const {
  std::vector<double> values = image.getpoint(x, y);
  values.resize(3, values.empty() ? 0 : values[0]);
  if (bands < 3) values[1] = values[2] = values[0];
  return {values[0], values[1], values[2]};
}

PictureFacts Inspect(const std::filesystem::path& path) {
  StartVips();
  PictureFacts facts;
  try {
    facts.image = vips::VImage::new_from_file(path.c_str()).copy_memory();
  } catch (const vips::VError&) {
    vips_error_clear();
    return facts;
  }
  facts.read = true;
  facts.width = facts.image.width();
  facts.height = facts.image.height();
  facts.bands = facts.image.bands();
  facts.loader = facts.image.get_string("vips-loader");
  char** fields = vips_image_get_fields(facts.image.get_image());
  for (char** field = fields; *field; ++field) {
    if (IsMetadata(*field)) facts.metadata.push_back(*field);
  }
  g_strfreev(fields);
  return facts;
}

FileStamp StampOf(const std::filesystem::path& path) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return {};
  return {st.st_ino, int64_t{st.st_mtim.tv_sec} * 1'000'000'000 + st.st_mtim.tv_nsec};
}

}  // namespace vf::test
