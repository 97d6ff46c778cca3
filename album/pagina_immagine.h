#ifndef VF_ALBUM_PAGINA_IMMAGINE_H_
#define VF_ALBUM_PAGINA_IMMAGINE_H_

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// The page of the entry in work: the template of its place in the album,
// from VETRINA-FOTO_DEFAULT\dir_0001 under the program's folder, with its
// picture names and, at the last place of an album, the next-album link
// rewritten. A failure is reported and ends the item loop.
void Passo_Pagina_Immagine(Vetrina& v, StatoEsecuzione& s);

// Copies File_Origine to File_Destinazione line by line with the rewriting.
// Leaves a failure noted in s.Err.
void Crea_Pagina_Immagine(Vetrina& v, StatoEsecuzione& s);

}  // namespace vf

#endif  // VF_ALBUM_PAGINA_IMMAGINE_H_
