#include "publish/site_names.h"

#include <algorithm>

#include "platform/case_fold.h"

namespace vf {
namespace {

std::string Digits(int64_t value, size_t width) {
  const std::string text = "0000" + std::to_string(value);
  return text.substr(text.size() - width);
}

std::string InCase(std::string_view text, bool capitals) {
  return capitals ? ToUpper(text) : ToLower(text);
}

}  // namespace

std::string AlbumFolderName(int64_t album, bool capitals) {
  return InCase("DIR_" + Digits(album, 4), capitals);
}

std::string CopyName(int64_t place, std::string_view extension, bool capitals) {
  return InCase("IMG_" + Digits(place, 3) + "." + std::string(extension), capitals);
}

std::string CopyExtension(std::string_view entry) {
  return std::string(entry.substr(entry.size() - std::min<size_t>(entry.size(), 3)));
}

std::string PicturePageName(int64_t place, bool capitals) {
  return InCase("IMG_" + Digits(place, 3) + ".HTM", capitals);
}

std::string IndexPageName(bool capitals) { return InCase("INDEX.HTM", capitals); }

std::string MenuPageName(bool capitals) { return InCase("MENU.HTM", capitals); }

std::string MenuLinkFromIndex(int64_t album, bool capitals) {
  return AlbumFolderName(album, capitals) + "\\" + MenuPageName(capitals);
}

std::string MenuLinkFromAlbum(int64_t album, bool capitals) {
  return "../" + AlbumFolderName(album, capitals) + "/" + MenuPageName(capitals);
}

std::string IndexLinkFromAlbum(bool capitals) { return "../" + IndexPageName(capitals); }

std::string SizeFolderName(std::string_view size, bool capitals) { return InCase(size, capitals); }

std::string AvifName(std::string_view copy_name) {
  const bool capitals =
      std::none_of(copy_name.begin(), copy_name.end(), [](char c) { return c >= 'a' && c <= 'z'; });
  return std::string(copy_name.substr(0, copy_name.find('.'))) + (capitals ? ".AVIF" : ".avif");
}

}  // namespace vf
