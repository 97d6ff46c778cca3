#ifndef VF_PUBLISH_CLEAN_COPIES_H_
#define VF_PUBLISH_CLEAN_COPIES_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "publish/derived_pictures.h"
#include "publish/reason.h"

namespace vf {

// An album copy the cleaning names to the user: the list entry's file and
// its copy (host paths), and for a copy that still carries its data, why.
struct CleanNote {
  std::string source;
  std::string copy;
  std::optional<Reason> why;
};

// What cleaning the album copies left to tell, in the order of the copies.
struct CleanOutcome {
  // Copies that lost a GPS position, a device's serial number or a person's
  // name (metadata/metadata_sift.h).
  size_t identifying = 0;
  // Copies that libvips wrote again, without metadata: TIFF, HEIF, AVIF
  // and JPEG XL, whose own structure is not cleaned in place.
  std::vector<CleanNote> rewritten;
  // Copies published as the build copied them, whatever they carry: a file
  // of a kind not cleaned (a video, a sound, text, a picture of another
  // kind), a cut or damaged picture, one too large to read safely (over
  // 512 MB, or 100 million pixels to decode), or one whose clean bytes
  // could not be written (the reason of the write).
  std::vector<CleanNote> carrying;
};

// Cleans each album copy of its metadata where it stands, for publishing.
// Only the copy is read, never the source. A JPEG, PNG, WebP or GIF is
// cleaned by CleanCopy and written again only when something was taken
// out; a TIFF is written again losslessly, a HEIF, AVIF or JPEG XL at high
// quality in its own format, upright by its orientation, with its colour
// profile and nothing else. A whole BMP, which has no place for metadata,
// and an empty file stay as they are, unnamed, and so does a copy that is
// not there (the build could not make it).
//
// Each file is written through a temporary file renamed over the copy
// (WriteFileInPlace), so a full disk leaves the byte copy whole. The copies
// are cleaned by `workers` threads, 0 for one per core. Every failure is
// reported in the outcome: nothing is thrown. libvips is started when a
// copy needs it, and its cache emptied at the end.
//
// With `stores`, a host folder of the user's cache, each site folder the
// copies stand in gets a store there (publish/clean_store.h): a copy whose
// source is as it was at the last build is not cleaned but replaced by the
// clean copy kept then, which tells what its cleaning told; every other
// copy that cleaning wrote again is kept for the next build, and what no
// copy of this build used is removed. Then the stores of sites that are
// gone or idle go too (publish/clean_store_prune.h). Whatever fails in a
// store only costs a cleaning, and is not reported.
CleanOutcome CleanCopies(const std::vector<CopyRecord>& copies, size_t workers = 0,
                         const std::string& stores = "");

}  // namespace vf

#endif  // VF_PUBLISH_CLEAN_COPIES_H_
