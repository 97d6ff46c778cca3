#include "pages/page_words.h"

#include <algorithm>
#include <map>
#include <utility>

#include "metadata/photo_words.h"
#include "pages/html_text.h"
#include "pages/italian_date.h"
#include "pages/page_places.h"
#include "platform/case_fold.h"
#include "publish/derive_pool.h"
#include "publish/site_names.h"

namespace vf {
namespace {

// A sidecar text longer than this is no caption someone wrote for a photo.
constexpr int64_t kMostSidecarBytes = int64_t{1} << 20;
constexpr size_t kSidecarBytesRead = size_t{64} << 10;

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string NameOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool Before(const TakenDate& a, const TakenDate& b) {
  return std::tie(a.year, a.month, a.day) < std::tie(b.year, b.month, b.day);
}

// The sidecar of `source`: the text file of the same name with ".txt",
// found among `names` (its folder's) ignoring case, an exact match first.
std::string SidecarOf(const std::string& source, const std::vector<std::string>& names,
                      SiteDisk& disk) {
  std::string name = NameOf(source);
  const size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0) return {};
  const std::string wanted = name.substr(0, dot) + ".txt";
  const std::string* match = nullptr;
  for (const std::string& n : names) {
    if (n == wanted) {
      match = &n;
      break;
    }
    if (match == nullptr && EqualIgnoringCase(n, wanted)) match = &n;
  }
  if (match == nullptr) return {};
  const std::string path = FolderOf(source) + "/" + *match;
  DiskStatus status;
  std::string bytes;
  if (!disk.Stat(path, &status).ok() || status.type != DiskStatus::Type::kFile ||
      status.bytes > kMostSidecarBytes || !disk.Read(path, &bytes).ok()) {
    return {};
  }
  const bool longer = bytes.size() > kSidecarBytesRead;
  if (longer) bytes.resize(kSidecarBytesRead);
  return SidecarDescription(bytes, longer);
}

// A src that names a file inside the album folder: relative, no "..", no
// query, no scheme.
bool InsideAlbum(std::string_view src) {
  return !src.empty() && src.front() != '/' && src.find("..") == std::string_view::npos &&
         src.find_first_of(":?#\\") == std::string_view::npos;
}

struct Album {
  std::vector<const WordsPicture*> pictures;  // by place
  std::string line;                           // UTF-8
};

}  // namespace

std::vector<DiskResult> WritePageWords(const SiteWords& site, SiteDisk& disk,
                                       const HeaderReader& header, size_t workers,
                                       const std::function<void()>& leaving) {
  std::vector<DiskResult> failures;
  // The names of each source folder, listed once, for the sidecars.
  std::map<std::string, std::vector<std::string>> listed;
  for (const WordsPicture& p : site.pictures) {
    auto [at, added] = listed.try_emplace(FolderOf(p.source));
    if (!added) continue;
    if (DiskResult r = disk.List(at->first, &at->second); !r.ok()) failures.push_back(r);
    // Only text files can be sidecars; a folder of thousands of photos
    // would otherwise be searched once for each of them.
    std::erase_if(at->second, [](const std::string& name) {
      return name.size() < 4 || !EqualIgnoringCase(name.substr(name.size() - 4), ".txt");
    });
  }

  std::vector<PhotoWords> found(site.pictures.size());  // by picture, filled by the workers
  PoolWork calls;
  calls.work = [&](size_t i) {
    const WordsPicture& p = site.pictures[i];
    if (!IsDerivablePicture(p.source)) return;
    if (std::optional<PictureHeader> h = header(p.source)) {
      found[i] = WordsFromBlobs(h->exif, h->xmp, h->iptc);
    }
    std::string sidecar = SidecarOf(p.source, listed.at(FolderOf(p.source)), disk);
    if (!sidecar.empty()) found[i].description = std::move(sidecar);
  };
  calls.finished = [](size_t) {};
  calls.leaving = leaving;
  RunPool(found.size(), workers, calls);

  // The albums, their pictures by place, and their lines.
  std::map<int64_t, Album> albums;
  auto words_of = [&](const WordsPicture* p) -> const PhotoWords& {
    return found[static_cast<size_t>(p - site.pictures.data())];
  };
  for (const WordsPicture& p : site.pictures) albums[p.album].pictures.push_back(&p);
  for (auto& [number, album] : albums) {
    std::sort(album.pictures.begin(), album.pictures.end(),
              [](const WordsPicture* a, const WordsPicture* b) { return a->place < b->place; });
    std::vector<std::string> folders;
    std::optional<TakenDate> first, last;
    for (const WordsPicture* p : album.pictures) {
      if (!p->folder_name.empty()) folders.push_back(p->folder_name);
      if (const std::optional<TakenDate>& d = words_of(p).taken) {
        if (!first || Before(*d, *first)) first = d;
        if (!last || Before(*last, *d)) last = d;
      }
    }
    album.line = FolderList(folders);
    if (first)
      album.line += (album.line.empty() ? "" : " \xE2\x80\x94 ") + SpanInItalian(*first, *last);
  }

  // Picture sizes read once each, from the files the pages name.
  std::map<std::string, std::pair<int, int>> sizes;
  auto size_of = [&](const std::string& path) {
    auto [at, added] = sizes.try_emplace(path, 0, 0);
    if (added) {
      if (std::optional<PictureHeader> h = header(path)) at->second = {h->width, h->height};
    }
    return at->second;
  };
  // An album's pictures as an <img data-vf="foto"> of one of its pages names them.
  auto facts_in = [&](const Album* album, const std::string& folder) {
    return [&, album, folder](std::string_view src) {
      PictureFacts facts;
      if (!InsideAlbum(src)) return facts;
      const int64_t place = PlaceOfPictureName(src);
      for (const WordsPicture* p : album->pictures) {
        if (p->place == place) facts.alt = HtmlText(words_of(p).description);
      }
      std::tie(facts.width, facts.height) = size_of(folder + "/" + std::string(src));
      return facts;
    };
  };
  // Whether a file an AVIF source of a page in `folder` names is there.
  auto there_in = [&](const std::string& folder) {
    return [&, folder](std::string_view url) {
      DiskStatus status;
      return site.avif && InsideAlbum(url) &&
             disk.Stat(folder + "/" + std::string(url), &status).ok() &&
             status.type == DiskStatus::Type::kFile;
    };
  };
  auto rewrite = [&](const std::string& path, const PlaceTexts& texts) {
    std::string page;
    if (DiskResult r = disk.Read(path, &page); !r.ok()) return failures.push_back(r);
    if (!FillPlaces(&page, texts)) return;
    if (DiskResult r = disk.Write(FolderOf(path), NameOf(path), page); !r.ok()) {
      failures.push_back(r);
    }
  };

  const std::string title = HtmlText(site.site_title);
  for (const WordsPicture& p : site.pictures) {
    const PhotoWords& w = words_of(&p);
    PlaceTexts texts;
    texts.sito = title;
    texts.titolo = texts.didascalia = HtmlText(w.description);
    if (w.taken) {
      texts.data = HtmlText(DateInItalian(*w.taken));
      texts.data_iso = IsoDate(*w.taken);
    }
    texts.picture = facts_in(&albums[p.album], FolderOf(p.copy));
    texts.exists = there_in(FolderOf(p.copy));
    rewrite(p.page, texts);
  }
  for (size_t i = 0; i < site.menu_pages.size() && i < site.menu_albums.size(); ++i) {
    const Album& album = albums[site.menu_albums[i]];
    PlaceTexts texts;
    texts.sito = title;
    texts.album = HtmlText(album.line);
    texts.picture = facts_in(&album, FolderOf(site.menu_pages[i]));
    texts.exists = there_in(FolderOf(site.menu_pages[i]));
    rewrite(site.menu_pages[i], texts);
  }

  // The cards of the index: each album's cover, from the smallest size, and
  // its line.
  std::string rules;
  const auto smallest = std::min_element(
      site.sizes.begin(), site.sizes.end(),
      [](const DerivedSize& a, const DerivedSize& b) { return a.pixels < b.pixels; });
  for (const auto& [number, album] : albums) {
    std::string properties;
    const WordsPicture* first = album.pictures.front();
    if (smallest != site.sizes.end() && first->place == 1) {
      const std::string folder = FolderOf(first->copy);
      const std::string size = SizeFolderName(smallest->folder, site.capitals);
      DiskStatus status;
      if (disk.Stat(folder + "/" + size + "/" + NameOf(first->copy), &status).ok() &&
          status.type == DiskStatus::Type::kFile) {
        properties += "--vf-copertina:url(\"" +
                      CssString(NameOf(folder) + "/" + size + "/" + NameOf(first->copy)) + "\")";
      }
    }
    if (!album.line.empty()) {
      properties += (properties.empty() ? "" : ";") + std::string("--vf-album:\"") +
                    CssString(album.line) + "\"";
    }
    if (properties.empty()) continue;
    rules += "td:has(a[href=\"" + CssString(MenuLinkFromIndex(number, site.capitals)) + "\"]){" +
             properties + "}";
  }
  for (const std::string& page : site.index_pages) {
    PlaceTexts texts;
    texts.sito = title;
    texts.album_rules = rules;
    rewrite(page, texts);
  }
  return failures;
}

}  // namespace vf
