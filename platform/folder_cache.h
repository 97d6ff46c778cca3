#ifndef VF_PLATFORM_FOLDER_CACHE_H_
#define VF_PLATFORM_FOLDER_CACHE_H_

#include <dirent.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/case_blind_file_system.h"

namespace vf {

// "dir/name", for a host folder that may be the root "/".
std::string JoinHostPath(const std::string& dir, const std::string& name);
// The kind of a host path after symbolic links, told by the type its folder
// listing gave when that is enough; what cannot be reached, a dangling link
// for instance, counts as a system file.
FolderEntry::Kind HostKind(const std::string& path, unsigned char dirent_type = DT_UNKNOWN);

// Finds host names ignoring case without listing a folder once per path. The
// names of a folder are kept once read and held true in two ways: the file
// layer reports its own changes here, and a folder changed by anyone else
// shows a new modification time when it is next consulted, which makes it
// read again.
class FolderCache {
 public:
  // The name in the host folder `dir` that matches `part` ignoring case: the
  // exact spelling when there is one, else the first in name order. Fails
  // with 76 when `dir` is not a folder.
  int Find(const std::string& dir, const std::string& part, std::optional<NameMatch>* found);

  // A new operation of the file layer starts: a folder is checked again for
  // changes made by anyone else when it is next consulted. Within one
  // operation a folder is checked once, since a change made meanwhile could
  // as well have come a moment later.
  void NextOperation() { ++operation_; }

  // The file layer made `name` in `dir`, or removed it, or moved it.
  void Added(const std::string& dir, const std::string& name, FolderEntry::Kind kind);
  void Moved(const std::string& from_dir, const std::string& from_name, const std::string& to_dir,
             const std::string& to_name);
  // A folder moved: what was kept of it and of the folders below it is gone.
  void ForgetTree(const std::string& dir);

 private:
  // What a folder's modification shows in; the identity catches a folder
  // replaced by another one.
  struct Stamp {
    dev_t device = 0;
    ino_t inode = 0;
    int64_t modified_ns = 0;
    int64_t changed_ns = 0;

    bool operator==(const Stamp&) const = default;
  };
  struct Name {
    std::string name;
    unsigned char type;  // a dirent type; links and unknowns are looked at each time
  };
  struct Folder {
    Stamp stamp;
    uint64_t checked = 0;  // the operation that last found the stamp current
    std::unordered_map<std::string, std::vector<Name>> by_lower;
  };
  using Folders = std::unordered_map<std::string, Folder>;

  static int StampOf(const std::string& dir, Stamp* stamp);
  // Reads the folder's names anew.
  int Load(const std::string& dir, Folders::iterator* it);
  // The folder's names, read again when it changed since.
  int Current(const std::string& dir, Folders::iterator* it);
  void Restamp(const std::string& dir);
  static const Name* Pick(const Folder& folder, const std::string& part);
  static void Insert(Folder* folder, const std::string& name, unsigned char type);
  static unsigned char Remove(Folder* folder, const std::string& name);

  Folders folders_;
  uint64_t operation_ = 1;
};

}  // namespace vf

#endif  // VF_PLATFORM_FOLDER_CACHE_H_
