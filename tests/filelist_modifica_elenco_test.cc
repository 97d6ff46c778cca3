// The list editing commands: removal, new list, select all, add one file.
#include <gtest/gtest.h>

#include "filelist/modifica_elenco.h"
#include "tests/support/banco.h"

namespace vf::test {
namespace {

using Testi = std::vector<std::string>;

TEST(CmdCancFile, NoneOrSeveralSelectedRebuildInOrder) {
  Banco b;
  auto& l = b.v.frmALBUM.List1;
  cmdCANC_FILE_Click(b.v);  // empty list: nothing
  Testi tutte, rimaste;
  for (int i = 0; i < 2500; ++i) tutte.push_back("C:\\F\\p" + std::to_string(i) + ".jpg");
  b.Aggiungi(tutte);
  l.ListIndex = 7;
  cmdCANC_FILE_Click(b.v);  // nothing selected: all stay, the position goes
  EXPECT_EQ(b.Voci(), tutte);
  EXPECT_EQ(l.ListIndex, -1);
  // Every third selected, far past the 1000 entries of the old table.
  for (int i = 0; i < 2500; ++i) {
    if (i % 3 == 0) l.SetSelected(i, true);
    if (i % 3 != 0) rimaste.push_back(tutte[static_cast<size_t>(i)]);
  }
  b.v.frmALBUM.txtNUM_FILE.Text = "2500";
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(b.Voci(), rimaste);
  EXPECT_FALSE(l.Selected(0));
  EXPECT_EQ(b.v.Module1.Num_File, 2500);
  EXPECT_EQ(b.v.frmALBUM.txtNUM_FILE.Text, "2500");
  EXPECT_TRUE(b.ui.events.empty());
  Option3_Click(b.v, 0);
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(l.ListCount(), 0);
}

TEST(CmdCancFile, OneSelectedAsksAboutTheCurrentEntry) {
  Banco b;
  auto& l = b.v.frmALBUM.List1;
  b.Aggiungi({"C:\\F\\a.jpg", "C:\\F\\b.jpg", "C:\\F\\c.jpg"});
  l.SetSelected(0, true);
  for (int64_t corrente : {-1, 3}) {  // none, or past the end
    l.ListIndex = corrente;
    cmdCANC_FILE_Click(b.v);
  }
  const std::string msg = "MSG: SELEZIONARE UN FILE IN ELENCO tra i possibili  3 files !!!";
  EXPECT_EQ(b.ui.events, (Testi{"BEEP", msg, "BEEP", msg}));
  // The entry named and removed is the current one, not the selected one.
  b.ui.events.clear();
  l.ListIndex = 2;
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(b.ui.events,
            Testi{"ASK: Confermi la cancellazione di C:\\F\\c.jpg dal solo elenco (S/N)  -> NO"});
  EXPECT_EQ(l.ListCount(), 3);
  b.ui.answers.push_back(true);
  cmdCANC_FILE_Click(b.v);
  EXPECT_EQ(b.Voci(), (Testi{"C:\\F\\a.jpg", "C:\\F\\b.jpg"}));
  EXPECT_TRUE(l.Selected(0));
}

TEST(ModificaElenco, SelectAllNewListAndAddOneFile) {
  Banco b;
  auto& f = b.v.frmALBUM;
  b.Aggiungi({"a", "b"});
  Option3_Click(b.v, 0);
  EXPECT_TRUE(f.List1.Selected(0) && f.List1.Selected(1));
  Option3_Click(b.v, 7);  // any index but 0 deselects
  EXPECT_FALSE(f.List1.Selected(0) || f.List1.Selected(1));
  f.txtNUM_FILE.Text = "2";
  Command2_Click(b.v);
  EXPECT_EQ(f.List1.ListCount(), 0);
  EXPECT_EQ(f.txtNUM_FILE.Text, "2");

  // Given up: Dir_Base is set all the same, nothing else happens.
  f.txtPATH_RICERCA.Text = "C:\\Foto\\scatto.jpg";
  cmdIns_File_Click(b.v);
  EXPECT_EQ(b.v.Module1.Dir_Base, "C:\\Foto\\");
  EXPECT_FALSE(f.Command5.Enabled);
  // A film, trimmed only, the "/" kept; the folder text does not follow.
  b.ui.dialog_results = {"  D:\\Film\\vacanze.avi/x  ", "D:\\Film\\vacanze.avi/x"};
  cmdIns_File_Click(b.v);
  cmdIns_File_Click(b.v);
  EXPECT_EQ(b.Voci(), (Testi{"D:\\Film\\vacanze.avi/x", "D:\\Film\\vacanze.avi/x"}));
  EXPECT_EQ(f.txtNUM_FILE.Text, "2");
  EXPECT_TRUE(f.Command1.Enabled && f.Command4.Enabled && f.Command5.Enabled);
  EXPECT_EQ(f.txtPATH_RICERCA.Text, "C:\\Foto\\scatto.jpg");
  EXPECT_EQ(b.v.Module1.Dir_Base, "C:\\Foto\\");
}

}  // namespace
}  // namespace vf::test
