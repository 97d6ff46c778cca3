#ifndef VF_PUBLISH_CLEAN_INDEX_H_
#define VF_PUBLISH_CLEAN_INDEX_H_

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace vf {

// What cleaning one album copy came to, as its owner is told it
// (publish/clean_copies.h): nothing worth a word, identifying data taken
// out, the picture written again, or the copy still carrying its data.
enum class CleanResult { kQuiet, kIdentifying, kRewritten, kCarrying };

// A clean copy that a site's store keeps for the next build: what it was
// made from, the stored file as this program linked it, and what cleaning
// it came to, so that a build that takes it back tells the same.
struct StoredClean {
  std::string source;        // SourceKey of the source's host path
  int64_t source_bytes = 0;  // the source's size
  int64_t source_mtime_ns = 0;
  // The stored file, which is the clean copy itself (a hard link): anyone
  // else's write to it changes one of these, and it is not taken back.
  int64_t bytes = 0;
  int64_t mtime_ns = 0;
  uint64_t inode = 0;
  // kQuiet, kIdentifying or kRewritten: a copy that still carries its data
  // has no clean file to keep.
  CleanResult result = CleanResult::kQuiet;

  bool operator==(const StoredClean&) const = default;
};

// The SHA-256, in hexadecimal, of a host path as it is: it names a copy in
// a store, and a site's store among the others, without a readable path.
std::string PathDigest(std::string_view host_path);

// The index of a site's store, the file `indice` in its folder. It is text:
// the first line is "vetrina-pulite 1", then one line per stored copy with
// eight fields separated by a tab:
//
//   copy source source_bytes source_mtime_ns bytes mtime_ns inode result
//
// copy is the PathDigest of the copy's host path, which is also the stored
// file's name; source is the SourceKey of its source (both 64 hexadecimal
// digits in small letters); result is "quiet", "identifying" or "rewritten".
// A line that does not read as such is left out, and a file with another
// first line is read as empty: its copies are then cleaned again, which is
// always safe.
class CleanIndex {
 public:
  static constexpr std::string_view kFileName = "indice";

  static CleanIndex Parse(std::string_view text);

  // The entry of the copy's digest, or null; the pointer lives until the
  // index next changes.
  const StoredClean* Find(std::string_view copy) const;
  // Adds the entry, replacing the one of the same copy.
  void Put(std::string copy, StoredClean entry);
  size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }

  std::string Text() const;

 private:
  std::map<std::string, StoredClean, std::less<>> entries_;
};

}  // namespace vf

#endif  // VF_PUBLISH_CLEAN_INDEX_H_
