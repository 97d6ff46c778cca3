#ifndef VF_PUBLISH_DERIVED_RECORD_H_
#define VF_PUBLISH_DERIVED_RECORD_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "publish/reason.h"

namespace vf {

// What made one derived picture of an album folder, or the AVIF beside it:
// enough to tell, at the next build, whether the picture under that name is
// still the right one.
struct DerivedEntry {
  std::string folder;     // the size folder as written on disk ("mini", "MINI")
  int pixels = 0;         // the size's longest side when it was made
  std::string copy_name;  // the copy's file name as written on disk
  std::string source;     // SourceKey of the source's path
  int64_t bytes = 0;      // the source's size
  int64_t mtime_ns = 0;   // the source's modification time, in ns since 1970
  // The derived picture as this program wrote it: anyone else's change to
  // it changes one of these, and the picture is made again.
  int64_t made_bytes = 0;
  int64_t made_mtime_ns = 0;
  // For a byte copy of the source, why it could not be scaled. The file
  // keeps its detail only for kTooLarge, where it is the dimensions.
  std::optional<Reason> plain;
  // The entry is of the AVIF beside the derived picture of `copy_name`
  // (AvifName, publish/site_names.h), never a plain copy.
  bool avif = false;
};

// How the record knows a source: the SHA-256, in hexadecimal, of its host
// path folded to small letters. The record is published with the site, so
// it keeps no readable path of the owner's machine (no user name, no folder
// names), only what tells one source from another.
std::string SourceKey(std::string_view host_path);

// The record of the derived pictures of one album folder, kept in the hidden
// file `.derivate` in that folder. It is text: the first line is
// "vetrina-derivate 5", then one line per derived picture or AVIF with ten
// fields separated by a tab:
//
//   folder pixels copy_name source bytes mtime_ns made_bytes made_mtime_ns kind why
//
// kind is "s" for a scaled picture and "a" for the AVIF beside it, with `why`
// empty, and "c" for a plain copy, with `why` the key of its reason
// (ReasonKey, publish/reason.h),
// followed for kTooLarge by a space and the dimensions ("too-large
// 60000x60000"). In the text fields a backslash, tab, line feed and carriage return are written as
// \\ \t \n \r. A line that does not read as such is left out, and a file
// with another first line (an older record too) is read as empty: the
// pictures it spoke of are then made again, which is always safe.
//
// Entries are found by size folder, copy name ignoring case and whether they
// are of an AVIF, so that a build that only changes the case of the names
// finds what an earlier one made.
class DerivedRecord {
 public:
  static constexpr std::string_view kFileName = ".derivate";

  // The record of the text of a record file; what cannot be read is left
  // out, as above.
  static DerivedRecord Parse(std::string_view text);

  // The entry for the size folder and copy name, of the AVIF beside its
  // derived picture with `avif`, or null; the pointer lives until the record
  // next changes.
  const DerivedEntry* Find(std::string_view folder, std::string_view copy_name,
                           bool avif = false) const;
  // Adds the entry, replacing the one of the same folder, name and kind.
  void Put(DerivedEntry entry);
  void Erase(std::string_view folder, std::string_view copy_name, bool avif = false);
  size_t size() const { return entries_.size(); }

  std::string Text() const;

 private:
  std::map<std::string, DerivedEntry> entries_;
};

}  // namespace vf

#endif  // VF_PUBLISH_DERIVED_RECORD_H_
