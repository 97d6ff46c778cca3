#include "publish/derive_copy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "platform/case_fold.h"
#include "platform/failure.h"
#include "platform/host_files.h"
#include "publish/host_site_disk.h"
#include "publish/picture.h"
#include "publish/site_names.h"

namespace vf {
namespace {

using What = Reason::What;

// The decoded memory a picture was let in with, given back when this goes.
// Declared before the picture, it goes after it, once its memory is free.
class Admitted {
 public:
  Admitted() = default;
  Admitted(const Admitted&) = delete;
  Admitted& operator=(const Admitted&) = delete;
  ~Admitted() {
    if (gate_) gate_->Release(cost_);
  }
  void Admit(MemoryGate* gate, int64_t cost) {
    gate->Admit(cost);
    gate_ = gate;
    cost_ = cost;
  }

 private:
  MemoryGate* gate_ = nullptr;
  int64_t cost_ = 0;
};

// What one size of the copy needs: its derived picture, its AVIF, or both.
struct Step {
  size_t size = 0;
  bool picture = false;
  bool avif = false;
};

}  // namespace

void MakeCopy(CopyJob* job, const AlbumFolder& album, const CopyRecord& copy,
              const std::vector<DerivedSize>& sizes, const std::optional<Reason>& unscalable,
              MemoryGate* gate) {
  CopyPlan& plan = job->plan;
  std::vector<Step> steps;
  for (size_t s : plan.to_make) steps.push_back({s, true, plan.avif});
  for (size_t s : plan.avif_to_make) steps.push_back({s, false, true});
  if (steps.empty()) return;
  const std::string& name = plan.name;
  const std::string avif_name = AvifName(name);
  auto folder = [&](size_t s) { return album.path + "/" + album.folders[s]; };
  // Where no AVIF of these pixels stands, none may, or a page would show a
  // stale picture in its place.
  auto no_avif = [&](size_t s) {
    if (!EqualIgnoringCase(avif_name, name)) ::unlink((folder(s) + "/" + avif_name).c_str());
  };
  auto avif_missing = [&](size_t s, const Reason& why) {
    job->avif_missing.push_back({s, {copy.source, folder(s) + "/" + avif_name, why}});
    no_avif(s);
  };
  Fd fd;
  struct stat st;
  if (int failure = OpenHostInput(copy.source, &fd);
      failure != kOk || ::fstat(fd.get(), &st) != 0) {
    const What what = failure == kFileNonTrovato ? What::kSourceMissing : What::kSourceUnreadable;
    const Reason why = ErrnoReason(what, failure != kOk ? ErrnoOf(failure) : errno, copy.source);
    for (const Step& step : steps) {
      if (step.picture) {
        plan.failed.push_back({step.size, {copy.source, folder(step.size) + "/" + name, why}});
      } else {
        avif_missing(step.size, why);
      }
    }
    return;
  }
  // Largest first, so that the smaller sizes are scaled from it.
  std::stable_sort(steps.begin(), steps.end(), [&](const Step& a, const Step& b) {
    return sizes[a.size].pixels > sizes[b.size].pixels;
  });
  const bool any_avif =
      std::any_of(steps.begin(), steps.end(), [](const Step& s) { return s.avif; });
  Admitted admitted;
  SourcePicture picture;
  const bool scalable = !unscalable && picture.Open(fd.get(), copy.source);
  if (scalable) {
    job->cost = picture.Cost(sizes[steps.front().size].pixels, steps.size() > 1 || any_avif);
    admitted.Admit(gate, job->cost);
  }
  auto entry = [&](size_t s, const struct stat& written, std::optional<Reason> plain, bool avif) {
    return DerivedEntry{album.folders[s],
                        sizes[s].pixels,
                        name,
                        SourceKey(copy.source),
                        st.st_size,
                        Nanoseconds(st),
                        written.st_size,
                        Nanoseconds(written),
                        std::move(plain),
                        avif};
  };
  for (size_t i = 0; i < steps.size(); ++i) {
    const size_t s = steps[i].size;
    // Kept in memory when it is saved twice or scaled down again.
    const bool scaled =
        scalable && picture.Scale(sizes[s].pixels, i + 1 < steps.size() || steps[i].avif);
    if (steps[i].picture) {
      std::optional<std::string> bytes;
      if (scaled) bytes = picture.Saved();
      struct stat written;
      const DiskResult result = WriteFileInPlace(
          folder(s), name,
          [&](int out) {
            if (bytes) return WriteAll(out, *bytes);
            if (::lseek(fd.get(), 0, SEEK_SET) != 0) return static_cast<int>(kErroreAccesso);
            return CopyHostData(fd.get(), out);
          },
          &written);
      if (!result.ok()) {
        plan.failed.push_back(
            {s, {copy.source, folder(s) + "/" + name, WriteReason(result.error, result.path)}});
        continue;
      }
      std::optional<Reason> plain;
      if (!bytes) plain = unscalable ? *unscalable : picture.why();
      job->made.push_back(entry(s, written, plain, false));
      if (plain) {
        plan.plain.push_back({s, {copy.source, folder(s) + "/" + name, *plain}});
        no_avif(s);
        continue;
      }
    } else if (!scaled) {
      avif_missing(s, unscalable ? *unscalable : picture.why());
      continue;
    }
    if (!steps[i].avif) continue;
    const std::optional<std::string> avif = picture.Avif();
    if (!avif) {
      avif_missing(s, picture.why());
      continue;
    }
    struct stat written;
    const DiskResult result = WriteFileInPlace(
        folder(s), avif_name, [&](int out) { return WriteAll(out, *avif); }, &written);
    if (!result.ok()) {
      avif_missing(s, WriteReason(result.error, result.path));
      continue;
    }
    job->made.push_back(entry(s, written, std::nullopt, true));
  }
}

}  // namespace vf
