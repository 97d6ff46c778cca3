#ifndef VF_METADATA_PICTURE_KIND_H_
#define VF_METADATA_PICTURE_KIND_H_

#include <optional>
#include <string_view>

namespace vf {

// The kinds of picture that get derived pictures.
enum class PictureKind { kJpeg, kPng, kGif, kWebp, kTiff, kBmp };

// The kind of picture the libvips decoder named `loader` reads; none for any
// other, so that no other decoder (PDF, SVG, ImageMagick's many) ever sees a
// file that only claims to be a picture.
std::optional<PictureKind> KindOfLoader(std::string_view loader);

// The kind of picture a file's first bytes announce, whether or not the rest
// can be read.
std::optional<PictureKind> KindOfStart(std::string_view start);

// True when a picture of `kind` that its decoder refused ends before its
// format's end: it lacks the end mark that a whole one has, or is shorter
// than its header says. Only the open file `fd` is asked (and left as it
// was): libvips' error text is shared by all threads, and another worker may
// have cleared or added to it.
bool LooksCut(int fd, PictureKind kind);

}  // namespace vf

#endif  // VF_METADATA_PICTURE_KIND_H_
