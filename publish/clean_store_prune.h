#ifndef VF_PUBLISH_CLEAN_STORE_PRUNE_H_
#define VF_PUBLISH_CLEAN_STORE_PRUNE_H_

#include <set>
#include <string>

namespace vf {

// Removes from `stores` (a host folder of the user's cache) the stores of
// clean copies (publish/clean_store.h) that no build will take back from:
// those whose site file names a folder that is no longer there, and those
// that no build used for 60 days (their folder's modification time), so
// that the cache never grows without bound. The stores named in `in_use`
// (their folders' names) are left alone, and so is one that another pass
// holds locked or whose site cannot be told to be gone. Nothing is
// reported: a store that stays costs room, never a picture.
void PruneCleanStores(const std::string& stores, const std::set<std::string>& in_use);

}  // namespace vf

#endif  // VF_PUBLISH_CLEAN_STORE_PRUNE_H_
