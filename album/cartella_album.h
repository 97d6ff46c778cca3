#ifndef VF_ALBUM_CARTELLA_ALBUM_H_
#define VF_ALBUM_CARTELLA_ALBUM_H_

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// Puts the entry in work into the current album: makes the album folder
// (a failure there is ignored), lets the window repaint, and copies the file
// as IMG_nnn plus the last three characters of its path. A failed copy is
// reported and ends the item loop.
void Passo_Album(Vetrina& v, StatoEsecuzione& s);

// Ends the item loop after a failed copy or page: the album being filled
// gets no closing.
void Interrompi_Ciclo(StatoEsecuzione& s);

// "Copia " & File_Origine & " " & File_Destinazione after two CR, the tail
// of every copy message.
std::string Coda_Copia(const StatoEsecuzione& s);

}  // namespace vf

#endif  // VF_ALBUM_CARTELLA_ALBUM_H_
