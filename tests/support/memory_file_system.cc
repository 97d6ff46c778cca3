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

// Journals a written file when it is closed, or dropped unclosed.
class JournaledOutput : public OutputFile {
 public:
  JournaledOutput(std::unique_ptr<OutputFile> inner, std::vector<std::string>* log,
                  std::string line)
      : inner_(std::move(inner)), log_(log), line_(std::move(line)) {}
  ~JournaledOutput() override { Close(); }
  int Write(const char* data, size_t size) override { return inner_->Write(data, size); }
  int Close() override {
    int failure = inner_->Close();
    if (log_ != nullptr) log_->push_back(std::move(line_));
    log_ = nullptr;
    return failure;
  }

 private:
  std::unique_ptr<OutputFile> inner_;
  std::vector<std::string>* log_;
  std::string line_;
};

}  // namespace

MemoryFileSystem::MemoryFileSystem() : CaseBlindFileSystem('C') { AddDrive('C'); }

std::unique_ptr<MemoryFileSystem::Node> MemoryFileSystem::NewNode(bool folder) {
  auto node = std::make_unique<Node>();
  node->id = next_id_++;
  node->folder = folder;
  if (!folder) node->data = std::make_shared<std::string>();
  return node;
}

void MemoryFileSystem::AddDrive(char letter, bool readonly) {
  letter = DriveLetter(letter);
  if (letter == 0) return;
  Drive& drive = drives_[letter];
  drive.readonly = readonly;
  if (!drive.root) drive.root = NewNode(true);
}

void MemoryFileSystem::Seed(const std::string& winpath, bool folder, const std::string& bytes) {
  ParsedPath path;
  if (Parse(winpath, &path) != kOk || path.parts.empty()) return;
  if (!IsMapped(path.drive)) AddDrive(path.drive);
  Node* node = drives_[path.drive].root.get();
  for (size_t i = 0; i < path.parts.size(); ++i) {
    const bool last = i + 1 == path.parts.size();
    std::unique_ptr<Node>& child = node->children[path.parts[i]];
    if (!child) child = NewNode(folder || !last);
    if (child->folder != (folder || !last)) return;
    node = child.get();
  }
  if (!folder) *node->data = bytes;
}

void MemoryFileSystem::AddFile(const std::string& winpath, const std::string& bytes) {
  Seed(winpath, false, bytes);
}

void MemoryFileSystem::AddFolder(const std::string& winpath) { Seed(winpath, true, ""); }

std::optional<std::string> MemoryFileSystem::Contents(const std::string& winpath) {
  Resolved resolved;
  if (Resolve(winpath, false, &resolved) != kOk || !resolved.found) return std::nullopt;
  Node* node = NodeAt(resolved.place);
  if (node == nullptr || node->folder) return std::nullopt;
  return *node->data;
}

std::string MemoryFileSystem::Typed(const std::string& path) const {
  ParsedPath parsed;
  Parse(path, &parsed);
  return FormatWindowsPath(parsed);
}

int MemoryFileSystem::OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) {
  int failure = CaseBlindFileSystem::OpenOutput(path, file);
  if (failure == kOk) {
    *file = std::make_unique<JournaledOutput>(std::move(*file), &log_, "WRITE " + Typed(path));
  }
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

bool MemoryFileSystem::IsMapped(char drive) const { return drives_.count(drive) != 0; }

bool MemoryFileSystem::IsReadOnly(char drive) const {
  auto it = drives_.find(drive);
  return it != drives_.end() && it->second.readonly;
}

MemoryFileSystem::Node* MemoryFileSystem::NodeAt(const Place& place) {
  auto drive = drives_.find(place.drive);
  if (drive == drives_.end()) return nullptr;
  Node* node = drive->second.root.get();
  for (const std::string& name : place.names) {
    if (!node->folder) return nullptr;
    auto child = node->children.find(name);
    if (child == node->children.end()) return nullptr;
    node = child->second.get();
  }
  return node;
}

MemoryFileSystem::Node* MemoryFileSystem::ParentOf(const Place& place) {
  Place parent = place;
  parent.names.pop_back();
  return NodeAt(parent);
}

int MemoryFileSystem::CheckFolder(const Place& folder) {
  Node* node = NodeAt(folder);
  return node != nullptr && node->folder ? kOk : kPercorsoNonTrovato;
}

int MemoryFileSystem::Find(const Place& folder, const std::string& part,
                           std::optional<Match>* found) {
  found->reset();
  Node* node = NodeAt(folder);
  if (node == nullptr || !node->folder) return kPercorsoNonTrovato;
  auto match = node->children.find(part);
  if (match == node->children.end()) {
    // The children stand in byte order, so the first one equal ignoring case
    // is the first in name order.
    match = std::find_if(node->children.begin(), node->children.end(),
                         [&](const auto& child) { return EqualIgnoringCase(child.first, part); });
  }
  if (match != node->children.end()) {
    *found = Match{match->first, match->second->folder ? FolderEntry::kFolder : FolderEntry::kFile};
  }
  return kOk;
}

int MemoryFileSystem::ReadFile(const Place& file, std::unique_ptr<InputFile>* out) {
  Node* node = NodeAt(file);
  if (node == nullptr) return kFileNonTrovato;
  *out = std::make_unique<MemoryInput>(node->data);
  return kOk;
}

int MemoryFileSystem::WriteFile(const Place& file, std::unique_ptr<OutputFile>* out) {
  std::unique_ptr<Node>& node = ParentOf(file)->children[file.names.back()];
  if (!node) node = NewNode(false);
  // A fresh buffer: a reader still open on the old bytes keeps them.
  node->data = std::make_shared<std::string>();
  *out = std::make_unique<MemoryOutput>(node->data);
  return kOk;
}

int MemoryFileSystem::CopyFile(const Place& from, const Place& to) {
  auto bytes = std::make_shared<std::string>(*NodeAt(from)->data);
  std::unique_ptr<Node>& node = ParentOf(to)->children[to.names.back()];
  if (!node) node = NewNode(false);
  node->data = std::move(bytes);
  return kOk;
}

bool MemoryFileSystem::SameFile(const Place& a, const Place& b) {
  Node* node = NodeAt(a);
  return node != nullptr && node == NodeAt(b);
}

int MemoryFileSystem::MakeFolderAt(const Place& folder) {
  ParentOf(folder)->children[folder.names.back()] = NewNode(true);
  return kOk;
}

int MemoryFileSystem::Move(const Place& from, const Place& to) {
  auto moved = ParentOf(from)->children.extract(from.names.back());
  moved.key() = to.names.back();
  ParentOf(to)->children.insert(std::move(moved));
  return kOk;
}

int MemoryFileSystem::List(const Place& folder, FolderListing* listing) {
  Node* node = NodeAt(folder);
  listing->device = static_cast<unsigned char>(folder.drive);
  listing->inode = node->id;
  for (const auto& [name, child] : node->children) {
    FolderEntry entry;
    entry.name = name;
    entry.kind = child->folder ? FolderEntry::kFolder : FolderEntry::kFile;
    listing->entries.push_back(std::move(entry));
  }
  return kOk;
}

}  // namespace vf
