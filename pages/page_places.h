#ifndef VF_PAGES_PAGE_PLACES_H_
#define VF_PAGES_PAGE_PLACES_H_

#include <functional>
#include <string>
#include <string_view>

namespace vf {

// What an <img data-vf="foto"> of a page is given: its alt text (ready for
// an attribute) and the real size of the file its src names. An empty alt
// or a zero size leaves that attribute as the template wrote it.
struct PictureFacts {
  std::string alt;
  int width = 0;
  int height = 0;
};

// The texts the pass puts into one page's places, each ready for the page:
// escaped for HTML (or, for the style, for CSS) and ASCII only. An empty
// text leaves its places as the template wrote them.
struct PlaceTexts {
  std::string sito;         // the site's title
  std::string titolo;       // the photo's description, for a title or heading
  std::string didascalia;   // the same, for the caption under the picture
  std::string data;         // the date taken, in words ("14 luglio 2025")
  std::string data_iso;     // the same as 2025-07-14, for the datetime attribute
  std::string album;        // the album's line
  std::string album_rules;  // the CSS rules that go into <style data-vf="album">
  // The facts of the picture that an <img data-vf="foto"> names by its src;
  // unset means none.
  std::function<PictureFacts(std::string_view src)> picture;
  // Whether a file that a <source data-vf="avif"> names in its srcset is
  // there; unset leaves every such source as it is.
  std::function<bool(std::string_view url)> exists;
};

// Fills the places of a page: elements whose start tag, wholly on one line,
// carries a data-vf attribute. A place whose content is filled ("sito",
// "titolo", "didascalia", "data", "album") must close on the same line; one
// that does not is left alone. A <source data-vf="avif"> is taken out of
// the page, whole, when a file of its srcset is missing: a browser that
// picks a source whose file is missing shows a broken picture instead of
// the <img> beside it. Everything outside the places, line ends included,
// stays byte for byte. Returns true when the page changed.
bool FillPlaces(std::string* page, const PlaceTexts& texts);

}  // namespace vf

#endif  // VF_PAGES_PAGE_PLACES_H_
