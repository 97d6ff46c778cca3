#include "album/marcatori.h"

#include <algorithm>
#include <cmath>

#include "publish/site_names.h"
#include "shell/testo.h"

namespace vf {
namespace {

std::string Link_Indice(const Vetrina& v) { return IndexLinkFromAlbum(Maiuscole(v)); }

std::string Link_Album(const Vetrina& v, int64_t numero) {
  return MenuLinkFromAlbum(numero, Maiuscole(v));
}

void Sostituisci_Link(StatoEsecuzione& s, size_t p, const std::string& link) {
  s.Riga_Nuova = s.Riga.substr(0, p) + link + s.Riga.substr(p + 20);
}

}  // namespace

double Dimensione_Album(const Vetrina& v) { return NumeroIniziale(v.frmALBUM.txtMAX_N_FILES.Text); }

void Numero_Titolo(StatoEsecuzione& s, size_t p) {
  s.Riga_Nuova = s.Riga.substr(0, p + 20) + std::to_string(s.Num_Album) + s.Riga.substr(p + 21);
}

void Link_Precedente(const Vetrina& v, StatoEsecuzione& s, size_t p) {
  Sostituisci_Link(s, p, s.Num_Album == 1 ? Link_Indice(v) : Link_Album(v, s.Num_Album - 1));
}

void Link_Successivo(const Vetrina& v, StatoEsecuzione& s, size_t p) {
  double n = NumeroIniziale(v.frmALBUM.txtNUM_FILE.Text);
  double m = Dimensione_Album(v);
  // An album size below 1 puts every entry in an album of its own, so the
  // albums are counted as if the size were 1 and the last one leads home.
  m = std::max(m, 1.0);
  double tot_album = std::floor(n / m + 0.5);
  bool ultimo = tot_album == static_cast<double>(s.Num_Album) || s.Ultimo_Gruppo == 9898;
  Sostituisci_Link(s, p, ultimo ? Link_Indice(v) : Link_Album(v, s.Num_Album + 1));
}

void Nome_Immagine(Vetrina& v, StatoEsecuzione& s, size_t p, int64_t i) {
  double m = Dimensione_Album(v);
  // Places count from the first entry of this run and its first album, which
  // for a single build is the start of the list and album 1.
  double posizione = static_cast<double>(s.Num_Album - v.Primo_Album) * m + static_cast<double>(i) -
                     1 + (v.Module1.Primo_File - 1);
  std::string voce = Trim(v.frmALBUM.List1.List(ArrotondaPari(posizione)));
  s.Estensione = CasoScelto(v, CopyExtension(voce));
  s.Riga_Nuova = s.Riga.substr(0, p + 8) + s.Estensione + s.Riga.substr(p + 11);
}

void Nomi_Immagini(Vetrina& v, StatoEsecuzione& s, const std::string& minuscola) {
  double m = Dimensione_Album(v);
  if (!(m >= 1)) return;
  int64_t alto = Intero(std::floor(m));
  // Markers have three digits, so places a thousand apart share a marker and
  // only the highest of each thousand can be the last rewriting.
  const int64_t fine = std::max<int64_t>(alto - 1000, 0);
  for (int64_t i = alto; i > fine; --i) {
    size_t p = minuscola.find(CopyName(i, "jpg", false));
    if (p != std::string::npos) {
      Nome_Immagine(v, s, p, i);
      return;
    }
  }
}

}  // namespace vf
