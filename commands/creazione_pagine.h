#ifndef VF_COMMANDS_CREAZIONE_PAGINE_H_
#define VF_COMMANDS_CREAZIONE_PAGINE_H_

#include "shell/vetrina.h"

namespace vf {

// "Creazione vari ALBUM.HTM secondo massimo numero files": the list cut into
// pages PAG_1, PAG_2, … of txtMAX_N_FILES entries, then the list replaced by
// those pages' names and the page of txtNOME_FILE_HTM written over them.
void Command4_Click(Vetrina& v);

}  // namespace vf

#endif  // VF_COMMANDS_CREAZIONE_PAGINE_H_
