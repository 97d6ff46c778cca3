#include "filelist/modifica_elenco.h"

#include <string>
#include <utility>
#include <vector>

#include "filelist/dialoghi.h"
#include "shell/testo.h"

namespace vf {

void cmdCANC_FILE_Click(Vetrina& v) {
  ListBox& List1 = v.frmALBUM.List1;
  v.Module1.Num_File = List1.ListCount();
  if (v.Module1.Num_File == 0) return;

  if (List1.SelCount() == 1) {
    // The single entry named and removed is the one at the current position,
    // which need not be the selected one. A current position past the end
    // names no entry and is treated like none.
    int64_t corrente = List1.ListIndex;
    if (corrente < 0 || corrente >= List1.ListCount()) {
      v.ui.Beep();
      v.ui.Message("SELEZIONARE UN FILE IN ELENCO tra i possibili " + ConBlank(v.Module1.Num_File) +
                   " files !!!");
      return;
    }
    if (v.ui.Question("Confermi la cancellazione di " + List1.List(corrente) +
                      " dal solo elenco (S/N) ")) {
      List1.RemoveItem(corrente);
    }
    return;
  }

  // None or several selected: the list is rebuilt from the entries that stay,
  // in their order, and the current position is lost. The entries that stay
  // are gathered in a table that grows with the list, so a list of any
  // length is rebuilt whole: the old limit of 1000 entries that stay, past
  // which the command could not run, no longer exists.
  std::vector<std::string> Tab_Rimasti;
  for (int64_t pos = 0; pos < List1.ListCount(); ++pos) {
    if (!List1.Selected(pos)) Tab_Rimasti.push_back(List1.List(pos));
  }
  List1.Assign(std::move(Tab_Rimasti));
}

void Command2_Click(Vetrina& v) { v.frmALBUM.List1.Clear(); }

void Option3_Click(Vetrina& v, int Index) {
  ListBox& List1 = v.frmALBUM.List1;
  for (int64_t pos = 0; pos < List1.ListCount(); ++pos) List1.SetSelected(pos, Index == 0);
}

void cmdIns_File_Click(Vetrina& v) {
  std::string Percorso = cmdIns_File_Dialogo(v);
  if (Percorso.empty()) return;
  FrmAlbum& f = v.frmALBUM;
  // The file's type is not looked at: this is the way to add a page, a sound
  // or a film. Duplicates are allowed, as in a load.
  f.List1.AddItem(std::move(Percorso));
  f.txtNUM_FILE.Text = std::to_string(f.List1.ListCount());
  // The list holds at least this entry now, so the builds can run.
  f.Command1.Enabled = true;
  f.Command4.Enabled = true;
  f.Command5.Enabled = true;
}

}  // namespace vf
