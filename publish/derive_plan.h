#ifndef VF_PUBLISH_DERIVE_PLAN_H_
#define VF_PUBLISH_DERIVE_PLAN_H_

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "publish/derived_pictures.h"
#include "publish/derived_record.h"
#include "publish/reason.h"
#include "publish/site_disk.h"

namespace vf {

// Deciding, before any picture is decoded, which derived pictures of a pass
// are still right and which must be made. Everything goes through a
// SiteDisk, so that the decisions can be followed without a disk.

// Problems of one picture, each with the index of its size, so that they can
// be told in the order of the sizes.
using SizeProblems = std::vector<std::pair<size_t, DeriveProblem>>;

// An album folder as a pass works in it.
struct AlbumFolder {
  std::string path;
  DerivedRecord record;
  std::vector<std::string> folders;              // per size, as written on disk
  std::vector<std::optional<Reason>> not_ready;  // per size: why its folder cannot be written in
  bool dirty = false;                    // the record changed since it was read or last written
  std::optional<Reason> record_failure;  // of the record's last write
  // Steps that failed at no cost to any picture: a record that cannot be
  // read (all is made again), a crash's leftover not removed, a case-only
  // rename that failed (the picture is made again).
  std::vector<DiskResult> harmless_failures;
};

// Reads the record of the album folder `path` (empty when there is none or
// it cannot be read) and makes each size's folder ready to write in, in
// capitals when `capitals` else in small letters: the folder there, the same
// in another case renamed, or a new one; a link is not followed, as it could
// lead out of the album. Temporary files that a crash left in a size folder
// (kDerivedTemporaryPrefix) are removed. A size whose folder cannot be made
// ready gets a kFolderNotMade reason with the failing call's errno and path.
AlbumFolder OpenAlbumFolder(SiteDisk& disk, const std::string& path,
                            const std::vector<DerivedSize>& sizes, bool capitals);

// What a pass must do for one copy.
struct CopyPlan {
  std::string name;             // the copy's file name
  std::vector<size_t> to_make;  // indices of the sizes to make, in order
  // Indices of the sizes whose derived picture stays but whose AVIF is made.
  std::vector<size_t> avif_to_make;
  // The derived pictures made get their AVIF beside them (AvifName,
  // publish/site_names.h): the pass makes AVIF and the copy's name is not one.
  bool avif = false;
  SizeProblems plain;   // sizes kept that are plain copies, with the recorded reason
  SizeProblems failed;  // sizes whose folder is not ready
};

// Decides, for each size of `copy` (whose file name in `album` is `name`),
// whether its derived picture stays or is made again. It stays when the
// record holds it for this source (path ignoring case, size, modification
// time) and these pixels, and the picture is itself as the record says it
// was written (size and modification time); when only the case of the size
// folder or of the name changed, it is renamed. Any other is made again, and
// its entry and its AVIF's are forgotten first, so that a crash meanwhile
// cannot leave a record that vouches for a stale picture: the record is then
// `dirty`, to be written before any picture is made. With `avif`, the AVIF
// beside a scaled picture that stays is decided the same way, by its own
// entry; a plain copy has none. Without, AVIF entries are left as they are.
CopyPlan PlanCopy(SiteDisk& disk, AlbumFolder* album, const CopyRecord& copy,
                  const std::string& name, const std::vector<DerivedSize>& sizes, bool avif);

// Writes the album's record when it is dirty, and keeps the outcome in
// `record_failure` (a reason with of_record set, or nothing).
void WriteRecordIfChanged(SiteDisk& disk, AlbumFolder* album);

}  // namespace vf

#endif  // VF_PUBLISH_DERIVE_PLAN_H_
