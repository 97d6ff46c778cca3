#ifndef VF_PUBLISH_REWRITTEN_PICTURE_H_
#define VF_PUBLISH_REWRITTEN_PICTURE_H_

#include <optional>
#include <string>
#include <string_view>

#include "publish/reason.h"

namespace vf {

// The pictures whose metadata is taken out by writing them again: their
// containers (TIFF's directories, HEIF's boxes) hold it in too many places to
// cut it out in place.
enum class RewriteKind { kTiff, kHeic, kAvif, kJxl };

// The kind a file's first bytes announce (a TIFF or BigTIFF header, an ISO
// file type box with a HEIF or AVIF brand, a JPEG XL code stream or
// container), whether or not the rest can be read; none for any other file.
std::optional<RewriteKind> RewriteKindOfStart(std::string_view start);

// The picture `bytes`, which starts as a `kind`, decoded by libvips and
// saved again in its own format with its colour profile and no other
// metadata, turned upright by its orientation: a TIFF losslessly (deflate),
// the others at quality 90. Nothing, with `why` set, when libvips has no
// decoder or saver for it, when it is damaged or cut, has several pages, or
// more than 100 million pixels. libvips must be started; runs on any thread.
std::optional<std::string> RewrittenPicture(const std::string& bytes, RewriteKind kind,
                                            Reason* why);

}  // namespace vf

#endif  // VF_PUBLISH_REWRITTEN_PICTURE_H_
