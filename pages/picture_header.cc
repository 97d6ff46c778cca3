#include "pages/picture_header.h"

#include <unistd.h>

#include <vips/vips8>

#include "metadata/jpeg_header.h"
#include "platform/host_files.h"

namespace vf {
namespace {

std::string Blob(const vips::VImage& image, const char* name) {
  const void* data = nullptr;
  size_t length = 0;
  if (image.get_typeof(name) == 0 ||
      vips_image_get_blob(image.get_image(), name, &data, &length) != 0) {
    return {};
  }
  return std::string(static_cast<const char*>(data), length);
}

}  // namespace

std::optional<PictureHeader> ReadPictureHeader(const std::string& path) {
  Fd fd;
  if (OpenHostInput(path, &fd) != 0) return std::nullopt;
  // A JPEG's header is read here, at a small part of what starting a
  // decoder costs: a rebuild reads every picture's header again. Most fit
  // in the first 16 KB; a camera's EXIF with its preview may need more.
  for (const size_t bytes : {size_t{16} << 10, size_t{256} << 10}) {
    std::string start(bytes, '\0');
    const ssize_t got = ::pread(fd.get(), start.data(), start.size(), 0);
    start.resize(got > 0 ? static_cast<size_t>(got) : 0);
    if (std::optional<JpegHeader> jpeg = ReadJpegHeader(start)) {
      return PictureHeader{jpeg->width, jpeg->height, std::move(jpeg->exif), std::move(jpeg->xmp),
                           std::move(jpeg->iptc)};
    }
    if (start.size() < bytes || !start.starts_with("\xFF\xD8")) break;
  }
  try {
    // From the open file, so that a name holding "[" is not read as options.
    vips::VSource source = vips::VSource::new_from_descriptor(fd.get());
    vips::VImage image = vips::VImage::new_from_source(
        source, "", vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
    PictureHeader header;
    header.width = image.width();
    header.height = image.height();
    header.exif = Blob(image, VIPS_META_EXIF_NAME);
    header.xmp = Blob(image, VIPS_META_XMP_NAME);
    header.iptc = Blob(image, VIPS_META_IPTC_NAME);
    return header;
  } catch (const std::exception&) {
    vips_error_clear();
    return std::nullopt;
  }
}

bool StartPictureHeaders() {
  if (VIPS_INIT("vetrina-foto") == 0) return true;
  vips_error_clear();
  return false;
}

void EndPictureHeaderThread() { vips_thread_shutdown(); }

}  // namespace vf
