#ifndef VF_PUBLISH_CLEAN_STORE_H_
#define VF_PUBLISH_CLEAN_STORE_H_

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/host_files.h"
#include "publish/clean_index.h"
#include "publish/derived_pictures.h"

namespace vf {

// The clean copies of one site, kept from one build to the next so that a
// copy whose source has not changed is not cleaned again: every build writes
// a fresh byte copy, and cleaning it would write all its bytes a second time.
//
// A store is the folder `stores`/<PathDigest of the site's folder>, made
// with mode 0700 (and so is any folder above it that is made), outside the
// site, which is uploaded whole. It holds a hard link to each clean copy the
// last build made, named by the PathDigest of the copy's host path, the
// index of what each one is (publish/clean_index.h), and the file `sito`:
// the site folder's host path and a line feed, by which a store whose site
// is gone is found (publish/clean_store_prune.h). A stored file and its copy
// are one file, so the store takes no room while the site stands.
//
// A store never costs a picture and reports nothing: when its folder cannot
// be made or locked or would stand inside the site, it keeps nothing; when
// link(2) refuses (another file system), the disk is full or a file is not
// as the index says, the copy is cleaned as it would be without a store.
// One pass at a time uses a store: it holds an exclusive flock on the
// store's folder, opened read-only, from its opening until Finish; a second
// pass waits meanwhile.
class CleanStore {
 public:
  static constexpr std::string_view kSiteFile = "sito";

  // Opens, making it when missing, the store of the site folder `site` in
  // `stores` (host paths); with `stores` or `site` empty it keeps nothing.
  CleanStore(const std::string& stores, const std::string& site);

  // True when the store keeps copies.
  bool usable() const { return !folder_.empty(); }
  // The store's folder, "" when it keeps nothing.
  const std::string& folder() const { return folder_; }

  // Puts the stored clean copy of `copy` in the copy's place, through a
  // hidden link in the copy's folder renamed over it, when the index has the
  // copy, the source has the key, size and modification time it had and the
  // stored file the size, time and inode it was linked with; the entry,
  // which tells what cleaning the copy came to. Nothing, with the copy
  // untouched, when any of it differs, the copy is not there (the build
  // could not make it) or a link or rename fails. No data is read or
  // written. Safe from any number of threads at once.
  std::optional<StoredClean> Reuse(const CopyRecord& copy) const;

  // Links the clean copy `copy` into the store, through a hidden name
  // renamed into place, and gives its entry. `copied` is the byte copy's
  // status before cleaning and `written` the clean file's, as written;
  // `result` is what the cleaning came to. Nothing is kept for kCarrying,
  // nor when the source's size differs from the byte copy's or it changed
  // (its change time) after the byte copy was made, nor when the link fails. Safe from any
  // number of threads at once.
  std::optional<StoredClean> Keep(const CopyRecord& copy, const struct stat& copied,
                                  const struct stat& written, CleanResult result) const;

  // Writes the index of `kept` (the entries this pass took back or kept, by
  // the PathDigest of their copies) and the site file, removes every other
  // file of the store (copies no longer built, a crash's leftovers) and
  // lets the store go; a store that keeps nothing is removed whole.
  void Finish(const CleanIndex& kept);

 private:
  std::string folder_;  // empty when the store keeps nothing
  std::string site_;
  Fd lock_;
  CleanIndex index_;
};

// The site folder of an album copy: the folder of its album folder ("/a/Sito"
// for "/a/Sito/dir_0001/img_001.jpg"); "" when the path has no such folder.
std::string SiteFolderOf(const std::string& copy);

}  // namespace vf

#endif  // VF_PUBLISH_CLEAN_STORE_H_
