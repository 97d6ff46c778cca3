#ifndef VF_ALBUM_MARCATORI_H_
#define VF_ALBUM_MARCATORI_H_

#include <cstddef>
#include <string>

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// Marker rewriting of the album pages. A marker is searched in Riga folded to
// small letters; the first occurrence counts, and Riga_Nuova is always put
// together afresh from pieces of Riga, so the rest of the line keeps the
// template's case. Positions are 0-based here.

inline constexpr const char* kMarcaTitolo = "menu immagini - pag.1";
inline constexpr const char* kMarcaPrecedente = "../dir_000p/menu.htm";
inline constexpr const char* kMarcaSuccessivo = "../dir_000s/menu.htm";

// The album's number in place of the title marker's last digit.
void Numero_Titolo(StatoEsecuzione& s, size_t p);
// The link to the album before, or to the index from the first album.
void Link_Precedente(const Vetrina& v, StatoEsecuzione& s, size_t p);
// The link to the album after, or to the index from the last album.
void Link_Successivo(const Vetrina& v, StatoEsecuzione& s, size_t p);
// The extension of the entry at place i of the album in place of "jpg".
void Nome_Immagine(Vetrina& v, StatoEsecuzione& s, size_t p, int64_t i);
// Rewrites the picture marker with the highest place up to the album size
// that the line holds, which is what rewriting every place in rising order
// leaves behind.
void Nomi_Immagini(Vetrina& v, StatoEsecuzione& s, const std::string& minuscola);

// The album size: the leading number of txtMAX_N_FILES.
double Dimensione_Album(const Vetrina& v);

}  // namespace vf

#endif  // VF_ALBUM_MARCATORI_H_
