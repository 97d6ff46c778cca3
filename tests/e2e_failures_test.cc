// Missing templates, pages that move when their folder cannot be written,
// and output folders that cannot be reached, through vetrina-foto-script.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

using Texts = std::vector<std::string>;

// The small template set in c/PROG, drive C: = c, E: = e read-only.
struct Tree : TempTree {
  Tree() { WriteFixtureTemplates(*this, "c/PROG"); }
  RunResult Run(const std::string& body, const std::string& setup = "") const {
    RunResult r = RunScript("drive C c\ndrive E e readonly\nprogram C:\\PROG\n" + setup +
                                "start\nset txtNUM_FILE 1\n" + body,
                            root());
    EXPECT_EQ(r.status, 0) << r.err;
    return r;
  }
};

TEST(Failures, MissingTemplatesAskWithYesAndNo) {
  Tree tree;
  tree.MakeFolder("c/Sito");
  for (const char* f : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM"}) {
    std::filesystem::remove(tree.Path(std::string("c/PROG/") + f));
  }
  RunResult r = tree.Run(
      "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nanswer yes\nanswer no\nclick Command1\n"
      "answer yes\nanswer yes\nanswer yes\nclick Command1\n");
  const std::string menu = "BEEP\nASK: Manca il file MENU.HTM, continuo ?{CR}{CR} -> YES\nBEEP\n";
  const std::string head =
      "ASK: Manca il file INTESTAZ.HTM, continuo ?{CR}{CR}C:\\PROG\\INTESTAZ.HTM";
  const std::string preview =
      "BEEP\nASK: Visualizzo la pagina creata c:\\sito\\index.htm (S/N)  -> NO\n";
  EXPECT_EQ(r.out, menu + head + " -> NO\nCURSOR: NORMAL\n" + preview + menu + head +
                       " -> YES\nBEEP\nASK: Manca il file PIEDE.HTM, continuo ?{CR}{CR}"
                       "C:\\PROG\\PIEDE.HTM -> YES\nCURSOR: BUSY\nCURSOR: NORMAL\n" +
                       preview);
  // Without head and foot the page holds the program's own lines only.
  EXPECT_EQ(
      tree.Text("c/Sito/index.htm"),
      "<HTML>\n<table border=\"0\" cellpadding=\"0\" cellspacing=\"10\" width=\"130\">\n<tr>\n \n"
      " </tr>\n</table>\n</center></div>\n</HTML>\n");
  // Empty templates add nothing and ask nothing.
  for (const char* f : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM"})
    tree.Write(std::string("c/PROG/") + f, "");
  tree.Write("c/Foto/a.jpg", "a");
  r = tree.Run("add C:\\Foto\\a.jpg\nset txtNOME_FILE_HTM C:\\Sito\\e.htm\nclick Command1\n");
  EXPECT_EQ(r.out,
            "CURSOR: BUSY\nCURSOR: NORMAL\nBEEP\nASK: Visualizzo la pagina creata "
            "c:\\sito\\e.htm (S/N)  -> NO\n");
  EXPECT_EQ(tree.Read("c/Sito/dir_0001/menu.htm"), "");
}

TEST(Failures, AReadOnlyDriveFallsBackToCThenToCIndex) {
  Tree tree;
  tree.MakeFolder("e/FOTO");
  tree.MakeFolder("c/FOTO");
  RunResult r = tree.Run(
      "set txtNOME_FILE_HTM E:\\FOTO\\Album.htm\nanswer yes\nclick Command1\nclick Command5\n");
  EXPECT_EQ(r.out,
            "CURSOR: BUSY\nBEEP\nMSG: Errore in registrazione Elenco (forse e' un CD-ROM) "
            "e:\\foto\\album.htm{CR}{CR}Tento di registrare sul disco C: {CR}{CR} ERR= 75 - Errore "
            "di accesso al percorso/file\nCURSOR: BUSY\nCURSOR: NORMAL\nBEEP\nASK: Visualizzo la "
            "pagina creata C:\\foto\\album.htm (S/N)  -> YES\n"
            // The moved page is opened where it is, not by its name alone.
            "RUN: START /max /w C:\\foto\\album.htm -> OK\nRUN: START /max /w C:\\foto\\album.htm "
            "-> OK\n");
  EXPECT_EQ(tree.Read("c/FOTO/album.htm").substr(0, 6), "<HTML>");
  // No such folder on C: either: the page goes to C:\index.htm.
  std::filesystem::remove_all(tree.Path("c/FOTO"));
  r = tree.Run(
      "set txtNOME_FILE_HTM E:\\FOTO\\Album.htm\nclick Command1\n"
      "print Module1.Dir_Output\nprint Module1.Nome_File_Output\n");
  EXPECT_EQ(tree.Read("c/index.htm").substr(0, 6), "<HTML>");
  EXPECT_TRUE(r.Has("Module1.Dir_Output = C:\\\nModule1.Nome_File_Output = index.htm\n"));
  // A paged build's later pages and final page follow the moved first page.
  tree.MakeFolder("c/Sito");
  tree.MakeFolder("e/Sito");
  std::string adds;
  for (const char* f : {"a.jpg", "b.jpg", "c.gif", "d.bmp"}) {
    tree.Write(std::string("c/Foto/") + f, f);
    adds += std::string("add C:\\Foto\\") + f + "\n";
  }
  r = tree.Run(adds +
               "set txtMAX_N_FILES 2\nset txtNUM_FILE 4\n"
               "set txtNOME_FILE_HTM E:\\Sito\\index.htm\nclick Command4\n");
  for (const char* f :
       {"pag_1.htm", "pag_2.htm", "index.htm", "dir_0002/img_002.bmp", "dir_0003/img_001.htm"}) {
    EXPECT_TRUE(tree.Exists(std::string("c/Sito/") + f)) << f;
  }
  const std::string menu2 = tree.Read("c/Sito/dir_0002/menu.htm");
  EXPECT_NE(menu2.find("<img src=\"img_001.gif\">"), std::string::npos) << menu2;
  EXPECT_NE(menu2.find("<img src=\"img_002.bmp\">"), std::string::npos);
  EXPECT_TRUE(r.Has("ASK: Visualizzo la prima pagina creata C:\\sito\\index.htm (S/N)  -> NO"));
}

TEST(Failures, OutputFoldersThatCannotBeReachedDoNotStopTheBuild) {
  Tree tree;
  // No backslash: the page goes to the current folder, the root of C:.
  RunResult r =
      tree.Run("set txtNOME_FILE_HTM Pagina.htm\nclick Command1\nprint Module1.Dir_Output\n");
  EXPECT_TRUE(tree.Exists("c/pagina.htm"));
  EXPECT_TRUE(r.Has("Module1.Dir_Output = \n"));
  // A drive that is not there, a missing folder: the recovery takes the page
  // to drive C:; a folder without a drive moves under the root of C:.
  for (const char* name : {"Q:\\Sito\\index.htm", "C:\\Manca\\index.htm", "?:\\x\\index.htm"}) {
    r = tree.Run(std::string("set txtNOME_FILE_HTM ") + name + "\nclick Command1\n");
    EXPECT_TRUE(r.Has("ASK: Visualizzo la pagina creata")) << name;
  }
  EXPECT_TRUE(tree.Exists("c/index.htm"));
  r = tree.Run("set txtNOME_FILE_HTM \\\\Manca\\index.htm\nclick Command1\n");
  EXPECT_TRUE(r.Has("(non esiste stessa cartella) C:\\manca\\index.htm{CR}")) << r.out;

  // No drive line: C: is a folder of its own in the user's area, Z: the
  // root; the output folder is missing, so the page goes to C:\index.htm.
  TempTree home;
  home.Write("foto/a.jpg", "A");
  home.Write("casa/Documenti/lettera.txt", "cara");
  std::string z = "Z:" + home.root().string();
  for (char& c : z) c = c == '/' ? '\\' : c;
  r = RunScript("start\nset txtPATH_RICERCA " + z +
                    "\\foto\nclick cmdCONFERMA\nset txtNOME_FILE_HTM " + z +
                    "\\manca\\sito\\index.htm\nclick Command1\n",
                home.root(), home.Path("casa").string());
  EXPECT_TRUE(r.Has("(non esiste stessa cartella) C:\\")) << r.out;
  EXPECT_EQ(home.Read("casa/Vetrina-Foto/Disco C/dir_0001/img_001.jpg"), "A");
  EXPECT_TRUE(home.Exists("casa/Vetrina-Foto/Disco C/index.htm"));
  for (const std::string& name : home.Tree("casa")) {
    EXPECT_TRUE(name.starts_with("Documenti/") || name.starts_with("Vetrina-Foto/Disco C/") ||
                name == "Vetrina-Foto/")
        << name;
  }
  EXPECT_FALSE(home.Exists("manca"));
}

}  // namespace
}  // namespace vf::test
