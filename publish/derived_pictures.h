#ifndef VF_PUBLISH_DERIVED_PICTURES_H_
#define VF_PUBLISH_DERIVED_PICTURES_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "publish/reason.h"
#include "publish/site_disk.h"

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

// A picture the pass could not make as asked, and why.
struct DeriveProblem {
  // The source picture (a host path); for a record that could not be
  // written, the album folder.
  std::string source;
  std::string derived;  // the derived picture (or the record) concerned
  // The front end puts it into words for the user (desktop/reason_words.h);
  // its detail, libvips' or the system's own text, is for a log.
  Reason why;
};

// What a pass left to tell the user, in the order of the copies and then of
// the sizes.
struct DeriveOutcome {
  // Derived pictures that are a plain byte copy of their source, since it
  // could not be read or scaled: a damaged or cut file, a file that is no
  // picture or of a kind not derived, one too large to decode safely (over
  // 100 million pixels where the decoder holds the whole picture, as for
  // GIF, BMP, TIFF, HEIF, JPEG XL, progressive JPEG and interlaced PNG).
  // Their links work all the same.
  std::vector<DeriveProblem> plain_copies;
  // Derived pictures that could not be written at all (the source is gone,
  // the disk is full, a file stands where the size folder should be), and
  // after them the album folders whose record could not be written.
  std::vector<DeriveProblem> failed;
  // Scaled pictures whose AVIF (`derived` names it) could not be encoded
  // (kAvifFailed) or written (the disk is full...): none stands beside them,
  // and the pages show the picture alone. The next pass tries again.
  std::vector<DeriveProblem> avif_missing;
  // Steps that failed at no cost to any picture, for whoever looks into a
  // pass: a record that could not be read or a case-only rename that failed
  // (their pictures were made again), a crash's leftover that could not be
  // removed. Not meant for the user.
  std::vector<DiskResult> harmless_failures;
  // The progress callback asked to stop; the pictures not reached are left
  // as they were.
  bool stopped = false;
  // The most decoded memory, in bytes, that one picture was estimated to
  // need, and that the pictures in work held at once.
  int64_t largest_cost = 0;
  int64_t peak_cost = 0;
};

// What a pass makes beside the derived pictures, and how it uses the machine.
struct DeriveOptions {
  // An AVIF beside each scaled picture (the sizes file's "avif si"); without,
  // none is written, and those an earlier pass wrote stay as they are.
  bool avif = false;
  // Pictures made at once; 0 for one per core.
  size_t workers = 0;
  // Decoded memory, in bytes, that the pictures in work may hold together;
  // 0 for DefaultDecodeBudget() (publish/derived_memory.h).
  int64_t memory_budget = 0;
};

// True when `folder` may name a size folder: not empty, no "/" or "\" or NUL
// in it, and not starting with "." (which rules out "." and "..", and keeps
// clear of the record and of the temporary files, which are hidden). A size
// whose folder is not safe is left out by DerivePictures, and so is one whose
// folder repeats an earlier one in any case; the caller should refuse both
// before, with a message.
bool SizeFolderIsSafe(const std::string& folder);

// True when the path ends in an extension, in any case, of a picture that
// gets derived pictures: jpg, jpeg, png, gif, webp, tif, tiff, bmp, heic,
// heif, hif, avif, jxl. What the file holds decides how it is read.
bool IsDerivablePicture(const std::string& path);

// Makes the web-sized pictures of the copies whose SOURCE is a derivable
// picture: for each such copy and each size,
//   <album folder of copy>/<size folder>/<file name of copy>
// with the size folder in capitals ("MINI") when `capitals` is set, else in
// small letters ("mini"). A derived picture is the source scaled down so its
// longest side is at most the size's pixels (never enlarged), turned upright
// by its orientation (its EXIF's, or a HEIF's own transforms), and with no
// metadata (no EXIF, GPS, XMP, IPTC, comment). Its colours are in sRGB,
// turned so from any other profile (CMYK too): as a page takes a picture
// without a profile to be sRGB, none is kept, since sRGB's own weighs more
// than a small picture. The source's kind
// is told by its content, not its name: the derived picture is in the
// source's own format for JPEG, PNG, GIF (the first frame) and WebP, and JPEG
// for TIFF, BMP, HEIC, HEIF, AVIF and JPEG XL, under the copy's name either
// way. A source that cannot be scaled gives a plain copy (see DeriveOutcome).
// With `options.avif`, each scaled picture gets an AVIF of the same pixels
// beside it, <size folder>/AvifName(copy name) (publish/site_names.h); a
// plain copy gets none.
//
// Each derived picture is written through a temporary file renamed into
// place, so its name never shows a part of a picture. Nothing is written
// outside the size folders but the record of each album folder (see
// publish/derived_record.h). A derived picture whose source (its path
// ignoring case, its size and its modification time) and pixels are those
// the record holds, and which is itself as the record says it was written
// (its size and modification time), is kept as it is, file and time; when
// only the case of its folder or name changed, they are renamed. A derived
// picture that anyone else changed is made again. An AVIF is kept or made
// again the same way, by its own entry: turning AVIF on makes only the AVIF
// pictures, and turning it off makes nothing.
//
// `progress(done, total)` is called on the caller's thread after each
// picture with all its sizes, `total` being the number of derivable copies;
// when it returns false the pass stops after the pictures in hand. The
// pictures are made by `options.workers` threads, and a picture starts only
// when the decoded memory it is estimated to need (its pixels, bands and
// bytes per band, more for the decoders that hold the whole picture) fits
// beside the pictures in work within `options.memory_budget`; a picture
// that alone exceeds the budget is made alone. Every failure is reported in
// the outcome: nothing is thrown.
//
// One pass at a time works in a site: the pass holds an exclusive flock on
// each folder that holds its album folders (the site's folder), opened
// read-only, from before it reads the records until it has written them; a
// second pass into the same site waits meanwhile. A folder that cannot be
// locked is worked in all the same. No file is added to the site for this.
//
// libvips is started on the first call and stays; its operation cache is
// emptied when a pass ends, so no source stays open. Its warnings about
// damaged pictures go to the standard error through GLib's log.
DeriveOutcome DerivePictures(const std::vector<CopyRecord>& copies,
                             const std::vector<DerivedSize>& sizes, bool capitals,
                             const std::function<bool(size_t, size_t)>& progress,
                             const DeriveOptions& options = {});

}  // namespace vf

#endif  // VF_PUBLISH_DERIVED_PICTURES_H_
