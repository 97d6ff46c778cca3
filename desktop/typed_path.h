#ifndef VF_DESKTOP_TYPED_PATH_H_
#define VF_DESKTOP_TYPED_PATH_H_

#include <optional>
#include <string>

#include "platform/host_file_system.h"

namespace vf {

// The Windows form of a Linux path that the user typed in a path box: a
// text that starts with "/", or is "~" or starts with "~/" (the home
// folder), whether or not the place exists yet. "." and ".." are resolved
// and a final "/" stays as a final backslash, as the folder dialogs give a
// folder. Nothing for any other text (a Windows path, a bare name), and for
// a path that no drive holds or that a Windows path cannot spell: the text
// is then left as typed.
std::optional<std::string> WindowsFormOfTyped(const std::string& text, const std::string& home,
                                              const HostFileSystem& fs);

}  // namespace vf

#endif  // VF_DESKTOP_TYPED_PATH_H_
