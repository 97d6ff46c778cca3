#ifndef VF_PUBLISH_SITE_NAMES_H_
#define VF_PUBLISH_SITE_NAMES_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vf {

// The names of the files a build writes into a site, made here and nowhere
// else. Every name comes in the case the build chose: capitals ("DIR_0001",
// "IMG_001.JPG", "MENU.HTM") or small letters ("dir_0001", "img_001.jpg",
// "menu.htm"). A number is written as its last digits, zero-padded on the
// left: album 12345 is "DIR_2345", place 1000 of an album "IMG_000".

// The folder of album `album` beside the index page.
std::string AlbumFolderName(int64_t album, bool capitals);
// The copy of the picture at `place` of its album (counted from 1), with
// the extension given, which takes the chosen case too.
std::string CopyName(int64_t place, std::string_view extension, bool capitals);
// The extension of a copy: the last three characters of the entry's path,
// whatever they are (no dot is looked for), or all of a shorter one.
std::string CopyExtension(std::string_view entry);
// The page of the picture at `place` of its album.
std::string PicturePageName(int64_t place, bool capitals);
// The index page of the site, when the user names it so; the albums link
// back to it by this name.
std::string IndexPageName(bool capitals);
// The album's menu page, inside its folder.
std::string MenuPageName(bool capitals);
// The link from the index page to an album's menu: "DIR_0001\MENU.HTM".
std::string MenuLinkFromIndex(int64_t album, bool capitals);
// The links from an album's pages to another album's menu
// ("../DIR_0002/MENU.HTM") and to the index ("../INDEX.HTM").
std::string MenuLinkFromAlbum(int64_t album, bool capitals);
std::string IndexLinkFromAlbum(bool capitals);
// The subfolder of an album folder that holds the pictures of one web size,
// named as the sizes file names it ("mini" is "MINI" in capitals).
std::string SizeFolderName(std::string_view size, bool capitals);
// The place a copy's or a picture page's name stands for, in either case and
// after any folders ("img_003.jpg", "web/IMG_003.JPG" give 3); 0 for a name
// of another form.
int64_t PlaceOfPictureName(std::string_view path);
// The AVIF that stands beside the derived picture of the copy `copy_name` in
// a size folder: the copy's name up to its first dot, then ".avif", or
// ".AVIF" when the copy's name holds no small letter ("img_001.eic" gives
// "img_001.avif", "IMG_001.JPG" gives "IMG_001.AVIF"). A copy named so
// already, in any case, gets no AVIF: its derived picture holds the name.
std::string AvifName(std::string_view copy_name);

}  // namespace vf

#endif  // VF_PUBLISH_SITE_NAMES_H_
