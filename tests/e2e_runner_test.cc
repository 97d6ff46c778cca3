// The runner's own language: statements, printed forms and exit statuses.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

TEST(Runner, PrintsListControlsModuleAndEscapes) {
  TempTree tree;
  tree.MakeFolder("c/PROG");
  RunResult r = RunScript(
      "# a comment\r\n\ndrive C c\nprogram C:\\PROG\nscreen 799\nstart\n"
      "add   two blanks before\nadd a\rb\nadd \nset txtNUM_FILE  7 \n"
      "select 0 2\nunselect 2\nselect 1\ncurrent 1\nprint List1\n"
      "print txtNUM_FILE.Text\nprint txtMAX_PER_RIGA.Text\nprint txtMAX_N_FILES.Text\n"
      "print Command1.Enabled\nprint Command4.Visible\nprint cmdCONFERMA_Tutti.Visible\n"
      "print Option1.Value\nprint Option2.Value\nprint Check1.Value\nset Check1 1\n"
      "print Check1.Value\nclick Option1\nprint Option1.Value\nprint Option2.Value\n"
      "print Label6(3).Top\nprint Label6(4).Caption\nprint txtNOME_FILE_HTM.Text\n"
      "print Module1.Tipo_Utilizzo\nprint Module1.Elenco_Pagine(3)\nprint Module1.Ultimo_File\n"
      "print List1.ListCount\nprint List1.List(1)\nprint List1.Selected(1)\n",
      tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = {"List1.ListCount = 3",
                                       "List1(0) =   two blanks before [x]",
                                       "List1(1) = a{CR}b [x]",
                                       "List1(2) = ",
                                       "List1.ListIndex = 1",
                                       "txtNUM_FILE.Text =  7 ",
                                       "txtMAX_PER_RIGA.Text = 4",
                                       "txtMAX_N_FILES.Text = 9",
                                       "Command1.Enabled = False",
                                       "Command4.Visible = False",
                                       "cmdCONFERMA_Tutti.Visible = False",
                                       "Option1.Value = False",
                                       "Option2.Value = True",
                                       "Check1.Value = 0",
                                       "Check1.Value = 1",
                                       "Option1.Value = True",
                                       "Option2.Value = False",
                                       "Label6(3).Top = 2640",
                                       "Label6(4).Caption = VETRINA-FOTO",
                                       "txtNOME_FILE_HTM.Text = C:\\PROG\\index.htm",
                                       "Module1.Tipo_Utilizzo = 2",
                                       "Module1.Elenco_Pagine(3) = ",
                                       "Module1.Ultimo_File = 0",
                                       "List1.ListCount = 3",
                                       "List1.List(1) = a{CR}b",
                                       "List1.Selected(1) = True"};
  EXPECT_EQ(r.lines, expected);
}

TEST(Runner, ScreenWidthAndProgramInARoot) {
  TempTree tree;
  tree.MakeFolder("c");
  RunResult r = RunScript(
      "drive C c\nprogram C:\\\nscreen 800\nstart\nprint txtMAX_PER_RIGA.Text\n"
      "print txtNOME_FILE_HTM.Text\n",
      tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "txtMAX_PER_RIGA.Text = 5\ntxtNOME_FILE_HTM.Text = C:\\\\index.htm\n");
}

TEST(Runner, ExitStatuses) {
  TempTree tree;
  tree.MakeFolder("c");
  // A line not understood: status 2, its number and text, nothing after it.
  RunResult r = RunScript(
      "drive C c\nprogram C:\\\nstart\nprint txtNUM_FILE.Text\n"
      "frobnicate now\nprint txtNUM_FILE.Text\n",
      tree.root());
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "txtNUM_FILE.Text = \n");
  EXPECT_NE(r.err.find("5"), std::string::npos);
  EXPECT_NE(r.err.find("frobnicate now"), std::string::npos);
  for (const char* bad : {"click NoSuchButton", "print txtNUM_FILE.Colour", "select 4",
                          "set Command1 x", "drive D d", "answer maybe", "start"}) {
    r = RunScript(std::string("drive C c\nprogram C:\\\nstart\n") + bad + "\n", tree.root());
    EXPECT_EQ(r.status, 2) << bad;
  }
  r = RunScript("print txtNUM_FILE.Text\n", tree.root());
  EXPECT_EQ(r.status, 2);
  // The runner's own folder on no drive and no program line: status 1.
  r = RunScript("drive C c\nstart\n", tree.root());
  EXPECT_EQ(r.status, 1);
  r = RunRunner("manca.txt", tree.root());
  EXPECT_EQ(r.status, 1);
  // The usage, on standard output.
  for (const char* option : {"--help", "-h"}) {
    r = RunRunner(option, tree.root());
    EXPECT_EQ(r.status, 0) << option;
    EXPECT_NE(r.out.find("vetrina-foto-script SCRIPT"), std::string::npos) << option;
  }
  // END ends the script with status 0 and nothing after it runs.
  r = RunScript("drive C c\nprogram C:\\\nstart\nclick cmdFINE\nprint txtNUM_FILE.Text\n",
                tree.root());
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "END\n");
}

TEST(Runner, QueuedAnswersAndDialogs) {
  TempTree tree;
  tree.MakeFolder("c/Foto");
  RunResult r = RunScript(
      "drive C c\nprogram C:\\\nstart\nchoose C:\\Foto\\a b.jpg\nchoose\n"
      "click Command3\nprint txtPATH_RICERCA.Text\nclick Command3\n"
      "print Module1.Dir_Base\n",
      tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = {
      "BEEP",
      "DIALOG: Ricerca cartelle/directory contenenti Foto/Film/Suoni | C:\\VETRINA-FOTO\\ | *.* -> "
      "C:\\Foto\\a b.jpg",
      "txtPATH_RICERCA.Text = C:\\Foto\\",
      "BEEP",
      "DIALOG: Ricerca cartelle/directory contenenti Foto/Film/Suoni | C:\\Foto\\ | *.* -> ",
      "Module1.Dir_Base = C:\\Foto\\"};
  EXPECT_EQ(r.lines, expected);
}

}  // namespace
}  // namespace vf::test
