#ifndef VF_GENERATOR_CICLO_VOCI_H_
#define VF_GENERATOR_CICLO_VOCI_H_

#include "generator/crea_pagina.h"
#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// The walk over the entries Primo_File to Ultimo_File: each non-blank entry
// takes the chosen case on disk, opens an album with a button cell when it
// is the album's first, is copied into its album folder with a page of its
// own, and closes the album when it is full. Until the first non-blank entry
// the page's recovery is still armed, which is the only way this gives back
// anything but kAvanti.
Esito Ciclo_Voci(Vetrina& v, StatoEsecuzione& s);

// Splits Riga at its last backslash into Dir_File (with the backslash) and
// Nome_File, both in the chosen case.
void Dividi_Percorso(const Vetrina& v, StatoEsecuzione& s);

// Dir_File less as many leading characters as Dir_Base has; empty when
// Dir_Base is empty or not shorter.
void Calcola_Dir_Relativa(const Vetrina& v, StatoEsecuzione& s);

}  // namespace vf

#endif  // VF_GENERATOR_CICLO_VOCI_H_
