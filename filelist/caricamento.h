#ifndef VF_FILELIST_CARICAMENTO_H_
#define VF_FILELIST_CARICAMENTO_H_

#include <string>

#include "shell/vetrina.h"

namespace vf {

// "Carica i nomi dei files della estensione indicata": refuses a filter text
// that holds a dot; otherwise scans the folder of txtPATH_RICERCA ("c:\" when
// it is blank) with Legge_Dir, appending to List1, then sets txtNUM_FILE,
// enables Command1 and Command4 when the list holds entries, sets
// txtMAX_PER_RIGA by the count and the screen width, and beeps. The two load
// buttons are disabled and v.occupato is set while it runs.
void cmdCONFERMA_Click(Vetrina& v);

// "Carica tutti i files multimediali conosciuti della cartella": the filter
// becomes "*" and the load above runs.
void cmdCONFERMA_Tutti_Click(Vetrina& v);

// The start folder of a load as typed: while one of its last three characters
// is "*", its last character goes. "C:\Foto\*.*" becomes "C:\Foto\".
std::string Togli_Asterischi(std::string Percorso);

}  // namespace vf

#endif  // VF_FILELIST_CARICAMENTO_H_
