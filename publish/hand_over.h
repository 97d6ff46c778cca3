#ifndef VF_PUBLISH_HAND_OVER_H_
#define VF_PUBLISH_HAND_OVER_H_

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace vf {

// A picture of the list that a build copied into an album folder: the
// entry's file and its numbered copy, both Windows paths as the build wrote
// them, the album's number and the copy's place in it (from 1).
struct AlbumCopy {
  std::string source;
  std::string copy;
  int64_t album = 0;
  int64_t place = 0;
};

// What a finished build hands to the publishing pass.
struct BuiltSite {
  // The album copies in the order made, the last one to each target only: a
  // paged build may write a target twice, and the last copy is what stands
  // there.
  std::vector<AlbumCopy> copies;
  bool capitals = false;  // the case the build chose for the site's names
  // The index pages the build opened, Windows paths in the order opened:
  // where a page ended up after the fallbacks of a failed write, and each
  // page of a paged build. Each once, whatever its case.
  std::vector<std::string> index_pages;

  // Notes a copy the build made; one to a target already noted (in any
  // case, as the file layer matches names) takes its place.
  void Add(AlbumCopy copy);
  void AddIndexPage(const std::string& page);

 private:
  std::unordered_map<std::string, size_t> where_;  // by target folded to small letters
};

// The second half of a build, which the front end provides and the build
// commands call by name once the site's files are written, before the
// preview question. It shows what it has to say through the user
// operations, and may end the program (FineProgramma) when the user asks to
// while it works. The front end owns it; it outlives the logic.
class PublishingStep {
 public:
  virtual ~PublishingStep() = default;
  virtual void Publish(const BuiltSite& site) = 0;
};

// The step of a program that publishes nothing beyond the build's own files.
class NoPublishing : public PublishingStep {
 public:
  void Publish(const BuiltSite&) override {}
};

}  // namespace vf

#endif  // VF_PUBLISH_HAND_OVER_H_
