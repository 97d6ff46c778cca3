#ifndef VF_GENERATOR_CELLA_H_
#define VF_GENERATOR_CELLA_H_

#include <string>

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// The button cell of an album's first entry on the index page: a link to the
// album's menu page, or straight to the file for a page, a sound or a film.
void Scrivi_Cella(Vetrina& v, StatoEsecuzione& s);

// Lines 1 to 7 and 10 to 14 of a cell.
void Apri_Cella(Vetrina& v, StatoEsecuzione& s);
void Chiudi_Cella(Vetrina& v, StatoEsecuzione& s);

// True for the extensions (in capitals) that link straight to the file.
bool Voce_Multimediale(const std::string& estensione);

}  // namespace vf

#endif  // VF_GENERATOR_CELLA_H_
