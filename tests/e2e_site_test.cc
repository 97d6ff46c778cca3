// The single and the paged build through vetrina-foto-script, on a small
// template set: pages, albums, links, questions and messages, missing
// templates, pages that move when their folder cannot be written, output
// folders that cannot be reached, and the web-size pass's messages and lock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>
#include <vips/vips8>

#include "publish/derived_record.h"
#include "publish/site_names.h"
#include "tests/support/e2e.h"

namespace vf::test {
namespace {

using Texts = std::vector<std::string>;

const std::string kTesta = R"(<HTML>
<head><title>Prova</title></head>
<body BACKGROUND="sfondo1g.jpg">
<marquee>Titolo</marquee>
<div><center>
)";
const std::string kRitorno =
    R"(<H2><a href="index.htm" target="_top"><p align="center"><font color="#FFFF80"><strong><em>)"
    "Ritorna alla pagina iniziale</strong></em></font></p></a></H2>\n";
const std::string kTabella =
    "<table border=\"0\" cellpadding=\"0\" cellspacing=\"10\" width=\"130\">\n<tr>\n \n";
const std::string kCoda = " </tr>\n</table>\n</center></div>\n</body>\n</HTML>\n";

std::string Cella(const std::string& pulsante, const std::string& link,
                  const std::string& etichetta) {
  return R"(<td valign="Top">
  <table border="0" cellpadding="0" cellspacing="0" width=" 130">
  <tr>
   <td background=")" +
         pulsante + R"(" width="130" height="30">
    <table border="0" cellpadding="0" cellspacing="0" width="130" height="30">
     <tr>
      <td><p align="center">
        <A HREF=")" +
         link + "\">\n" + etichetta + R"(</A>
      </td>
     </tr>
    </table>
   </td>
  </tr>
</table></td>
 
)";
}

// A program folder with the small template set, an empty site folder and
// `n` pictures P01.JPG… with texts of their own.
struct Site : TempTree {
  explicit Site(int n = 0) {
    WriteFixtureTemplates(*this, "c/PROG");
    MakeFolder("c/Sito");
    for (int i = 1; i <= n; ++i) Write("c/Foto/" + Name(i), "bytes of " + Name(i));
  }
  static std::string Name(int i) { return (i < 10 ? "P0" : "P") + std::to_string(i) + ".JPG"; }
  // Runs `body` after the start, with `n` pictures in the list.
  RunResult Run(const std::string& body, int n = 0, const std::string& before = "") const {
    std::string adds;
    for (int i = 1; i <= n; ++i) adds += "add C:\\Foto\\" + Name(i) + "\n";
    if (n > 0) adds += "set txtNUM_FILE " + std::to_string(n) + "\n";
    RunResult r =
        RunScript("drive C c\nprogram C:\\PROG\n" + before + "start\n" + adds + body, root());
    EXPECT_EQ(r.status, 0) << r.err;
    return r;
  }
  // A run with drive E: read-only and one entry to build, `setup` before the start.
  RunResult Fail(const std::string& body, const std::string& setup = "") const {
    return Run("set txtNUM_FILE 1\n" + body, 0, "drive E e readonly\n" + setup);
  }
  std::string Page(const std::string& p) const { return Text("c/Sito/" + p); }
  bool Has(const std::string& page, const std::string& text) const {
    return Page(page).find(text) != std::string::npos;
  }
};

const char kIndex[] = "set txtNOME_FILE_HTM C:\\Sito\\index.htm\n";

TEST(SingleBuild, AnEmptyListWritesTheSkeletonAndTheSiteFilesInBothCases) {
  Site site;
  RunResult r = site.Run(
      "set txtNUM_FILE 1\nset txtNOME_FILE_HTM   C:\\Sito\\Foto.Mare.HTML  \n"
      "print Command5.Enabled\nclick Command1\nprint Module1.Dir_Output\n"
      "print Module1.Nome_File_Input\nprint Module1.Nome_File_Output\nprint Command5.Enabled\n");
  EXPECT_EQ(r.out,
            "Command5.Enabled = False\nCURSOR: BUSY\nCURSOR: NORMAL\nBEEP\nASK: Visualizzo la "
            "pagina creata c:\\sito\\foto.htm (S/N)  -> NO\nModule1.Dir_Output = c:\\sito\\\n"
            "Module1.Nome_File_Input = foto.mare.html\nModule1.Nome_File_Output = foto.htm\n"
            "Command5.Enabled = True\n");
  EXPECT_EQ(site.Page("foto.htm"), kTesta + kRitorno + kTabella + kCoda);
  // Capitals: the folder keeps its name on disk, the page and links follow.
  Site upper;
  r = upper.Run(
      "set txtNUM_FILE 1\nclick Option1\nset txtNOME_FILE_HTM C:\\Sito\\Foto.Mare.HTML\n"
      "answer yes\nclick Command1\nprint Module1.Dir_Output\n");
  EXPECT_TRUE(
      r.Has("ASK: Visualizzo la pagina creata C:\\SITO\\FOTO.HTM (S/N)  -> YES\n"
            "RUN: START /max /w FOTO.HTM -> OK\nModule1.Dir_Output = C:\\SITO\\\n"))
      << r.out;
  EXPECT_TRUE(upper.Has("FOTO.HTM", "<a href=\"INDEX.HTM\""));
  EXPECT_TRUE(upper.Exists("c/Sito/DIAPOSIT.JPG"));
}

TEST(SingleBuild, CheckBoxesFilterTheHeadAndPickTheSecondTemplates) {
  Site site;
  site.Run(
      "set txtNUM_FILE 1\nset txtNOME_FILE_HTM C:\\Sito\\uno.htm\nset Check1 1\nclick Command1\n"
      "set txtNOME_FILE_HTM C:\\Sito\\due.htm\nset Check1 0\nset Check2 1\nclick Command1\n"
      "set txtNOME_FILE_HTM C:\\Sito\\tre.htm\nset Check1 1\nclick Command1\n" +
      std::string(kIndex) + "set Check1 0\nset Check2 0\nclick Command1\n");
  // Check1 drops the BACKGROUND line, Check2 the marquee, both together take
  // the second head and foot; index.htm has no return link.
  const std::string head = "<HTML>\n<head><title>Prova</title></head>\n";
  const std::string table = kTabella + " </tr>\n</table>\n</center></div>\n";
  EXPECT_EQ(site.Page("uno.htm"), head + "<marquee>Titolo</marquee>\n<div><center>\n" + kRitorno +
                                      table + "</body>\n</HTML>\n");
  EXPECT_EQ(site.Page("due.htm"), head + "<body BACKGROUND=\"sfondo1g.jpg\">\n<div><center>\n" +
                                      kRitorno + table + "</body>\n</HTML>\n");
  EXPECT_EQ(site.Page("tre.htm"),
            "<HTML>\n<head><title>Prova 2</title></head>\n<body>\n"
            "<div><center>\n" +
                kRitorno + table + "<p>piede 2</p>\n</HTML>\n");
  EXPECT_EQ(site.Page("index.htm"), kTesta + kTabella + kCoda);
}

TEST(SingleBuild, RefusalsTheExistingPageAndThePreview) {
  Site site;
  site.Write("c/Sito/index.htm", "old");
  RunResult r = site.Run(
      std::string(kIndex) +
          "set txtNUM_FILE abc\nclick Command1\nset txtNUM_FILE 3\nclick Command1\n"
          "answer yes\nclick Command1\nprint Module1.Conferma_Esistente\n"
          "set txtNUM_FILE 0\nclick Command1\nprint Module1.Conferma_Esistente\n"
          "click Command5\nset txtNUM_FILE 1\nset txtNOME_FILE_HTM C:\\Sito\\Vetrina Uno.htm\n"
          "answer yes\nclick Command1\nclick Command5\nclick cmdFINE\nprint txtNUM_FILE.Text\n",
      0, "startfails\n");
  EXPECT_EQ(r.out,
            "BEEP\nMSG: Nessun files da elaborare !!!\nBEEP\nASK: Elenco  c:\\sito\\index.htm  "
            "gia' esistente, continuo (S/N) -> NO\nCURSOR: NORMAL\nBEEP\nASK: Visualizzo la "
            "pagina creata c:\\sito\\index.htm (S/N)  -> NO\nBEEP\nASK: Elenco  "
            "c:\\sito\\index.htm  gia' esistente, continuo (S/N) -> YES\nCURSOR: BUSY\nCURSOR: "
            "NORMAL\nBEEP\nASK: Visualizzo la pagina creata c:\\sito\\index.htm (S/N)  -> NO\n"
            "Module1.Conferma_Esistente = 1\nBEEP\nMSG: Nessun files da elaborare !!!\n"
            "Module1.Conferma_Esistente = 0\n"
            // Command5 opens the page built last, by its name, then by its path.
            "RUN: START /max /w c:\\sito\\index.htm -> FAILED\nRUN: CMD /Cc:\\sito\\index.htm -> "
            "FAILED\nCURSOR: BUSY\nCURSOR: NORMAL\nBEEP\nASK: Visualizzo la pagina creata "
            "c:\\sito\\vetrina uno.htm (S/N)  -> YES\nRUN: START /max /w vetrina uno.htm -> "
            "FAILED\nRUN: CMD /C vetrina uno.htm -> FAILED\nRUN: START /max /w c:\\sito\\vetrina "
            "uno.htm -> FAILED\nRUN: CMD /Cc:\\sito\\vetrina uno.htm -> FAILED\nEND\n");
  EXPECT_EQ(site.Page("index.htm").substr(0, 6), "<HTML>");
}

TEST(Albums, AlbumsLinksAndPlacesPastTheEnd) {
  // 20 pictures give 3 albums but a rounded count of 2: album 2's next link
  // leads home. 18 pictures fill two albums, 23 round up to three.
  for (int n : {18, 20, 23}) {
    SCOPED_TRACE(n);
    Site site(n);
    RunResult r = site.Run(kIndex + std::string("click Command1\n"), n, "screen 1024\n");
    EXPECT_EQ(r.Messages(), Texts{});
    std::string cells;
    for (int a = 1; a <= (n + 8) / 9; ++a) {
      const std::string k = std::to_string(a);
      cells += Cella("pulsante.jpg", "dir_000" + k + "\\menu.htm", "SCELTA  " + k);
    }
    EXPECT_EQ(site.Page("index.htm"), kTesta + kTabella + cells + kCoda);
    EXPECT_TRUE(site.Has("dir_0001/menu.htm", "../index.htm\">prec</a>\n<a href=\"../dir_0002/"));
    EXPECT_TRUE(site.Has("dir_0001/menu.htm", "<img src=\"img_000.jpg\">\n</html>"));
    EXPECT_TRUE(site.Has("dir_0002/menu.htm",
                         "<title>menu immagini - pag.2</title></head>\n<a "
                         "href=\"../dir_0001/menu.htm\">prec</a>\n"));
    EXPECT_TRUE(site.Has("dir_0002/menu.htm",
                         n == 23 ? "../dir_0003/menu.htm\">succ" : "../index.htm\">succ"));
    EXPECT_EQ(site.Read("c/Sito/dir_0002/img_001.jpg"), "bytes of P10.JPG");
    EXPECT_EQ(site.Page("dir_0001/img_009.htm"),
              "<html><body>\n<img src=\"img_009.jpg\">\n<a href=\"img_008.htm\">prev</a>\n<a "
              "href=\"img_010.htm\">next</a>\n<a href=\"../dir_0002/menu.htm\">album</a>\n"
              "</body></html>\n");
    EXPECT_TRUE(site.Exists("c/Foto/p01.jpg") && !site.Exists("c/Foto/P01.JPG"));
    if (n != 20) continue;
    EXPECT_EQ(
        site.Tree("c/Sito/dir_0003"),
        (Texts{"img_001.htm", "img_001.jpg", "img_002.htm", "img_002.jpg", "menu.htm",
               "puls_dx3.jpg", "puls_su3.jpg", "puls_sx3.jpg", "sfondo_1.gif", "sfondo_2.gif"}));
    // Places past the end of the list keep a name that ends in its dot.
    EXPECT_TRUE(site.Has("dir_0003/menu.htm",
                         "../dir_0002/menu.htm\">prec</a>\n<a href=\"../index.htm\">succ</a>\n"));
    EXPECT_TRUE(site.Has("dir_0003/menu.htm",
                         "\"img_002.jpg\"></a>\n<a href=\"img_003.htm\"><img src=\"img_003.\">"));
  }
}

TEST(Albums, CapitalsMediaEntriesRowWrapAndAlbumSizesBelowOne) {
  Site site;
  for (const char* f : {"Musica/Canto.mp3", "bmp", "a.gif"})
    site.Write(std::string("c/Foto/") + f, f);
  site.Run(
      "add C:\\Foto\\Musica\\Canto.mp3\nadd C:\\Foto\\bmp\nadd C:\\Foto\\a.gif\n"
      "set txtMAX_N_FILES 1\nset txtMAX_PER_RIGA 2\nclick Option1\nset txtNUM_FILE 3\n" +
      std::string(kIndex) + "click Command1\n");
  // With no folder chosen a song's link is its bare name; a name with no dot is an album.
  EXPECT_EQ(site.Page("INDEX.HTM"),
            kTesta + kTabella + Cella("PULSANTE.JPG", "CANTO.MP3", "CANTO.MP3") +
                Cella("PULSANTE.JPG", "DIR_0002\\MENU.HTM", "SCELTA  2") + " \n</tr>\n<tr>\n \n" +
                Cella("PULSANTE.JPG", "DIR_0003\\MENU.HTM", "SCELTA  3") + kCoda);
  EXPECT_EQ(site.Read("c/Sito/DIR_0001/IMG_001.MP3") + site.Read("c/Sito/DIR_0003/IMG_001.GIF"),
            "Musica/Canto.mp3a.gif");
  EXPECT_TRUE(site.Has("DIR_0002/MENU.HTM", "<a href=\"../DIR_0001/MENU.HTM\">prec</a>"));
  EXPECT_TRUE(site.Has("DIR_0003/MENU.HTM", "<img src=\"img_001.GIF\">"));
  EXPECT_TRUE(site.Has("DIR_0003/IMG_001.HTM", "<img src=\"img_001.GIF\">"));
  // An album size below one gives one album per entry, with links that lead.
  for (const char* size : {"0", "", "-2"}) {
    Site small(3);
    small.Run(std::string("set txtMAX_N_FILES ") + size + "\n" + kIndex + "click Command1\n", 3);
    EXPECT_TRUE(small.Has("index.htm", "SCELTA  3</A>")) << size;
    EXPECT_TRUE(small.Has("dir_0001/menu.htm", "../dir_0002/menu.htm\">succ"));
    EXPECT_TRUE(small.Has("dir_0003/menu.htm", "../index.htm\">succ"));
    EXPECT_EQ(small.Read("c/Sito/dir_0002/img_001.jpg"), "bytes of P02.JPG");
  }
}

TEST(Albums, CopyAndPageFailuresAreToldAndTheLoopEnds) {
  Site site(3);
  site.Write("c/Foto/a.jpg", "small a");
  site.Write("c/Foto/A.JPG", "capital A");
  std::filesystem::remove(site.Path("c/PROG/puls_su3.jpg"));
  RunResult r = site.Run(
      "add C:\\Foto\\A.JPG\nadd C:\\Foto\\P01.JPG\nadd <C:\\Foto\\Sub>\nadd C:\\Foto\\P02.JPG\n"
      "set txtMAX_N_FILES 2\nset txtNUM_FILE 4\n" +
      std::string(kIndex) + "click Command1\n");
  // The copy took the entry's own file, and both files stay.
  EXPECT_EQ(site.Page("dir_0001/img_001.jpg") + site.Read("c/Foto/a.jpg"), "capital Asmall a");
  EXPECT_EQ(r.Messages(),
            (Texts{"Errore nella copia dell'immagine puls_su3.jpg{CR}{LF}ERR= 53 - Impossibile "
                   "trovare il file{CR}{CR}Copia C:\\PROG\\puls_su3.jpg "
                   "c:\\sito\\dir_0001\\puls_su3.jpg",
                   "Errore nella copia delle immagini ERR= 52 - Nome o numero di file non "
                   "valido{CR}{CR}Copia <c:\\foto\\sub> c:\\sito\\dir_0002\\img_001.ub>",
                   // The page step still runs for that entry, numbered 000.
                   "Errore nella copia singoli HTML ERR= 53 - Impossibile trovare il "
                   "file{CR}{CR}Copia c:\\prog\\vetrina-foto_default\\dir_0001\\img_000.htm "
                   "c:\\sito\\dir_0002\\img_000.htm"}));
  // The loop ended at the folder entry: its album has its cell and an empty
  // page 000 but no menu, and the last entry was not taken.
  EXPECT_EQ(site.Page("dir_0002/img_000.htm"), "");
  EXPECT_FALSE(site.Exists("c/Sito/dir_0002/menu.htm"));
  EXPECT_FALSE(site.Exists("c/Sito/dir_0002/img_002.jpg"));
  EXPECT_TRUE(site.Has("index.htm", "SCELTA  2</A>"));

  // A missing per-picture template ends the loop; an empty one gives an
  // empty page and no message.
  Site gap(3);
  std::filesystem::remove(gap.Path("c/PROG/VETRINA-FOTO_DEFAULT/dir_0001/IMG_002.HTM"));
  gap.Write("c/PROG/VETRINA-FOTO_DEFAULT/dir_0001/IMG_001.HTM", "");
  r = gap.Run(kIndex + std::string("click Command1\n"), 3);
  EXPECT_EQ(r.Messages(), Texts{"Errore nella copia singoli HTML ERR= 53 - Impossibile trovare il "
                                "file{CR}{CR}Copia c:\\prog\\vetrina-foto_default\\dir_0001\\"
                                "img_002.htm c:\\sito\\dir_0001\\img_002.htm"});
  EXPECT_EQ(gap.Page("dir_0001/img_001.htm") + gap.Page("dir_0001/img_002.htm"), "");
  EXPECT_FALSE(gap.Exists("c/Sito/dir_0001/img_003.jpg"));
  EXPECT_FALSE(gap.Exists("c/Sito/dir_0001/menu.htm"));
}

TEST(PagedBuild, PagesAlbumsTheFinalPageAndRefusals) {
  for (int n : {9, 10, 20}) {
    SCOPED_TRACE(n);
    Site site(n);
    site.Write("c/PROG/DIMENSIONI.TXT", "mini 100\r\n");  // the sizes come after a paged build too
    const int pages = (n + 8) / 9;
    RunResult r = site.Run(kIndex + std::string("click Command4\nprint Module1.Num_Pagina\n"
                                                "print List1.ListCount\nprint Command5.Enabled\n"),
                           n);
    EXPECT_TRUE(
        r.Has("ASK: Visualizzo la prima pagina creata c:\\sito\\index.htm (S/N)  -> NO\n"
              "Module1.Num_Pagina = " +
              std::to_string(pages) + "\nList1.ListCount = " + std::to_string(pages) +
              "\nCommand5.Enabled = True"))
        << r.out;
    for (int p = 1; p <= pages; ++p) {
      const std::string k = std::to_string(p);
      EXPECT_TRUE(
          site.Has("pag_" + k + ".htm", "<A HREF=\"dir_000" + k + "\\menu.htm\">\nSCELTA  " + k) &&
          site.Has("pag_" + k + ".htm", "<a href=\"index.htm\""));
      EXPECT_EQ(site.Read("c/Sito/dir_000" + k + "/mini/img_001.jpg"),
                "bytes of " + Site::Name((p - 1) * 9 + 1));
    }
    // The final page links to the pages by name; its own album stands apart.
    EXPECT_TRUE(site.Has("index.htm", "<A HREF=\"pag_1.htm\">\npag_1.htm</A>") &&
                !site.Has("index.htm", "Ritorna") && site.Exists("c/Sito/pulsante.jpg"));
    EXPECT_TRUE(site.Exists("c/Sito/dir_000" + std::to_string(pages + 1) + "/img_001.htm"));
    EXPECT_FALSE(site.Exists("c/Sito/pag_" + std::to_string(pages + 1) + ".htm"));
  }
  Site site(3);
  for (const char* f : {"pag_1.htm", "pag_2.htm", "index.htm"})
    site.Write(std::string("c/Sito/") + f, "old");
  RunResult r = site.Run(
      "add C:\\Foto\\P01.JPG\nadd  \nadd C:\\Foto\\P03.JPG\n" + std::string(kIndex) +
      "click Command4\nset txtNUM_FILE 3\nset txtMAX_N_FILES 0\nclick Command4\n"
      "set txtMAX_N_FILES 2.5\nclick Command4\nset txtMAX_N_FILES -1\nclick Command4\n"
      "set txtMAX_N_FILES 1\nset txtMAX_PER_RIGA 0.5\nclick Command4\nprint List1.ListCount\n"
      "set txtMAX_PER_RIGA 1\nanswer yes\nanswer yes\nclick Command4\n");
  const std::string field =
      "BEEP\nMSG: Indicare numero massimo files per pagina .HTM da elaborare !!!\n";
  EXPECT_EQ(r.out.substr(0, r.out.find("CURSOR")),
            "BEEP\nMSG: Nessun files da elaborare !!!\n" + field + field + field +
                "BEEP\nMSG: Indicare quante immagini si voglio per ogni riga !!!\nList1.ListCount "
                "= 3\nBEEP\nASK: Elenco  c:\\sito\\pag_1.htm  gia' esistente, continuo (S/N) -> "
                "YES\n");
  // One Yes holds for the whole build, and the preview opens the final page.
  EXPECT_EQ(r.out.find("gia' esistente", r.out.find("pag_1.htm  gia'") + 20), std::string::npos);
  EXPECT_TRUE(r.out.ends_with("(S/N)  -> YES\nRUN: START /max /w c:\\sito\\index.htm -> OK\n"))
      << r.out;
  EXPECT_NE(site.Read("c/Sito/pag_2.htm"), "old");
  // A page of blank entries begins no album, and the next page numbers on.
  EXPECT_EQ(site.Read("c/Sito/dir_0001/img_001.jpg") + site.Read("c/Sito/dir_0002/img_001.jpg"),
            "bytes of P01.JPGbytes of P03.JPG");
}

TEST(Failures, MissingTemplatesAskWithYesAndNo) {
  Site tree;
  tree.MakeFolder("c/Sito");
  for (const char* f : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM"})
    std::filesystem::remove(tree.Path(std::string("c/PROG/") + f));
  RunResult r = tree.Fail(
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
  r = tree.Fail("add C:\\Foto\\a.jpg\nset txtNOME_FILE_HTM C:\\Sito\\e.htm\nclick Command1\n");
  EXPECT_EQ(r.out,
            "CURSOR: BUSY\nCURSOR: NORMAL\nBEEP\nASK: Visualizzo la pagina creata "
            "c:\\sito\\e.htm (S/N)  -> NO\n");
  EXPECT_EQ(tree.Read("c/Sito/dir_0001/menu.htm"), "");
}

TEST(Failures, AReadOnlyDriveFallsBackToCThenToCIndex) {
  Site tree;
  for (const char* f : {"e/FOTO", "c/FOTO"}) tree.MakeFolder(f);
  RunResult r = tree.Fail(
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
  r = tree.Fail(
      "set txtNOME_FILE_HTM E:\\FOTO\\Album.htm\nclick Command1\n"
      "print Module1.Dir_Output\nprint Module1.Nome_File_Output\n");
  EXPECT_EQ(tree.Read("c/index.htm").substr(0, 6), "<HTML>");
  EXPECT_TRUE(r.Has("Module1.Dir_Output = C:\\\nModule1.Nome_File_Output = index.htm\n"));
  // A paged build's later pages and final page follow the moved first page.
  tree.MakeFolder("e/Sito");
  std::string adds;
  for (const char* f : {"a.jpg", "b.jpg", "c.gif", "d.bmp"}) {
    tree.Write(std::string("c/Foto/") + f, f);
    adds += std::string("add C:\\Foto\\") + f + "\n";
  }
  r = tree.Fail(adds +
                "set txtMAX_N_FILES 2\nset txtNUM_FILE 4\n"
                "set txtNOME_FILE_HTM E:\\Sito\\index.htm\nclick Command4\n");
  for (const char* f :
       {"pag_1.htm", "pag_2.htm", "index.htm", "dir_0002/img_002.bmp", "dir_0003/img_001.htm"})
    EXPECT_TRUE(tree.Exists(std::string("c/Sito/") + f)) << f;
  EXPECT_TRUE(
      tree.Has("dir_0002/menu.htm",
               "<img src=\"img_001.gif\"></a>\n<a href=\"img_002.htm\"><img src=\"img_002.bmp\">"));
  EXPECT_TRUE(r.Has("ASK: Visualizzo la prima pagina creata C:\\sito\\index.htm (S/N)  -> NO"));
}

TEST(Failures, OutputFoldersThatCannotBeReachedDoNotStopTheBuild) {
  Site tree;
  // No backslash: the page goes to the current folder, the root of C:.
  RunResult r =
      tree.Fail("set txtNOME_FILE_HTM Pagina.htm\nclick Command1\nprint Module1.Dir_Output\n");
  EXPECT_TRUE(tree.Exists("c/pagina.htm") && r.Has("Module1.Dir_Output = \n")) << r.out;
  // A drive that is not there, a missing folder: the recovery takes the page
  // to drive C:; a folder without a drive moves under the root of C:.
  for (const char* name : {"Q:\\Sito\\index.htm", "C:\\Manca\\index.htm", "?:\\x\\index.htm"}) {
    r = tree.Fail(std::string("set txtNOME_FILE_HTM ") + name + "\nclick Command1\n");
    EXPECT_TRUE(r.Has("ASK: Visualizzo la pagina creata")) << name;
  }
  EXPECT_TRUE(tree.Exists("c/index.htm") && !tree.Exists("c/Manca"));
  r = tree.Fail("set txtNOME_FILE_HTM \\\\Manca\\index.htm\nclick Command1\n");
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
  for (auto& n : home.Tree("casa")) EXPECT_TRUE(n[0] == 'D' || n.starts_with("Vetrina-Foto/")) << n;
  EXPECT_FALSE(home.Exists("manca"));
  // An existing folder on Z: takes the site itself.
  RunScript("start\nset txtPATH_RICERCA " + z + "\\foto\nclick cmdCONFERMA\nset txtNOME_FILE_HTM " +
                z + "\\foto\\index.htm\nclick Command1\n",
            home.root(), home.Path("casa").string());
  EXPECT_EQ(home.Read("foto/dir_0001/img_001.jpg"), "A");
}

// Pictures for the web-size pass: `n` photos of one colour and shape in
// c/<folder>, and the script lines that add them.
std::string Photos(const Site& site, const std::string& folder, int n, int width, int height,
                   const std::vector<double>& colour) {
  VIPS_INIT("vf_tests");
  const vips::VImage image =
      (vips::VImage::black(width, height, vips::VImage::option()->set("bands", 3)) + colour)
          .cast(VIPS_FORMAT_UCHAR);
  site.MakeFolder("c/" + folder);
  std::string adds;
  for (int i = 1; i <= n; ++i) {
    const std::string name = "p" + std::to_string(i) + ".jpg";
    image.write_to_file(site.Path("c/" + folder + "/" + name).c_str());
    adds += "add C:\\" + folder + "\\" + name + "\n";
  }
  return adds + "set txtNUM_FILE " + std::to_string(n) + "\n";
}

TEST(WebSizes, MessagesNameThePhotoAndTheCauseAndBadLinesStayShort) {
  Site site;
  std::string sizes = "mini 40\r\nweb 80\r\n" + std::string(65, 'n') + " 100\r\n";
  for (int i = 0; i < 21; ++i) sizes += "zero 0\r\n";
  site.Write("c/PROG/DIMENSIONI.TXT", sizes);
  std::string adds = Photos(site, "Foto", 1, 60, 40, {200, 120, 40});
  site.Write("c/Foto/testo.jpg", "non è una foto");
  const std::string whole = site.Read("c/Foto/p1.jpg");
  site.Write("c/Foto/rotta.jpg", whole.substr(0, whole.size() / 2));
  site.Write("c/Sito/dir_0001/web", "a file where the size folder goes");
  RunResult r = site.Run("add C:\\Foto\\testo.jpg\nadd C:\\Foto\\rotta.jpg\n" + adds +
                         "set txtNUM_FILE 3\n" + kIndex + "click Command1\n");
  std::string bad = "Righe non valide nel file DIMENSIONI.TXT, non considerate:{CR}riga 3: " +
                    std::string(65, 'n') + " 100";
  for (int line = 4; line <= 22; ++line) bad += "{CR}riga " + std::to_string(line) + ": zero 0";
  EXPECT_EQ(r.Messages(),
            (Texts{bad + "{CR}(e altre 2 righe)",
                   "Immagini non riducibili, copiate come sono:{CR}C:\\Foto\\testo.jpg - non è "
                   "un'immagine{CR}C:\\Foto\\rotta.jpg - file troncato",
                   "Immagini ridotte non scritte:{CR}C:\\Foto\\testo.jpg - cartella non "
                   "creata{CR}C:\\Foto\\rotta.jpg - cartella non creata{CR}C:\\Foto\\p1.jpg - "
                   "cartella non creata",
                   "Queste foto sono pubblicate con i loro dati, posizione compresa:{CR}"
                   "C:\\Foto\\testo.jpg{CR}C:\\Foto\\rotta.jpg"}));
  EXPECT_EQ(site.Read("c/Sito/dir_0001/mini/img_001.jpg"), "non è una foto");
}

// The colour and shape of a derived picture: "orange 60x40".
std::string Look(const std::filesystem::path& path) {
  const vips::VImage image = vips::VImage::new_from_file(path.c_str());
  const std::vector<double> pixel = image.getpoint(image.width() / 2, image.height() / 2);
  return std::string(pixel[2] > pixel[0] ? "blue " : "orange ") + std::to_string(image.width()) +
         "x" + std::to_string(image.height());
}

TEST(WebSizes, TwoBuildsIntoOneSiteAtOnceLeaveEveryPictureRight) {
  Site site;
  site.Write("c/PROG/DIMENSIONI.TXT", "web 60\r\n");
  const std::string start = "drive C c\nprogram C:\\PROG\nstart\n";
  const std::string build = std::string(kIndex) + "answer yes\nclick Command1\n";
  const std::string orange = start + Photos(site, "FotoA", 18, 120, 80, {200, 120, 40}) + build;
  const std::string blue = start + Photos(site, "FotoB", 18, 80, 120, {0, 0, 255}) + build;
  // Without the sizes file a build takes no lock; with it the build waits
  // for the pass at work in its site.
  const std::string sizes = site.Read("c/PROG/DIMENSIONI.TXT");
  for (const bool with_sizes : {false, true}) {
    if (with_sizes) {
      site.Write("c/PROG/DIMENSIONI.TXT", sizes);
    } else {
      std::filesystem::remove(site.Path("c/PROG/DIMENSIONI.TXT"));
    }
    const int held = ::open(site.Path("c/Sito").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    std::atomic<bool> done = false;
    std::thread run([&] {
      RunScript(orange, site.root());
      done = true;
    });
    for (int i = 0; i < 100 && !done; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(done, !with_sizes);
    ::close(held);
    run.join();
  }
  // Two builds at once, of other photos into the same albums: each derived
  // picture is that of the source its album's record names.
  std::thread other([&] { RunScript(blue, site.root()); });
  RunScript(orange, site.root());
  other.join();
  // The record knows a source by a digest of its path, in any case.
  std::set<std::string> blue_sources;
  for (const auto& photo : std::filesystem::directory_iterator(site.Path("c/FotoB"))) {
    blue_sources.insert(SourceKey(std::filesystem::absolute(photo.path()).string()));
  }
  auto check = [&site, &blue_sources](const std::string& only) {
    for (const char* album : {"dir_0001", "dir_0002"}) {
      std::istringstream record(site.Read("c/Sito/" + std::string(album) + "/.derivate"));
      std::string line;
      std::getline(record, line);
      int entries = 0;
      for (; std::getline(record, line); ++entries) {
        std::vector<std::string> fields;
        for (std::istringstream split(line); std::getline(split, fields.emplace_back(), '\t');) {
        }
        const std::string look = blue_sources.contains(fields[3]) ? "blue 40x60" : "orange 60x40";
        // An AVIF's entry vouches for the AVIF beside the picture.
        const std::string file = fields[8] == "a" ? AvifName(fields[2]) : fields[2];
        EXPECT_EQ(Look(site.Path("c/Sito/" + std::string(album) + "/web/" + file)), look) << line;
        EXPECT_TRUE(only.empty() || look == only) << line;
      }
      EXPECT_EQ(entries, 2 * 9) << album;
    }
  };
  check("");
  // And a build after them makes every picture right again.
  RunScript(orange, site.root());
  check("orange 60x40");
}

}  // namespace
}  // namespace vf::test
