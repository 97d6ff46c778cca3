#include "commands/creazione_index.h"

#include <utility>

#include "album/copia_immagini.h"
#include "commands/anteprima.h"
#include "generator/crea_pagina.h"
#include "shell/testo.h"

namespace vf {

double Numero(const Control& c) { return NumeroIniziale(c.Text); }

Nome_Output Dividi_Nome_Output(const Vetrina& v) {
  std::string testo = CasoScelto(v, Trim(v.frmALBUM.txtNOME_FILE_HTM.Text));
  size_t barra = testo.rfind('\\');
  if (barra == std::string::npos) return {"", testo};
  return {testo.substr(0, barra + 1), testo.substr(barra + 1)};
}

void Componi_Nome_Output(Vetrina& v) {
  Module1& m = v.Module1;
  size_t punto = m.Nome_File_Input.find('.');
  m.Nome_File_Output =
      punto == std::string::npos ? m.Nome_File_Input : m.Nome_File_Input.substr(0, punto);
  m.Nome_File_Output += Maiuscole(v) ? ".HTM" : ".htm";
}

void Cambia_Cartella(Vetrina& v, const std::string& cartella) {
  v.fs.SetCurrentFolder(cartella);
  if (!cartella.empty() && cartella[0] != '\\') v.fs.SetCurrentDrive(cartella.substr(0, 1));
}

void Rifiuta(Vetrina& v, const char* messaggio) {
  v.ui.Beep();
  v.ui.Message(messaggio);
}

bool Elenco_Da_Elaborare(Vetrina& v) {
  v.Module1.Conferma_Esistente = 0;
  if (Numero(v.frmALBUM.txtNUM_FILE) != 0) return true;
  Rifiuta(v, "Nessun files da elaborare !!!");
  return false;
}

void Prepara_Uscita(Vetrina& v) {
  Nome_Output parti = Dividi_Nome_Output(v);
  v.Module1.Dir_Output = parti.cartella;
  v.Module1.Nome_File_Input = parti.nome;
  Cambia_Cartella(v, parti.cartella);
  v.Sito_Costruito = {};
}

BuiltSite Sito_Da_Pubblicare(Vetrina& v) {
  BuiltSite sito = std::exchange(v.Sito_Costruito, {});
  sito.capitals = Maiuscole(v);
  return sito;
}

void Command1_Click(Vetrina& v) {
  Occupato occupato(v);
  Module1& m = v.Module1;
  FrmAlbum& f = v.frmALBUM;
  if (!Elenco_Da_Elaborare(v)) return;
  Prepara_Uscita(v);
  m.Num_File = f.List1.ListCount();
  m.Primo_File = 1;
  m.Ultimo_File = static_cast<double>(m.Num_File);
  Componi_Nome_Output(v);
  v.Primo_Album = 1;
  const std::string cartella_scelta = m.Dir_Output;
  Crea_Pagina(v);
  Copia_Immagini_Sito(v);
  v.publishing.Publish(Sito_Da_Pubblicare(v));
  if (v.ui.Question("Visualizzo la pagina creata " + m.Dir_Output + m.Nome_File_Output +
                    " (S/N) ")) {
    // A page that the recovery moved to drive C: is not in the current
    // folder, so its preview names it whole.
    Anteprima_Singola(v, m.Dir_Output != cartella_scelta);
  }
  f.Command5.Enabled = true;
}

}  // namespace vf
