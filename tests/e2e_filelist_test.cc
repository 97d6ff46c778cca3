// End-to-end tests of the file list through vetrina-foto-script.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

using Righe = std::vector<std::string>;

TEST(E2eFilelist, LoadRemoveAndAddOneFile) {
  TempTree t;
  t.MakeFolder("c/PROG");
  for (const char* p : {"c/Foto/b.JPG", "c/Foto/a.jpg", "c/Foto/leggimi.txt", "c/Foto/Sub/c.gif",
                        "c/Foto/Sub/d.avi"}) {
    t.Write(p, "");
  }
  RunResult r = RunScript(
      "drive C c\nprogram C:\\PROG\nstart\n"
      "set txtESTENSIONE .jpg\nclick cmdCONFERMA\n"
      "set txtESTENSIONE *\nset txtPATH_RICERCA c:\\foto\\*.*\nclick cmdCONFERMA\n"
      "print txtNUM_FILE.Text\nprint Command1.Enabled\n"
      "select 0 2\nclick cmdCANC_FILE\n"
      "current 0\nselect 0\nanswer yes\nclick cmdCANC_FILE\n"
      "choose C:\\Foto\\Sub\\d.avi\nclick cmdIns_File\nprint List1\nprint txtNUM_FILE.Text\n",
      t.root());
  ASSERT_EQ(r.status, 0) << r.err;
  const Righe attese = {
      "BEEP",
      "MSG: Indicare solo l'estensione dei files da cercare !!!",
      "CURSOR: BUSY",
      "BEEP",
      "CURSOR: NORMAL",
      "txtNUM_FILE.Text = 3",
      "Command1.Enabled = True",
      "ASK: Confermi la cancellazione di c:\\foto\\b.JPG dal solo elenco (S/N)  -> YES",
      "BEEP",
      "DIALOG: Ricerca cartelle/directory contenenti Foto/Film/Suoni | c:\\foto\\ | *.* "
      "-> C:\\Foto\\Sub\\d.avi",
      "List1.ListCount = 1",
      "List1(0) = C:\\Foto\\Sub\\d.avi",
      "List1.ListIndex = -1",
      "txtNUM_FILE.Text = 1"};
  EXPECT_EQ(r.lines, attese);
}

TEST(E2eFilelist, FoldersOnlyAndDialogs) {
  TempTree t;
  t.MakeFolder("c/PROG");
  t.MakeFolder("c/R/A/X");
  t.MakeFolder("c/R/B");
  RunResult r = RunScript(
      "drive C c\nprogram C:\\PROG\nstart\n"
      "choose C:\\R\\qualcosa.jpg\nclick Command7\nprint Module1.Dir_Base\n"
      "set txtESTENSIONE \nclick cmdCONFERMA\nprint List1\n"
      "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nchoose\nclick Command6\n"
      "print Module1.Dir_Base\nprint txtNOME_FILE_HTM.Text\n",
      t.root());
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string titolo = "DIALOG: Ricerca cartelle/directory contenenti Foto/Film/Suoni | ";
  const Righe attese = {"BEEP",
                        titolo + "C:\\VETRINA-FOTO\\ | *.* -> C:\\R\\qualcosa.jpg",
                        "Module1.Dir_Base = C:\\R\\",
                        "CURSOR: BUSY",
                        "BEEP",
                        "CURSOR: NORMAL",
                        "List1.ListCount = 3",
                        "List1(0) = <C:\\R\\A>",
                        "List1(1) = <C:\\R\\A\\X>",
                        "List1(2) = <C:\\R\\B>",
                        "List1.ListIndex = -1",
                        "BEEP",
                        titolo + "C:\\PROG\\ | *.* -> ",
                        "Module1.Dir_Base = C:\\PROG\\",
                        "txtNOME_FILE_HTM.Text = C:\\Sito\\index.htm"};
  EXPECT_EQ(r.lines, attese);
}

}  // namespace
}  // namespace vf::test
