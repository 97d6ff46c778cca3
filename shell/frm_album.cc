#include "shell/frm_album.h"

namespace vf {
namespace {

void Set(Control& c, const char* name, Control::Kind kind, int tab, int64_t left, int64_t top,
         int64_t width, int64_t height, const char* caption) {
  c.Name = name;
  c.kind = kind;
  c.tab = tab;
  c.Left = left;
  c.Top = top;
  c.Width = width;
  c.Height = height;
  if (kind == Control::kTextBox) {
    c.Text = caption;
  } else {
    c.Caption = caption;
  }
}

Control* FindIn(const std::vector<Control*>& controls, std::string_view name) {
  for (Control* c : controls) {
    if (c->Name == name) return c;
  }
  return nullptr;
}

}  // namespace

FrmAlbum::FrmAlbum() {
  using K = Control::Kind;
  Set(txtPATH_RICERCA, "txtPATH_RICERCA", K::kTextBox, 0, 1920, 240, 4215, 285,
      "C:\\VETRINA-FOTO\\");
  Set(txtESTENSIONE, "txtESTENSIONE", K::kTextBox, 1, 2280, 600, 615, 285, "*");
  Set(txtNOME_FILE_HTM, "txtNOME_FILE_HTM", K::kTextBox, 2, 1550, 960, 4575, 285, "");
  Set(Command7, "Command7", K::kButton, 3, 6120, 240, 495, 280, "...");
  Set(Command6, "Command6", K::kButton, 4, 6120, 960, 495, 280, "...");
  Set(Command2, "Command2", K::kButton, 5, 6855, 15, 2310, 345, "Nuovo elenco files");
  Set(Command3, "Command3", K::kButton, 6, 6855, 360, 2310, 495,
      "Sfoglia / Ricerca   Cartella/Directory...");
  Set(cmdCONFERMA, "cmdCONFERMA", K::kButton, 7, 6855, 915, 2310, 660,
      "Carica i nomi dei files della estensione indicata");
  Set(cmdCONFERMA_Tutti, "cmdCONFERMA_Tutti", K::kButton, 8, 6855, 1575, 2310, 840,
      "Carica tutti i files multimediali conosciuti della cartella");
  cmdCONFERMA_Tutti.Visible = false;
  Set(Command1, "Command1", K::kButton, 9, 6855, 2520, 2310, 615, "Creazione INDEX.HTM");
  Set(Command4, "Command4", K::kButton, 10, 6855, 3120, 2310, 735,
      "Creazione vari ALBUM.HTM secondo massimo numero files");
  Command4.Visible = false;
  Set(txtMAX_N_FILES, "txtMAX_N_FILES", K::kTextBox, 11, 8685, 3960, 495, 285, "");
  Set(txtMAX_PER_RIGA, "txtMAX_PER_RIGA", K::kTextBox, 12, 8685, 4275, 495, 285, "");
  Set(cmdIns_File, "cmdIns_File", K::kButton, 13, 6870, 4710, 2295, 330,
      "Inserisce un solo file in elenco");
  Set(cmdCANC_FILE, "cmdCANC_FILE", K::kButton, 14, 6870, 5040, 2295, 330,
      "Elimina files selez. da elenco");
  Set(txtNUM_FILE, "txtNUM_FILE", K::kTextBox, 15, 8040, 5490, 975, 285, "");
  Set(Check1, "Check1", K::kCheck, 16, 6735, 5895, 1320, 225, "Elimino sfondo");
  Set(Check2, "Check2", K::kCheck, 17, 6735, 6150, 1290, 225, "Elimino titolo");
  Set(Option1, "Option1", K::kOption, 18, 8145, 5925, 1080, 195, "Maiuscole");
  Set(Option2, "Option2", K::kOption, 19, 8145, 6180, 1080, 195, "Minuscole");
  Option2.Value = 1;
  Set(Command5, "Command5", K::kButton, 20, 6870, 6495, 1320, 495, "Vedo risultato INDEX.HTM");
  Set(cmdFINE, "cmdFINE", K::kButton, 21, 8190, 6495, 960, 495, "F I N E");
  Set(List1Frame, "List1", K::kListBox, 22, 120, 1320, 6510, 5325, "");
  Set(Label1, "Label1", K::kLabel, 23, 120, 285, 1815, 255, "Cartella di input immagini");
  Set(Label2, "Label2", K::kLabel, 24, 120, 645, 2175, 255, "Ricerca files con estensione ");
  Set(Label3, "Label3", K::kLabel, 25, 3075, 630, 3720, 255,
      " ( * per tutti i files) oppure (gif / jpg / bmp)");
  Set(Label4, "Label4", K::kLabel, 26, 6960, 5505, 1095, 255, "N.files trovati");
  Set(Label5, "Label5", K::kLabel, 27, 120, 1005, 1455, 255, "Nome file di output");
  Set(Label6[0], "Label6(0)", K::kLabel, 28, 6645, 0, 180, 390, "1");
  Set(Label6[1], "Label6(1)", K::kLabel, 29, 6645, 465, 180, 360, "2");
  Set(Label6[2], "Label6(2)", K::kLabel, 30, 6645, 1050, 180, 360, "3");
  Set(Label6[3], "Label6(3)", K::kLabel, 31, 6630, 2640, 180, 360, "4");
  Set(Label6[4], "Label6(4)", K::kLabel, 32, 3690, 6705, 2775, 255, "VETRINA-FOTO");
  Set(Label6[5], "Label6(5)", K::kLabel, 33, 3675, 6720, 2895, 255, "VETRINA-FOTO");
  Set(Label7, "Label7", K::kLabel, 34, 6840, 4005, 1815, 255, "Max. n.files per pag.HTM");
  Set(Label8, "Label8", K::kLabel, 35, 6855, 4305, 1815, 255, "Max. immagini per riga");
  Set(Label6[6], "Label6(6)", K::kLabel, 36, 6675, 6555, 180, 360, "5");
  Set(Frame1, "Frame1", K::kFrame, 37, 120, 6600, 2580, 495, "");
  Set(Option3[0], "Option3(0)", K::kOption, 38, 120, 200, 1215, 195, "Selez.tutti");
  Set(Option3[1], "Option3(1)", K::kOption, 39, 1320, 200, 1215, 195, "Deselez.tutti");
  Option3[0].container = "Frame1";
  Option3[1].container = "Frame1";
  Set(Shape1, "Shape1", K::kShape, -1, 6675, 5835, 2565, 585, "");
  Set(CommonDialog1, "CommonDialog1", K::kDialog, -1, 0, 0, 0, 0, "");
  Set(CommonDialog2, "CommonDialog2", K::kDialog, -1, 0, 0, 0, 0, "");
}

std::vector<Control*> FrmAlbum::Controls() {
  return {&txtPATH_RICERCA, &txtESTENSIONE, &txtNOME_FILE_HTM,
          &Command7,        &Command6,      &Command2,
          &Command3,        &cmdCONFERMA,   &cmdCONFERMA_Tutti,
          &Command1,        &Command4,      &txtMAX_N_FILES,
          &txtMAX_PER_RIGA, &cmdIns_File,   &cmdCANC_FILE,
          &txtNUM_FILE,     &Check1,        &Check2,
          &Option1,         &Option2,       &Command5,
          &cmdFINE,         &List1Frame,    &Label1,
          &Label2,          &Label3,        &Label4,
          &Label5,          &Label6[0],     &Label6[1],
          &Label6[2],       &Label6[3],     &Label6[4],
          &Label6[5],       &Label7,        &Label8,
          &Label6[6],       &Frame1,        &Option3[0],
          &Option3[1],      &Shape1,        &CommonDialog1,
          &CommonDialog2};
}

Control* FrmAlbum::Find(std::string_view name) { return FindIn(Controls(), name); }

FrmAlbum1::FrmAlbum1() {
  using K = Control::Kind;
  Set(Frame1, "Frame1", K::kFrame, 0, 105, 120, 3885, 1395, "Selzione tipo utilizzo");
  Set(Option1, "Option1", K::kOption, 1, 480, 405, 3075, 255, "Versione programma semplificata");
  Set(Option2, "Option2", K::kOption, 2, 480, 840, 3075, 255, "Versione programma completa");
  Option1.Value = 1;
  Option1.container = "Frame1";
  Option2.container = "Frame1";
  Set(Command1, "Command1", K::kButton, 3, 1635, 1620, 1245, 345, "Conferma");
  Set(Command2, "Command2", K::kButton, 4, 2865, 1620, 1110, 345, "Annulla");
}

std::vector<Control*> FrmAlbum1::Controls() {
  return {&Frame1, &Option1, &Option2, &Command1, &Command2};
}

Control* FrmAlbum1::Find(std::string_view name) { return FindIn(Controls(), name); }

}  // namespace vf
