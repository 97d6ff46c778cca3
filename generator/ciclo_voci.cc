#include "generator/ciclo_voci.h"

#include <algorithm>
#include <string>

#include "album/cartella_album.h"
#include "album/chiusura_album.h"
#include "album/pagina_immagine.h"
#include "generator/cella.h"
#include "platform/failure.h"
#include "shell/testo.h"

namespace vf {
namespace {

double Valore(const Control& c) { return NumeroIniziale(c.Text); }

void A_Capo(Vetrina& v, StatoEsecuzione& s) {
  s.Num_Colonna += 1;
  if (Valore(v.frmALBUM.txtMAX_PER_RIGA) <= static_cast<double>(s.Num_Colonna)) {
    for (const char* riga : {" ", "</tr>", "<tr>", " "}) s.Nota(v.slots.WriteLine(1, riga));
    s.Num_Colonna = 0;
  }
}

void Voce(Vetrina& v, StatoEsecuzione& s) {
  // The stored name takes the chosen case. On this host a rename never
  // replaces another file: a name taken by a different file is refused.
  s.Rinomina_Riuscita = v.fs.Rename(s.Voce, s.Riga) == kOk;
  Dividi_Percorso(v, s);
  Calcola_Dir_Relativa(v, s);
  if (s.Num_Img_Album <= 0) {
    Scrivi_Cella(v, s);
    s.Nota(v.slots.WriteLine(1, " "));
    A_Capo(v, s);
  }
  Passo_Album(v, s);
  Passo_Pagina_Immagine(v, s);
  s.Num_Img_Album += 1;
  if (Valore(v.frmALBUM.txtMAX_N_FILES) <= static_cast<double>(s.Num_Img_Album)) {
    Chiudi_Album_Pieno(v, s);
  }
}

}  // namespace

void Ciclo_Voci(Vetrina& v, StatoEsecuzione& s) {
  const double primo = v.Module1.Primo_File;
  const double ultimo = v.Module1.Ultimo_File;
  const ListBox& lista = v.frmALBUM.List1;
  // Past the end every entry reads as blank and changes nothing, and no
  // repaint point can lengthen the list any more: the walk ends with the
  // list, however far Ultimo_File lies. The places are whole numbers from
  // 1, so the list's count is its last place.
  auto ultimo_presente = [&] { return std::min(ultimo, static_cast<double>(lista.ListCount())); };
  s.Fine_Ciclo = false;
  for (s.Ind_Elenco = primo; s.Ind_Elenco <= ultimo_presente() && !s.Fine_Ciclo;
       s.Ind_Elenco += 1) {
    s.Voce = lista.List(ArrotondaPari(s.Ind_Elenco) - 1);
    s.Riga = CasoScelto(v, s.Voce);
    if (Trim(s.Riga).empty()) continue;
    s.Armato = false;
    Voce(v, s);
  }
}

void Dividi_Percorso(const Vetrina& v, StatoEsecuzione& s) {
  std::string riga = CasoScelto(v, s.Riga);
  size_t barra = riga.rfind('\\');
  if (barra == std::string::npos) {
    s.Dir_File.clear();
    s.Nome_File = riga;
  } else {
    s.Dir_File = riga.substr(0, barra + 1);
    s.Nome_File = riga.substr(barra + 1);
  }
}

void Calcola_Dir_Relativa(const Vetrina& v, StatoEsecuzione& s) {
  // The folder below Dir_Base, by length alone: what the entry's folder has
  // past Dir_Base's length, nothing when it has no more or no base is set.
  const std::string& base = v.Module1.Dir_Base;
  s.Dir_Relativa = base.empty() ? "" : s.Dir_File.substr(std::min(base.size(), s.Dir_File.size()));
}

}  // namespace vf
