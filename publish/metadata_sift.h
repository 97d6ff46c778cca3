#ifndef VF_PUBLISH_METADATA_SIFT_H_
#define VF_PUBLISH_METADATA_SIFT_H_

#include <string>

namespace vf {

// The savers of some libvips versions write EXIF (made afresh from the image
// size) or keep XMP and the profile whatever they are told, so the saved
// bytes are sifted: only the picture stays. Each takes a whole file of its
// format and rewrites it in place; false, with the bytes untouched, when they
// are not a whole, well-formed file of that format.

// JPEG: the APP segments but JFIF (APP0) and Adobe's colour transform
// (APP14) go, and so do comments.
bool SiftJpeg(std::string* bytes);
// PNG: the profile, EXIF, texts (where XMP lives too) and the time stamp go.
bool SiftPng(std::string* bytes);
// WebP: the profile, EXIF and XMP chunks go, with their flags in the VP8X
// header.
bool SiftWebp(std::string* bytes);

// What cleaning a published copy took out, as its owner is told it.
struct Removed {
  bool position = false;  // a GPS position
  bool device = false;    // the device's serial number
  bool person = false;    // a person's name: artist, owner, creator, by-line
  bool anything = false;  // any metadata at all
};

// Cleans a copy of a list entry for publishing, in place, by its own format
// (JPEG, PNG, WebP or GIF): what identifies a person, a place or a device
// goes, while the compressed picture, its colour profile and an orientation
// other than upright stay, so the copy shows as its source did. False, with
// the bytes untouched, when they are not a whole, well-formed file of one of
// those formats.
bool CleanCopy(std::string* bytes, Removed* removed);

}  // namespace vf

#endif  // VF_PUBLISH_METADATA_SIFT_H_
