#include "platform/case_blind_file_system.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/case_fold.h"
#include "platform/failure.h"

namespace vf {
namespace {

bool IsHiddenName(const std::string& name) { return !name.empty() && name[0] == '.'; }

}  // namespace

int CaseBlindFileSystem::Resolve(const std::string& path, bool change, Resolved* out) {
  Resolved r;
  int failure = Parse(path, &r.typed);
  if (failure != kOk) return failure;
  if (!IsMapped(r.typed.drive)) return kPercorsoNonTrovato;
  if (change && IsReadOnly(r.typed.drive)) return kErroreAccesso;
  r.place.drive = r.typed.drive;
  if (r.typed.parts.empty()) {
    failure = CheckFolder(r.place);
    if (failure != kOk) return failure;
    r.found = true;
    *out = std::move(r);
    return kOk;
  }
  const size_t count = r.typed.parts.size();
  for (size_t i = 0; i < count; ++i) {
    const std::string& part = r.typed.parts[i];
    const bool last = i + 1 == count;
    std::optional<Match> match;
    failure = Find(r.place, part, &match);
    if (failure != kOk) return failure;
    if (!match) {
      if (!last) return kPercorsoNonTrovato;
      r.place.names.push_back(part);
      r.found = false;
      break;
    }
    if (!last && match->kind != FolderEntry::kFolder) return kPercorsoNonTrovato;
    r.place.names.push_back(std::move(match->name));
    r.found = true;
    r.kind = match->kind;
  }
  *out = std::move(r);
  return kOk;
}

int CaseBlindFileSystem::TakeTypedSpelling(const Resolved& target, Place* place) {
  *place = target.place;
  place->names.back() = target.typed.parts.back();
  if (*place == target.place) return kOk;
  return Move(target.place, *place);
}

bool CaseBlindFileSystem::NamesMissingFolder(const Resolved& r) {
  return r.typed.ends_in_separator && !(r.found && r.kind == FolderEntry::kFolder);
}

int CaseBlindFileSystem::ResolveSource(const std::string& path, Resolved* r) {
  int failure = Resolve(path, false, r);
  if (failure != kOk) return failure;
  if (NamesMissingFolder(*r)) return kPercorsoNonTrovato;
  if (!r->found) return kFileNonTrovato;
  return r->kind == FolderEntry::kFile ? kOk : kErroreAccesso;
}

int CaseBlindFileSystem::ResolveTarget(const std::string& path, Resolved* r) {
  int failure = Resolve(path, true, r);
  if (failure != kOk) return failure;
  if (NamesMissingFolder(*r)) return kPercorsoNonTrovato;
  // A link, a pipe or a device at the target is replaced; a folder is not.
  if (r->place.names.empty() || (r->found && r->kind == FolderEntry::kFolder)) {
    return kErroreAccesso;
  }
  return kOk;
}

int CaseBlindFileSystem::OpenInput(const std::string& path, std::unique_ptr<InputFile>* file) {
  BeginOperation();
  Resolved r;
  int failure = ResolveSource(path, &r);
  if (failure != kOk) return failure;
  return ReadFile(r.place, file);
}

int CaseBlindFileSystem::OpenOutput(const std::string& path, std::unique_ptr<OutputFile>* file) {
  BeginOperation();
  Resolved r;
  int failure = ResolveTarget(path, &r);
  if (failure != kOk) return failure;
  Place place = r.place;
  if (r.found) {
    failure = TakeTypedSpelling(r, &place);
    if (failure != kOk) return failure;
  }
  return WriteFile(place, file);
}

int CaseBlindFileSystem::Copy(const std::string& from, const std::string& to) {
  BeginOperation();
  Resolved source;
  int failure = ResolveSource(from, &source);
  if (failure != kOk) return failure;
  Resolved target;
  failure = ResolveTarget(to, &target);
  if (failure != kOk) return failure;
  Place place = target.place;
  if (target.found) {
    // Checked before the spelling changes: a copy onto itself leaves the
    // file exactly as it was.
    if (SameFile(source.place, target.place)) return kErroreAccesso;
    failure = TakeTypedSpelling(target, &place);
    if (failure != kOk) return failure;
  }
  return CopyFile(source.place, place);
}

int CaseBlindFileSystem::MakeFolder(const std::string& path) {
  BeginOperation();
  Resolved r;
  int failure = Resolve(path, true, &r);
  if (failure != kOk) return failure;
  if (r.place.names.empty()) return kErroreAccesso;
  if (r.found) {
    // The folder is there already, which is a failure; it still takes the
    // spelling the program asked for, so that links to it match.
    Place place;
    if (r.kind == FolderEntry::kFolder) TakeTypedSpelling(r, &place);
    return kErroreAccesso;
  }
  return MakeFolderAt(r.place);
}

int CaseBlindFileSystem::Rename(const std::string& from, const std::string& to) {
  BeginOperation();
  Resolved source;
  int failure = Resolve(from, true, &source);
  if (failure != kOk) return failure;
  if (!source.found) return kFileNonTrovato;
  if (!source.place.names.empty() && Normalize(from) == Normalize(to)) {
    // The source itself, differing only in case: it stays in its own folder
    // even where a folder differing only in case stands beside it, and only
    // its last part takes the typed spelling, never over another file.
    // Equal to the source's own form, `to` parses, to as many parts.
    Resolved itself = source;
    Parse(to, &itself.typed);
    const std::string& name = itself.typed.parts.back();
    if (name != source.place.names.back()) {
      Place folder = source.place;
      folder.names.pop_back();
      std::optional<Match> other;
      if (Find(folder, name, &other) == kOk && other && other->name == name) return kFileEsistente;
    }
    Place place;
    return TakeTypedSpelling(itself, &place);
  }
  Resolved target;
  failure = Resolve(to, true, &target);
  if (failure != kOk) return failure;
  const std::vector<std::string>& from_names = source.place.names;
  const std::vector<std::string>& to_names = target.place.names;
  if (to_names.empty() || source.place.drive != target.place.drive) return kErroreAccesso;
  // Another file or folder: the source itself, by any spelling, was taken
  // above, as a path that names it differs from its own only in case.
  if (target.found) return kFileEsistente;
  // A folder cannot move below itself, nor a drive's root anywhere.
  if (std::ranges::mismatch(from_names, to_names).in1 == from_names.end()) return kErroreAccesso;
  return Move(source.place, target.place);
}

int CaseBlindFileSystem::SetCurrentFolder(const std::string& path) {
  BeginOperation();
  Resolved r;
  int failure = Resolve(path, false, &r);
  if (failure != kOk) return failure;
  if (!r.found || r.kind != FolderEntry::kFolder) return kPercorsoNonTrovato;
  current_ = std::move(r.typed);
  return kOk;
}

int CaseBlindFileSystem::SetCurrentDrive(const std::string& drive) {
  if (drive.empty()) return kOk;  // as ChDrive "", which changes nothing
  Place root;
  root.drive = DriveLetter(drive[0]);
  if (!IsMapped(root.drive)) return kPercorsoNonTrovato;  // 0 for no letter
  int failure = CheckFolder(root);
  if (failure != kOk) return failure;
  if (root.drive != current_.drive) current_ = ParsedPath{root.drive, {}};
  return kOk;
}

FolderListing CaseBlindFileSystem::ListFolder(const std::string& path) {
  BeginOperation();
  FolderListing listing;
  Resolved r;
  int failure = Resolve(path, false, &r);
  if (failure == kOk && (!r.found || r.kind != FolderEntry::kFolder)) {
    failure = kPercorsoNonTrovato;
  }
  if (failure == kOk) failure = List(r.place, &listing);
  if (failure != kOk) {
    listing = FolderListing{};
    listing.failure = failure;
    return listing;
  }
  std::vector<std::pair<std::string, FolderEntry>> keyed;
  for (FolderEntry& entry : listing.entries) {
    entry.hidden = IsHiddenName(entry.name);
    std::string key = ToUpper(entry.name);
    keyed.emplace_back(std::move(key), std::move(entry));
  }
  // By capitals, and names equal in capitals by their bytes.
  std::ranges::sort(keyed, {}, [](const auto& k) { return std::tie(k.first, k.second.name); });
  listing.entries.clear();
  for (auto& [key, entry] : keyed) {
    (NameFitsAPage(entry.name) ? listing.entries : listing.unusable).push_back(std::move(entry));
  }
  return listing;
}

int CaseBlindFileSystem::Attributes(const std::string& path, int* attributes) {
  BeginOperation();
  Resolved r;
  int failure = Resolve(path, false, &r);
  if (failure != kOk) return failure;
  if (!r.found) return kFileNonTrovato;
  int value = 0;
  if (r.kind == FolderEntry::kFolder) value |= 16;
  if (r.kind == FolderEntry::kSystem) value |= 4;
  if (!r.place.names.empty() && IsHiddenName(r.place.names.back())) value |= 2;
  *attributes = value;
  return kOk;
}

std::string CaseBlindFileSystem::Normalize(const std::string& path) {
  ParsedPath parsed;
  if (Parse(path, &parsed) != kOk) return "";
  return ToUpper(FormatWindowsPath(parsed));
}

std::string CaseBlindFileSystem::CurrentFolder() {
  std::string text = FormatWindowsPath(current_);
  if (!current_.parts.empty()) text += '\\';
  return text;
}

}  // namespace vf
