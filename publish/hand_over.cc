#include "publish/hand_over.h"

#include <utility>

#include "platform/case_fold.h"

namespace vf {

void BuiltSite::Add(AlbumCopy copy) {
  auto [at, added] = where_.try_emplace(ToLower(copy.copy), copies.size());
  if (added) {
    copies.push_back(std::move(copy));
  } else {
    copies[at->second] = std::move(copy);
  }
}

void BuiltSite::AddIndexPage(const std::string& page) {
  for (const std::string& known : index_pages) {
    if (ToLower(known) == ToLower(page)) return;
  }
  index_pages.push_back(page);
}

}  // namespace vf
