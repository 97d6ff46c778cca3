#include "publish/reason.h"

#include <array>
#include <system_error>
#include <utility>

#include "platform/failure.h"
#include "platform/host_files.h"

namespace vf {
namespace {

using What = Reason::What;

// Written into records on disk: a key may be added, never changed.
constexpr std::array<std::pair<What, std::string_view>, 14> kKeys = {{
    {What::kCut, "cut"},
    {What::kDamaged, "damaged"},
    {What::kUnknownFormat, "unknown-format"},
    {What::kNotAPicture, "not-a-picture"},
    {What::kTooLarge, "too-large"},
    {What::kScaleFailed, "scale-failed"},
    {What::kNoScaler, "no-scaler"},
    {What::kSourceMissing, "source-missing"},
    {What::kSourceUnreadable, "source-unreadable"},
    {What::kFolderNotMade, "folder-not-made"},
    {What::kDiskFull, "disk-full"},
    {What::kFolderMissing, "folder-missing"},
    {What::kWriteFailed, "write-failed"},
    {What::kAvifFailed, "avif-failed"},
}};

}  // namespace

Reason ErrnoReason(What what, int error, const std::string& path) {
  return {what, false, path + ": " + std::generic_category().message(error)};
}

Reason WriteReason(int error, const std::string& path) {
  const int failure = FailureFromErrno(error);
  const What what = failure == kDiscoPieno           ? What::kDiskFull
                    : failure == kPercorsoNonTrovato ? What::kFolderMissing
                                                     : What::kWriteFailed;
  return ErrnoReason(what, error, path);
}

std::string_view ReasonKey(What what) {
  for (const auto& [known, key] : kKeys) {
    if (known == what) return key;
  }
  return {};
}

std::optional<What> ReasonFromKey(std::string_view key) {
  for (const auto& [what, known] : kKeys) {
    if (known == key) return what;
  }
  return std::nullopt;
}

}  // namespace vf
