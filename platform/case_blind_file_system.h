#ifndef VF_PLATFORM_CASE_BLIND_FILE_SYSTEM_H_
#define VF_PLATFORM_CASE_BLIND_FILE_SYSTEM_H_

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "platform/windows_path.h"

namespace vf {

// The name a storage holds for a typed one, and what it is.
struct NameMatch {
  std::string name;
  FolderEntry::Kind kind = FolderEntry::kFile;
};

// The Windows path rules of the file layer, shared by every storage: drives,
// the current folder, names matched ignoring case (an exact match first, else
// the first in name order), the typed spelling of targets, refused names and
// the failure numbers. A storage only supplies the few primitives below,
// which always get names exactly as they stand in it.
class CaseBlindFileSystem : public FileSystem {
 public:
  int OpenInput(const std::string& path, std::unique_ptr<InputFile>* file) override;
  int OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) override;
  int Copy(const std::string& from, const std::string& to) override;
  int MakeFolder(const std::string& path) override;
  int Rename(const std::string& from, const std::string& to) override;
  int SetCurrentFolder(const std::string& path) override;
  int SetCurrentDrive(const std::string& drive) override;
  FolderListing ListFolder(const std::string& path) override;
  int Attributes(const std::string& path, int* attributes) override;
  std::string Normalize(const std::string& path) override;
  std::string CurrentFolder() override;

 protected:
  // A place in the storage: a drive and the names below its root, spelled as
  // they stand in the storage; a last name that matched nothing is as typed.
  struct Place {
    char drive = 'C';
    std::vector<std::string> names;

    bool operator==(const Place&) const = default;
  };
  using Match = NameMatch;
  // A path looked up: `typed` is the path as the program gave it, `place`
  // where it stands. `found` tells whether the last name exists (a root
  // always does); every folder above it exists.
  struct Resolved {
    ParsedPath typed;
    Place place;
    bool found = false;
    FolderEntry::Kind kind = FolderEntry::kFolder;
  };

  explicit CaseBlindFileSystem(char current_drive) { current_.drive = current_drive; }

  // Looks a path up. Fails with 52 for a refused name, 76 for a drive that is
  // not mapped or a folder of the path that is missing, and, when `change` is
  // set, 75 on a read-only drive.
  int Resolve(const std::string& path, bool change, Resolved* out);
  int Parse(const std::string& path, ParsedPath* out) const {
    return ParseWindowsPath(path, current_, out);
  }

  // Called first by each operation above: what the layer learnt of the
  // disk during one operation may be trusted until the next one starts.
  virtual void BeginOperation() {}
  virtual bool IsMapped(char drive) const = 0;
  virtual bool IsReadOnly(char drive) const = 0;
  // kOk when the existing folder at `folder` is there, else 76.
  virtual int CheckFolder(const Place& folder) = 0;
  // The name of the folder `folder` that matches `part` ignoring case: the
  // exact spelling when present, else the first in name order. *found stays
  // empty when nothing matches.
  virtual int Find(const Place& folder, const std::string& part, std::optional<Match>* found) = 0;
  virtual int ReadFile(const Place& file, std::unique_ptr<InputFile>* out) = 0;
  // Creates the file or empties the existing plain file; anything else that
  // is not a folder is replaced by a new plain file.
  virtual int WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) = 0;
  // Copies a plain file over a target that is missing or is not a folder,
  // whole or not at all.
  virtual int CopyFile(const Place& from, const Place& to) = 0;
  virtual bool SameFile(const Place& a, const Place& b) = 0;
  virtual int MakeFolderAt(const Place& folder) = 0;
  // Moves an existing entry to a place that is free or is the entry itself.
  virtual int Move(const Place& from, const Place& to) = 0;
  // The names of an existing folder in any order, with the folder's identity.
  virtual int List(const Place& folder, FolderListing* listing) = 0;

 private:
  // A text ending in a backslash names a folder, so it never names a file:
  // "C:\sito\dir_0001\" must not make a file called dir_0001.
  static bool NamesMissingFolder(const Resolved& r);
  // A plain file to read: 53 when it is missing, 75 when it is no plain file.
  int ResolveSource(const std::string& path, Resolved* r);
  // A file to write: anything but a folder or a drive's root, else 75.
  int ResolveTarget(const std::string& path, Resolved* r);
  // Gives an existing target the typed spelling of its last part.
  int TakeTypedSpelling(const Resolved& target, Place* place);

  ParsedPath current_;
};

}  // namespace vf

#endif  // VF_PLATFORM_CASE_BLIND_FILE_SYSTEM_H_
