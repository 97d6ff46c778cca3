#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <cstring>

#include "platform/case_fold.h"
#include "platform/failure.h"

namespace vf {
namespace {

class MemoryInput : public InputFile {
 public:
  explicit MemoryInput(std::string data) : data_(std::move(data)) {}
  int Read(char* buffer, size_t capacity, size_t* got) override {
    *got = std::min(capacity, data_.size() - pos_);
    std::memcpy(buffer, data_.data() + pos_, *got);
    pos_ += *got;
    return kOk;
  }

 private:
  std::string data_;
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

FolderEntry::Kind KindOf(const std::shared_ptr<std::string>& data) {
  return data ? FolderEntry::kFile : FolderEntry::kFolder;
}

}  // namespace

void MemoryFileSystem::AddDrive(char letter, bool readonly) {
  letter = DriveLetter(letter);
  if (letter != 0 && !IsMapped(letter)) Make(std::string{letter, ':'}, true);
  if (letter != 0 && readonly) readonly_.insert(letter);
}

std::string MemoryFileSystem::Key(const Place& place) {
  std::string key{place.drive, ':'};
  for (const std::string& name : place.names) key += "\\" + name;
  return key;
}

MemoryFileSystem::Node& MemoryFileSystem::Make(const std::string& key, bool folder) {
  Node& node = nodes_[key];
  if (node.id == 0) node.id = next_id_++;
  // A fresh buffer: a reader still open on the old bytes keeps them.
  node.data = folder ? nullptr : std::make_shared<std::string>();
  return node;
}

std::vector<std::pair<std::string, MemoryFileSystem::Node*>> MemoryFileSystem::Children(
    const std::string& key) {
  std::vector<std::pair<std::string, Node*>> out;
  const std::string prefix = key + "\\";
  for (auto it = nodes_.lower_bound(prefix); it != nodes_.end() && it->first.starts_with(prefix);
       ++it) {
    std::string name = it->first.substr(prefix.size());
    if (name.find('\\') == std::string::npos) out.emplace_back(std::move(name), &it->second);
  }
  return out;
}

void MemoryFileSystem::Seed(const std::string& winpath, const std::string* bytes) {
  ParsedPath path;
  if (Parse(winpath, &path) != kOk || path.parts.empty()) return;
  AddDrive(path.drive);
  Place place{path.drive, {}};
  for (const std::string& part : path.parts) {
    place.names.push_back(part);
    if (!nodes_.count(Key(place))) Make(Key(place), true);
  }
  if (bytes != nullptr) *Make(Key(place), false).data = *bytes;
}

std::optional<std::string> MemoryFileSystem::Contents(const std::string& winpath) {
  Resolved r;
  if (Resolve(winpath, false, &r) != kOk || !r.found || !nodes_.count(Key(r.place))) return {};
  const Node& node = nodes_[Key(r.place)];
  return node.data ? std::optional<std::string>(*node.data) : std::nullopt;
}

std::string MemoryFileSystem::Typed(const std::string& path) const {
  ParsedPath parsed;
  Parse(path, &parsed);
  return FormatWindowsPath(parsed);
}

int MemoryFileSystem::Log(int failure, std::string line) {
  if (failure == kOk) log_.push_back(std::move(line));
  return failure;
}

int MemoryFileSystem::CheckFolder(const Place& folder) {
  auto it = nodes_.find(Key(folder));
  return it != nodes_.end() && !it->second.data ? kOk : kPercorsoNonTrovato;
}

int MemoryFileSystem::Find(const Place& folder, const std::string& part,
                           std::optional<Match>* found) {
  found->reset();
  if (CheckFolder(folder) != kOk) return kPercorsoNonTrovato;
  auto exact = nodes_.find(Key(folder) + "\\" + part);
  if (exact != nodes_.end()) {
    *found = Match{part, KindOf(exact->second.data)};
    return kOk;
  }
  for (const auto& [name, node] : Children(Key(folder))) {
    if (EqualIgnoringCase(name, part)) {
      *found = Match{name, KindOf(node->data)};
      break;
    }
  }
  return kOk;
}

int MemoryFileSystem::ReadFile(const Place& file, std::unique_ptr<InputFile>* out) {
  auto it = nodes_.find(Key(file));
  if (it == nodes_.end()) return kFileNonTrovato;
  *out = std::make_unique<MemoryInput>(*it->second.data);
  return kOk;
}

int MemoryFileSystem::WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) {
  *out = std::make_unique<MemoryOutput>(Make(Key(file), false).data);
  return kOk;
}

int MemoryFileSystem::CopyFile(const Place& from, const Place& to) {
  std::string bytes = *nodes_[Key(from)].data;
  *Make(Key(to), false).data = std::move(bytes);
  return kOk;
}

int MemoryFileSystem::MakeFolderAt(const Place& folder) {
  Make(Key(folder), true);
  return kOk;
}

int MemoryFileSystem::Move(const Place& from, const Place& to) {
  const std::string old_key = Key(from);
  std::map<std::string, Node> moved;
  for (auto it = nodes_.begin(); it != nodes_.end();) {
    if (it->first == old_key || it->first.starts_with(old_key + "\\")) {
      moved[Key(to) + it->first.substr(old_key.size())] = it->second;
      it = nodes_.erase(it);
    } else {
      ++it;
    }
  }
  nodes_.merge(moved);
  return kOk;
}

int MemoryFileSystem::List(const Place& folder, FolderListing* listing) {
  listing->device = static_cast<unsigned char>(folder.drive);
  listing->inode = nodes_[Key(folder)].id;
  for (const auto& [name, node] : Children(Key(folder))) {
    listing->entries.push_back({name, KindOf(node->data)});
  }
  return kOk;
}

}  // namespace vf
