#include "publish/derive_plan.h"

#include <cerrno>

#include "platform/case_fold.h"
#include "publish/site_names.h"

namespace vf {
namespace {

bool IsFolder(SiteDisk& disk, const std::string& path) {
  DiskStatus status;
  return disk.Lstat(path, &status).ok() && status.type == DiskStatus::Type::kFolder;
}

// Makes <album>/<wanted> a folder to write in; nothing when it is one, else
// why not.
std::optional<Reason> PrepareSizeFolder(SiteDisk& disk, const std::string& album,
                                        const std::string& wanted,
                                        std::vector<DiskResult>* harmless) {
  const std::string path = album + "/" + wanted;
  std::vector<std::string> names;
  // An album that cannot be listed shows no folder: making one then tells why.
  DiskResult step = disk.List(album, &names);
  if (!step.ok()) harmless->push_back(step);
  bool exact = false;
  std::string other_case;
  for (const std::string& name : names) {
    if (name == wanted) {
      exact = true;
    } else if (other_case.empty() && EqualIgnoringCase(name, wanted) &&
               IsFolder(disk, album + "/" + name)) {
      other_case = name;
    }
  }
  step = {};
  if (!exact && !other_case.empty()) {
    step = disk.Rename(album + "/" + other_case, path);
  } else if (!exact) {
    step = disk.MakeFolder(path);
  }
  // Whatever the step said, the folder counts as it stands now.
  DiskStatus status;
  const DiskResult there = disk.Lstat(path, &status);
  if (!there.ok() || status.type != DiskStatus::Type::kFolder) {
    if (!step.ok()) return ErrnoReason(Reason::What::kFolderNotMade, step.error, step.path);
    if (!there.ok()) return ErrnoReason(Reason::What::kFolderNotMade, there.error, there.path);
    return Reason{Reason::What::kFolderNotMade, false, path + ": not a folder"};
  }
  names.clear();
  if (const DiskResult listed = disk.List(path, &names); !listed.ok()) {
    harmless->push_back(listed);
  }
  for (const std::string& name : names) {
    if (!name.starts_with(kDerivedTemporaryPrefix)) continue;
    if (const DiskResult removed = disk.Remove(path + "/" + name); !removed.ok()) {
      harmless->push_back(removed);
    }
  }
  return std::nullopt;
}

// True when the derived picture is the file the record says this program
// wrote: anyone else's write or touch changes its size or time.
bool AsWritten(SiteDisk& disk, const std::string& derived, const DerivedEntry& entry) {
  DiskStatus status;
  return disk.Lstat(derived, &status).ok() && status.type == DiskStatus::Type::kFile &&
         status.bytes == entry.made_bytes && status.mtime_ns == entry.made_mtime_ns;
}

}  // namespace

AlbumFolder OpenAlbumFolder(SiteDisk& disk, const std::string& path,
                            const std::vector<DerivedSize>& sizes, bool capitals) {
  AlbumFolder album;
  album.path = path;
  // No record, or one that cannot be read, is an empty one: all is made again.
  std::string text;
  if (const DiskResult read = disk.Read(path + "/" + std::string(DerivedRecord::kFileName), &text);
      read.ok()) {
    album.record = DerivedRecord::Parse(text);
  } else if (read.error != ENOENT) {
    album.harmless_failures.push_back(read);
  }
  for (const DerivedSize& size : sizes) {
    album.folders.push_back(SizeFolderName(size.folder, capitals));
    album.not_ready.push_back(
        PrepareSizeFolder(disk, path, album.folders.back(), &album.harmless_failures));
  }
  return album;
}

CopyPlan PlanCopy(SiteDisk& disk, AlbumFolder* album, const CopyRecord& copy,
                  const std::string& name, const std::vector<DerivedSize>& sizes, bool avif) {
  CopyPlan plan;
  plan.name = name;
  plan.avif = avif && !EqualIgnoringCase(AvifName(name), name);
  DiskStatus source;
  const bool have_source =
      disk.Stat(copy.source, &source).ok() && source.type == DiskStatus::Type::kFile;
  const std::string source_key = SourceKey(copy.source);
  // True when the entry's file, named `from`, is still the right one: then
  // named `to`, renamed when only the case changed.
  auto stays = [&](const std::string& folder, const DerivedEntry& entry, const std::string& from,
                   const std::string& to, size_t s) {
    auto named = [&] {
      if (from == to) return true;
      const DiskResult renamed = disk.Rename(folder + "/" + from, folder + "/" + to);
      if (!renamed.ok()) album->harmless_failures.push_back(renamed);
      return renamed.ok();
    };
    return have_source && entry.pixels == sizes[s].pixels && entry.source == source_key &&
           entry.bytes == source.bytes && entry.mtime_ns == source.mtime_ns && named() &&
           AsWritten(disk, folder + "/" + to, entry);
  };
  // Notes the names the entry's file has now.
  auto renamed = [&](DerivedEntry entry, size_t s) {
    if (entry.folder == album->folders[s] && entry.copy_name == name) return;
    entry.folder = album->folders[s];
    entry.copy_name = name;
    album->record.Put(std::move(entry));
    album->dirty = true;
  };
  auto forget = [&](const DerivedEntry& entry) {
    album->record.Erase(entry.folder, entry.copy_name, entry.avif);
    album->dirty = true;
  };
  for (size_t s = 0; s < sizes.size(); ++s) {
    const std::string folder = album->path + "/" + album->folders[s];
    if (album->not_ready[s]) {
      plan.failed.push_back({s, {copy.source, folder + "/" + name, *album->not_ready[s]}});
      continue;
    }
    const DerivedEntry* found = album->record.Find(album->folders[s], name);
    const DerivedEntry* found_avif = album->record.Find(album->folders[s], name, true);
    const std::optional<DerivedEntry> avif_entry =
        found_avif ? std::optional(*found_avif) : std::nullopt;
    if (!found || !stays(folder, *found, found->copy_name, name, s)) {
      if (found) forget(*found);
      if (avif_entry) forget(*avif_entry);
      plan.to_make.push_back(s);
      continue;
    }
    const DerivedEntry entry = *found;
    renamed(entry, s);
    if (entry.plain) {
      plan.plain.push_back({s, {copy.source, folder + "/" + name, *entry.plain}});
      continue;
    }
    if (!plan.avif) continue;
    if (avif_entry &&
        stays(folder, *avif_entry, AvifName(avif_entry->copy_name), AvifName(name), s)) {
      renamed(*avif_entry, s);
      continue;
    }
    if (avif_entry) forget(*avif_entry);
    plan.avif_to_make.push_back(s);
  }
  return plan;
}

void WriteRecordIfChanged(SiteDisk& disk, AlbumFolder* album) {
  if (!album->dirty) return;
  const DiskResult written =
      disk.Write(album->path, std::string(DerivedRecord::kFileName), album->record.Text());
  album->record_failure.reset();
  if (!written.ok()) {
    album->record_failure = WriteReason(written.error, written.path);
    album->record_failure->of_record = true;
  }
  album->dirty = false;
}

}  // namespace vf
