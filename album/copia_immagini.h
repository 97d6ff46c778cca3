#ifndef VF_ALBUM_COPIA_IMMAGINI_H_
#define VF_ALBUM_COPIA_IMMAGINI_H_

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// The five pictures of every album folder, each failure told to the user.
void Copia_Immagini_Album(Vetrina& v, StatoEsecuzione& s);

// The fourteen site files beside the page; failures are skipped silently.
void Copia_Immagini_Sito(Vetrina& v);

}  // namespace vf

#endif  // VF_ALBUM_COPIA_IMMAGINI_H_
