#include "desktop/site_words.h"

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "platform/case_fold.h"
#include "publish/site_names.h"

namespace vf {
namespace {

// The folder of a Windows path, without its backslash ("C:\Foto").
std::string WindowsFolder(const std::string& path) {
  const size_t slash = path.rfind('\\');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

// The name of a Windows folder as the site may show it: the last part of
// its host path, or "" for a drive's root, the home folder or one above it.
std::string ShownName(const std::string& folder, HostFileSystem& fs, const std::string& home) {
  if (folder.find('\\') == std::string::npos) return {};  // "C:" is a drive's root
  const std::optional<std::string> host = fs.HostPath(folder + "\\");
  if (!host) return {};
  std::string path = *host;
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  if (path == home || home.starts_with(path + "/") || path == "/") return {};
  return path.substr(path.rfind('/') + 1);
}

// The parts of a Windows folder, its drive first.
std::vector<std::string> Parts(const std::string& folder) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t slash; (slash = folder.find('\\', start)) != std::string::npos; start = slash + 1) {
    parts.push_back(folder.substr(start, slash - start));
  }
  parts.push_back(folder.substr(start));
  return parts;
}

}  // namespace

SiteWords WordsOfSite(const BuiltSite& site, HostFileSystem& fs, const SizesFile& sizes,
                      const std::string& home) {
  SiteWords words;
  words.sizes = sizes.sizes;
  words.capitals = site.capitals;
  words.avif = sizes.avif;
  std::set<int64_t> albums;
  std::map<std::string, std::string> shown_names;  // by Windows folder
  std::optional<std::vector<std::string>> common;
  for (const AlbumCopy& c : site.copies) {
    const std::string album_folder = WindowsFolder(c.copy);
    const std::optional<std::string> source = fs.HostPath(c.source), copy = fs.HostPath(c.copy),
                                     page = fs.HostPath(album_folder + "\\" +
                                                        PicturePageName(c.place, site.capitals));
    if (!source || !copy || !page) continue;
    const std::string folder = WindowsFolder(c.source);
    // Thousands of photos share a few folders: each is looked up once.
    auto [shown, added] = shown_names.try_emplace(folder);
    if (added) shown->second = ShownName(folder, fs, home);
    words.pictures.push_back({*source, *copy, *page, c.album, c.place, shown->second});
    if (albums.insert(c.album).second) {
      if (std::optional<std::string> menu =
              fs.HostPath(album_folder + "\\" + MenuPageName(site.capitals))) {
        words.menu_pages.push_back(*menu);
        words.menu_albums.push_back(c.album);
      }
    }
    // The folders that all pictures share, compared as the file layer does.
    const std::vector<std::string> parts = Parts(folder);
    if (!common) {
      common = parts;
    } else {
      size_t same = 0;
      while (same < common->size() && same < parts.size() &&
             EqualIgnoringCase((*common)[same], parts[same])) {
        ++same;
      }
      common->resize(same);
    }
  }
  for (const std::string& index : site.index_pages) {
    if (std::optional<std::string> page = fs.HostPath(index)) words.index_pages.push_back(*page);
  }
  if (!sizes.title.empty()) {
    words.site_title = sizes.title;
  } else if (common && common->size() > 1) {
    std::string folder = (*common)[0];
    for (size_t i = 1; i < common->size(); ++i) folder += "\\" + (*common)[i];
    words.site_title = ShownName(folder, fs, home);
  }
  return words;
}

}  // namespace vf
