#ifndef VF_GENERATOR_CICLO_VOCI_H_
#define VF_GENERATOR_CICLO_VOCI_H_

#include "generator/crea_pagina.h"
#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// The walk over the entries Primo_File to Ultimo_File: each non-blank entry
// takes the chosen case on disk, opens an album with a button cell when it
// is the album's first, is copied into its album folder with a page of its
// own, and closes the album when it is full. Blank entries write nothing, so
// the page's recovery, armed until the first non-blank entry, has nothing to
// act on here.
void Ciclo_Voci(Vetrina& v, StatoEsecuzione& s);

// Splits Riga at its last backslash into Dir_File (with the backslash) and
// Nome_File, both in the chosen case.
void Dividi_Percorso(const Vetrina& v, StatoEsecuzione& s);

// Dir_File less as many leading characters as Dir_Base has; empty when
// Dir_Base is empty or not shorter.
void Calcola_Dir_Relativa(const Vetrina& v, StatoEsecuzione& s);

}  // namespace vf

#endif  // VF_GENERATOR_CICLO_VOCI_H_
