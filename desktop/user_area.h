#ifndef VF_DESKTOP_USER_AREA_H_
#define VF_DESKTOP_USER_AREA_H_

#include <string>
#include <vector>

#include "platform/host_file_system.h"

namespace vf {

// The user's own place for the window program: `program_folder` holds the
// user's copy of the template set and, by default, the site; `drive_c` is
// the folder of drive C:, where a build that cannot write where it was told
// falls back to, apart from the templates and the site.
struct UserArea {
  std::string program_folder;  // ~/Vetrina-Foto
  std::string drive_c;         // ~/Vetrina-Foto/Disco C
};

// The home folder: $HOME, else the user's entry in the password file, else "/".
std::string HomeFolder();
UserArea UserAreaOf(const std::string& home);

// The program's folder in the user's cache: $XDG_CACHE_HOME/vetrina-foto
// when that variable holds an absolute path, else
// ~/.cache/vetrina-foto. Only worked out, not made: what is kept there is
// the publishing pass's own, and makes its folders when it needs them.
std::string CacheFolder();

// The drives of the window, and of a script that names none: C: is the
// area's drive folder, Z: the root, so every folder of the machine can be
// reached and the fallbacks to C: stay inside the area.
std::vector<DriveMapping> UserDrives(const UserArea& area);

// The installed template set, given the folder of the executables:
// ../share/vetrina-foto, in an installed program and in a build tree alike.
std::string InstalledTemplates(const std::string& executable_folder);

// Makes the area's folders and copies into the program folder every file of
// `templates` (subfolders included, names starting with "." left out) that
// it lacks; an existing file is never replaced, so the user's edits stay.
// A copy is written under a temporary name and put in place whole. Returns
// "" on success, else an Italian message that names the folder and the
// failure; what could be made stays, and nothing is written elsewhere.
std::string PrepareUserArea(const UserArea& area, const std::string& templates);

// Makes a folder and the folders above it; false when it cannot be there.
bool MakeFolders(const std::string& host_folder);

}  // namespace vf

#endif  // VF_DESKTOP_USER_AREA_H_
