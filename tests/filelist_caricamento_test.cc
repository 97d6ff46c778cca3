// The load commands: the dot test, the folder text, the counter, the
// buttons and the pictures per row.
#include <gtest/gtest.h>

#include "filelist/caricamento.h"
#include "tests/support/banco.h"

namespace vf::test {
namespace {

using Testi = std::vector<std::string>;
const Testi kCaricamento = {"CURSOR: BUSY", "BEEP", "CURSOR: NORMAL"};

void Immagini(Banco& b, const std::string& cartella, int n) {
  for (int i = 0; i < n; ++i) b.fs.AddFile(cartella + "\\p" + std::to_string(i) + ".jpg", "");
}

TEST(CmdConferma, FolderTextAndFilterText) {
  EXPECT_EQ(Togli_Asterischi("C:\\Foto\\*.*"), "C:\\Foto\\");
  EXPECT_EQ(Togli_Asterischi("C:\\Foto\\*.jpg"), "C:\\Foto\\*.jpg");
  EXPECT_EQ(Togli_Asterischi("C:\\Foto\\a*b"), "C:\\Foto\\a");
  EXPECT_EQ(Togli_Asterischi("x*yz"), "x");
  EXPECT_EQ(Togli_Asterischi("ab*"), "ab");
  EXPECT_EQ(Togli_Asterischi("***"), "");

  Banco b;
  auto& f = b.v.frmALBUM;
  b.fs.AddFile("C:\\radice.jpg", "");
  f.txtESTENSIONE.Text = "a.b";  // a leading dot is refused end to end
  cmdCONFERMA_Click(b.v);
  EXPECT_EQ(b.ui.events,
            (Testi{"BEEP", "MSG: Indicare solo l'estensione dei files da cercare !!!"}));
  EXPECT_EQ(f.txtNUM_FILE.Text, "");
  EXPECT_FALSE(b.v.occupato);

  // A blank folder text is "c:\"; stars only, the root of the current drive.
  f.txtESTENSIONE.Text = "jpg";
  f.txtPATH_RICERCA.Text = "   ";
  cmdCONFERMA_Click(b.v);
  f.txtPATH_RICERCA.Text = "***";
  cmdCONFERMA_Tutti_Click(b.v);
  EXPECT_EQ(b.Voci(), (Testi{"c:\\radice.jpg", "\\radice.jpg"}));
  EXPECT_EQ(f.txtESTENSIONE.Text, "*");
}

TEST(CmdConferma, LoadAppendsCountsAndSetsTheButtons) {
  Banco b;
  auto& f = b.v.frmALBUM;
  Immagini(b, "C:\\Foto", 3);
  b.Aggiungi({"voce di prima"});
  f.txtPATH_RICERCA.Text = "  C:\\Foto\\*.*  ";
  f.txtMAX_PER_RIGA.Text = "9";
  int durante = 0;
  b.ui.on_repaint = [&] {
    durante += !f.cmdCONFERMA.Enabled && !f.cmdCONFERMA_Tutti.Enabled && b.v.occupato;
  };
  cmdCONFERMA_Click(b.v);
  EXPECT_EQ(durante, 3);
  EXPECT_EQ(b.ui.events, kCaricamento);
  EXPECT_EQ(f.List1.List(1), "C:\\Foto\\p0.jpg");
  EXPECT_EQ(f.txtNUM_FILE.Text, "4");
  EXPECT_EQ(f.txtMAX_PER_RIGA.Text, "1");
  EXPECT_TRUE(f.Command1.Enabled && f.Command4.Enabled);
  EXPECT_FALSE(f.Command5.Enabled);
  EXPECT_TRUE(f.cmdCONFERMA.Enabled && f.cmdCONFERMA_Tutti.Enabled);
  EXPECT_FALSE(b.v.occupato);

  // Start folders that give nothing: no message, the load ends as usual and
  // the build buttons stay as they were.
  for (const char* cartella : {"C:\\Manca", "Q:\\Foto", "C:\\a|b", "C:\\Foto\\*.jpg"}) {
    b.ui.events.clear();
    f.List1.Clear();
    f.txtPATH_RICERCA.Text = cartella;
    cmdCONFERMA_Click(b.v);
    EXPECT_EQ(b.ui.events, kCaricamento) << cartella;
    EXPECT_EQ(f.txtNUM_FILE.Text, "0");
    EXPECT_TRUE(f.Command1.Enabled && f.cmdCONFERMA.Enabled && f.cmdCONFERMA_Tutti.Enabled);
  }
}

TEST(CmdConferma, PicturesPerRowByCountAndScreenWidth) {
  struct Caso {
    int immagini;
    double pixel;
    const char* atteso;
  };
  for (Caso c : {Caso{54, 1024, "1"}, Caso{55, 799.5, "4"}, Caso{55, 800, "5"}}) {
    Banco b;
    Immagini(b, "C:\\F", c.immagini);
    b.ui.screen_pixels = c.pixel;
    b.v.frmALBUM.txtPATH_RICERCA.Text = "C:\\F";
    cmdCONFERMA_Click(b.v);
    EXPECT_EQ(b.v.frmALBUM.txtMAX_PER_RIGA.Text, c.atteso) << c.immagini << " " << c.pixel;
    // A second load counts the entries of the first too.
    cmdCONFERMA_Click(b.v);
    EXPECT_EQ(b.v.frmALBUM.txtMAX_PER_RIGA.Text, c.pixel < 800 ? "4" : "5");
  }
}

}  // namespace
}  // namespace vf::test
