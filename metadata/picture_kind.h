#ifndef VF_METADATA_PICTURE_KIND_H_
#define VF_METADATA_PICTURE_KIND_H_

#include <optional>
#include <string_view>

namespace vf {

// The kinds of picture that get derived pictures. kHeif is any picture in an
// ISO file type box of a HEIF brand: a phone's HEIC, a HEIF and an AVIF, which
// share their container and their decoder.
enum class PictureKind { kJpeg, kPng, kGif, kWebp, kTiff, kBmp, kHeif, kJxl };

// The kind of picture the libvips decoder named `loader` reads; none for any
// other, so that no other decoder (PDF, SVG, ImageMagick's many) ever sees a
// file that only claims to be a picture.
std::optional<PictureKind> KindOfLoader(std::string_view loader);

// The kind of picture a file's first bytes announce, whether or not the rest
// can be read. A HEIF is told by its file type box, which `start` must hold
// whole to show every brand (64 bytes hold what phones and encoders write):
// heic, heix, hevc, hevx, heim, heis, mif1, msf1, avif or avis, as its major
// brand or a compatible one. A JPEG XL is its bare code stream or its
// container's signature box.
std::optional<PictureKind> KindOfStart(std::string_view start);

// True when the file type box at the start names an AVIF brand (avif, avis):
// its picture is compressed by AV1 rather than HEVC.
bool AnnouncesAvif(std::string_view start);

// True when a picture of `kind` that its decoder refused ends before its
// format's end: it lacks the end mark that a whole one has, or is shorter
// than its header says, or (HEIF, JPEG XL's container) a box runs past the
// end. Only the open file `fd` is asked (and left as it was): libvips' error
// text is shared by all threads, and another worker may have cleared or added
// to it.
bool LooksCut(int fd, PictureKind kind);

}  // namespace vf

#endif  // VF_METADATA_PICTURE_KIND_H_
