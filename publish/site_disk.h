#ifndef VF_PUBLISH_SITE_DISK_H_
#define VF_PUBLISH_SITE_DISK_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vf {

// Temporary files of the derived pictures and of the record start with this,
// so that a later pass can tell the leftovers of a crash from anything else.
inline constexpr std::string_view kDerivedTemporaryPrefix = ".derivate-";

// How one operation on the site ended: `error` is 0, or the errno of the
// call that failed, and `path` the path that call named.
struct DiskResult {
  int error = 0;
  std::string path;

  bool ok() const { return error == 0; }
};

// What a name on the site is, and for a file its size and modification time.
struct DiskStatus {
  enum class Type { kFile, kFolder, kOther };
  Type type = Type::kOther;
  int64_t bytes = 0;
  int64_t mtime_ns = 0;  // since 1970
};

// The few operations that deciding what to remake, and making the size
// folders ready, need of the site's disk: the host's (publish/host_site_disk.h)
// or, in the tests, one in memory. Paths are host paths; every operation
// reports its failure in its result, throws nothing, and sets its output
// only on success.
class SiteDisk {
 public:
  virtual ~SiteDisk() = default;

  // The status of the file `path` leads to, following links.
  virtual DiskResult Stat(const std::string& path, DiskStatus* status) = 0;
  // The status of the name `path` itself: a link is kOther.
  virtual DiskResult Lstat(const std::string& path, DiskStatus* status) = 0;
  // The names in `folder`, without "." and "..", in no order.
  virtual DiskResult List(const std::string& folder, std::vector<std::string>* names) = 0;
  // Makes the folder, with the mode a new folder gets.
  virtual DiskResult MakeFolder(const std::string& path) = 0;
  // Renames as rename(2) does: an existing file at `to` is replaced.
  virtual DiskResult Rename(const std::string& from, const std::string& to) = 0;
  virtual DiskResult Remove(const std::string& path) = 0;
  // The whole content of a plain file.
  virtual DiskResult Read(const std::string& path, std::string* content) = 0;
  // Writes `name` in `folder` so that the name shows the old content or all
  // of the new, never a part, through a temporary file whose name starts
  // with kDerivedTemporaryPrefix.
  virtual DiskResult Write(const std::string& folder, const std::string& name,
                           std::string_view content) = 0;
};

}  // namespace vf

#endif  // VF_PUBLISH_SITE_DISK_H_
