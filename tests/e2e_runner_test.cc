// The runner's language and printed forms, and a build's web-sized pictures.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

using Texts = std::vector<std::string>;
const char kStart[] = "drive C c\nprogram C:\\PROG\n";

TEST(Runner, PrintsControlsListModuleAndEscapes) {
  TempTree tree;
  tree.MakeFolder("c/PROG");
  RunResult r = RunScript(
      "# a comment\r\n\n\v\n \f \n\t\r\n" + std::string(kStart) +
          "screen 799\nstart\nadd   two blanks before\nadd a\rb\nadd \nset txtNUM_FILE  7 \n"
          "select 0 2\nunselect 2\nselect 1\ncurrent 1\nprint List1\nprint txtNUM_FILE.Text\n"
          "print txtMAX_PER_RIGA.Text\nprint txtMAX_N_FILES.Text\nprint Command1.Enabled\n"
          "print Command4.Visible\nprint Option2.Value\nset Check1 1\nprint Check1.Value\n"
          "click Option1\nprint Option1.Value\nprint Option2.Value\nprint Label6(3).Top\n"
          "print Label6(4).Caption\nprint txtNOME_FILE_HTM.Text\nprint Module1.Tipo_Utilizzo\n"
          "print Module1.Elenco_Pagine(3)\nprint List1.List(1)\nprint List1.Selected(1)\n"
          "choose C:\\Foto\\a b.jpg\nchoose\nclick Command3\nprint txtPATH_RICERCA.Text\n"
          "click Command3\nprint Module1.Dir_Base\nclick cmdFINE\nprint List1\n",
      tree.root());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            "List1.ListCount = 3\nList1(0) =   two blanks before [x]\nList1(1) = a{CR}b [x]\n"
            "List1(2) = \nList1.ListIndex = 1\ntxtNUM_FILE.Text =  7 \ntxtMAX_PER_RIGA.Text = 4\n"
            "txtMAX_N_FILES.Text = 9\nCommand1.Enabled = False\nCommand4.Visible = False\n"
            "Option2.Value = True\nCheck1.Value = 1\nOption1.Value = True\nOption2.Value = False\n"
            "Label6(3).Top = 2640\nLabel6(4).Caption = VETRINA-FOTO\n"
            "txtNOME_FILE_HTM.Text = C:\\PROG\\index.htm\nModule1.Tipo_Utilizzo = 2\n"
            "Module1.Elenco_Pagine(3) = \nList1.List(1) = a{CR}b\nList1.Selected(1) = True\nBEEP\n"
            "DIALOG: Ricerca cartelle/directory contenenti Foto/Film/Suoni | C:\\VETRINA-FOTO\\ | "
            "*.* -> C:\\Foto\\a b.jpg\ntxtPATH_RICERCA.Text = C:\\Foto\\\nBEEP\nDIALOG: Ricerca "
            "cartelle/directory contenenti Foto/Film/Suoni | C:\\Foto\\ | *.* -> \n"
            "Module1.Dir_Base = C:\\Foto\\\nEND\n");
}

TEST(Runner, ExitStatuses) {
  TempTree tree;
  tree.MakeFolder("c");
  const std::string start = "drive C c\nprogram C:\\\nstart\n";
  // A line not understood: status 2, its number and text, nothing after it.
  RunResult r = RunScript(
      start + "print txtNUM_FILE.Text\nfrobnicate now\nprint txtNUM_FILE.Text\n", tree.root());
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "txtNUM_FILE.Text = \n");
  EXPECT_TRUE(r.err.find("riga 5 non compresa: frobnicate now") != std::string::npos) << r.err;
  for (const char* bad : {"click NoSuchButton", "print txtNUM_FILE.Colour", "select 4",
                          "set Command1 x", "drive D d", "answer maybe", "start"})
    EXPECT_EQ(RunScript(start + bad + "\n", tree.root()).status, 2) << bad;
  const std::pair<std::string, int> scripts[] = {
      {"print txtNUM_FILE.Text\n", 2},
      {"drive C c\nstart\n", 1},  // the runner's own folder on no drive
      // Tabs part the words, but a drive's folder is the text after the second blank.
      {"drive\tC\tc \nstart\n", 2},
      {"drive C\tc \nstart\n", 2},
      {start + "click cmdFINE\nprint txtNUM_FILE.Text\n", 0}};
  for (const auto& [script, status] : scripts)
    EXPECT_EQ(RunScript(script, tree.root()).status, status);
  EXPECT_EQ(RunScript("manca.txt", tree.root(), "", true).status, 1);
  for (const char* option : {"--help", "-h"}) {
    r = RunScript(option, tree.root(), "", true);
    EXPECT_EQ(r.status, 0) << option;
    EXPECT_TRUE(r.Has("vetrina-foto-script SCRIPT")) << option;
  }
}

TEST(TemplateSite, TheSizesFileMakesScaledPicturesAndTellsWhatItOnlyCopied) {
  TempTree tree;
  CopyTemplates(tree, "c/PROG");
  tree.Write("c/foto/a.jpg", tree.Read("c/PROG/diaposit.jpg"));
  tree.Write("c/foto/b.JPEG", tree.Read("c/PROG/film-1a.jpg"));
  tree.Write("c/foto/rotta.jpg", "non sono una foto");
  tree.Write("c/foto/note.txt", "testo");
  tree.MakeFolder("c/sito_web");  // eight letters, as the album folders have
  const std::string build =
      std::string(kStart) +
      "start\nadd C:\\foto\\a.jpg\nadd C:\\foto\\rotta.jpg\nadd C:\\foto\\note.txt\n"
      "add C:\\foto\\b.JPEG\nset txtNUM_FILE 4\nset txtNOME_FILE_HTM C:\\sito_web\\index.htm\n"
      "answer yes\nclick Command1\n";
  // Without the sizes file the build writes what it always wrote.
  RunResult r = RunScript(build, tree.root());
  EXPECT_EQ(r.Messages(), Texts{});
  tree.Write("c/sito_web/dir_0001/tiny", "a file where a size's folder should go");
  Texts added = tree.Tree("c/sito_web");
  tree.Write("c/PROG/DIMENSIONI.TXT", "# prove\r\nmini 100\r\nweb 0\r\nWeb 1600\r\ntiny 9\r\n");
  r = RunScript(build, tree.root());
  // The pass comes after the site and before the preview question.
  EXPECT_EQ(r.Messages(),
            (Texts{"Righe non valide nel file DIMENSIONI.TXT, non considerate:{CR}riga 3: web 0",
                   // The user's photos, once each, with the cause.
                   "Immagini non riducibili, copiate come sono:{CR}"
                   "C:\\foto\\rotta.jpg - non è un'immagine",
                   "Immagini ridotte non scritte:{CR}C:\\foto\\a.jpg - cartella non creata{CR}"
                   "C:\\foto\\rotta.jpg - cartella non creata{CR}"
                   "C:\\foto\\b.jpeg - cartella non creata",
                   // Then the copies that are no picture it cleans.
                   "Queste foto sono pubblicate con i loro dati, posizione compresa:{CR}"
                   "C:\\foto\\rotta.jpg{CR}C:\\foto\\note.txt"}));
  EXPECT_LT(r.out.find("MSG: Immagini"), r.out.find("ASK: Visualizzo la pagina creata"));
  // Only the size folders and the record are new, and no .txt is in them.
  for (const std::string& name : tree.Tree("c/sito_web")) {
    auto old = std::find(added.begin(), added.end(), name);
    old != added.end() ? void(added.erase(old)) : added.push_back(name.substr(9));  // in dir_0001/
  }
  // Each scaled picture has its AVIF beside it; the plain copy has none.
  EXPECT_EQ(added, (Texts{".derivate", "mini/", "mini/img_001.avif", "mini/img_001.jpg",
                          "mini/img_002.jpg", "mini/img_004.avif", "mini/img_004.peg", "web/",
                          "web/img_001.avif", "web/img_001.jpg", "web/img_002.jpg",
                          "web/img_004.avif", "web/img_004.peg"}));
  EXPECT_EQ(tree.Read("c/sito_web/dir_0001/web/img_002.jpg"), "non sono una foto");
  EXPECT_EQ(tree.Read("c/sito_web/dir_0001/web/img_001.jpg").substr(0, 2), "\xFF\xD8");
  EXPECT_LT(tree.Read("c/sito_web/dir_0001/mini/img_001.jpg").size(),
            tree.Read("c/sito_web/dir_0001/img_001.jpg").size());
}

}  // namespace
}  // namespace vf::test
