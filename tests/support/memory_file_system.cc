#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <cstring>

#include "platform/case_fold.h"
#include "platform/failure.h"

namespace vf {
namespace {

class MemoryInput : public InputFile {
 public:
  explicit MemoryInput(std::shared_ptr<const std::string> data) : data_(std::move(data)) {}
  int Read(char* buffer, size_t capacity, size_t* got) override {
    *got = std::min(capacity, data_->size() - pos_);
    std::memcpy(buffer, data_->data() + pos_, *got);
    pos_ += *got;
    return kOk;
  }

 private:
  std::shared_ptr<const std::string> data_;
  size_t pos_ = 0;
};

class MemoryOutput : public OutputFile {
 public:
  explicit MemoryOutput(std::shared_ptr<std::string> data) : data_(std::move(data)) {}
  int Write(const char* data, size_t size) override {
    if (!data_) return kNomeNonValido;
    data_->append(data, size);
    return kOk;
  }
  int Close() override {
    data_.reset();
    return kOk;
  }

 private:
  std::shared_ptr<std::string> data_;
};

// The names directly below `key`, in byte order, with their keys.
template <typename Map, typename F>
void Children(Map& nodes, const std::string& key, F each) {
  const std::string prefix = key + "\\";
  for (auto it = nodes.lower_bound(prefix); it != nodes.end() && it->first.starts_with(prefix);
       ++it) {
    const std::string name = it->first.substr(prefix.size());
    if (name.find('\\') == std::string::npos && !each(name, it->second)) return;
  }
}

}  // namespace

void MemoryFileSystem::AddDrive(char letter, bool readonly) {
  letter = DriveLetter(letter);
  if (letter == 0) return;
  if (!IsMapped(letter)) Make(std::string{letter, ':'}, true);
  if (readonly) readonly_.insert(letter);
}

std::string MemoryFileSystem::Key(const Place& place) {
  std::string key{place.drive, ':'};
  for (const std::string& name : place.names) key += "\\" + name;
  return key;
}

MemoryFileSystem::Node* MemoryFileSystem::At(const std::string& key) {
  auto it = nodes_.find(key);
  return it == nodes_.end() ? nullptr : &it->second;
}

MemoryFileSystem::Node& MemoryFileSystem::Make(const std::string& key, bool folder) {
  Node& node = nodes_[key];
  if (node.id == 0) node.id = next_id_++;
  // A fresh buffer: a reader still open on the old bytes keeps them.
  node.data = folder ? nullptr : std::make_shared<std::string>();
  return node;
}

void MemoryFileSystem::Seed(const std::string& winpath, const std::string* bytes) {
  ParsedPath path;
  if (Parse(winpath, &path) != kOk || path.parts.empty()) return;
  AddDrive(path.drive);
  Place place{path.drive, {}};
  for (const std::string& part : path.parts) {
    place.names.push_back(part);
    if (At(Key(place)) == nullptr) Make(Key(place), true);
  }
  if (bytes != nullptr) *Make(Key(place), false).data = *bytes;
}

std::optional<std::string> MemoryFileSystem::Contents(const std::string& winpath) {
  Resolved r;
  if (Resolve(winpath, false, &r) != kOk || !r.found) return std::nullopt;
  Node* node = At(Key(r.place));
  if (node == nullptr || !node->data) return std::nullopt;
  return *node->data;
}

std::string MemoryFileSystem::Typed(const std::string& path) const {
  ParsedPath parsed;
  Parse(path, &parsed);
  return FormatWindowsPath(parsed);
}

int MemoryFileSystem::OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) {
  int failure = CaseBlindFileSystem::OpenOutput(path, file);
  if (failure == kOk) log_.push_back("WRITE " + Typed(path));
  return failure;
}

int MemoryFileSystem::Copy(const std::string& from, const std::string& to) {
  int failure = CaseBlindFileSystem::Copy(from, to);
  if (failure == kOk) log_.push_back("COPY " + Typed(from) + " -> " + Typed(to));
  return failure;
}

int MemoryFileSystem::MakeFolder(const std::string& path) {
  int failure = CaseBlindFileSystem::MakeFolder(path);
  if (failure == kOk) log_.push_back("MKDIR " + Typed(path));
  return failure;
}

int MemoryFileSystem::Rename(const std::string& from, const std::string& to) {
  int failure = CaseBlindFileSystem::Rename(from, to);
  if (failure == kOk) log_.push_back("RENAME " + Typed(from) + " -> " + Typed(to));
  return failure;
}

int MemoryFileSystem::CheckFolder(const Place& folder) {
  Node* node = At(Key(folder));
  return node != nullptr && !node->data ? kOk : kPercorsoNonTrovato;
}

int MemoryFileSystem::Find(const Place& folder, const std::string& part,
                           std::optional<Match>* found) {
  found->reset();
  if (CheckFolder(folder) != kOk) return kPercorsoNonTrovato;
  auto take = [&](const std::string& name, const Node& node) {
    *found = Match{name, node.data ? FolderEntry::kFile : FolderEntry::kFolder};
  };
  if (Node* exact = At(Key(folder) + "\\" + part)) {
    take(part, *exact);
  } else {
    Children(nodes_, Key(folder), [&](const std::string& name, const Node& node) {
      if (!EqualIgnoringCase(name, part)) return true;
      take(name, node);
      return false;
    });
  }
  return kOk;
}

int MemoryFileSystem::ReadFile(const Place& file, std::unique_ptr<InputFile>* out) {
  Node* node = At(Key(file));
  if (node == nullptr) return kFileNonTrovato;
  *out = std::make_unique<MemoryInput>(node->data);
  return kOk;
}

int MemoryFileSystem::WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) {
  *out = std::make_unique<MemoryOutput>(Make(Key(file), false).data);
  return kOk;
}

int MemoryFileSystem::CopyFile(const Place& from, const Place& to) {
  std::string bytes = *At(Key(from))->data;
  *Make(Key(to), false).data = std::move(bytes);
  return kOk;
}

int MemoryFileSystem::MakeFolderAt(const Place& folder) {
  Make(Key(folder), true);
  return kOk;
}

int MemoryFileSystem::Move(const Place& from, const Place& to) {
  const std::string old_key = Key(from), new_key = Key(to);
  std::vector<std::pair<std::string, Node>> moved;
  for (auto it = nodes_.begin(); it != nodes_.end();) {
    if (it->first == old_key || it->first.starts_with(old_key + "\\")) {
      moved.emplace_back(new_key + it->first.substr(old_key.size()), std::move(it->second));
      it = nodes_.erase(it);
    } else {
      ++it;
    }
  }
  for (auto& [key, node] : moved) nodes_[key] = std::move(node);
  return kOk;
}

int MemoryFileSystem::List(const Place& folder, FolderListing* listing) {
  listing->device = static_cast<unsigned char>(folder.drive);
  listing->inode = At(Key(folder))->id;
  Children(nodes_, Key(folder), [&](const std::string& name, const Node& node) {
    listing->entries.push_back({name, node.data ? FolderEntry::kFile : FolderEntry::kFolder});
    return true;
  });
  return kOk;
}

}  // namespace vf
