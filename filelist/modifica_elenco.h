#ifndef VF_FILELIST_MODIFICA_ELENCO_H_
#define VF_FILELIST_MODIFICA_ELENCO_H_

#include "shell/vetrina.h"

namespace vf {

// "Elimina files selez. da elenco": with exactly one entry selected, asks
// about the entry at the current position and removes it on Yes; with none
// or several selected, removes the selected ones without a question. The
// order of what stays is kept. Files on disk are not touched; txtNUM_FILE and
// the build buttons are left as they are.
void cmdCANC_FILE_Click(Vetrina& v);

// "Nuovo elenco files": empties List1, nothing else.
void Command2_Click(Vetrina& v);

// "Selez.tutti" (Index 0) selects every entry, "Deselez.tutti" (any other
// Index) deselects every entry.
void Option3_Click(Vetrina& v, int Index);

// "Inserisce un solo file in elenco": a file dialog, then the chosen path,
// whole, at the end of List1, whatever its type; txtNUM_FILE is updated and
// Command1, Command4 and Command5 are enabled. Nothing happens after an
// empty result.
void cmdIns_File_Click(Vetrina& v);

}  // namespace vf

#endif  // VF_FILELIST_MODIFICA_ELENCO_H_
