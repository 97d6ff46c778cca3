// A site built with the program's own template set: every marker of every
// menu and picture page is found and rewritten, in both cases.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <regex>
#include <string>

#include "platform/case_fold.h"
#include "tests/support/e2e.h"

namespace vf::test {
namespace {

TEST(TemplateSite, MarkersOfEveryPageAreRewrittenInBothCases) {
  for (bool capitals : {false, true}) {
    SCOPED_TRACE(capitals ? "capitals" : "small letters");
    TempTree tree;
    tree.MakeFolder("c/Sito");
    // The program's own set, without its sizes file: the pictures here are
    // no pictures.
    std::filesystem::copy(std::string(VF_SOURCE_DIR) + "/templates", tree.Path("p"),
                          std::filesystem::copy_options::recursive);
    std::filesystem::remove(tree.Path("p/DIMENSIONI.TXT"));
    std::string script = "drive C c\ndrive P p readonly\nprogram P:\\\nstart\n";
    for (int i = 1; i <= 25; ++i) {
      char name[32];
      std::snprintf(name, sizeof name, "P%02d.GIF", i);
      tree.Write(std::string("c/Foto/") + name, name);
      script += std::string("add C:\\Foto\\") + name + "\n";
    }
    script += std::string(capitals ? "click Option1\n" : "") +
              "set txtNUM_FILE 25\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command1\n";
    RunResult r = RunScript(script, tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.find("MSG:"), std::string::npos) << r.out;

    const std::regex left_over("img_00[1-9]\\.jpg|\\.\\./dir_000[ps]/menu\\.htm");
    for (int album = 1; album <= 3; ++album) {
      std::string folder = capitals ? "c/Sito/DIR_000" + std::to_string(album) + "/"
                                    : "c/Sito/dir_000" + std::to_string(album) + "/";
      std::string menu = ToLower(tree.Read(folder + (capitals ? "MENU.HTM" : "menu.htm")));
      ASSERT_NE(menu, "<missing>");
      EXPECT_FALSE(std::regex_search(menu, left_over)) << album;
      EXPECT_NE(menu.find("menu immagini - pag." + std::to_string(album)), std::string::npos);
      EXPECT_NE(menu.find("img_001.gif"), std::string::npos);
      int places = album < 3 ? 9 : 7;
      for (int i = 1; i <= places; ++i) {
        char page[32];
        std::snprintf(page, sizeof page, capitals ? "IMG_%03d.HTM" : "img_%03d.htm", i);
        std::string text = ToLower(tree.Read(folder + page));
        ASSERT_NE(text, "<missing>") << folder << page;
        EXPECT_FALSE(std::regex_search(text, left_over)) << folder << page;
      }
    }
    std::string last = ToLower(
        tree.Read(capitals ? "c/Sito/DIR_0001/IMG_009.HTM" : "c/Sito/dir_0001/img_009.htm"));
    EXPECT_NE(last.find("../dir_0002/menu.htm"), std::string::npos);
  }
}

}  // namespace
}  // namespace vf::test
