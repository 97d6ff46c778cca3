// Checks of the sample template set in templates/: the files the program reads
// or copies stand there under their names, in the text format the program
// reads, with the markers it rewrites, and the pages keep their structure
// whichever head lines the "Elimino sfondo" and "Elimino titolo" boxes drop.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vf {
namespace {

namespace fs = std::filesystem;

const fs::path kSet = fs::path(VF_SOURCE_DIR) / "templates";
const fs::path kPlaces = kSet / "VETRINA-FOTO_DEFAULT" / "dir_0001";
const fs::path kSizes = kSet / "DIMENSIONI.TXT";
constexpr int kAlbumSize = 9;

const std::vector<std::string> kPageTemplates = {"MENU.HTM", "INTESTAZ.HTM", "INTEST_2.HTM",
                                                 "PIEDE.HTM", "PIEDE_2.HTM"};
const std::vector<std::string> kAlbumAssets = {"puls_sx3.jpg", "puls_su3.jpg", "puls_dx3.jpg",
                                               "sfondo_1.gif", "sfondo_2.gif"};
const std::vector<std::string> kIndexPictures = {
    "pulsante.jpg", "diaposit.jpg", "film-1a.jpg",  "foto-1a.jpg",  "htm-1a.jpg",
    "music-1a.jpg", "sfondo1g.jpg", "sfondo1p.jpg", "sfondo_1.gif", "sfondo_2.gif"};

const std::string kTitleMarker = "menu immagini - pag.1";
const std::string kPrevMarker = "../dir_000p/menu.htm";
const std::string kNextMarker = "../dir_000s/menu.htm";

std::string Place(int n) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%03d", n);
  return buf;
}
std::string PictureMarker(int n) { return "img_" + Place(n) + ".jpg"; }
std::string PlacePage(int n) { return "img_" + Place(n) + ".htm"; }
fs::path PlaceTemplate(int n) { return kPlaces / ("IMG_" + Place(n) + ".HTM"); }

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string ReadBytes(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Lines as the program reads them: split at CR LF, end marks dropped.
std::vector<std::string> Lines(const fs::path& p) {
  std::string text = ReadBytes(p);
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find("\r\n", start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 2;
  }
  return lines;
}

bool Holds(const std::string& line, const std::string& word) {
  return Lower(line).find(Lower(word)) != std::string::npos;
}

// Occurrences of any marker of the menu or picture pages in a line.
int MarkerCount(const std::string& line) {
  std::string low = Lower(line);
  std::vector<std::string> markers = {kTitleMarker, kPrevMarker, kNextMarker};
  for (int i = 1; i <= kAlbumSize; ++i) markers.push_back(PictureMarker(i));
  int count = 0;
  for (const auto& m : markers)
    for (size_t p = low.find(m); p != std::string::npos; p = low.find(m, p + 1)) ++count;
  return count;
}

// Open elements after a document, or an error text for a closing tag that
// does not match. Void elements, comments, the doctype and the text of
// style and title elements are skipped.
struct Structure {
  std::vector<std::string> open;
  std::string error;
};

Structure Parse(const std::string& doc) {
  static const std::set<std::string> kVoid = {"meta",   "link", "img", "br",   "hr",  "input",
                                              "source", "col",  "wbr", "area", "base"};
  static const std::regex kTag(R"(<(/?)([A-Za-z][A-Za-z0-9]*)[^>]*>|<!--[\s\S]*?-->|<![^>]*>)");
  Structure s;
  auto it = std::sregex_iterator(doc.begin(), doc.end(), kTag);
  for (; it != std::sregex_iterator(); ++it) {
    const auto& m = *it;
    if (!m[2].matched) continue;
    std::string name = Lower(m[2]);
    if (m[1].length() == 0) {
      if (kVoid.count(name)) continue;
      s.open.push_back(name);
      if (name == "style" || name == "title") {
        size_t close = Lower(doc).find("</" + name, static_cast<size_t>(m[0].first - doc.begin()));
        if (close == std::string::npos) return {s.open, "no </" + name + ">"};
        it = std::sregex_iterator(doc.begin() + static_cast<long>(close), doc.end(), kTag);
        s.open.pop_back();
        continue;  // the loop's ++it steps over the closing tag
      }
    } else if (s.open.empty() || s.open.back() != name) {
      s.error =
          "</" + name + "> closes " + (s.open.empty() ? "nothing" : "<" + s.open.back() + ">");
      return s;
    } else {
      s.open.pop_back();
    }
  }
  return s;
}

std::string Join(const std::vector<std::string>& lines) {
  std::string out;
  for (const auto& l : lines) out += l + "\n";
  return out;
}

// The head lines the program copies with the two boxes as given.
std::vector<std::string> HeadLines(bool no_background, bool no_title) {
  bool both = no_background && no_title;
  std::vector<std::string> out;
  for (const auto& line : Lines(kSet / (both ? "INTEST_2.HTM" : "INTESTAZ.HTM"))) {
    if (no_background && Holds(line, "BACKGROUND")) continue;
    if (no_title && Holds(line, "MARQUEE")) continue;
    out.push_back(line);
  }
  return out;
}

// Local references of a template: href, src and background attributes, url(),
// and the names of a srcset's candidates.
std::vector<std::string> References(const std::string& text) {
  static const std::regex kRef(
      R"re((?:href|src|background)\s*=\s*"([^"]*)"|url\(\s*["']?([^"')\s]+)["']?\s*\)|srcset\s*=\s*"([^"]*)")re",
      std::regex::icase);
  static const std::regex kCandidate(R"(([^\s,]+)[^,]*)");
  std::vector<std::string> refs;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), kRef); it != std::sregex_iterator();
       ++it) {
    if (!(*it)[3].matched) {
      refs.push_back((*it)[1].matched ? (*it)[1].str() : (*it)[2].str());
      continue;
    }
    const std::string set = (*it)[3].str();
    for (auto c = std::sregex_iterator(set.begin(), set.end(), kCandidate);
         c != std::sregex_iterator(); ++c)
      refs.push_back((*c)[1].str());
  }
  return refs;
}

// The attributes of every img tag of a text, names in small letters.
std::vector<std::map<std::string, std::string>> Pictures(const std::string& text) {
  static const std::regex kImg(R"(<img\b([^>]*)>)", std::regex::icase);
  static const std::regex kAttr(R"re(([A-Za-z-]+)\s*=\s*"([^"]*)")re");
  std::vector<std::map<std::string, std::string>> out;
  for (auto it = std::sregex_iterator(text.begin(), text.end(), kImg); it != std::sregex_iterator();
       ++it) {
    const std::string attrs = (*it)[1].str();
    std::map<std::string, std::string> a;
    for (auto at = std::sregex_iterator(attrs.begin(), attrs.end(), kAttr);
         at != std::sregex_iterator(); ++at)
      a[Lower((*at)[1].str())] = (*at)[2].str();
    out.push_back(a);
  }
  return out;
}

TEST(TemplateSetTest, EveryFileStandsUnderItsName) {
  std::vector<fs::path> files;
  for (const auto& n : kPageTemplates) files.push_back(kSet / n);
  for (const auto& n : kAlbumAssets) files.push_back(kSet / n);
  for (const auto& n : kIndexPictures) files.push_back(kSet / n);
  for (int i = 1; i <= kAlbumSize; ++i) files.push_back(PlaceTemplate(i));
  files.push_back(kSizes);
  std::set<fs::path> unique(files.begin(), files.end());
  EXPECT_EQ(unique.size(), 28u);
  for (const auto& f : unique) {
    ASSERT_TRUE(fs::is_directory(f.parent_path())) << f;
    bool exact = false;  // the name as listed, not merely a match ignoring case
    for (const auto& e : fs::directory_iterator(f.parent_path()))
      exact = exact || e.path().filename() == f.filename();
    EXPECT_TRUE(exact) << f;
  }
}

TEST(TemplateSetTest, PicturesAreRealJpegAndGifFilesUnder30KB) {
  std::vector<std::string> pictures = kAlbumAssets;
  pictures.insert(pictures.end(), kIndexPictures.begin(), kIndexPictures.end());
  for (const auto& name : pictures) {
    std::string bytes = ReadBytes(kSet / name);
    EXPECT_LT(bytes.size(), 30u * 1024) << name;
    if (name.ends_with(".jpg"))
      EXPECT_EQ(bytes.substr(0, 3), "\xFF\xD8\xFF") << name;
    else
      EXPECT_TRUE(bytes.starts_with("GIF89a") || bytes.starts_with("GIF87a")) << name;
  }
  // The button picture fills the 130 by 30 cell of the index page: read the
  // size from the JPEG frame header.
  const std::string b = ReadBytes(kSet / "pulsante.jpg");
  auto u16 = [&](size_t at) {
    return (static_cast<unsigned char>(b[at]) << 8) | static_cast<unsigned char>(b[at + 1]);
  };
  int w = 0, h = 0;
  for (size_t p = 2; p + 9 < b.size() && static_cast<unsigned char>(b[p]) == 0xFF;
       p += 2 + u16(p + 2)) {
    if (b[p + 1] == '\xC0' || b[p + 1] == '\xC2') {
      h = u16(p + 5);
      w = u16(p + 7);
      break;
    }
  }
  EXPECT_EQ(w, 130);
  EXPECT_EQ(h, 30);
}

TEST(TemplateSetTest, TemplatesAreAsciiLinesEndingInCrLf) {
  std::vector<fs::path> files;
  for (const auto& n : kPageTemplates) files.push_back(kSet / n);
  for (int i = 1; i <= kAlbumSize; ++i) files.push_back(PlaceTemplate(i));
  files.push_back(kSizes);
  for (const auto& f : files) {
    std::string t = ReadBytes(f);
    ASSERT_FALSE(t.empty()) << f;
    EXPECT_TRUE(t.ends_with("\r\n")) << f;
    const std::string rest = std::regex_replace(t, std::regex("\r\n"), "");
    EXPECT_TRUE(std::all_of(rest.begin(), rest.end(),
                            [](unsigned char c) { return c == '\t' || (c >= 32 && c < 127); }))
        << f << ": a lone CR or LF or a byte outside printable ASCII";
    // Every page declares its code; the foot templates are no pages of their own.
    if (f.extension() == ".HTM" && !f.filename().string().starts_with("PIEDE")) {
      EXPECT_NE(t.find("<meta charset=\"utf-8\">"), std::string::npos) << f;
    }
  }
}

TEST(TemplateSetTest, IndexPageKeepsItsStructureWhateverTheBoxesDrop) {
  for (bool no_background : {false, true}) {
    for (bool no_title : {false, true}) {
      SCOPED_TRACE(testing::Message()
                   << "Elimino sfondo " << no_background << ", Elimino titolo " << no_title);
      std::vector<std::string> head = HeadLines(no_background, no_title);
      // The program writes <HTML> itself; the head must leave body, main, div
      // and center open: the program closes "</center></div>", the foot main.
      for (const auto& l : head) EXPECT_FALSE(Holds(l, "<html")) << l;
      Structure after_head = Parse("<HTML>\n" + Join(head));
      EXPECT_EQ(after_head.error, "");
      EXPECT_EQ(after_head.open,
                (std::vector<std::string>{"html", "body", "main", "div", "center"}));

      bool both = no_background && no_title;
      std::vector<std::string> page = {"<HTML>"};
      page.insert(page.end(), head.begin(), head.end());
      for (const char* l :
           {"<table border=\"0\" cellpadding=\"0\" cellspacing=\"10\" width=\"130\">", "<tr>", " ",
            " </tr>", "</table>", "</center></div>"})
        page.push_back(l);
      std::vector<std::string> foot = Lines(kSet / (both ? "PIEDE_2.HTM" : "PIEDE.HTM"));
      EXPECT_TRUE(std::any_of(foot.begin(), foot.end(),
                              [](const std::string& l) { return Lower(l) == "</html>"; }));
      page.insert(page.end(), foot.begin(), foot.end());
      Structure whole = Parse(Join(page));
      EXPECT_EQ(whole.error, "");
      EXPECT_TRUE(whole.open.empty()) << whole.open.size() << " elements left open";

      // What each box is for is really gone, and nothing else.
      std::string text = Lower(Join(head));
      EXPECT_EQ(text.find("sfondo1g.jpg") != std::string::npos, !no_background);
      EXPECT_EQ(text.find("vetrina foto</h1>") != std::string::npos, !no_title);
      EXPECT_NE(text.find("<title>"), std::string::npos);
    }
  }
}

TEST(TemplateSetTest, MenuAndPictureTemplatesHoldTheirMarkersOnceToALineAndLinks) {
  for (int n = 0; n <= kAlbumSize; ++n) {  // 0 is the menu
    const fs::path file = n == 0 ? kSet / "MENU.HTM" : PlaceTemplate(n);
    SCOPED_TRACE(file.filename().string());
    std::vector<std::string> lines = Lines(file);
    std::string text = Join(lines);
    for (const auto& l : lines) EXPECT_LE(MarkerCount(l), 1) << l;
    // A place past the end of the album gets a picture name ending in ".",
    // which is how the page hides what leads there: every line that links
    // to a later place's page names that place's picture.
    for (const auto& l : lines) {
      for (int k = n + 1; k <= kAlbumSize; ++k) {
        if (l.find("href=\"" + PlacePage(k) + "\"") != std::string::npos) {
          EXPECT_NE(l.find(PictureMarker(k)), std::string::npos) << l;
        }
      }
    }
    Structure s = Parse(text);
    EXPECT_EQ(s.error, "");
    EXPECT_TRUE(s.open.empty());
    if (n == 0) {
      for (const auto& m : {kTitleMarker, kPrevMarker, kNextMarker})
        EXPECT_NE(text.find(m), std::string::npos) << m;  // in small letters, as given
      for (int i = 1; i <= kAlbumSize; ++i) {
        EXPECT_NE(text.find(PictureMarker(i)), std::string::npos) << i;
        EXPECT_NE(text.find("href=\"" + PlacePage(i) + "\""), std::string::npos) << i;
      }
      EXPECT_NE(text.find("href=\"../index.htm\""), std::string::npos);
      continue;
    }
    EXPECT_NE(text.find("src=\"web/" + PictureMarker(n) + "\""), std::string::npos);
    EXPECT_NE(text.find("<a class=\"orig\" href=\"" + PictureMarker(n) + "\" download"),
              std::string::npos);
    EXPECT_NE(text.find("href=\"menu.htm\""), std::string::npos);
    if (n > 1) {
      EXPECT_NE(text.find("href=\"" + PlacePage(n - 1) + "\""), std::string::npos);
    }
    if (n < kAlbumSize) {
      EXPECT_NE(text.find("href=\"" + PlacePage(n + 1) + "\""), std::string::npos);
    }
    // Only the page of the last place has its next-album marker rewritten.
    EXPECT_EQ(text.find(kNextMarker) != std::string::npos, n == kAlbumSize);
    EXPECT_EQ(Lower(text).find(kPrevMarker), std::string::npos);
    EXPECT_EQ(Lower(text).find(kTitleMarker), std::string::npos);
  }
}

TEST(TemplateSetTest, PicturesKeepTheirBoxesAndEveryTileButTheFirstWaits) {
  // Every picture has its size written out, so nothing moves while it
  // loads, and is decoded off the page's way.
  std::vector<fs::path> pages = {kSet / "MENU.HTM", kSet / "INTESTAZ.HTM"};
  for (int i = 1; i <= kAlbumSize; ++i) pages.push_back(PlaceTemplate(i));
  for (const auto& page : pages) {
    for (auto& img : Pictures(ReadBytes(page))) {
      SCOPED_TRACE(page.filename().string() + ": " + img["src"]);
      EXPECT_FALSE(img["width"].empty());
      EXPECT_FALSE(img["height"].empty());
      EXPECT_EQ(img["decoding"], "async");
    }
  }
  // The box of each picture, as the style sheets shape it, and which
  // pictures wait until they are shown: any tile but the first may be a
  // place past the end of the album, hidden, whose picture must never be
  // requested.
  struct Case {
    fs::path page;
    std::string src, width, height;
    bool lazy;
  };
  std::vector<Case> cases = {{kSet / "INTESTAZ.HTM", "foto-1a.jpg", "64", "64", false}};
  for (int i = 1; i <= kAlbumSize; ++i) {
    cases.push_back({kSet / "MENU.HTM", "mini/" + PictureMarker(i), "400", "300", i > 1});
    cases.push_back({PlaceTemplate(i), "web/" + PictureMarker(i), "1200", "800", false});
  }
  for (const auto& c : cases) {
    SCOPED_TRACE(c.page.filename().string() + ": " + c.src);
    auto pictures = Pictures(ReadBytes(c.page));
    auto img = std::find_if(pictures.begin(), pictures.end(),
                            [&](const auto& a) { return a.count("src") && a.at("src") == c.src; });
    ASSERT_NE(img, pictures.end());
    EXPECT_EQ((*img)["width"], c.width);
    EXPECT_EQ((*img)["height"], c.height);
    EXPECT_EQ((*img)["loading"], c.lazy ? "lazy" : "");
  }
}

TEST(TemplateSetTest, ReferencesNameFilesTheSiteWillHold) {
  // Beside the index page: the site files; in an album folder: the assets,
  // the album's pages and pictures, and the index one folder up.
  std::set<std::string> beside_index(kIndexPictures.begin(), kIndexPictures.end());
  std::set<std::string> in_album(kAlbumAssets.begin(), kAlbumAssets.end());
  in_album.insert({"menu.htm", "../index.htm", kPrevMarker, kNextMarker});
  for (int i = 1; i <= kAlbumSize; ++i)
    in_album.insert(
        {PlacePage(i), PictureMarker(i), "mini/" + PictureMarker(i), "web/" + PictureMarker(i)});

  for (const auto& name : {"INTESTAZ.HTM", "INTEST_2.HTM", "PIEDE.HTM", "PIEDE_2.HTM"})
    for (const auto& ref : References(ReadBytes(kSet / name)))
      EXPECT_TRUE(beside_index.count(ref)) << name << ": " << ref;
  std::vector<fs::path> album_pages = {kSet / "MENU.HTM"};
  for (int i = 1; i <= kAlbumSize; ++i) album_pages.push_back(PlaceTemplate(i));
  for (const auto& page : album_pages) {
    std::vector<std::string> refs = References(ReadBytes(page));
    EXPECT_FALSE(refs.empty()) << page;
    for (const auto& ref : refs) EXPECT_TRUE(in_album.count(ref)) << page << ": " << ref;
  }
}

TEST(TemplateSetTest, PagesShowOnlyCopiesTheSizesFileMakesAtTheirWidths) {
  // A folder name, blanks and a longest side in pixels a line; blank lines
  // and lines starting with # say nothing.
  std::map<std::string, std::string> sizes;
  for (const auto& line : Lines(kSizes)) {
    if (line.find_first_not_of(" \t") == std::string::npos || line.starts_with("#")) continue;
    std::smatch m;
    ASSERT_TRUE(
        std::regex_match(line, m, std::regex(R"([ \t]*([A-Za-z0-9_-]+)[ \t]+([0-9]+)[ \t]*)")))
        << line;
    sizes[m[1]] = m[2];
  }
  ASSERT_EQ(sizes.size(), 2u);
  // A copy named in a page, with the width a srcset gives it.
  static const std::regex kCopy(R"(([A-Za-z0-9_-]+)/img_[0-9]{3}\.jpg( [0-9]+w)?)");
  std::vector<fs::path> pages = {kSet / "MENU.HTM"};
  for (int i = 1; i <= kAlbumSize; ++i) pages.push_back(PlaceTemplate(i));
  for (const auto& page : pages) {
    const std::string text = ReadBytes(page);
    for (auto it = std::sregex_iterator(text.begin(), text.end(), kCopy);
         it != std::sregex_iterator(); ++it) {
      SCOPED_TRACE(page.filename().string() + ": " + (*it)[0].str());
      ASSERT_TRUE(sizes.count((*it)[1]));
      if ((*it)[2].matched) {
        EXPECT_EQ((*it)[2].str(), " " + sizes[(*it)[1]] + "w");
      }
    }
  }
}

}  // namespace
}  // namespace vf
