#include "publish/picture.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "metadata/metadata_sift.h"

namespace vf {
namespace {

using What = Reason::What;

constexpr int kJpegQuality = 82;
constexpr int kWebpQuality = 80;
// The AVIF's quality is the one whose butteraugli distance (Debian's
// butteraugli, its largest) from the scaled picture matches the JPEG's at
// kJpegQuality, over the twelve photographs of Debian's mate-backgrounds
// (nature/) at 480 and 1600 pixels, at this effort: JPEG 2.25 on average,
// AVIF 2.35 at Q76, 2.27 at Q78, 2.22 at Q79, 2.03 at Q82, 1.85 at Q85, in
// 55% of the JPEG's bytes at Q78. (Alone, the 1600-pixel pictures match at
// Q82, the 480-pixel ones below Q76.) The effort is the highest that keeps
// the pass with AVIF within 2.5 times the pass without over camera pictures
// (bench/derived_avif.sh): 1.8 times at effort 1, 3.1 at 2, 5.0 at 3.
constexpr int kAvifQuality = 78;
constexpr int kAvifEffort = 1;
// Decoders that read line by line keep little in memory whatever the size,
// so only time bounds them; the others hold the whole picture (a GIF costs
// about 9 bytes a pixel; HEIF and JPEG XL are decoded whole by their
// libraries), so two of them at once must stay well inside a small machine's
// memory.
constexpr int64_t kMaxStreamedPixels = int64_t{1} << 30;
constexpr int64_t kMaxWholePixels = 100'000'000;
// What the whole-picture decoders hold beyond the decoded pixels: a GIF is
// decoded into a canvas and a frame, a BMP goes through ImageMagick's own
// 16-bit copy before libvips gets it.
constexpr int64_t kWholeFactor = 2;
constexpr int64_t kBmpFactor = 5;

// libvips' error text, taken and cleared under libvips' own lock.
std::string TakeVipsError() {
  const std::unique_ptr<char, decltype(&g_free)> text(vips_error_buffer_copy(), g_free);
  return text ? std::string(text.get()) : std::string();
}

bool Flag(const vips::VImage& image, const char* field) {
  return image.get_typeof(field) != 0 && image.get_int(field) != 0;
}

// A deeper picture brought to 8 bits a band, by its colour space: a plain
// cast would clip 16-bit values.
vips::VImage EightBits(vips::VImage image) {
  if (image.format() == VIPS_FORMAT_UCHAR) return image;
  return image.colourspace(image.bands() < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB);
}

// JPEG keeps 8 bits and no transparency: a transparent picture is laid on
// white, as a page would show it.
vips::VImage ForJpeg(vips::VImage image) {
  image = EightBits(image);
  if (image.has_alpha()) {
    image = image.flatten(vips::VImage::option()->set("background", std::vector<double>{255}));
  }
  return image;
}

// The savers that ignore `strip` write what the image carries.
vips::VImage WithoutMetadata(const vips::VImage& image) {
  vips::VImage copy = image.copy();
  const std::unique_ptr<char*, decltype(&g_strfreev)> fields(
      vips_image_get_fields(copy.get_image()), g_strfreev);
  for (char** field = fields.get(); *field; ++field) copy.remove(*field);
  return copy;
}

// The image saved by the saver of `suffix`; throws as libvips does.
std::string Written(const vips::VImage& image, const char* suffix, vips::VOption* options) {
  void* buffer = nullptr;
  size_t size = 0;
  image.write_to_buffer(suffix, &buffer, &size, options);
  const std::unique_ptr<void, decltype(&g_free)> owned(buffer, g_free);
  return std::string(static_cast<const char*>(buffer), size);
}

}  // namespace

bool SourcePicture::Open(int fd, const std::string& path) {
  char first[64] = {};  // a HEIF's file type box, with all its brands
  const ssize_t got = ::pread(fd, first, sizeof first, 0);
  const std::optional<PictureKind> announced =
      KindOfStart(std::string_view(first, got > 0 ? static_cast<size_t>(got) : 0));
  try {
    path_ = path;
    fd_ = fd;
    source_ = vips::VSource::new_from_descriptor(fd);
    const char* loader = vips_foreign_find_load_source(source_->get_source());
    std::optional<PictureKind> kind = loader ? KindOfLoader(loader) : std::nullopt;
    // ImageMagick reads BMP, and only from a file; it is trusted with
    // nothing but what starts as a BMP does.
    if (!kind && announced == PictureKind::kBmp) kind = PictureKind::kBmp;
    if (!kind) {
      std::string said = TakeVipsError();  // cleared even when a decoder was found
      if (loader) said = std::string("decoder ") + loader;
      if (announced) return Damaged(*announced, std::move(said));
      why_ = {loader ? What::kUnknownFormat : What::kNotAPicture, false, std::move(said)};
      return false;
    }
    kind_ = *kind;
    vips::VImage header =
        kind_ == PictureKind::kBmp
            ? vips::VImage::new_from_file(
                  path_.c_str(), vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL))
            : vips::VImage::new_from_source(
                  *source_, "", vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
    whole_factor_ = kind_ == PictureKind::kBmp ? kBmpFactor : kWholeFactor;
    if ((kind_ == PictureKind::kJpeg && !Flag(header, "jpeg-multiscan")) ||
        (kind_ == PictureKind::kPng && !Flag(header, "interlaced")) ||
        kind_ == PictureKind::kWebp) {
      whole_factor_ = 1;
    }
    width_ = header.width();
    height_ = header.height();
    bands_ = header.bands();
    band_bytes_ = static_cast<int>(vips_format_sizeof(header.format()));
    if (width_ * height_ > (whole_factor_ == 1 ? kMaxStreamedPixels : kMaxWholePixels)) {
      why_ = {What::kTooLarge, false, std::to_string(width_) + "x" + std::to_string(height_)};
      return false;
    }
    to_srgb_ = header.get_typeof(VIPS_META_ICC_NAME) != 0 ||
               header.interpretation() == VIPS_INTERPRETATION_CMYK;
    return true;
  } catch (const std::exception& e) {
    vips_error_clear();
    return Damaged(announced.value_or(kind_), e.what());
  }
}

int64_t SourcePicture::Cost(int largest, bool keeps) const {
  int64_t cost = width_ * height_ * bands_ * band_bytes_ * whole_factor_;
  if (keeps) {
    const int64_t longest = std::max<int64_t>({width_, height_, 1});
    const int64_t scale = std::min<int64_t>(largest, longest);
    cost += (width_ * scale / longest + 1) * (height_ * scale / longest + 1) * bands_ * band_bytes_;
  }
  return cost;
}

bool SourcePicture::Scale(int pixels, bool keep) {
  try {
    vips::VImage image;
    if (decoded_) {
      image = decoded_->thumbnail_image(
          pixels, vips::VImage::option()->set("height", pixels)->set("size", VIPS_SIZE_DOWN));
    } else {
      image = Decode(pixels);
    }
    if (AsJpeg()) image = ForJpeg(image);
    if (keep) {
      image = image.copy_memory();
      if (!decoded_) decoded_ = image;
    }
    scaled_ = image;
    return true;
  } catch (const std::exception& e) {
    vips_error_clear();
    scaled_.reset();
    return Damaged(kind_, e.what());
  }
}

// The source scaled to fit `pixels`, upright, in sRGB and with no metadata,
// so that scaling it again neither turns nor converts it twice.
vips::VImage SourcePicture::Decode(int pixels) const {
  vips::VOption* options = vips::VImage::option()
                               ->set("height", pixels)
                               ->set("size", VIPS_SIZE_DOWN)
                               ->set("fail_on", VIPS_FAIL_ON_ERROR);
  // A picture with its own profile (or CMYK) is turned into sRGB, what a
  // page takes a picture without a profile to be; the others are sRGB
  // already. So no profile is kept: sRGB's would weigh more than a small
  // picture.
  if (to_srgb_) options->set("export_profile", "srgb");
  // Some libvips versions pass `fail_on` to no decoder but a file's, so a
  // source's decoder is also told through its option string.
  if (kind_ != PictureKind::kBmp) options->set("option_string", "fail_on=error");
  vips::VImage image = kind_ == PictureKind::kBmp
                           ? vips::VImage::thumbnail(path_.c_str(), pixels, options)
                           : vips::VImage::thumbnail_source(*source_, pixels, options);
  return WithoutMetadata(image);
}

bool SourcePicture::AsJpeg() const {
  return kind_ != PictureKind::kPng && kind_ != PictureKind::kGif && kind_ != PictureKind::kWebp;
}

std::optional<std::string> SourcePicture::Saved() {
  if (!scaled_) return std::nullopt;
  vips::VOption* options = vips::VImage::option()->set("strip", true);
  const char* suffix = ".jpg";
  bool (*sift)(std::string*) = SiftJpeg;
  if (AsJpeg()) {
    options->set("Q", kJpegQuality);
  } else if (kind_ == PictureKind::kPng) {
    suffix = ".png";
    sift = SiftPng;
  } else if (kind_ == PictureKind::kGif) {
    suffix = ".gif";
    sift = nullptr;  // the GIF saver writes no metadata
  } else {
    suffix = ".webp";
    sift = SiftWebp;
    options->set("Q", kWebpQuality);
  }
  try {
    std::string bytes = Written(*scaled_, suffix, options);
    if (sift && !sift(&bytes)) {
      why_ = {What::kScaleFailed, false, "the saved picture's metadata cannot be sifted"};
      return std::nullopt;
    }
    return bytes;
  } catch (const std::exception& e) {
    // A picture not kept in memory is decoded as it is saved.
    vips_error_clear();
    Damaged(kind_, e.what());
    return std::nullopt;
  }
}

std::optional<std::string> SourcePicture::Avif() {
  if (!scaled_) return std::nullopt;
  try {
    // libvips' HEIF saver writes AV1 only when told, and more than 8 bits
    // for a deeper picture; none of its metadata is wanted.
    return Written(WithoutMetadata(EightBits(*scaled_)), ".heif",
                   vips::VImage::option()
                       ->set("strip", true)
                       ->set("compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1)
                       ->set("bitdepth", 8)
                       ->set("Q", kAvifQuality)
                       ->set("effort", kAvifEffort));
  } catch (const std::exception& e) {
    vips_error_clear();
    why_ = {What::kAvifFailed, false, e.what()};
    return std::nullopt;
  }
}

bool SourcePicture::Damaged(PictureKind kind, std::string said) {
  // Whether the file is cut is read from the file itself, never from
  // libvips' words, which another thread may have changed.
  why_ = {LooksCut(fd_, kind) ? What::kCut : What::kDamaged, false, std::move(said)};
  return false;
}

}  // namespace vf
