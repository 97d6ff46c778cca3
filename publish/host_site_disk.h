#ifndef VF_PUBLISH_HOST_SITE_DISK_H_
#define VF_PUBLISH_HOST_SITE_DISK_H_

#include <sys/stat.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "publish/site_disk.h"

namespace vf {

// The site on the host's own disk, through lstat, mkdir, rename, unlink.
// Holds nothing: any number may be used at once, from any thread.
class HostSiteDisk : public SiteDisk {
 public:
  DiskResult Stat(const std::string& path, DiskStatus* status) override;
  DiskResult Lstat(const std::string& path, DiskStatus* status) override;
  DiskResult List(const std::string& folder, std::vector<std::string>* names) override;
  DiskResult MakeFolder(const std::string& path) override;
  DiskResult Rename(const std::string& from, const std::string& to) override;
  DiskResult Remove(const std::string& path) override;
  DiskResult Read(const std::string& path, std::string* content) override;
  DiskResult Write(const std::string& folder, const std::string& name,
                   std::string_view content) override;
};

// Writes the file `name` of `folder`: `fill` writes the whole content into
// the descriptor it is given, a temporary file of the same folder whose name
// starts with kDerivedTemporaryPrefix, and returns kOk or a failure number of
// the file layer (platform/failure.h); only then is the file renamed into
// place, so the name shows the old content or the new one and never a part.
// On a failure the temporary file is removed (one that stays is a leftover
// the next pass clears). The result names the errno and path of the step
// that failed; a failure of `fill` is given the errno that the file layer
// would have turned into the same number. The file gets the mode any new
// file gets (0666 less the umask), so a web server can read it. With
// `written`, the file's status as written is stored there on success.
DiskResult WriteFileInPlace(const std::string& folder, const std::string& name,
                            const std::function<int(int)>& fill, struct stat* written = nullptr);

// The errno of a call of the file layer (platform/host_files.h) that has
// just failed with `failure`: errno itself when the file layer would turn it
// into that number, else one that it would (the layer reports some failures,
// a source that is no plain file, without an errno of their own).
int ErrnoOf(int failure);

// The modification time of a status, in ns since 1970.
int64_t Nanoseconds(const struct stat& st);

}  // namespace vf

#endif  // VF_PUBLISH_HOST_SITE_DISK_H_
