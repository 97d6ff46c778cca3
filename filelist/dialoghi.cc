#include "filelist/dialoghi.h"

#include <exception>

#include "shell/testo.h"

namespace vf {
namespace {

// Opens a file dialog and lets the window repaint. A dialog that fails for
// any reason gives the empty result, the same as a user who gave up; only the
// end of the program passes through.
std::string Apri_Dialogo(Vetrina& v, const std::string& Cartella) {
  std::string risultato;
  try {
    risultato = v.ui.FileDialog(kTitoloDialogo, Cartella, "*.*");
  } catch (const std::exception&) {
    // The result was never assigned, so it stays empty.
  }
  v.ui.Repaint();
  return Trim(risultato);
}

// The folder of a chosen path. A "/" is no part of a Windows path: what
// follows it is taken for something the dialog added and is dropped.
std::string Cartella_Scelta(const std::string& Risultato) {
  return Taglia_Percorso(std::string_view(Risultato).substr(0, Risultato.find('/'))).Cartella;
}

// Steps shared by Command3 and cmdIns_File: Dir_Base is the folder part of
// the folder text whatever the user does in the dialog.
std::string Dialogo_Da_Percorso_Ricerca(Vetrina& v, std::string* Cartella_Prima) {
  v.ui.Beep();
  *Cartella_Prima = Taglia_Percorso(v.frmALBUM.txtPATH_RICERCA.Text).Cartella;
  v.Module1.Dir_Base = *Cartella_Prima;
  return Apri_Dialogo(v, *Cartella_Prima);
}

}  // namespace

PercorsoDiviso Taglia_Percorso(std::string_view Testo) {
  size_t barra = Testo.rfind('\\');
  if (barra == std::string_view::npos) return {"", std::string(Testo)};
  return {std::string(Testo.substr(0, barra + 1)), std::string(Testo.substr(barra + 1))};
}

void Command3_Click(Vetrina& v) {
  std::string Cartella_Prima;
  std::string Risultato = Dialogo_Da_Percorso_Ricerca(v, &Cartella_Prima);
  if (Risultato.empty()) return;
  std::string Cartella = Cartella_Scelta(Risultato);
  if (!Trim(Cartella).empty()) {
    v.frmALBUM.txtPATH_RICERCA.Text = Cartella;
    v.Module1.Dir_Base = Cartella;
  } else {
    // A result without a folder (a bare name or pattern): the folder text
    // goes back to its own folder part, as it stood before the dialog.
    v.frmALBUM.txtPATH_RICERCA.Text = Cartella_Prima;
  }
}

void Command7_Click(Vetrina& v) { Command3_Click(v); }

void Command6_Click(Vetrina& v) {
  v.ui.Beep();
  // Beside a program in a drive's root this gives two backslashes, as the
  // default page name does; the file layer skips the empty part.
  std::string Cartella_Programma = v.ui.ProgramFolder() + "\\";
  v.Module1.Dir_Base = Cartella_Programma;
  std::string Risultato = Apri_Dialogo(v, Cartella_Programma);
  if (Risultato.empty()) return;
  std::string Cartella = Cartella_Scelta(Risultato);
  if (!Trim(Cartella).empty()) v.Module1.Dir_Base = Cartella;
  // Only the folder is chosen here: the page keeps its file name.
  std::string Nome = Taglia_Percorso(v.frmALBUM.txtNOME_FILE_HTM.Text).Nome;
  v.frmALBUM.txtNOME_FILE_HTM.Text = v.Module1.Dir_Base + Nome;
}

std::string cmdIns_File_Dialogo(Vetrina& v) {
  std::string Cartella_Prima;
  return Dialogo_Da_Percorso_Ricerca(v, &Cartella_Prima);
}

}  // namespace vf
