#ifndef VF_PLATFORM_HOST_FILE_SYSTEM_H_
#define VF_PLATFORM_HOST_FILE_SYSTEM_H_

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/case_blind_file_system.h"
#include "platform/folder_cache.h"

namespace vf {

// A drive letter and the host folder it stands for.
struct DriveMapping {
  char letter = 'C';
  std::string host_folder;  // relative to the working folder at construction
  bool readonly = false;    // behaves like a CD-ROM: every change fails with 75
};

// The file layer on this host: Windows paths mapped onto host folders, names
// matched ignoring case. The current folder starts at the root of C: when C:
// is mapped, else at the root of the first drive given.
class HostFileSystem : public CaseBlindFileSystem {
 public:
  explicit HostFileSystem(const std::vector<DriveMapping>& drives);

  // Where a Windows path stands on the host, found as a read finds it (a last
  // part that matches nothing keeps its typed spelling); nothing for a path
  // that cannot be reached.
  std::optional<std::string> HostPath(const std::string& winpath);
  // A host path in Windows form under the drive whose folder holds it most
  // closely, such as C:\Users\x; nothing when no drive holds it.
  std::optional<std::string> WindowsPath(const std::string& host_path) const;

 protected:
  void BeginOperation() override { cache_.NextOperation(); }
  bool IsMapped(char drive) const override;
  bool IsReadOnly(char drive) const override;
  int CheckFolder(const Place& folder) override;
  int Find(const Place& folder, const std::string& part, std::optional<Match>* found) override;
  int ReadFile(const Place& file, std::unique_ptr<InputFile>* out) override;
  int WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) override;
  int CopyFile(const Place& from, const Place& to) override;
  bool SameFile(const Place& a, const Place& b) override;
  int MakeFolderAt(const Place& folder) override;
  int Move(const Place& from, const Place& to) override;
  int List(const Place& folder, FolderListing* listing) override;

 private:
  struct Drive {
    bool mapped = false;
    bool readonly = false;
    std::string root;  // absolute, without a trailing slash unless it is "/"
  };

  const Drive* DriveOf(char letter) const;
  std::string HostOf(const Place& place) const;
  std::string HostFolderOf(const Place& place) const;

  std::array<Drive, 26> drives_;
  FolderCache cache_;
};

}  // namespace vf

#endif  // VF_PLATFORM_HOST_FILE_SYSTEM_H_
