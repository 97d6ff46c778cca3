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

int64_t PlaceOfPictureName(std::string_view path) {
  const size_t slash = path.rfind('/');
  const std::string name =
      InCase(path.substr(slash == std::string_view::npos ? 0 : slash + 1), false);
  if (name.size() < 8 || !name.starts_with("img_") || name[7] != '.') return 0;
  int64_t place = 0;
  for (size_t i = 4; i < 7; ++i) {
    if (name[i] < '0' || name[i] > '9') return 0;
    place = place * 10 + (name[i] - '0');
  }
  return place;
}

std::string AvifName(std::string_view copy_name) {
  const bool capitals =
      std::none_of(copy_name.begin(), copy_name.end(), [](char c) { return c >= 'a' && c <= 'z'; });
  return std::string(copy_name.substr(0, copy_name.find('.'))) + (capitals ? ".AVIF" : ".avif");
}

}  // namespace vf
