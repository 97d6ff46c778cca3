#ifndef VF_GENERATOR_SCHELETRO_H_
#define VF_GENERATOR_SCHELETRO_H_

#include "generator/crea_pagina.h"
#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// The page's fixed lines around its table of buttons. Each gives the outcome
// of the first write that failed under the page's recovery.

// Hourglass, the page opened for writing in slot 1, "<HTML>", the header
// template (filtered by Check1 and Check2) and the return link.
Esito Apri_Pagina(Vetrina& v, StatoEsecuzione& s);
// The table opening, which leaves its first row open.
Esito Apri_Tabella(Vetrina& v, StatoEsecuzione& s);
// The last, partly filled album, the table's closing lines, the footer
// template (or "</HTML>" without one) and the page closed.
Esito Chiudi_Pagina(Vetrina& v, StatoEsecuzione& s);

}  // namespace vf

#endif  // VF_GENERATOR_SCHELETRO_H_
