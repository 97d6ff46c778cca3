// End-to-end tests of the single build through vetrina-foto-script.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/e2e.h"

namespace vf::test {
namespace {

const std::string kRitorno =
    "<H2><a href=\"index.htm\" target=\"_top\"><p align=\"center\"><font "
    "color=\"#FFFF80\"><strong><em>Ritorna alla pagina iniziale</strong></em></font></p></a></H2>";
const std::string kTabella =
    "<table border=\"0\" cellpadding=\"0\" cellspacing=\"10\" width=\"130\">";

std::vector<std::string> Cella(const std::string& pulsante, const std::string& link,
                               const std::string& etichetta) {
  return {
      "<td valign=\"Top\">",
      "  <table border=\"0\" cellpadding=\"0\" cellspacing=\"0\" width=\" 130\">",
      "  <tr>",
      "   <td background=\"" + pulsante + "\" width=\"130\" height=\"30\">",
      "    <table border=\"0\" cellpadding=\"0\" cellspacing=\"0\" width=\"130\" height=\"30\">",
      "     <tr>",
      "      <td><p align=\"center\">",
      "        <A HREF=\"" + link + "\">",
      etichetta + "</A>",
      "      </td>",
      "     </tr>",
      "    </table>",
      "   </td>",
      "  </tr>",
      "</table></td>",
      " "};
}

std::vector<std::string> Testa() {
  return {"<HTML>", "<head><title>Prova</title></head>", "<body BACKGROUND=\"sfondo1g.jpg\">",
          "<marquee>Titolo</marquee>", "<div><center>"};
}

void Append(std::vector<std::string>& to, const std::vector<std::string>& lines) {
  to.insert(to.end(), lines.begin(), lines.end());
}

struct Site {
  TempTree tree;
  Site() {
    WriteFixtureTemplates(tree, "c/PROG");
    tree.MakeFolder("c/Sito");
  }
  std::string Header(const std::string& extra = "") const {
    return "drive C c\nprogram C:\\PROG\n" + extra + "start\n";
  }
  void Pictures(int n) const {
    for (int i = 1; i <= n; ++i) {
      char name[32];
      std::snprintf(name, sizeof name, "c/Foto/P%02d.JPG", i);
      tree.Write(name, "bytes of " + std::string(name));
    }
  }
  static std::string Adds(int n) {
    std::string s;
    for (int i = 1; i <= n; ++i) {
      char line[64];
      std::snprintf(line, sizeof line, "add C:\\Foto\\P%02d.JPG\n", i);
      s += line;
    }
    return s;
  }
};

TEST(SingleBuild, EmptyListWritesSkeletonInBothCasesAndCopiesSiteFiles) {
  Site site;
  RunResult r = RunScript(site.Header() +
                              "set txtNUM_FILE 1\n"
                              "set txtNOME_FILE_HTM   C:\\Sito\\Foto.Mare.HTML  \n"
                              "print Command5.Enabled\n"
                              "click Command1\n"
                              "print Module1.Dir_Output\nprint Module1.Nome_File_Input\n"
                              "print Module1.Nome_File_Output\nprint Command5.Enabled\n",
                          site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = {
      "Command5.Enabled = False",
      "CURSOR: BUSY",
      "CURSOR: NORMAL",
      "BEEP",
      "ASK: Visualizzo la pagina creata c:\\sito\\foto.htm (S/N)  -> NO",
      "Module1.Dir_Output = c:\\sito\\",
      "Module1.Nome_File_Input = foto.mare.html",
      "Module1.Nome_File_Output = foto.htm",
      "Command5.Enabled = True"};
  EXPECT_EQ(r.lines, expected);
  std::vector<std::string> page = Testa();
  Append(page, {kRitorno, kTabella, "<tr>", " ", " </tr>", "</table>", "</center></div>", "</body>",
                "</HTML>"});
  EXPECT_EQ(site.tree.Read("c/Sito/foto.htm"), CrLf(page));
  for (const char* f : {"intestaz.htm", "intest_2.htm", "piede.htm", "piede_2.htm", "diaposit.jpg",
                        "film-1a.jpg", "foto-1a.jpg", "htm-1a.jpg", "music-1a.jpg", "sfondo1g.jpg",
                        "sfondo1p.jpg", "pulsante.jpg", "sfondo_1.gif", "sfondo_2.gif"}) {
    EXPECT_TRUE(site.tree.Exists(std::string("c/Sito/") + f)) << f;
  }

  // Capitals: the folder keeps its name on disk, the page and links follow.
  Site upper;
  r = RunScript(upper.Header() +
                    "set txtNUM_FILE 1\nclick Option1\n"
                    "set txtNOME_FILE_HTM   C:\\Sito\\Foto.Mare.HTML  \nanswer yes\n"
                    "click Command1\nprint Module1.Dir_Output\nprint Module1.Nome_File_Input\n",
                upper.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("ASK: Visualizzo la pagina creata C:\\SITO\\FOTO.HTM (S/N)  -> YES\n"
                       "RUN: START /max /w FOTO.HTM -> OK\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("Module1.Dir_Output = C:\\SITO\\\nModule1.Nome_File_Input = FOTO.MARE.HTML"),
            std::string::npos);
  std::string written = upper.tree.Read("c/Sito/FOTO.HTM");
  EXPECT_NE(written.find("<a href=\"INDEX.HTM\""), std::string::npos);
  EXPECT_TRUE(upper.tree.Exists("c/Sito/DIAPOSIT.JPG"));
}

TEST(SingleBuild, CheckBoxesFilterTheHeaderAndPickTheSecondTemplates) {
  Site site;
  RunResult r =
      RunScript(site.Header() +
                    "set txtNUM_FILE 1\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\n"
                    "set Check1 1\nclick Command1\n"
                    "set txtNOME_FILE_HTM C:\\Sito\\due.htm\nset Check1 0\nset Check2 1\n"
                    "click Command1\n"
                    "set txtNOME_FILE_HTM C:\\Sito\\tre.htm\nset Check1 1\nclick Command1\n",
                site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  // index.htm has no return link; Check1 drops the BACKGROUND line.
  EXPECT_EQ(site.tree.Read("c/Sito/index.htm"),
            CrLf({"<HTML>", "<head><title>Prova</title></head>", "<marquee>Titolo</marquee>",
                  "<div><center>", kTabella, "<tr>", " ", " </tr>", "</table>", "</center></div>",
                  "</body>", "</HTML>"}));
  EXPECT_EQ(site.tree.Read("c/Sito/due.htm"),
            CrLf({"<HTML>", "<head><title>Prova</title></head>",
                  "<body BACKGROUND=\"sfondo1g.jpg\">", "<div><center>", kRitorno, kTabella, "<tr>",
                  " ", " </tr>", "</table>", "</center></div>", "</body>", "</HTML>"}));
  // Both: the _2 templates, still filtered.
  EXPECT_EQ(site.tree.Read("c/Sito/tre.htm"),
            CrLf({"<HTML>", "<head><title>Prova 2</title></head>", "<body>", "<div><center>",
                  kRitorno, kTabella, "<tr>", " ", " </tr>", "</table>", "</center></div>",
                  "<p>piede 2</p>", "</HTML>"}));
}

TEST(SingleBuild, RefusalAndExistingPageQuestion) {
  Site site;
  site.tree.Write("c/Sito/index.htm", "old");
  RunResult r =
      RunScript(site.Header() +
                    "set txtNOME_FILE_HTM C:\\Sito\\index.htm\n"
                    "set txtNUM_FILE abc\nclick Command1\n"
                    "set txtNUM_FILE 3\nclick Command1\n"
                    "answer yes\nclick Command1\nprint Module1.Conferma_Esistente\n"
                    "set txtNUM_FILE 0\nclick Command1\nprint Module1.Conferma_Esistente\n",
                site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> expected = {
      "BEEP", "MSG: Nessun files da elaborare !!!",
      // A No keeps the old page.
      "BEEP", "ASK: Elenco  c:\\sito\\index.htm  gia' esistente, continuo (S/N) -> NO",
      "CURSOR: NORMAL", "BEEP", "ASK: Visualizzo la pagina creata c:\\sito\\index.htm (S/N)  -> NO",
      "BEEP", "ASK: Elenco  c:\\sito\\index.htm  gia' esistente, continuo (S/N) -> YES",
      "CURSOR: BUSY", "CURSOR: NORMAL", "BEEP",
      "ASK: Visualizzo la pagina creata c:\\sito\\index.htm (S/N)  -> NO",
      "Module1.Conferma_Esistente = 1", "BEEP", "MSG: Nessun files da elaborare !!!",
      "Module1.Conferma_Esistente = 0"};
  EXPECT_EQ(r.lines, expected);
}

TEST(SingleBuild, PreviewLinesCommand5AndEnd) {
  Site site;
  RunResult r = RunScript(site.Header("startfails\n") +
                              "click Command5\n"
                              "set txtNUM_FILE 1\nset txtNOME_FILE_HTM C:\\Sito\\Vetrina Uno.htm\n"
                              "answer yes\nclick Command1\nclick Command5\nclick cmdFINE\n"
                              "print txtNUM_FILE.Text\n",
                          site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> tail(r.lines.end() - 6, r.lines.end());
  std::vector<std::string> expected = {
      "ASK: Visualizzo la pagina creata c:\\sito\\vetrina uno.htm (S/N)  -> YES",
      "RUN: START /max /w vetrina uno.htm -> FAILED",
      "RUN: CMD /C vetrina uno.htm -> FAILED",
      "RUN: START /max /w c:\\sito\\vetrina uno.htm -> FAILED",
      "RUN: CMD /Cc:\\sito\\vetrina uno.htm -> FAILED",
      "END"};
  EXPECT_EQ(tail, expected);
  EXPECT_TRUE(site.tree.Exists("c/Sito/vetrina uno.htm"));
}

TEST(Albums, WorkedExampleOfTwentyPictures) {
  Site site;
  site.Pictures(20);
  RunResult r = RunScript(site.Header("screen 1024\n") + Site::Adds(20) +
                              "set txtNUM_FILE 20\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\n"
                              "click Command1\n",
                          site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  std::vector<std::string> page = Testa();
  Append(page, {kTabella, "<tr>", " "});
  for (int a = 1; a <= 3; ++a) {
    Append(page, Cella("pulsante.jpg", "dir_000" + std::to_string(a) + "\\menu.htm",
                       "SCELTA  " + std::to_string(a)));
  }
  Append(page, {" </tr>", "</table>", "</center></div>", "</body>", "</HTML>"});
  EXPECT_EQ(site.tree.Read("c/Sito/index.htm"), CrLf(page));

  std::vector<std::string> album3 = site.tree.Tree("c/Sito/dir_0003");
  std::vector<std::string> expected3 = {
      "img_001.htm",  "img_001.jpg",  "img_002.htm",  "img_002.jpg",  "menu.htm",
      "puls_dx3.jpg", "puls_su3.jpg", "puls_sx3.jpg", "sfondo_1.gif", "sfondo_2.gif"};
  EXPECT_EQ(album3, expected3);
  EXPECT_EQ(site.tree.Read("c/Sito/dir_0002/img_001.jpg"), "bytes of c/Foto/P10.JPG");
  // The pictures took the chosen case on disk.
  EXPECT_TRUE(site.tree.Exists("c/Foto/p01.jpg"));
  EXPECT_FALSE(site.tree.Exists("c/Foto/P01.JPG"));

  // Album 2 is full and the rounded album count is 2: its next link leads
  // home; album 3 leads back to album 2 and home.
  std::string menu2 = site.tree.Read("c/Sito/dir_0002/menu.htm");
  EXPECT_NE(menu2.find("<title>menu immagini - pag.2</title>"), std::string::npos);
  EXPECT_NE(menu2.find("<a href=\"../dir_0001/menu.htm\">prec</a>"), std::string::npos);
  EXPECT_NE(menu2.find("<a href=\"../index.htm\">succ</a>"), std::string::npos);
  std::string menu3 = site.tree.Read("c/Sito/dir_0003/menu.htm");
  EXPECT_NE(menu3.find("<a href=\"../dir_0002/menu.htm\">prec</a>"), std::string::npos);
  EXPECT_NE(menu3.find("<a href=\"../index.htm\">succ</a>"), std::string::npos);
  // Places past the end of the list keep a name that ends in its dot.
  EXPECT_NE(menu3.find("<img src=\"img_003.\">"), std::string::npos);
  EXPECT_NE(menu3.find("<img src=\"img_002.jpg\">"), std::string::npos) << menu3;
  std::string page9 = site.tree.Read("c/Sito/dir_0001/img_009.htm");
  EXPECT_NE(page9.find("<a href=\"../dir_0002/menu.htm\">album</a>"), std::string::npos);
  EXPECT_NE(page9.find("<img src=\"img_009.jpg\">"), std::string::npos) << page9;
}

TEST(Albums, NextLinksFollowTheRoundedAlbumCount) {
  for (int n : {18, 23}) {
    Site site;
    site.Pictures(n);
    RunResult r = RunScript(site.Header() + Site::Adds(n) + "set txtNUM_FILE " + std::to_string(n) +
                                "\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command1\n",
                            site.tree.root());
    ASSERT_EQ(r.status, 0) << r.err;
    std::string menu1 = site.tree.Read("c/Sito/dir_0001/menu.htm");
    EXPECT_NE(menu1.find("<a href=\"../index.htm\">prec</a>"), std::string::npos);
    EXPECT_NE(menu1.find("<a href=\"../dir_0002/menu.htm\">succ</a>"), std::string::npos);
    std::string menu2 = site.tree.Read("c/Sito/dir_0002/menu.htm");
    std::string next2 = n == 18 ? "../index.htm" : "../dir_0003/menu.htm";
    EXPECT_NE(menu2.find("<a href=\"" + next2 + "\">succ</a>"), std::string::npos) << n;
    EXPECT_EQ(site.tree.Exists("c/Sito/dir_0003"), n == 23);
  }
}

TEST(Albums, CapitalsMediaEntriesAndRowWrap) {
  Site site;
  site.tree.Write("c/Foto/Musica/Canto.mp3", "sound");
  site.tree.Write("c/Foto/a.gif", "gif");
  site.tree.Write("c/Foto/b.jpg", "jpg");
  RunResult r = RunScript(site.Header() +
                              "add C:\\Foto\\Musica\\Canto.mp3\nadd C:\\Foto\\a.gif\n"
                              "add C:\\Foto\\b.jpg\nset txtMAX_N_FILES 1\nset txtMAX_PER_RIGA 2\n"
                              "click Option1\nset txtNUM_FILE 3\n"
                              "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command1\n",
                          site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::string> page = Testa();
  Append(page, {kTabella, "<tr>", " "});
  // With no folder chosen the direct link is the bare name; its label is the name.
  Append(page, Cella("PULSANTE.JPG", "CANTO.MP3", "CANTO.MP3"));
  Append(page, Cella("PULSANTE.JPG", "DIR_0002\\MENU.HTM", "SCELTA  2"));
  Append(page, {" ", "</tr>", "<tr>", " "});
  Append(page, Cella("PULSANTE.JPG", "DIR_0003\\MENU.HTM", "SCELTA  3"));
  Append(page, {" </tr>", "</table>", "</center></div>", "</body>", "</HTML>"});
  EXPECT_EQ(site.tree.Read("c/Sito/INDEX.HTM"), CrLf(page));
  EXPECT_EQ(site.tree.Read("c/Sito/DIR_0001/IMG_001.MP3"), "sound");
  EXPECT_EQ(site.tree.Read("c/Sito/DIR_0002/IMG_001.GIF"), "gif");
  std::string menu = site.tree.Read("c/Sito/DIR_0002/MENU.HTM");
  EXPECT_NE(menu.find("<a href=\"../DIR_0001/MENU.HTM\">prec</a>"), std::string::npos);
  EXPECT_NE(menu.find("<img src=\"img_001.GIF\">"), std::string::npos) << menu;
}

TEST(Albums, FailuresAreReportedAndNothingIsLost) {
  Site site;
  site.Pictures(3);
  site.tree.Write("c/Foto/a.jpg", "small a");
  site.tree.Write("c/Foto/A.JPG", "capital A");
  std::filesystem::remove(site.tree.Path("c/PROG/puls_su3.jpg"));
  RunResult r = RunScript(site.Header() +
                              "add C:\\Foto\\A.JPG\nadd C:\\Foto\\P01.JPG\nadd <C:\\Foto\\Sub>\n"
                              "add C:\\Foto\\P02.JPG\nset txtMAX_N_FILES 2\nset txtNUM_FILE 4\n"
                              "set txtNOME_FILE_HTM C:\\Sito\\index.htm\nclick Command1\n",
                          site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  // The collision: the copy took the entry's own file, and both stay.
  EXPECT_EQ(site.tree.Read("c/Sito/dir_0001/img_001.jpg"), "capital A");
  EXPECT_EQ(site.tree.Read("c/Foto/a.jpg"), "small a");
  EXPECT_EQ(site.tree.Read("c/Foto/A.JPG"), "capital A");
  std::vector<std::string> messages;
  for (const std::string& l : r.lines) {
    if (l.rfind("MSG: ", 0) == 0) messages.push_back(l);
  }
  std::vector<std::string> expected = {
      "MSG: Errore nella copia dell'immagine puls_su3.jpg{CR}{LF}ERR= 53 - Impossibile trovare il "
      "file{CR}{CR}Copia C:\\PROG\\puls_su3.jpg c:\\sito\\dir_0001\\puls_su3.jpg",
      "MSG: Errore nella copia delle immagini ERR= 52 - Nome o numero di file non "
      "valido{CR}{CR}Copia <c:\\foto\\sub> c:\\sito\\dir_0002\\img_001.ub>",
      // The page step still runs for that entry, with the number 000.
      "MSG: Errore nella copia singoli HTML ERR= 53 - Impossibile trovare il file{CR}{CR}Copia "
      "c:\\prog\\vetrina-foto_default\\dir_0001\\img_000.htm c:\\sito\\dir_0002\\img_000.htm"};
  EXPECT_EQ(messages, expected);
  // The loop ended at the folder entry: its album has its cell and an empty
  // page 000 but no closing, and the last entry was not taken.
  EXPECT_EQ(site.tree.Read("c/Sito/dir_0002/img_000.htm"), "");
  EXPECT_FALSE(site.tree.Exists("c/Sito/dir_0002/menu.htm"));
  EXPECT_FALSE(site.tree.Exists("c/Sito/dir_0002/img_002.jpg"));
  EXPECT_NE(site.tree.Read("c/Sito/index.htm").find("SCELTA  2</A>"), std::string::npos);
}

TEST(Albums, MissingPerPictureTemplateEndsTheLoop) {
  Site site;
  site.Pictures(3);
  std::filesystem::remove(site.tree.Path("c/PROG/VETRINA-FOTO_DEFAULT/dir_0001/IMG_002.HTM"));
  site.tree.Write("c/PROG/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM", "");
  RunResult r = RunScript(site.Header() + Site::Adds(3) +
                              "set txtNUM_FILE 3\nset txtNOME_FILE_HTM C:\\Sito\\index.htm\n"
                              "click Command1\n",
                          site.tree.root());
  ASSERT_EQ(r.status, 0) << r.err;
  // A template with no lines gives an empty page and no message.
  EXPECT_EQ(site.tree.Read("c/Sito/dir_0001/img_001.htm"), "");
  EXPECT_NE(r.out.find("MSG: Errore nella copia singoli HTML ERR= 53 - Impossibile trovare il "
                       "file{CR}{CR}Copia c:\\prog\\vetrina-foto_default\\dir_0001\\img_002.htm "
                       "c:\\sito\\dir_0001\\img_002.htm\n"),
            std::string::npos)
      << r.out;
  EXPECT_EQ(site.tree.Read("c/Sito/dir_0001/img_002.htm"), "");
  EXPECT_FALSE(site.tree.Exists("c/Sito/dir_0001/img_003.jpg"));
  EXPECT_FALSE(site.tree.Exists("c/Sito/dir_0001/menu.htm"));
}

}  // namespace
}  // namespace vf::test
