#ifndef VF_PAGES_PAGE_WORDS_H_
#define VF_PAGES_PAGE_WORDS_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "publish/derived_pictures.h"
#include "publish/site_disk.h"

namespace vf {

// A picture of an album and the page the build made for it. Host paths.
struct WordsPicture {
  std::string source;
  std::string copy;  // in its album folder
  std::string page;  // the picture's own page
  int64_t album = 0;
  int64_t place = 0;  // from 1
  // The name of the source's folder as the site may show it (UTF-8), or ""
  // when it must not be shown (the owner's home or above, a drive's root).
  std::string folder_name;
};

// What the pages of a finished build are told. Host paths.
struct SiteWords {
  std::vector<WordsPicture> pictures;
  std::vector<std::string> menu_pages;  // one per album, in album order
  std::vector<int64_t> menu_albums;     // the album of each menu page
  std::vector<std::string> index_pages;
  std::vector<DerivedSize> sizes;  // the web sizes; the smallest gives the covers
  bool capitals = false;
  // AVIF pictures are offered; when not, every <source data-vf="avif"> goes.
  bool avif = true;
  std::string site_title;  // UTF-8; empty leaves the templates' own
};

// What a picture file's header holds, read without decoding its pixels.
struct PictureHeader {
  int width = 0;
  int height = 0;
  // The metadata blocks as libvips gives them.
  std::string exif = {};
  std::string xmp = {};
  std::string iptc = {};
};

// Reads a picture's header; nothing when it is no picture it can read.
using HeaderReader = std::function<std::optional<PictureHeader>(const std::string& path)>;

// Fills the places of the pages the build just wrote (pages/page_places.h)
// with the words of their photos: each picture's description (a sidecar
// text file of the same name beside the source, found ignoring case, before
// the picture's own metadata) and date taken; the albums' lines (their
// folders and the span of their dates) and covers; the site's title. A page
// is rewritten through a temporary file and a rename, so it shows its old
// text or all of the new. Reads the sources, never writes them. `workers`
// headers are read at once. Returns the failures met, none of which costs
// more than the words of one page. `leaving`, when set, runs on each worker
// thread as it ends (libvips' per-thread clean-up).
std::vector<DiskResult> WritePageWords(const SiteWords& site, SiteDisk& disk,
                                       const HeaderReader& header, size_t workers,
                                       const std::function<void()>& leaving = {});

}  // namespace vf

#endif  // VF_PAGES_PAGE_WORDS_H_
