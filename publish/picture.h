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

  // Why the picture could not be scaled, once Open or Scale failed.
  const Reason& why() const { return why_; }

  // The decoded memory, in bytes, that scaling costs at most when the
  // largest size is `largest` pixels: the decoded source (all of it where
  // the decoder holds the whole picture), and the scaled picture kept for
  // the smaller sizes when `keeps`. Only after a successful Open.
  int64_t Cost(int largest, bool keeps) const;

  // The picture scaled to fit `pixels` (never enlarged), upright, in sRGB,
  // without metadata, and saved in its own format (JPEG for TIFF and BMP);
  // nothing when it cannot be. The first call decodes the source, at the
  // least scale that serves; with `again` it keeps the result in memory and
  // later calls, for sizes no larger, scale that down instead: decoding a
  // camera JPEG costs more than all the rest, at any scale.
  std::optional<std::string> Scale(int pixels, bool again);

 private:
  vips::VImage Decode(int pixels) const;
  std::optional<std::string> Save(const vips::VImage& image, bool jpeg) const;
  // Always false, for Open to return: the picture is cut or else damaged.
  bool Damaged(PictureKind kind, std::string said);

  std::string path_;
  int fd_ = -1;
  std::optional<vips::VSource> source_;
  std::optional<vips::VImage> decoded_;
  PictureKind kind_ = PictureKind::kJpeg;
  bool to_srgb_ = false;
  int64_t width_ = 0, height_ = 0, bands_ = 0, band_bytes_ = 0, whole_factor_ = 1;
  Reason why_;
};

}  // namespace vf

#endif  // VF_PUBLISH_PICTURE_H_
