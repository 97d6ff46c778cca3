#ifndef VF_GUI_FINESTRA_ALBUM_H_
#define VF_GUI_FINESTRA_ALBUM_H_

#include "gui/elenco.h"
#include "gui/pannello.h"
#include "shell/frm_album.h"

namespace vf::gui {

// The main window "Vetrina Foto Digitali .HTML per Internet" over the model
// frmALBUM: the generic controls, List1, and the window's own fonts and
// colours.
class FinestraAlbum : public Pannello {
 public:
  FinestraAlbum(FrmAlbum& f, Scala scala, Clic clic);

  void Aggiorna(bool durante) override;
  VistaElenco& elenco() { return *elenco_; }

 private:
  void Caratteri();
  void Colori();

  FrmAlbum& f_;
  VistaElenco* elenco_;  // owned as a child
};

// The usage selection dialog "ALB-VIS" over the model frmALBUM1.
class DialogoUtilizzo : public Pannello {
 public:
  DialogoUtilizzo(FrmAlbum1& d, Scala scala, Clic clic);
};

// The font the forms use where a control sets none: MS Sans Serif 8.25
// points, or the nearest sans serif on this desktop.
QFont CarattereFinestra(double punti = 8.25, bool grassetto = false);
// Arial, or the nearest sans serif with its widths.
QFont CarattereArial(double punti, bool grassetto);

}  // namespace vf::gui

#endif  // VF_GUI_FINESTRA_ALBUM_H_
