// The paged build and the usage selection dialog.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

std::string Adds(int n) {
  std::string s;
  for (int i = 1; i <= n; ++i) s += "add C:\\Foto\\P" + std::to_string(100 + i) + ".JPG\n";
  return s;
}

struct Paged {
  TempTree tree;
  explicit Paged(int n) {
    WriteFixtureTemplates(tree, "c/PROG");
    tree.MakeFolder("c/Sito");
    for (int i = 1; i <= n; ++i) {
      tree.Write("c/Foto/P" + std::to_string(100 + i) + ".JPG", "picture " + std::to_string(i));
    }
  }
  RunResult Build(int n, const std::string& extra = "") const {
    return RunScript("drive C c\nprogram C:\\PROG\nstart\n" + Adds(n) + "set txtNUM_FILE " +
                         std::to_string(n) + "\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\n" +
                         extra + "click Command4\nprint Module1.Num_Pagina\nprint List1\n",
                     tree.root());
  }
};

TEST(PagedBuild, PagesAlbumsAndTheFinalPage) {
  for (int n : {9, 10, 18, 20}) {
    SCOPED_TRACE(n);
    Paged site(n);
    RunResult r = site.Build(n);
    ASSERT_EQ(r.status, 0) << r.err;
    int pages = (n + 8) / 9;
    EXPECT_NE(r.out.find("Module1.Num_Pagina = " + std::to_string(pages) + "\n"),
              std::string::npos);
    EXPECT_NE(r.out.find("ASK: Visualizzo la prima pagina creata c:\\sito\\index.htm (S/N)  -> NO"),
              std::string::npos);
    EXPECT_NE(r.out.find("List1.ListCount = " + std::to_string(pages)), std::string::npos);
    for (int p = 1; p <= pages; ++p) {
      std::string page = site.tree.Read("c/Sito/pag_" + std::to_string(p) + ".htm");
      // Every page's button leads to that page's own album, with its own pictures.
      std::string album = "dir_000" + std::to_string(p);
      EXPECT_NE(page.find("<A HREF=\"" + album + "\\menu.htm\">\r\nSCELTA  " + std::to_string(p)),
                std::string::npos)
          << page;
      EXPECT_NE(page.find("<a href=\"index.htm\""), std::string::npos);
      EXPECT_EQ(site.tree.Read("c/Sito/" + album + "/img_001.jpg"),
                "picture " + std::to_string((p - 1) * 9 + 1));
    }
    // The final page links straight to the pages, each button named after its page.
    std::string index = site.tree.Read("c/Sito/index.htm");
    EXPECT_NE(index.find("<A HREF=\"pag_1.htm\">\r\npag_1.htm</A>"), std::string::npos) << index;
    EXPECT_EQ(index.find("Ritorna"), std::string::npos);
    // The final run's album stands apart from the pages' albums.
    std::string last = "c/Sito/dir_000" + std::to_string(pages + 1);
    EXPECT_TRUE(site.tree.Exists(last + "/img_001.htm"));
    EXPECT_FALSE(site.tree.Exists("c/Sito/pag_" + std::to_string(pages + 1) + ".htm"));
  }
}

TEST(PagedBuild, RefusalsAndOneYesForTheWholeBuild) {
  Paged site(3);
  for (int p = 1; p <= 2; ++p) site.tree.Write("c/Sito/pag_" + std::to_string(p) + ".htm", "old");
  site.tree.Write("c/Sito/index.htm", "old");
  RunResult r =
      RunScript("drive C c\nprogram C:\\PROG\nstart\n" + Adds(3) +
                    "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command4\nset txtNUM_FILE 3\n"
                    "set txtMAX_N_FILES 0\nclick Command4\nset txtMAX_N_FILES 2.5\nclick Command4\n"
                    "set txtMAX_N_FILES -1\nclick Command4\nset txtMAX_N_FILES 2\n"
                    "set txtMAX_PER_RIGA 0.5\nclick Command4\nprint List1.ListCount\n"
                    "set txtMAX_PER_RIGA 1\nanswer yes\nclick Command4\n",
                site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string kField = "MSG: Indicare numero massimo files per pagina .HTM da elaborare !!!";
  std::vector<std::string> expected = {
      "BEEP",
      "MSG: Nessun files da elaborare !!!",
      "BEEP",
      kField,
      "BEEP",
      kField,
      "BEEP",
      kField,
      "BEEP",
      "MSG: Indicare quante immagini si voglio per ogni riga !!!",
      "List1.ListCount = 3",
      "BEEP",
      "ASK: Elenco  c:\\sito\\pag_1.htm  gia' esistente, continuo (S/N) -> YES"};
  ASSERT_GE(r.lines.size(), expected.size());
  EXPECT_EQ(std::vector<std::string>(r.lines.begin(), r.lines.begin() + expected.size()), expected);
  int questions = 0;
  for (const std::string& l : r.lines) questions += l.find("gia' esistente") != std::string::npos;
  EXPECT_EQ(questions, 1);
  EXPECT_NE(site.tree.Read("c/Sito/index.htm"), "old");
  EXPECT_NE(site.tree.Read("c/Sito/pag_2.htm"), "old");
}

TEST(UsageDialog, ConfirmGivesTheSimplifiedLayoutAndCancelEnds) {
  TempTree tree;
  tree.MakeFolder("c");
  RunResult r = RunScript(
      "drive C c\nprogram C:\\\nstart usage\nprint frmALBUM1.Option1.Value\n"
      "print Module1.Tipo_Utilizzo\nclick frmALBUM1.Command1\nprint Module1.Tipo_Utilizzo\n"
      "print Label6(0).Visible\nprint Label6(1).Caption\nprint Label6(6).Caption\n"
      "print Label6(3).Caption\nprint Label6(3).Top\nprint Command1.Visible\n"
      "print txtNOME_FILE_HTM.Visible\nprint Option2.Visible\nprint Command4.Visible\n"
      "print txtNOME_FILE_HTM.Text\n",
      tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = {"frmALBUM1.Option1.Value = True",
                                       "Module1.Tipo_Utilizzo = 0",
                                       "Module1.Tipo_Utilizzo = 1",
                                       "Label6(0).Visible = False",
                                       "Label6(1).Caption = 1",
                                       "Label6(6).Caption = 4",
                                       "Label6(3).Caption = 3",
                                       "Label6(3).Top = 2940",
                                       "Command1.Visible = False",
                                       "txtNOME_FILE_HTM.Visible = False",
                                       "Option2.Visible = False",
                                       "Command4.Visible = True",
                                       "txtNOME_FILE_HTM.Text = C:\\\\index.htm"};
  EXPECT_EQ(r.lines, expected);

  r = RunScript(
      "drive C c\nprogram C:\\\nstart usage\nclick frmALBUM1.Option2\n"
      "click frmALBUM1.Command1\nprint Command1.Visible\nprint Module1.Tipo_Utilizzo\n"
      "click frmALBUM1.Command2\nprint Command1.Visible\n",
      tree.root());
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "Command1.Visible = True\nModule1.Tipo_Utilizzo = 2\nEND\n");
  // Before Conferma the main window is not there.
  r = RunScript("drive C c\nprogram C:\\\nstart usage\nprint Command1.Visible\n", tree.root());
  EXPECT_EQ(r.status, 2);
}

}  // namespace
}  // namespace vf::test
