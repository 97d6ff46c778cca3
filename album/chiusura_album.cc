#include "album/chiusura_album.h"

#include "album/copia_immagini.h"
#include "album/menu_album.h"

namespace vf {

void Chiudi_Album_Pieno(Vetrina& v, StatoEsecuzione& s) {
  Copia_Immagini_Album(v, s);
  s.Ultimo_Gruppo = 0;
  Crea_Menu_Album(v, s);
  s.Num_Album += 1;
  s.Num_Img_Album = 0;
}

void Chiudi_Ultimo_Album(Vetrina& v, StatoEsecuzione& s) {
  if (s.Num_Img_Album <= 0) return;
  Copia_Immagini_Album(v, s);
  s.Ultimo_Gruppo = 9898;
  Crea_Menu_Album(v, s);
}

}  // namespace vf
