#include "tests/support/memory_file_system.h"

#include <algorithm>
#include <cstring>
#include <functional>

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

// Writes into the file's bytes until closed.
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

FolderEntry::Kind KindOf(const std::string* bytes) {
  return bytes != nullptr ? FolderEntry::kFile : FolderEntry::kFolder;
}

}  // namespace

std::string MemoryFileSystem::Key(const Place& place) {
  std::string key{place.drive, ':'};
  for (const std::string& name : place.names) key += "\\" + name;
  return key;
}

std::vector<std::pair<std::string, const std::string*>> MemoryFileSystem::Children(
    const std::string& key) const {
  std::vector<std::pair<std::string, const std::string*>> out;
  const std::string prefix = key + "\\";
  for (auto it = nodes_.lower_bound(prefix); it != nodes_.end() && it->first.starts_with(prefix);
       ++it) {
    std::string name = it->first.substr(prefix.size());
    if (name.find('\\') == std::string::npos) out.emplace_back(std::move(name), it->second.get());
  }
  return out;
}

void MemoryFileSystem::Seed(const std::string& winpath, const std::string* bytes) {
  ParsedPath path;
  if (Parse(winpath, &path) != kOk) return;
  Place place{path.drive, {}};
  nodes_.try_emplace(Key(place));
  for (const std::string& part : path.parts) {
    place.names.push_back(part);
    nodes_.try_emplace(Key(place));
  }
  if (bytes != nullptr) nodes_[Key(place)] = std::make_shared<std::string>(*bytes);
}

std::optional<std::string> MemoryFileSystem::Contents(const std::string& winpath) {
  Resolved r;
  if (Resolve(winpath, false, &r) != kOk || !r.found || !nodes_[Key(r.place)]) return {};
  return *nodes_[Key(r.place)];
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
  return it != nodes_.end() && !it->second ? kOk : kPercorsoNonTrovato;
}

int MemoryFileSystem::Find(const Place& folder, const std::string& part,
                           std::optional<Match>* found) {
  found->reset();
  if (CheckFolder(folder) != kOk) return kPercorsoNonTrovato;
  auto exact = nodes_.find(Key(folder) + "\\" + part);
  if (exact != nodes_.end()) *found = Match{part, KindOf(exact->second.get())};
  for (const auto& [name, bytes] : Children(Key(folder))) {
    if (!*found && EqualIgnoringCase(name, part)) *found = Match{name, KindOf(bytes)};
  }
  return kOk;
}

int MemoryFileSystem::ReadFile(const Place& file, std::unique_ptr<InputFile>* out) {
  auto it = nodes_.find(Key(file));
  if (it == nodes_.end()) return kFileNonTrovato;
  *out = std::make_unique<MemoryInput>(*it->second);
  return kOk;
}

int MemoryFileSystem::WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) {
  // A fresh buffer: a reader still open on the old bytes keeps them.
  auto& bytes = nodes_[Key(file)] = std::make_shared<std::string>();
  *out = std::make_unique<MemoryOutput>(bytes);
  return kOk;
}

int MemoryFileSystem::CopyFile(const Place& from, const Place& to) {
  nodes_[Key(to)] = std::make_shared<std::string>(*nodes_[Key(from)]);
  return kOk;
}

int MemoryFileSystem::MakeFolderAt(const Place& folder) {
  nodes_[Key(folder)] = nullptr;
  return kOk;
}

int MemoryFileSystem::Move(const Place& from, const Place& to) {
  const std::string old_key = Key(from);
  std::map<std::string, std::shared_ptr<std::string>> moved;
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
  // A folder in memory is reached by one path only: its key names it.
  listing->device = static_cast<unsigned char>(folder.drive);
  listing->inode = std::hash<std::string>{}(Key(folder));
  for (const auto& [name, bytes] : Children(Key(folder))) {
    listing->entries.push_back({name, KindOf(bytes)});
  }
  return kOk;
}

}  // namespace vf
