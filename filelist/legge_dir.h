#ifndef VF_FILELIST_LEGGE_DIR_H_
#define VF_FILELIST_LEGGE_DIR_H_

#include <string>

#include "shell/vetrina.h"

namespace vf {

// Deepest level that is read: the start folder has level 0, so a scan reads
// 51 levels of folders. Folders below are not read and nothing is reported.
inline constexpr int64_t kLivelloMassimo = 50;
// How many of the names left out a load names in its message.
inline constexpr size_t kScartatiMostrati = 5;

// Appends to List1 what the tree under Path_Ricerca holds (with or without a
// trailing backslash; "" names the root of the current drive). With a filter
// in txtESTENSIONE: the full paths of the files that pass it, each folder's
// files before the trees of its subfolders. With an empty filter: "<path>" for
// every folder of the tree but the start folder, each before its own tree.
// The filter is read anew at every test. List1 is never cleared. A folder
// that cannot be listed gives nothing and no message. Names that no page
// could link to are not listed (the file layer leaves them out); those the
// user would have had are counted in frmALBUM.scansione, from 0 at each call,
// for the load to tell. On return
// frmALBUM.scansione.Livello has its value of before the call.
void Legge_Dir(Vetrina& v, const std::string& Path_Ricerca);

// The filter test of one bare file name against the filter text as it
// stands in txtESTENSIONE (trimmed here). The extension is what follows the
// first dot, trimmed, in capitals; it passes when it equals the filter in
// capitals, or when the filter is "*" and it is one of the five picture types
// JPG, BMP, TIF, GIF, WMF. A name without a dot never passes.
bool Passa_Filtro(const std::string& Nome, const std::string& Filtro);

}  // namespace vf

#endif  // VF_FILELIST_LEGGE_DIR_H_
