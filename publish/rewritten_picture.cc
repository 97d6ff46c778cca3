#include "publish/rewritten_picture.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vips/vips8>

#include "metadata/picture_kind.h"

namespace vf {
namespace {

using namespace std::string_view_literals;
using What = Reason::What;

constexpr int kQuality = 90;
constexpr int64_t kMostPixels = 100'000'000;

std::string_view LoaderOf(RewriteKind kind) {
  switch (kind) {
    case RewriteKind::kTiff:
      return "VipsForeignLoadTiff";
    case RewriteKind::kJxl:
      return "VipsForeignLoadJxl";
    case RewriteKind::kHeic:
    case RewriteKind::kAvif:
      break;
  }
  return "VipsForeignLoadHeif";
}

// The colour profile stays, so that the picture shows as it did; the
// savers write whatever else the image carries.
vips::VImage WithProfileOnly(const vips::VImage& image) {
  vips::VImage copy = image.copy();
  const std::unique_ptr<char*, decltype(&g_strfreev)> fields(
      vips_image_get_fields(copy.get_image()), g_strfreev);
  for (char** field = fields.get(); *field; ++field) {
    if (std::string_view(*field) != VIPS_META_ICC_NAME) copy.remove(*field);
  }
  return copy;
}

// libvips' HEIF saver writes AVIF when told to compress by AV1.
const char* SuffixOf(RewriteKind kind) {
  return kind == RewriteKind::kTiff ? ".tif" : kind == RewriteKind::kJxl ? ".jxl" : ".heif";
}

std::string Saved(const vips::VImage& image, RewriteKind kind) {
  // The HEIF saver makes an EXIF block afresh (sizes, resolution) unless
  // told to strip, which would drop the profile too.
  vips::VOption* options =
      vips::VImage::option()->set("strip", image.get_typeof(VIPS_META_ICC_NAME) == 0);
  if (kind == RewriteKind::kTiff) {
    options->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE);
  } else if (kind == RewriteKind::kJxl) {
    options->set("Q", kQuality);
  } else {
    options->set("Q", kQuality)
        ->set("compression", kind == RewriteKind::kAvif ? VIPS_FOREIGN_HEIF_COMPRESSION_AV1
                                                        : VIPS_FOREIGN_HEIF_COMPRESSION_HEVC);
  }
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(SuffixOf(kind), &buffer, &size, options);
  const std::unique_ptr<void, decltype(&g_free)> owned(buffer, g_free);
  return std::string(static_cast<const char*>(buffer), size);
}

}  // namespace

std::optional<RewriteKind> RewriteKindOfStart(std::string_view start) {
  for (std::string_view tiff : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
    if (start.starts_with(tiff)) return RewriteKind::kTiff;
  }
  const std::optional<PictureKind> kind = KindOfStart(start);
  if (kind == PictureKind::kJxl) return RewriteKind::kJxl;
  if (kind == PictureKind::kHeif)
    return AnnouncesAvif(start) ? RewriteKind::kAvif : RewriteKind::kHeic;
  return std::nullopt;
}

std::optional<std::string> RewrittenPicture(const std::string& bytes, RewriteKind kind,
                                            Reason* why) {
  // No other decoder (ImageMagick's above all) reads what only claims to be
  // one of these, and a format libvips cannot save stays as it is.
  const char* loader = vips_foreign_find_load_buffer(bytes.data(), bytes.size());
  const char* saver = vips_foreign_find_save_buffer(SuffixOf(kind));
  vips_error_clear();
  if (!loader || !std::string_view(loader).starts_with(LoaderOf(kind)) || !saver) {
    *why = {What::kUnknownFormat, false, !saver ? "no saver" : loader ? loader : "no decoder"};
    return std::nullopt;
  }
  try {
    vips::VImage image = vips::VImage::new_from_buffer(
        bytes, "", vips::VImage::option()->set("fail_on", VIPS_FAIL_ON_ERROR));
    if (image.get_typeof(VIPS_META_N_PAGES) != 0 && image.get_int(VIPS_META_N_PAGES) > 1) {
      *why = {What::kUnknownFormat, false, "several pages"};
      return std::nullopt;
    }
    if (int64_t{image.width()} * image.height() > kMostPixels) {
      *why = {What::kTooLarge, false,
              std::to_string(image.width()) + "x" + std::to_string(image.height())};
      return std::nullopt;
    }
    return Saved(WithProfileOnly(image.autorot()), kind);
  } catch (const std::exception& e) {
    vips_error_clear();
    *why = {What::kDamaged, false, e.what()};
    return std::nullopt;
  }
}

}  // namespace vf
