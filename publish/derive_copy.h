#ifndef VF_PUBLISH_DERIVE_COPY_H_
#define VF_PUBLISH_DERIVE_COPY_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "publish/derive_plan.h"
#include "publish/derived_memory.h"
#include "publish/derived_pictures.h"
#include "publish/derived_record.h"
#include "publish/reason.h"

namespace vf {

// One copy of a pass: what the plan decided, then what its worker did.
struct CopyJob {
  size_t copy = 0;
  size_t album = 0;
  CopyPlan plan;
  // Filled by the worker that makes the job, read once it is finished: the
  // entries of the pictures written, and the sizes whose AVIF is missing.
  std::vector<DerivedEntry> made;
  SizeProblems avif_missing;
  int64_t cost = 0;  // the decoded memory it was let in with
};

// Makes what the plan of `job` asks for one copy of `album`, once `gate` lets
// its decoded memory in: each derived picture in `to_make`, scaled, or a
// plain byte copy of the source when it cannot be scaled, or when
// `unscalable` says that libvips is not there; and the AVIF beside each
// scaled picture when the plan asks for AVIF, and for the sizes of
// `avif_to_make` (whose derived picture stays) the AVIF alone. The source is
// decoded once, the largest size first. Every file goes through a temporary
// one renamed into place. A picture that could not be written goes to the
// plan's `failed`, a plain copy to its `plain`; an AVIF that could not be
// encoded or written to `avif_missing`, and then no AVIF stays under its
// name, nor beside a derived picture made again as a plain copy, so that no
// page shows a stale one. Runs on a worker thread and touches nothing but
// the job.
void MakeCopy(CopyJob* job, const AlbumFolder& album, const CopyRecord& copy,
              const std::vector<DerivedSize>& sizes, const std::optional<Reason>& unscalable,
              MemoryGate* gate);

}  // namespace vf

#endif  // VF_PUBLISH_DERIVE_COPY_H_
