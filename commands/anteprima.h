#ifndef VF_COMMANDS_ANTEPRIMA_H_
#define VF_COMMANDS_ANTEPRIMA_H_

#include "shell/vetrina.h"

namespace vf {

// The preview of the single build: the page by its name alone, which the
// current folder reaches, or by its whole path when the page was moved.
void Anteprima_Singola(Vetrina& v, bool percorso_intero);

// The preview of the paged build: the final page by its whole path.
void Anteprima_Pagine(Vetrina& v);

// "Vedo risultato INDEX.HTM": opens the page of the last build.
void Command5_Click(Vetrina& v);

}  // namespace vf

#endif  // VF_COMMANDS_ANTEPRIMA_H_
