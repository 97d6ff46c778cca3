// Behaviour that the program settles where a plain reading leaves it open.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

const char kStart[] = "drive C c\nprogram C:\\PROG\nstart\n";

TEST(OpenPoints, OutputFolderThatCannotBeReachedDoesNotStopTheBuild) {
  TempTree tree;
  WriteFixtureTemplates(tree, "c/PROG");
  // No backslash: the page goes to the current folder, the root of C:.
  RunResult r = RunScript(std::string(kStart) +
                              "set txtNUM_FILE 1\nset txtNOME_FILE_HTM Pagina.htm\nclick Command1\n"
                              "print Module1.Dir_Output\n",
                          tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(tree.Exists("c/pagina.htm"));
  EXPECT_NE(r.out.find("Module1.Dir_Output = \n"), std::string::npos);
  // A drive that is not there and a folder that does not exist: the page
  // write decides, and the recovery takes the page to drive C:.
  for (const char* name : {"Q:\\Sito\\index.htm", "C:\\Manca\\index.htm", "?:\\x\\index.htm"}) {
    r = RunScript(std::string(kStart) + "set txtNUM_FILE 1\nset txtNOME_FILE_HTM " + name +
                      "\nclick Command1\n",
                  tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("ASK: Visualizzo la pagina creata"), std::string::npos) << name;
  }
  EXPECT_TRUE(tree.Exists("c/index.htm"));
  // A folder without a drive moves to the same folder under the root of C:.
  r = RunScript(
      std::string(kStart) +
          "set txtNUM_FILE 1\nset txtNOME_FILE_HTM \\\\Manca\\index.htm\nclick Command1\n",
      tree.root());
  EXPECT_NE(r.out.find("(non esiste stessa cartella) C:\\manca\\index.htm{CR}"), std::string::npos)
      << r.out;
}

TEST(OpenPoints, WithoutDrivesTheFallbacksStayInTheProgramsOwnArea) {
  TempTree tree;
  tree.Write("foto/a.jpg", "A");
  tree.Write("casa/Documenti/lettera.txt", "cara");
  std::string z = "Z:" + tree.root().string();
  for (char& c : z) c = c == '/' ? '\\' : c;
  // No drive line: C: is the folder of its own in the user's area, Z: the
  // root; the output folder is missing, so the page goes to C:\index.htm.
  RunResult r =
      RunScript("start\nset txtPATH_RICERCA " + z + "\\foto\nclick cmdCONFERMA\n" +
                    "set txtNOME_FILE_HTM " + z + "\\manca\\sito\\index.htm\n" + "click Command1\n",
                tree.root(), tree.Path("casa").string());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("(non esiste stessa cartella) C:\\"), std::string::npos) << r.out;
  EXPECT_EQ(tree.Read("casa/Vetrina-Foto/Disco C/dir_0001/img_001.jpg"), "A");
  EXPECT_TRUE(tree.Exists("casa/Vetrina-Foto/Disco C/index.htm"));
  for (const std::string& name : tree.Tree("casa")) {
    EXPECT_TRUE(name.rfind("Documenti/", 0) == 0 || name.rfind("Vetrina-Foto/Disco C/", 0) == 0 ||
                name == "Vetrina-Foto/")
        << name;
  }
  EXPECT_FALSE(tree.Exists("manca"));
}

TEST(OpenPoints, EmptyTemplatesAddNothing) {
  TempTree tree;
  WriteFixtureTemplates(tree, "c/PROG");
  tree.Write("c/PROG/INTESTAZ.HTM", "");
  tree.Write("c/PROG/PIEDE.HTM", "");
  tree.Write("c/PROG/MENU.HTM", "");
  tree.Write("c/Foto/a.jpg", "a");
  tree.MakeFolder("c/Sito");
  RunResult r = RunScript(std::string(kStart) +
                              "add C:\\Foto\\a.jpg\nset txtNUM_FILE 1\n"
                              "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command1\n",
                          tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out.find("MSG:"), std::string::npos) << r.out;
  std::string page = tree.Read("c/Sito/index.htm");
  EXPECT_EQ(page.substr(0, 9), "<HTML>\r\n<");
  EXPECT_EQ(page.substr(page.size() - 17), "</center></div>\r\n");
  EXPECT_EQ(tree.Read("c/Sito/dir_0001/menu.htm"), "");
}

TEST(OpenPoints, AlbumSizeBelowOneGivesOneAlbumPerEntryWithLinksThatLead) {
  for (const char* size : {"0", "", "-2"}) {
    SCOPED_TRACE(size);
    TempTree tree;
    WriteFixtureTemplates(tree, "c/PROG");
    tree.MakeFolder("c/Sito");
    std::string adds;
    for (const char* f : {"a.jpg", "b.gif", "c.jpg"}) {
      tree.Write(std::string("c/Foto/") + f, f);
      adds += std::string("add C:\\Foto\\") + f + "\n";
    }
    RunResult r = RunScript(std::string(kStart) + adds + "set txtMAX_N_FILES " + size +
                                "\nset txtNUM_FILE 3\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\n"
                                "click Command1\n",
                            tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    std::string index = tree.Read("c/Sito/index.htm");
    EXPECT_NE(index.find("SCELTA  3</A>"), std::string::npos);
    EXPECT_NE(tree.Read("c/Sito/dir_0001/menu.htm").find("../dir_0002/menu.htm\">succ"),
              std::string::npos);
    EXPECT_NE(tree.Read("c/Sito/dir_0003/menu.htm").find("../index.htm\">succ"), std::string::npos);
    EXPECT_EQ(tree.Read("c/Sito/dir_0002/img_001.gif"), "b.gif");
  }
}

TEST(OpenPoints, PagedBuildTakesExtensionsFromItsOwnPageAndFollowsAMovedPage) {
  TempTree tree;
  WriteFixtureTemplates(tree, "c/PROG");
  tree.MakeFolder("c/Sito");
  std::string adds;
  for (const char* f : {"a.jpg", "b.jpg", "c.gif", "d.bmp"}) {
    tree.Write(std::string("c/Foto/") + f, f);
    adds += std::string("add C:\\Foto\\") + f + "\n";
  }
  RunResult r = RunScript(std::string(kStart) + adds +
                              "set txtMAX_N_FILES 2\nset txtNUM_FILE 4\n"
                              "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command4\n",
                          tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::string menu2 = tree.Read("c/Sito/dir_0002/menu.htm");
  EXPECT_NE(menu2.find("img_001.gif"), std::string::npos) << menu2;
  EXPECT_NE(menu2.find("img_002.bmp"), std::string::npos);
  EXPECT_NE(menu2.find("../dir_0001/menu.htm\">prec"), std::string::npos);

  // A read-only output drive: the first page moves to C:, and the later
  // pages and the final page follow it there.
  TempTree moved;
  WriteFixtureTemplates(moved, "c/PROG");
  moved.MakeFolder("c/Sito");
  moved.MakeFolder("e/Sito");
  for (const char* f : {"a.jpg", "b.jpg", "c.gif", "d.bmp"})
    moved.Write(std::string("c/Foto/") + f, f);
  r = RunScript("drive C c\ndrive E e readonly\nprogram C:\\PROG\nstart\n" + adds +
                    "set txtMAX_N_FILES 2\nset txtNUM_FILE 4\n"
                    "set txtNOME_FILE_HTM E:\\Sito\\index.htm\nclick Command4\n",
                moved.root());
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* f : {"c/Sito/pag_1.htm", "c/Sito/pag_2.htm", "c/Sito/index.htm",
                        "c/Sito/dir_0002/img_002.bmp", "c/Sito/dir_0003/img_001.htm"}) {
    EXPECT_TRUE(moved.Exists(f)) << f;
  }
  EXPECT_NE(r.out.find("ASK: Visualizzo la prima pagina creata C:\\sito\\index.htm (S/N)  -> NO"),
            std::string::npos)
      << r.out;
}

}  // namespace
}  // namespace vf::test
