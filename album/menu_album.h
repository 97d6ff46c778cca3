#ifndef VF_ALBUM_MENU_ALBUM_H_
#define VF_ALBUM_MENU_ALBUM_H_

#include "generator/stato_esecuzione.h"
#include "shell/vetrina.h"

namespace vf {

// The album's menu page: MENU.HTM of the program's folder copied into the
// album folder with its number, its links to the albums on either side and
// its picture names rewritten. Nothing here shows a message.
void Crea_Menu_Album(Vetrina& v, StatoEsecuzione& s);

}  // namespace vf

#endif  // VF_ALBUM_MENU_ALBUM_H_
