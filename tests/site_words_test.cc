#include <gtest/gtest.h>

#include <cerrno>
#include <map>

#include "desktop/site_words.h"
#include "pages/page_words.h"
#include "tests/support/banco.h"
#include "tests/support/memory_site_disk.h"
#include "tests/support/tiff_builder.h"

namespace vf {
namespace {

using namespace std::string_literals;
using test::Ascii;
using test::Entry;
using test::IfdAt;

// EXIF as libvips gives it: a description in IFD0, a date in the EXIF IFD.
std::string Exif(const std::string& description, const std::string& taken) {
  std::vector<Entry> ifd0 = {Ascii(0x010E, description), {0x8769, 4, 1, IfdAt(1)}};
  return "Exif\0\0"s + test::Tiff(false, {ifd0, {Ascii(0x9003, taken)}});
}

constexpr char kPicturePage[] =
    "<title data-vf=\"titolo\">Foto</title><a data-vf=\"sito\">Vetrina Foto</a>\r\n"
    "<img data-vf=\"foto\" src=\"web/img_00N.jpg\" alt=\"Foto\" width=\"1200\" height=\"800\">\r\n"
    "<p data-vf=\"didascalia\"></p><time data-vf=\"data\"></time>\r\n";

struct Site {
  test::MemorySiteDisk disk;
  std::map<std::string, PictureHeader> headers;
  SiteWords words;

  Site() {
    for (const char* folder : {"/f", "/f/Casa", "/f/Mare", "/s", "/s/dir_0001", "/s/dir_0002",
                               "/s/dir_0001/mini", "/s/dir_0001/web"}) {
      disk.PutFolder(folder);
    }
    Picture("/f/Casa/a.jpg", 1, 1, "Casa");
    Picture("/f/Casa/b.jpg", 1, 2, "Casa");
    Picture("/f/Mare/c.jpg", 1, 3, "Mare");
    Picture("/f/Mare/d.wav", 2, 1, "Mare");
    headers["/f/Casa/a.jpg"].exif = Exif("Tronco <b>", "2025:07:14 10:00:00");
    headers["/f/Mare/c.jpg"].exif = Exif("Dalla camera", "2025:07:16 09:00:00");
    headers["/f/Mare/d.wav"].exif = Exif("Mai letto", "2024:01:01 09:00:00");
    disk.PutFile("/f/Casa/B.TXT", "Dal file accanto\r\n", 1);
    disk.PutFile("/f/Mare/c.txt", "Il mare di Citt\xC3\xA0", 1);
    disk.PutFile("/f/Mare/d.txt", "Un suono", 1);
    headers["/s/dir_0001/mini/img_001.jpg"] = {.width = 300, .height = 200};
    headers["/s/dir_0001/web/img_003.jpg"] = {.width = 1067, .height = 1600};
    disk.PutFile("/s/dir_0001/mini/img_001.jpg", "", 1);
    disk.PutFile("/s/dir_0001/menu.htm",
                 "<h1>Album</h1><p data-vf=\"album\"></p>\r\n"
                 "<img data-vf=\"foto\" src=\"mini/img_001.jpg\" alt=\"Foto 1\">\r\n"
                 "<img data-vf=\"foto\" src=\"mini/img_002.jpg\" alt=\"Foto 2\">\r\n",
                 1);
    disk.PutFile(
        "/s/index.htm",
        "<title data-vf=\"sito\">Vetrina Foto</title><style data-vf=\"album\"></style>\r\n", 1);
    words.menu_pages = {"/s/dir_0001/menu.htm"};
    words.menu_albums = {1};
    words.index_pages = {"/s/index.htm", "/s/pag_2.htm"};
    words.sizes = {{"web", 1600}, {"mini", 480}};
    words.site_title = "Vacanze <2025>";
  }
  void Picture(const std::string& source, int64_t album, int64_t place, const char* folder) {
    const std::string dir = "/s/dir_000" + std::to_string(album);
    const std::string n = "00" + std::to_string(place);
    words.pictures.push_back({source, dir + "/img_" + n + source.substr(source.size() - 4),
                              dir + "/img_" + n + ".htm", album, place, folder});
    std::string page = kPicturePage;
    page.replace(page.find("00N"), 3, n);
    disk.PutFile(source, "", 1);
    disk.PutFile(dir + "/img_" + n + ".htm", page, 1);
  }
  std::vector<DiskResult> Run() {
    return WritePageWords(
        words, disk,
        [this](const std::string& path) {
          auto found = headers.find(path);
          return found == headers.end() ? std::nullopt
                                        : std::optional<PictureHeader>(found->second);
        },
        1);
  }
  std::string Page(const std::string& path) { return disk.Find(path)->content; }
};

TEST(SiteWords, EachPageSaysWhatItsPhotosAre) {
  Site site;
  // The second index page is not there: its words are lost, nothing else.
  const std::vector<DiskResult> failures = site.Run();
  ASSERT_EQ(failures.size(), 1u);
  EXPECT_EQ(failures[0].path, "/s/pag_2.htm");
  struct Row {
    const char* page;
    const char* text;
  } rows[] = {
      // Words from the picture, escaped, and its date.
      {"/s/dir_0001/img_001.htm",
       "<title data-vf=\"titolo\">Tronco &lt;b&gt;</title><a data-vf=\"sito\">Vacanze "
       "&lt;2025&gt;</a>\r\n"
       "<img data-vf=\"foto\" src=\"web/img_001.jpg\" alt=\"Tronco &lt;b&gt;\" width=\"1200\" "
       "height=\"800\">\r\n"
       "<p data-vf=\"didascalia\">Tronco &lt;b&gt;</p><time data-vf=\"data\" "
       "datetime=\"2025-07-14\">14 luglio 2025</time>\r\n"},
      // A sidecar found in another case gives the words; no date.
      {"/s/dir_0001/img_002.htm",
       "<title data-vf=\"titolo\">Dal file accanto</title><a data-vf=\"sito\">Vacanze "
       "&lt;2025&gt;</a>\r\n"
       "<img data-vf=\"foto\" src=\"web/img_002.jpg\" alt=\"Dal file accanto\" width=\"1200\" "
       "height=\"800\">\r\n"
       "<p data-vf=\"didascalia\">Dal file accanto</p><time data-vf=\"data\"></time>\r\n"},
      // A sidecar beats the picture's own words, but not its date; the real size.
      {"/s/dir_0001/img_003.htm",
       "<title data-vf=\"titolo\">Il mare di Citt&#224;</title><a data-vf=\"sito\">Vacanze "
       "&lt;2025&gt;</a>\r\n"
       "<img data-vf=\"foto\" src=\"web/img_003.jpg\" alt=\"Il mare di Citt&#224;\" width=\"1067\" "
       "height=\"1600\">\r\n"
       "<p data-vf=\"didascalia\">Il mare di Citt&#224;</p><time data-vf=\"data\" "
       "datetime=\"2025-07-16\">16 luglio 2025</time>\r\n"},
      // What is no picture has no words of its own.
      {"/s/dir_0002/img_001.htm",
       "<title data-vf=\"titolo\">Foto</title><a data-vf=\"sito\">Vacanze &lt;2025&gt;</a>\r\n"
       "<img data-vf=\"foto\" src=\"web/img_001.jpg\" alt=\"Foto\" width=\"1200\" "
       "height=\"800\">\r\n"
       "<p data-vf=\"didascalia\"></p><time data-vf=\"data\"></time>\r\n"},
      {"/s/dir_0001/menu.htm",
       "<h1>Album</h1><p data-vf=\"album\">Casa &#183; Mare &#8212; 14&#8211;16 luglio "
       "2025</p>\r\n"
       "<img data-vf=\"foto\" src=\"mini/img_001.jpg\" alt=\"Tronco &lt;b&gt;\" width=\"300\" "
       "height=\"200\">\r\n"
       "<img data-vf=\"foto\" src=\"mini/img_002.jpg\" alt=\"Dal file accanto\">\r\n"},
      // Covers from the smallest size, where the picture is there.
      {"/s/index.htm",
       "<title data-vf=\"sito\">Vacanze &lt;2025&gt;</title><style data-vf=\"album\">"
       "td:has(a[href=\"dir_0001\\\\menu.htm\"]){--vf-copertina:url(\"dir_0001/mini/img_001.jpg\");"
       "--vf-album:\"Casa \\B7  Mare \\2014  14\\2013 16 luglio 2025\"}"
       "td:has(a[href=\"dir_0002\\\\menu.htm\"]){--vf-album:\"Mare\"}</style>\r\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(site.Page(row.page), row.text) << row.page;
  // The sources stay as they were; only pages are written.
  for (const std::string& change : site.disk.changes()) {
    EXPECT_TRUE(change.starts_with("write /s/")) << change;
  }
}

TEST(SiteWords, AnAvifSourceStaysOnlyWhereItsFilesAreAndAvifIsOn) {
  const std::string source = "<source data-vf=\"avif\" srcset=\"web/img_00N.avif 1600w\">";
  for (bool avif : {true, false}) {
    Site site;
    site.words.avif = avif;
    for (const char* n : {"1", "3"}) {
      std::string page = source;
      page.replace(page.find('N'), 1, n);
      site.disk.PutFile("/s/dir_0001/img_00" + std::string(n) + ".htm", page, 1);
    }
    site.disk.PutFile("/s/dir_0001/web/img_003.avif", "", 1);
    site.Run();
    EXPECT_EQ(site.Page("/s/dir_0001/img_001.htm"), "");
    EXPECT_EQ(site.Page("/s/dir_0001/img_003.htm"),
              avif ? "<source data-vf=\"avif\" srcset=\"web/img_003.avif 1600w\">" : "");
  }
}

TEST(SiteWords, APageThatCannotBeWrittenKeepsItsWordsAndTheRestGoOn) {
  Site site;
  site.words.site_title.clear();
  site.words.pictures[0].folder_name.clear();  // the owner's home: never shown
  site.disk.Fail("write", "/s/dir_0001", ENOSPC);
  const std::vector<DiskResult> failures = site.Run();
  // The missing second index page, and the full disk.
  ASSERT_EQ(failures.size(), 2u);
  EXPECT_EQ(failures[0].error + failures[1].error, ENOENT + ENOSPC);
  EXPECT_EQ(site.Page("/s/dir_0001/img_001.htm"), [] {
    std::string page = kPicturePage;
    return page.replace(page.find("00N"), 3, "001");
  }());
  EXPECT_NE(site.Page("/s/dir_0001/img_002.htm").find("Dal file accanto"), std::string::npos);
  EXPECT_NE(site.Page("/s/dir_0001/menu.htm").find(">Casa &#183; Mare &#8212;"), std::string::npos);
  EXPECT_NE(site.Page("/s/index.htm").find("<title data-vf=\"sito\">Vetrina Foto</title>"),
            std::string::npos);
}

}  // namespace
}  // namespace vf

namespace vf {
namespace {

TEST(SiteWords, NoFolderAtOrAboveHomeNorADriveRootIsNamed) {
  TempTreeFileSystem fs;
  fs.AddFile("C:\\Vacanze 2025\\Casa\\a.jpg", "a");
  fs.AddFile("C:\\Vacanze 2025\\Mare\\b.jpg", "b");
  fs.AddFile("C:\\c.jpg", "c");
  fs.AddFolder("C:\\Sito\\dir_0001");
  fs.AddFolder("C:\\Sito\\dir_0002");
  const std::string drive = *fs.HostPath("C:\\");
  const std::string root = drive.substr(0, drive.find_last_not_of('/') + 1);
  BuiltSite site;
  site.Add({"C:\\Vacanze 2025\\Casa\\a.jpg", "C:\\Sito\\dir_0001\\img_001.jpg", 1, 1});
  site.Add({"C:\\Vacanze 2025\\Mare\\b.jpg", "C:\\Sito\\dir_0001\\img_002.jpg", 1, 2});
  site.AddIndexPage("C:\\Sito\\index.htm");
  BuiltSite rooted = site;
  rooted.Add({"C:\\c.jpg", "C:\\Sito\\dir_0002\\img_001.jpg", 2, 1});
  struct Row {
    const BuiltSite* site;
    std::string title_line, home, title, folders;
  } rows[] = {
      {&site, "", "/altrove", "Vacanze 2025", "Casa Mare"},
      {&site, "titolo Liguria\n", "/altrove", "Liguria", "Casa Mare"},
      {&site, "", root + "/Vacanze 2025", "", "Casa Mare"},
      {&site, "", root + "/Vacanze 2025/Casa", "", " Mare"},
      {&site, "", root, "Vacanze 2025", "Casa Mare"},
      {&rooted, "", "/altrove", "", "Casa Mare "},
  };
  for (const Row& row : rows) {
    const SiteWords words = WordsOfSite(*row.site, fs, ParseSizesFile(row.title_line), row.home);
    EXPECT_EQ(words.site_title, row.title) << row.home;
    std::string folders;
    for (size_t i = 0; i < words.pictures.size(); ++i) {
      folders += (i == 0 ? "" : " ") + words.pictures[i].folder_name;
    }
    EXPECT_EQ(folders, row.folders) << row.home;
  }
  // Pages where the build wrote them, on the host.
  const SiteWords words = WordsOfSite(rooted, fs, {}, "/altrove");
  EXPECT_EQ(words.pictures[1].page, root + "/Sito/dir_0001/img_002.htm");
  EXPECT_EQ(words.menu_pages, (std::vector<std::string>{root + "/Sito/dir_0001/menu.htm",
                                                        root + "/Sito/dir_0002/menu.htm"}));
  EXPECT_EQ(words.menu_albums, (std::vector<int64_t>{1, 2}));
  EXPECT_EQ(words.index_pages, std::vector<std::string>{root + "/Sito/index.htm"});
}

}  // namespace
}  // namespace vf
