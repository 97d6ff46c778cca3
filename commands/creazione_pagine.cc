#include "commands/creazione_pagine.h"

#include <cmath>
#include <string>
#include <vector>

#include "album/copia_immagini.h"
#include "commands/anteprima.h"
#include "commands/creazione_index.h"
#include "generator/crea_pagina.h"

namespace vf {
namespace {

// An album size that is not a whole number of at least 1 would skip
// pictures, take them twice or never end the page loop, so it is refused.
bool Dimensione_Valida(double m) { return m >= 1 && m == std::floor(m); }

// A run of Crea_Pagina that numbers its albums on from the run before, so
// that the albums of the pages stay apart. A page that the recovery moved
// takes the later pages with it: the current folder follows it.
void Esegui(Vetrina& v) {
  const std::string cartella = v.Module1.Dir_Output;
  Crea_Pagina(v);
  v.Primo_Album = v.Album_Successivo;
  if (v.Module1.Dir_Output != cartella) Cambia_Cartella(v, v.Module1.Dir_Output);
}

}  // namespace

void Command4_Click(Vetrina& v) {
  Occupato occupato(v);
  Module1& m = v.Module1;
  FrmAlbum& f = v.frmALBUM;
  if (!Elenco_Da_Elaborare(v)) return;
  if (!Dimensione_Valida(Numero(f.txtMAX_N_FILES))) {
    Rifiuta(v, "Indicare numero massimo files per pagina .HTM da elaborare !!!");
    return;
  }
  if (Numero(f.txtMAX_PER_RIGA) < 1) {
    Rifiuta(v, "Indicare quante immagini si voglio per ogni riga !!!");
    return;
  }
  Prepara_Uscita(v);
  const std::string cartella_scelta = m.Dir_Output;

  m.Num_File = f.List1.ListCount();
  double num_presi = 0;
  m.Num_Pagina = 1;
  v.Primo_Album = 1;
  while (true) {
    m.Primo_File = num_presi + 1;
    // The size is read anew at each use; a text changed during a run to one
    // that is no whole number ends the page loop rather than looping on.
    double dimensione = Numero(f.txtMAX_N_FILES);
    if (!Dimensione_Valida(dimensione)) break;
    m.Ultimo_File = dimensione + num_presi;
    std::string n = std::to_string(m.Num_Pagina);
    m.Nome_File_Output = Maiuscole(v) ? "PAG_" + n + ".HTM" : "pag_" + n + ".htm";
    if (m.Num_Pagina < 1001)
      m.Elenco_Pagine[static_cast<size_t>(m.Num_Pagina)] = m.Nome_File_Output;
    Esegui(v);
    dimensione = Numero(f.txtMAX_N_FILES);
    if (!Dimensione_Valida(dimensione)) break;
    num_presi = dimensione + num_presi;
    if (!(num_presi < static_cast<double>(m.Num_File))) break;
    m.Num_Pagina += 1;
  }

  std::vector<std::string> pagine;
  for (int64_t n = 1; n <= m.Num_Pagina && n <= 1000; ++n) {
    pagine.push_back(m.Elenco_Pagine[static_cast<size_t>(n)]);
  }
  f.List1.Assign(std::move(pagine));

  Nome_Output parti = Dividi_Nome_Output(v);
  // After a move by the recovery the final page goes where the pages went.
  if (m.Dir_Output == cartella_scelta) m.Dir_Output = parti.cartella;
  m.Nome_File_Input = parti.nome;
  m.Num_File = f.List1.ListCount();
  m.Primo_File = 1;
  m.Ultimo_File = static_cast<double>(m.Num_File);
  Componi_Nome_Output(v);
  Esegui(v);
  Copia_Immagini_Sito(v);
  v.publishing.Publish(Sito_Da_Pubblicare(v));
  if (v.ui.Question("Visualizzo la prima pagina creata " + m.Dir_Output + m.Nome_File_Output +
                    " (S/N) ")) {
    Anteprima_Pagine(v);
  }
  f.Command5.Enabled = true;
}

}  // namespace vf
