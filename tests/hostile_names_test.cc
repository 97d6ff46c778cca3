// Names that a Linux folder can hold and no Windows disk can, or that a
// browser would decode inside a link: the scanner never lists them, the load
// says what it left out, and every name it does list stays inside its link.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "commands/creazione_index.h"
#include "filelist/caricamento.h"
#include "platform/windows_path.h"
#include "tests/support/banco.h"

namespace vf::test {
namespace {

using Voci = std::vector<std::string>;
const std::string kCarica = "CURSOR: BUSY|BEEP|CURSOR: NORMAL";

TEST(HostileNames, WhichNamesFitAPage) {
  for (const char* name : {"a.jpg", "fine. ", "fine.", "CON", "a&b.mp3", "a&;b", "&amp.mp3",
                           "l'eco; #1 100%.mp3", "citt\xC3\xA0 \xC3\xA8.jpg", "& x;", "a&-b;"}) {
    EXPECT_TRUE(NameFitsAPage(name)) << name;
  }
  for (const char* name : {"a<b",    "a>b",      "a\"b",    "a|b",  "a?b",       "a*b",
                           "a:b",    "a\\b",     "a\x01",   "\x1f", "tab\there", "javascript&#58;x",
                           "&#x3a;", "&colon;x", "a&Tab;b", "&9;",  "&a;",       "&z;",
                           "&A;",    "&Z;",      "&0;"}) {
    EXPECT_FALSE(NameFitsAPage(name)) << name;
  }
}

// The load leaves them out and says so once, after its own events: the files
// that pass the filter and the folders, whose trees are lost with them; not a
// hidden name nor a file the filter would have skipped anyway.
TEST(HostileNames, TheLoadLeavesThemOutAndSaysHowMany) {
  Banco b;
  auto& f = b.v.frmALBUM;
  for (const char* name :
       {"D/Foto/a.mp3", "D/Foto/x\" onmouseover=\"alert(5).mp3", "D/Foto/javascript:alert(4).mp3",
        "D/Foto/javascript&#58;x.mp3", "D/Foto/c\x01.mp3", "D/Foto/.h<.mp3", "D/Foto/n<.txt",
        "D/Foto/q?/z.mp3", "D/Foto/.q?/z.mp3", "D/Foto/Sub/b.mp3", "D/Foto/Sub/b|.mp3",
        "D/Foto/Sub/z&lt;.mp3"}) {
    b.fs.AddHostFile(name, "");
  }
  f.txtPATH_RICERCA.Text = "D:\\Foto";
  f.txtESTENSIONE.Text = "mp3";
  cmdCONFERMA_Click(b.v);
  EXPECT_EQ(b.Voci(), (Voci{"D:\\Foto\\a.mp3", "D:\\Foto\\Sub\\b.mp3"}));
  EXPECT_EQ(f.txtNUM_FILE.Text, "2");
  EXPECT_EQ(b.Eventi(),
            kCarica +
                "|MSG: 7 file con nomi non utilizzabili in una pagina web non sono stati "
                "caricati:\rD:\\Foto\\c?.mp3\rD:\\Foto\\javascript&#58;x.mp3\r"
                "D:\\Foto\\javascript:alert(4).mp3\rD:\\Foto\\q?\\\rD:\\Foto\\x\" "
                "onmouseover=\"alert(5).mp3\re altri 2");
  // A second load counts afresh; one name has a message of its own form.
  b.fs.AddHostFile("D/Altro/uno>.mp3", "");
  f.txtPATH_RICERCA.Text = "D:\\Altro";
  cmdCONFERMA_Click(b.v);
  EXPECT_EQ(b.Eventi(), kCarica +
                            "|MSG: 1 file con nome non utilizzabile in una pagina web non è "
                            "stato caricato:\rD:\\Altro\\uno>.mp3");
  // With an empty filter only the folders count.
  f.txtESTENSIONE.Text = "";
  f.txtPATH_RICERCA.Text = "D:\\Foto";
  cmdCONFERMA_Click(b.v);
  EXPECT_EQ(b.Eventi(), kCarica +
                            "|MSG: 1 file con nome non utilizzabile in una pagina web non è "
                            "stato caricato:\rD:\\Foto\\q?\\");
}

// Every character a Windows name may hold stays inside the quoted link of
// its button: the link is the name as it stands, with no quote and no colon.
TEST(HostileNames, EveryNameTheScannerListsStaysInsideItsLink) {
  const Voci names = {"a&b c.mp3", "l'eco; #1 100%.mp3", "citt\xC3\xA0 \xC3\xA8.mp3",
                      "&amp.mp3",  "x=y onclick=z.mp3",  "(1) [2] {3} ~!@$^+,`.mp3",
                      "fine .mp3", "a&;b.mp3",           "\x7f.mp3"};
  Banco b;
  auto& f = b.v.frmALBUM;
  b.ui.program_folder = "C:\\P";
  for (const char* t : {"MENU.HTM", "INTESTAZ.HTM", "PIEDE.HTM"})
    b.fs.AddFile(std::string("C:\\P\\") + t, "x\r\n");
  b.fs.AddFile("C:\\P\\VETRINA-FOTO_DEFAULT\\dir_0001\\IMG_001.HTM", "x\r\n");
  for (const std::string& name : names) b.fs.AddHostFile("C/Foto/" + name, "");
  b.fs.AddFolder("C:\\Sito");
  f.txtPATH_RICERCA.Text = "C:\\Foto\\";
  f.txtESTENSIONE.Text = "MP3";
  cmdCONFERMA_Click(b.v);
  ASSERT_EQ(f.List1.ListCount(), static_cast<int64_t>(names.size()));
  f.txtMAX_N_FILES.Text = "1";
  f.txtNOME_FILE_HTM.Text = "C:\\Sito\\index.htm";
  Command1_Click(b.v);
  const std::string page = b.fs.Contents("C:\\Sito\\index.htm").value_or("");
  for (const std::string& name : names) {
    const std::string link = "        <A HREF=\"" + CasoScelto(b.v, name) + "\">\r\n";
    EXPECT_NE(page.find(link), std::string::npos) << name;
  }
  size_t links = 0;
  for (size_t at = page.find("<A HREF=\""); at != std::string::npos;
       at = page.find("<A HREF=\"", at + 1)) {
    const size_t end = page.find("\">\r\n", at);
    const std::string target = page.substr(at + 9, end - at - 9);
    EXPECT_EQ(target.find_first_of("\":<>"), std::string::npos) << target;
    ++links;
  }
  EXPECT_EQ(links, names.size());
}

}  // namespace
}  // namespace vf::test
