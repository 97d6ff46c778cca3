#ifndef VF_PUBLISH_DERIVED_RECORD_H_
#define VF_PUBLISH_DERIVED_RECORD_H_

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace vf {

// Temporary files of the derived pictures and of the record start with this,
// so that a later build can tell the leftovers of a crash from anything else.
inline constexpr std::string_view kDerivedTemporaryPrefix = ".derivate-";

// Writes the file `name` of `folder`: `fill` writes the whole content into
// the descriptor it is given, a temporary file of the same folder, and
// returns kOk; only then is the file renamed into place, so the name shows
// the old content or the new one and never a part. On a failure the
// temporary file is removed. The failure number (platform/failure.h) of what
// went wrong, or `fill`'s, kOk on success. The file gets the mode any new
// file gets (0666 less the umask), so a web server can read it. With
// `written`, the file's status as written is stored there on success.
int WriteFileInPlace(const std::string& folder, const std::string& name,
                     const std::function<int(int)>& fill, struct stat* written = nullptr);

// What made one derived picture of an album folder: enough to tell, at the
// next build, whether the picture under that name is still the right one.
struct DerivedEntry {
  std::string folder;     // the size folder as written on disk ("mini", "MINI")
  int pixels = 0;         // the size's longest side when it was made
  std::string copy_name;  // the copy's file name as written on disk
  std::string source;     // the source's path folded to lower case
  int64_t bytes = 0;      // the source's size
  int64_t mtime_ns = 0;   // the source's modification time, in ns since 1970
  // The derived picture as this program wrote it: anyone else's change to
  // it changes one of these, and the picture is made again.
  int64_t made_bytes = 0;
  int64_t made_mtime_ns = 0;
  bool plain = false;  // a byte copy of the source: it could not be scaled
  std::string cause;   // for a plain copy, why (see DeriveProblem)
};

// The record of the derived pictures of one album folder, kept in the hidden
// file `.derivate` in that folder. It is text: the first line is
// "vetrina-derivate 2", then one line per derived picture with ten fields
// separated by a tab:
//
//   folder pixels copy_name source bytes mtime_ns made_bytes made_mtime_ns kind cause
//
// kind is "s" for a scaled picture and "c" for a plain copy. In the text
// fields a backslash, tab, line feed and carriage return are written as
// \\ \t \n \r. A line that does not read as such is left out, and a file
// with another first line (an older record too) is read as empty: the
// pictures it spoke of are then made again, which is always safe.
//
// Entries are found by size folder and copy name ignoring case, so that a
// build that only changes the case of the names finds what an earlier one
// made.
class DerivedRecord {
 public:
  static constexpr std::string_view kFileName = ".derivate";

  // The record of the album folder; empty when there is none or it cannot
  // be read.
  static DerivedRecord Read(const std::string& album);
  static DerivedRecord Parse(std::string_view text);

  // The entry for the size folder and copy name, or null; the pointer lives
  // until the record next changes.
  const DerivedEntry* Find(std::string_view folder, std::string_view copy_name) const;
  // Adds the entry, replacing the one of the same folder and name.
  void Put(DerivedEntry entry);
  void Erase(std::string_view folder, std::string_view copy_name);
  size_t size() const { return entries_.size(); }

  std::string Text() const;
  // Writes the record into the album folder through a temporary file that is
  // renamed into place, so a reader sees the old record or the new one. The
  // failure number (platform/failure.h) of what went wrong, kOk on success.
  int Write(const std::string& album) const;

 private:
  std::map<std::string, DerivedEntry> entries_;
};

}  // namespace vf

#endif  // VF_PUBLISH_DERIVED_RECORD_H_
