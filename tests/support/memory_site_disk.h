#ifndef VF_TESTS_SUPPORT_MEMORY_SITE_DISK_H_
#define VF_TESTS_SUPPORT_MEMORY_SITE_DISK_H_

#include <cerrno>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "publish/site_disk.h"

namespace vf::test {

// A site disk in memory for the tests: a map of absolute paths ("/a/b"),
// case-sensitive, whose files have a content and a modification time. It
// keeps a line for each operation that changes it, and fails the operations
// it is told to.
class MemorySiteDisk : public SiteDisk {
 public:
  struct Node {
    DiskStatus::Type type = DiskStatus::Type::kFile;
    std::string content = {};
    int64_t mtime_ns = 0;
    std::string link_to = {};  // for a link (kOther): what Stat follows to
  };

  MemorySiteDisk() { PutFolder("/"); }

  // Setting up, with no checks and no line in changes().
  void PutFolder(const std::string& path) { nodes_[path] = {.type = DiskStatus::Type::kFolder}; }
  void PutFile(const std::string& path, std::string content, int64_t mtime_ns) {
    nodes_[path] = {.content = std::move(content), .mtime_ns = mtime_ns};
  }
  void PutLink(const std::string& path, const std::string& to) {
    nodes_[path] = {.type = DiskStatus::Type::kOther, .link_to = to};
  }
  void Drop(const std::string& path) { nodes_.erase(path); }
  Node* Find(const std::string& path) {
    auto found = nodes_.find(path);
    return found == nodes_.end() ? nullptr : &found->second;
  }
  // The next `operation` ("list", "mkdir", "rename", "remove", "read",
  // "write", "stat", "lstat") on `path` (the first path for a rename, the
  // folder for a write) fails with `error`.
  void Fail(const std::string& operation, const std::string& path, int error) {
    failures_[{operation, path}] = error;
  }
  // "mkdir P", "rename A > B", "remove P", "write P", in order.
  const std::vector<std::string>& changes() const { return changes_; }

  DiskResult Stat(const std::string& path, DiskStatus* status) override {
    const Node* node = Find(path);
    if (node && node->type == DiskStatus::Type::kOther && !node->link_to.empty()) {
      return Stat(node->link_to, status);
    }
    return StatusOf("stat", path, status);
  }
  DiskResult Lstat(const std::string& path, DiskStatus* status) override {
    return StatusOf("lstat", path, status);
  }
  DiskResult List(const std::string& folder, std::vector<std::string>* names) override {
    if (DiskResult failed = Check("list", folder); !failed.ok()) return failed;
    if (DiskResult failed = NeedFolder(folder); !failed.ok()) return failed;
    names->clear();
    for (const auto& [path, node] : nodes_) {
      if (path != "/" && Parent(path) == folder) names->push_back(path.substr(folder.size() + 1));
    }
    return {};
  }
  DiskResult MakeFolder(const std::string& path) override {
    if (DiskResult failed = Check("mkdir", path); !failed.ok()) return failed;
    if (nodes_.contains(path)) return {EEXIST, path};
    if (DiskResult failed = NeedFolder(Parent(path)); !failed.ok()) return {failed.error, path};
    changes_.push_back("mkdir " + path);
    PutFolder(path);
    return {};
  }
  DiskResult Rename(const std::string& from, const std::string& to) override {
    if (DiskResult failed = Check("rename", from); !failed.ok()) return failed;
    if (!nodes_.contains(from)) return {ENOENT, from};
    if (DiskResult failed = NeedFolder(Parent(to)); !failed.ok()) return {failed.error, from};
    changes_.push_back("rename " + from + " > " + to);
    // The name and everything below it move.
    std::map<std::string, Node> moved;
    for (auto it = nodes_.begin(); it != nodes_.end();) {
      if (it->first == from || it->first.starts_with(from + "/")) {
        moved[to + it->first.substr(from.size())] = std::move(it->second);
        it = nodes_.erase(it);
      } else {
        ++it;
      }
    }
    for (auto& [path, node] : moved) nodes_[path] = std::move(node);
    return {};
  }
  DiskResult Remove(const std::string& path) override {
    if (DiskResult failed = Check("remove", path); !failed.ok()) return failed;
    const Node* node = Find(path);
    if (!node) return {ENOENT, path};
    if (node->type == DiskStatus::Type::kFolder) return {EISDIR, path};
    changes_.push_back("remove " + path);
    nodes_.erase(path);
    return {};
  }
  DiskResult Read(const std::string& path, std::string* content) override {
    if (DiskResult failed = Check("read", path); !failed.ok()) return failed;
    const Node* node = Find(path);
    if (!node) return {ENOENT, path};
    if (node->type != DiskStatus::Type::kFile) return {EISDIR, path};
    *content = node->content;
    return {};
  }
  DiskResult Write(const std::string& folder, const std::string& name,
                   std::string_view content) override {
    if (DiskResult failed = Check("write", folder); !failed.ok()) return failed;
    if (DiskResult failed = NeedFolder(folder); !failed.ok()) return failed;
    changes_.push_back("write " + folder + "/" + name);
    PutFile(folder + "/" + name, std::string(content), ++clock_);
    return {};
  }

 private:
  static std::string Parent(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
  }
  DiskResult Check(const std::string& operation, const std::string& path) {
    auto failure = failures_.find({operation, path});
    if (failure == failures_.end()) return {};
    const int error = failure->second;
    failures_.erase(failure);
    return {error, path};
  }
  DiskResult NeedFolder(const std::string& path) {
    const Node* node = Find(path);
    if (!node) return {ENOENT, path};
    if (node->type != DiskStatus::Type::kFolder) return {ENOTDIR, path};
    return {};
  }
  DiskResult StatusOf(const std::string& operation, const std::string& path, DiskStatus* status) {
    if (DiskResult failed = Check(operation, path); !failed.ok()) return failed;
    const Node* node = Find(path);
    if (!node) return {ENOENT, path};
    *status = {node->type, static_cast<int64_t>(node->content.size()), node->mtime_ns};
    return {};
  }

  std::map<std::string, Node> nodes_;
  std::map<std::pair<std::string, std::string>, int> failures_;
  std::vector<std::string> changes_;
  int64_t clock_ = 1'000'000;  // the times of the files written
};

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_MEMORY_SITE_DISK_H_
