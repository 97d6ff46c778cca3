#include "shell/avvio.h"

namespace vf {
namespace {

// The simplified layout: the steps renumbered from 1 to 4, the single build,
// the output name, the page options and the choice of case taken away. The
// paged build is the build of this layout, so its button is shown.
void Layout_Semplificato(FrmAlbum& f) {
  f.Label6[0].Visible = false;
  f.Label6[1].Caption = "1";
  f.Label6[2].Caption = "2";
  f.Label6[3].Caption = "3";
  f.Label6[6].Caption = "4";
  f.Label6[3].Top = f.Label6[3].Top + 300;
  for (Control* c : {&f.Command2, &f.Command1, &f.Label5, &f.txtNOME_FILE_HTM, &f.Check1, &f.Check2,
                     &f.Shape1, &f.Option1, &f.Option2}) {
    c->Visible = false;
  }
  f.Command4.Visible = true;
}

void Carica_Mostra_frmALBUM(Vetrina& v) {
  v.frmALBUM = FrmAlbum();
  Form_Load(v);
  v.frmALBUM_Loaded = true;
}

}  // namespace

void Main(Vetrina& v) {
  v.Module1.Tipo_Utilizzo = 2;
  Carica_Mostra_frmALBUM(v);
}

void Main_Con_Scelta(Vetrina& v) {
  v.frmALBUM1 = FrmAlbum1();
  v.frmALBUM1.Loaded = true;
}

void Form_Load(Vetrina& v) {
  FrmAlbum& f = v.frmALBUM;
  f.txtMAX_PER_RIGA.Text = Larghezza_Schermo(v) < 800 ? "4" : "5";
  f.txtMAX_N_FILES.Text = "9";
  f.Command1.Enabled = false;
  f.Command4.Enabled = false;
  f.Command5.Enabled = false;
  if (v.Module1.Tipo_Utilizzo == 1) {
    Layout_Semplificato(f);
  } else {
    v.Module1.Tipo_Utilizzo = 2;
  }
  std::string folder = v.ui.ProgramFolder();
  f.txtNOME_FILE_HTM.Text = folder + "\\index.htm";
}

void cmdFINE_Click(Vetrina& v) {
  v.ui.End();
  // A front end whose End returned still ends the program here.
  throw FineProgramma{};
}

void frmALBUM1_Option1_Click(Vetrina& v) { v.Module1.Tipo_Utilizzo = 1; }
void frmALBUM1_Option2_Click(Vetrina& v) { v.Module1.Tipo_Utilizzo = 2; }

void frmALBUM1_Command1_Click(Vetrina& v) {
  v.Module1.Tipo_Utilizzo = v.frmALBUM1.Option1.Value != 0 ? 1 : 2;
  // CONFERMA: the main window opens beside the dialog, which stays open.
  Carica_Mostra_frmALBUM(v);
}

void frmALBUM1_Command2_Click(Vetrina& v) { cmdFINE_Click(v); }

}  // namespace vf
