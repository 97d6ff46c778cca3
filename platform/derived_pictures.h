#ifndef VF_PLATFORM_DERIVED_PICTURES_H_
#define VF_PLATFORM_DERIVED_PICTURES_H_

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vf {

// One web size of the albums: its pictures go to the subfolder `folder` of
// each album folder, their longest side at most `pixels`.
struct DerivedSize {
  std::string folder;  // e.g. "mini"; written in the case the build chooses
  int pixels = 0;
};

// A picture of an album: the original (`source`) and its numbered copy in an
// album folder (`copy`, e.g. ".../dir_0001/img_001.jpg"). Both host paths.
struct CopyRecord {
  std::string source;
  std::string copy;
};

// What a pass left to tell the user. Paths are those of derived pictures, in
// the order of the copies and then of the sizes.
struct DeriveOutcome {
  // Derived pictures that are a plain byte copy of their source, since it
  // could not be read or scaled (a damaged file, a file that is no picture,
  // one too large to decode safely: over 100 million pixels where the
  // decoder holds the whole picture, as for GIF, BMP, TIFF, progressive JPEG
  // and interlaced PNG). Their links work all the same.
  std::vector<std::string> plain_copies;
  // Derived pictures that could not be written at all: the source is gone,
  // the disk is full, a file stands where the size folder should be.
  std::vector<std::string> failed;
  // The progress callback asked to stop; the pictures not reached are left
  // as they were.
  bool stopped = false;
};

// True when `folder` may name a size folder: not empty, no "/" or "\" or NUL
// in it, and not starting with "." (which rules out "." and "..", and keeps
// clear of the record and of the temporary files, which are hidden). A size
// whose folder is not safe is left out by DerivePictures, and so is one whose
// folder repeats an earlier one in any case; the caller should refuse both
// before, with a message.
bool SizeFolderIsSafe(const std::string& folder);

// True when the path ends in an extension, in any case, of a picture that
// gets derived pictures: jpg, jpeg, png, gif, webp, tif, tiff, bmp.
bool IsDerivablePicture(const std::string& path);

// Makes the web-sized pictures of the copies whose SOURCE is a derivable
// picture: for each such copy and each size,
//   <album folder of copy>/<size folder>/<file name of copy>
// with the size folder in capitals ("MINI") when `capitals` is set, else in
// small letters ("mini"). A derived picture is the source scaled down so its
// longest side is at most the size's pixels (never enlarged), turned upright
// by its EXIF orientation, and with no metadata (no EXIF, GPS, XMP, IPTC,
// comment). Its colours are in sRGB, turned so from any other profile
// (CMYK too): as a page takes a picture without a profile to be sRGB, none is
// kept, since sRGB's own weighs more than a small picture. It is in the source's own format for
// JPEG, PNG, GIF (the first frame) and WebP, and JPEG for TIFF and BMP, under the copy's name
// either way. A source that cannot be scaled gives a plain copy (see DeriveOutcome).
//
// Each derived picture is written through a temporary file renamed into
// place, so its name never shows a part of a picture. Nothing is written
// outside the size folders but the record of each album folder (see
// platform/derived_record.h). A derived picture whose source (its path
// ignoring case, its size and its modification time) and pixels are those
// the record holds is kept as it is, file and time; when only the case of
// its folder or name changed, they are renamed.
//
// `progress(done, total)` is called on the caller's thread after each
// picture with all its sizes, `total` being the number of derivable copies;
// when it returns false the pass stops after the pictures in hand. The
// pictures are made by as many threads as there are cores. Every failure is
// reported in the outcome: nothing is thrown.
//
// libvips is started on the first call and stays; its operation cache is
// emptied when a pass ends, so no source stays open. Its warnings about
// damaged pictures go to the standard error through GLib's log.
DeriveOutcome DerivePictures(const std::vector<CopyRecord>& copies,
                             const std::vector<DerivedSize>& sizes, bool capitals,
                             const std::function<bool(size_t, size_t)>& progress);

}  // namespace vf

#endif  // VF_PLATFORM_DERIVED_PICTURES_H_
