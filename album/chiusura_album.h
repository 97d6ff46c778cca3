#ifndef VF_ALBUM_CHIUSURA_ALBUM_H_
#define VF_ALBUM_CHIUSURA_ALBUM_H_

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// Closes a full album inside the item loop: its pictures and menu page, then
// the next album number.
void Chiudi_Album_Pieno(Vetrina& v, StatoEsecuzione& s);

// Closes the last, partly filled album behind the item loop, if there is one.
void Chiudi_Ultimo_Album(Vetrina& v, StatoEsecuzione& s);

}  // namespace vf

#endif  // VF_ALBUM_CHIUSURA_ALBUM_H_
