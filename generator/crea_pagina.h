#ifndef VF_GENERATOR_CREA_PAGINA_H_
#define VF_GENERATOR_CREA_PAGINA_H_

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// One generator run: checks the templates and an existing page, asking the
// user where needed, writes the page Dir_Output & Nome_File_Output with its
// table of buttons and the album folders of the entries Primo_File to
// Ultimo_File, and ends with the normal cursor and a beep. The caller learns
// nothing of how the run went; Conferma_Esistente, Dir_Output and
// Nome_File_Output may come back changed.
void Crea_Pagina(Vetrina& v);

// How a step of the page's first writes goes on.
enum class Esito {
  kAvanti,      // on with the next step
  kRicomincia,  // the page moved: writing begins again from its first step
  kFine,        // the run ends
};

// The outcome of a step that failed with `failure` (0: it worked). While
// the page's recovery is armed a failure runs Ripristino_Pagina; otherwise
// the step is skipped and the next one runs.
Esito Passo(Vetrina& v, StatoEsecuzione& s, int failure);

// The common end of every run: normal cursor, beep.
void Fine_Pagina(Vetrina& v);

}  // namespace vf

#endif  // VF_GENERATOR_CREA_PAGINA_H_
