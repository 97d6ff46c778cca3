#ifndef VF_PUBLISH_REASON_H_
#define VF_PUBLISH_REASON_H_

#include <optional>
#include <string>
#include <string_view>

namespace vf {

// Why a derived picture is a plain copy of its source, or could not be
// written at all. A plain value: the engine fills it where the failure
// happens and hands it up unchanged; the front end chooses the words the
// user reads (desktop/reason_words.h).
struct Reason {
  enum class What {
    // The source could not be scaled; its derived picture is a byte copy.
    kCut,            // the file ends before its format says it does
    kDamaged,        // whole, but its decoder refused it
    kUnknownFormat,  // a picture, of a kind that gets no derived pictures
    kNotAPicture,    // no decoder knows it
    kTooLarge,       // more pixels than may be decoded safely; `detail` is "WIDTHxHEIGHT"
    kScaleFailed,    // scaled, but the saved bytes were refused
    kNoScaler,       // libvips could not be started
    kAvifFailed,     // scaled, but the AVIF beside it could not be encoded
    // Nothing could be written.
    kSourceMissing,     // the source is gone
    kSourceUnreadable,  // the source is there but cannot be read
    kFolderNotMade,     // the size folder is not there and cannot be made
    kDiskFull,          // the write found the disk full (or the quota)
    kFolderMissing,     // the write found its folder gone
    kWriteFailed,       // the write failed otherwise
  };

  What what = What::kWriteFailed;
  // The write that failed is the album's record, not a derived picture
  // (only with kDiskFull, kFolderMissing, kWriteFailed).
  bool of_record = false;
  // For whoever looks into a failure: libvips' own error text, the failing
  // call's errno text and path, or the picture's dimensions for kTooLarge.
  std::string detail;

  bool operator==(const Reason&) const = default;
};

// The reason for a call that failed with `error` (an errno) on `path`:
// detail "PATH: ERRNO TEXT".
Reason ErrnoReason(Reason::What what, int error, const std::string& path);

// The reason for a write that failed with `error` (an errno) on `path`: a
// full disk or quota, a folder gone on the way, or anything else, as the
// file layer tells them apart (platform/host_files.h).
Reason WriteReason(int error, const std::string& path);

// A short ASCII name of `what` that never changes, for the record of the
// derived pictures ("cut", "too-large"...), and back; nothing for a name
// that is not one.
std::string_view ReasonKey(Reason::What what);
std::optional<Reason::What> ReasonFromKey(std::string_view key);

}  // namespace vf

#endif  // VF_PUBLISH_REASON_H_
