#ifndef VF_METADATA_METADATA_SIFT_H_
#define VF_METADATA_METADATA_SIFT_H_

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

// What cleaning a published copy took out, as its owner is told it. Each
// flag is set from the metadata that went: EXIF (in a JPEG's APP1, a PNG's
// eXIf, a WebP's EXIF chunk), XMP (APP1, iTXt, the XMP chunk, GIF's XMP
// extension), IPTC (APP13) and PNG's texts; exif_read.h lists what is read.
struct Removed {
  bool position = false;  // a GPS position
  bool device = false;    // the device's serial number
  bool person = false;    // a person's name: artist, owner, creator, by-line
  bool anything = false;  // any metadata at all: the copy is not as it was
  int orientation = 0;    // the EXIF orientation written back, 2 to 8; 0 for none
};

// Cleans a copy of a list entry for publishing, in place, by its own format
// (JPEG, PNG, WebP or GIF): what identifies a person, a place or a device
// goes, while the compressed picture, its colour profile and an orientation
// other than upright stay, so the copy shows as its source did. False, with
// the bytes untouched and `removed` all unset, when they are not a whole,
// well-formed file of one of those formats.
//  JPEG: every APPn segment but APP0 (JFIF), APP14 (Adobe) and the ICC
//  profile's APP2 goes, and so do comments and whatever follows the end of
//  image; the orientation (of the first EXIF block) goes back in a segment
//  of its own, right after the opening APP0 or else right after SOI.
//  PNG: eXIf, the texts and tIME go, and whatever follows IEND; the
//  orientation goes back in an eXIf chunk of its own where eXIf was.
//  WebP: the EXIF and XMP chunks go, and whatever follows the RIFF size; the
//  orientation goes back in an EXIF chunk of its own where EXIF was, when
//  there is a VP8X header to flag it.
//  GIF: comments and XMP's application extension go, and whatever follows
//  the trailer.
bool CleanCopy(std::string* bytes, Removed* removed);

}  // namespace vf

#endif  // VF_METADATA_METADATA_SIFT_H_
