#ifndef VF_PUBLISH_PICTURE_H_
#define VF_PUBLISH_PICTURE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vips/vips8>

#include "metadata/picture_kind.h"
#include "publish/reason.h"

namespace vf {

// One source picture opened for scaling to any number of sizes, as libvips'
// own vipsthumbnail keeps one picture at a time. Every failure of libvips
// ends as "cannot be scaled" with a Reason whose detail is libvips' own
// error text, taken on this thread right after the failing call: no
// exception leaves. libvips must be started before. One picture belongs to
// one thread at a time.
class SourcePicture {
 public:
  // False when the picture cannot be scaled: not a kind that is derived,
  // unreadable, or too large to decode safely; why() tells which. `fd` is
  // the open source and stays the caller's; it must outlive the picture.
  // `path` names the same file, for the decoder that reads only files (BMP).
  bool Open(int fd, const std::string& path);

  // Why the picture could not be scaled or saved, once a call failed.
  const Reason& why() const { return why_; }

  // The decoded memory, in bytes, that scaling costs at most when the
  // largest size is `largest` pixels: the decoded source (all of it where
  // the decoder holds the whole picture), and the scaled picture when it is
  // kept (`keeps`). Only after a successful Open.
  int64_t Cost(int largest, bool keeps) const;

  // Scales the picture to fit `pixels` (never enlarged), upright, in sRGB
  // and without metadata, for Saved and Avif; false when it cannot be, and
  // why() tells why. The first call decodes the source, at the least scale
  // that serves. With `keep` the scaled picture is held in memory, so that it
  // is decoded once when saved twice (as itself and as AVIF), and later calls,
  // for sizes no larger, scale that down instead: decoding a camera JPEG
  // costs more than all the rest, at any scale.
  bool Scale(int pixels, bool keep);

  // The picture the last Scale made, saved in its own format (JPEG for TIFF,
  // BMP, HEIF and JPEG XL); nothing, with why() set, when it cannot be.
  std::optional<std::string> Saved();

  // The same pixels as an AVIF of 8 bits, compressed by AV1, without
  // metadata: what Saved writes, on white where that is a JPEG; nothing, with
  // why() set, when it cannot be.
  std::optional<std::string> Avif();

 private:
  vips::VImage Decode(int pixels) const;
  bool AsJpeg() const;
  // Always false, for Open to return: the picture is cut or else damaged.
  bool Damaged(PictureKind kind, std::string said);

  std::string path_;
  int fd_ = -1;
  std::optional<vips::VSource> source_;
  std::optional<vips::VImage> decoded_;  // the first scaled picture, when kept
  std::optional<vips::VImage> scaled_;   // the last
  PictureKind kind_ = PictureKind::kJpeg;
  bool to_srgb_ = false;
  int64_t width_ = 0, height_ = 0, bands_ = 0, band_bytes_ = 0, whole_factor_ = 1;
  Reason why_;
};

}  // namespace vf

#endif  // VF_PUBLISH_PICTURE_H_
