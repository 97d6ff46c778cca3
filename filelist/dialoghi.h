#ifndef VF_FILELIST_DIALOGHI_H_
#define VF_FILELIST_DIALOGHI_H_

#include <string>
#include <string_view>

#include "shell/vetrina.h"

namespace vf {

// Title of every file dialog of the window.
inline constexpr const char* kTitoloDialogo =
    "Ricerca cartelle/directory contenenti Foto/Film/Suoni";

// A path split at its last backslash: the folder part keeps the backslash,
// the name part is the rest. Without a backslash the folder part is empty and
// the name part is the whole text.
struct PercorsoDiviso {
  std::string Cartella;
  std::string Nome;
};
PercorsoDiviso Taglia_Percorso(std::string_view Testo);

// "Sfoglia / Ricerca   Cartella/Directory...": chooses the input folder.
// Dir_Base becomes the folder part of txtPATH_RICERCA before the dialog
// opens; a chosen path puts its folder into txtPATH_RICERCA and Dir_Base.
void Command3_Click(Vetrina& v);
// The "..." beside the folder text: the same as Command3.
void Command7_Click(Vetrina& v);
// The "..." beside the page name: chooses the output folder. Dir_Base becomes
// the program's folder before the dialog opens, then the chosen folder;
// txtNOME_FILE_HTM moves into Dir_Base and keeps its file name.
void Command6_Click(Vetrina& v);

// The dialog side of cmdIns_File: as Command3 up to the dialog (Dir_Base
// becomes the folder part of txtPATH_RICERCA), then the chosen path, only
// trimmed; "" when the user gave up.
std::string cmdIns_File_Dialogo(Vetrina& v);

}  // namespace vf

#endif  // VF_FILELIST_DIALOGHI_H_
