// The generator's checks and the recovery of a page that cannot be written.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

const char kSetUp[] = "drive C c\ndrive E e readonly\nprogram C:\\PROG\nstart\nset txtNUM_FILE 1\n";

std::vector<std::string> Until(const std::vector<std::string>& lines, const std::string& prefix) {
  std::vector<std::string> out;
  for (const std::string& l : lines) {
    if (l.rfind(prefix, 0) == 0) break;
    out.push_back(l);
  }
  return out;
}

TEST(Frame, MissingTemplatesAskWithYesAndNo) {
  TempTree tree;
  WriteFixtureTemplates(tree, "c/PROG");
  tree.MakeFolder("c/Sito");
  for (const char* f : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM"}) {
    std::filesystem::remove(tree.Path(std::string("c/PROG/") + f));
  }
  RunResult r = RunScript(std::string(kSetUp) +
                              "set txtNOME_FILE_HTM C:\\Sito\\index.htm\n"
                              "answer yes\nanswer no\nclick Command1\n"
                              "answer yes\nanswer yes\nanswer yes\nclick Command1\n",
                          tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = {
      "BEEP",
      "ASK: Manca il file MENU.HTM, continuo ?{CR}{CR} -> YES",
      "BEEP",
      "ASK: Manca il file INTESTAZ.HTM, continuo ?{CR}{CR}C:\\PROG\\INTESTAZ.HTM -> NO",
      "CURSOR: NORMAL",
      "BEEP",
      "ASK: Visualizzo la pagina creata c:\\sito\\index.htm (S/N)  -> NO",
      "BEEP",
      "ASK: Manca il file MENU.HTM, continuo ?{CR}{CR} -> YES",
      "BEEP",
      "ASK: Manca il file INTESTAZ.HTM, continuo ?{CR}{CR}C:\\PROG\\INTESTAZ.HTM -> YES",
      "BEEP",
      "ASK: Manca il file PIEDE.HTM, continuo ?{CR}{CR}C:\\PROG\\PIEDE.HTM -> YES",
      "CURSOR: BUSY",
      "CURSOR: NORMAL",
      "BEEP",
      "ASK: Visualizzo la pagina creata c:\\sito\\index.htm (S/N)  -> NO"};
  EXPECT_EQ(r.lines, expected);
  // Without head and foot the page holds the program's own lines only.
  EXPECT_EQ(
      tree.Read("c/Sito/index.htm"),
      CrLf({"<HTML>", "<table border=\"0\" cellpadding=\"0\" cellspacing=\"10\" width=\"130\">",
            "<tr>", " ", " </tr>", "</table>", "</center></div>", "</HTML>"}));
}

TEST(Frame, ReadOnlyDriveFallsBackToCThenToCIndex) {
  TempTree tree;
  WriteFixtureTemplates(tree, "c/PROG");
  tree.MakeFolder("e/FOTO");
  tree.MakeFolder("c/FOTO");
  RunResult r =
      RunScript(std::string(kSetUp) +
                    "set txtNOME_FILE_HTM E:\\FOTO\\Album.htm\nanswer yes\nclick Command1\n"
                    "click Command5\n",
                tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = {
      "CURSOR: BUSY", "BEEP",
      "MSG: Errore in registrazione Elenco (forse e' un CD-ROM) e:\\foto\\album.htm{CR}{CR}Tento "
      "di registrare sul disco C: {CR}{CR} ERR= 75 - Errore di accesso al percorso/file",
      "CURSOR: BUSY", "CURSOR: NORMAL", "BEEP",
      "ASK: Visualizzo la pagina creata C:\\foto\\album.htm (S/N)  -> YES",
      // The moved page is opened where it is, not by its name alone.
      "RUN: START /max /w C:\\foto\\album.htm -> OK",
      "RUN: START /max /w C:\\foto\\album.htm -> OK"};
  EXPECT_EQ(r.lines, expected);
  EXPECT_NE(tree.Read("c/FOTO/album.htm").find("<HTML>"), std::string::npos);

  // No such folder on C: either: the page goes to C:\index.htm.
  TempTree second;
  WriteFixtureTemplates(second, "c/PROG");
  second.MakeFolder("e/FOTO");
  r = RunScript(std::string(kSetUp) +
                    "set txtNOME_FILE_HTM E:\\FOTO\\Album.htm\nclick Command1\n"
                    "print Module1.Dir_Output\nprint Module1.Nome_File_Output\n",
                second.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> messages;
  for (const std::string& l : r.lines) {
    if (l.rfind("MSG: ", 0) == 0) messages.push_back(l);
  }
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[1],
            "MSG: Errore in registrazione Elenco (non esiste stessa cartella) "
            "C:\\foto\\album.htm{CR}{CR}Tento di registrare sul disco con il nome C:\\index.htm "
            "{CR}{CR} ERR= 76 - Impossibile trovare il percorso");
  EXPECT_NE(second.Read("c/index.htm").find("<HTML>"), std::string::npos);
  EXPECT_NE(r.out.find("Module1.Dir_Output = C:\\\nModule1.Nome_File_Output = index.htm\n"),
            std::string::npos);
}

TEST(Frame, NoWayOutEndsTheRunOnceAndOtherFailuresGoOn) {
  TempTree tree;
  WriteFixtureTemplates(tree, "c/PROG");
  tree.MakeFolder("e/FOTO");
  // C:\index.htm itself cannot be written: one message and the run ends.
  RunResult r = RunScript(
      "drive C c\ndrive E e readonly\nprogram C:\\PROG\nfail C:\\index.htm 75\n"
      "start\nset txtNUM_FILE 1\nset txtNOME_FILE_HTM E:\\FOTO\\index.htm\n"
      "click Command1\n",
      tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> build = Until(r.lines, "ASK: Visualizzo");
  ASSERT_EQ(build.size(), 11u) << r.out;
  EXPECT_EQ(build[8],
            "MSG: Errore in registrazione Elenco C:\\index.htm{CR}{CR} ERR= 75 - Errore di accesso "
            "al percorso/file");
  EXPECT_EQ(build[9], "CURSOR: NORMAL");

  // A full disk on the page: Other failure at each armed write, then the
  // run goes on through the list and makes its albums.
  TempTree full;
  WriteFixtureTemplates(full, "c/PROG");
  full.Write("c/Foto/a.jpg", "a");
  full.MakeFolder("c/Sito");
  r = RunScript(
      "drive C c\nprogram C:\\PROG\nfail C:\\Sito\\pagina.htm 61\nstart\n"
      "add C:\\Foto\\a.jpg\nset txtNUM_FILE 1\nset txtNOME_FILE_HTM C:\\Sito\\pagina.htm\n"
      "click Command1\n",
      full.root());
  ASSERT_EQ(r.status, 0) << r.err;
  int disco = 0, slot = 0;
  for (const std::string& l : r.lines) {
    if (l.find("ERR= 61 - Disco pieno") != std::string::npos) ++disco;
    if (l.find("ERR= 52 - Nome o numero di file non valido") != std::string::npos) ++slot;
  }
  EXPECT_EQ(disco, 1);
  EXPECT_EQ(slot, 5);  // "<HTML>", the return link and the three table lines
  EXPECT_FALSE(full.Exists("c/Sito/pagina.htm"));
  EXPECT_EQ(full.Read("c/Sito/dir_0001/img_001.jpg"), "a");
  EXPECT_TRUE(full.Exists("c/Sito/dir_0001/menu.htm"));
}

}  // namespace
}  // namespace vf::test
