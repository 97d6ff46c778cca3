#ifndef VF_COMMANDS_CLIC_H_
#define VF_COMMANDS_CLIC_H_

#include <string_view>

#include "shell/vetrina.h"

namespace vf {

// A click on a control, by the control's name: "Command1", "Option3(1)",
// and "frmALBUM1.Command1" for the usage dialog. An option button becomes
// selected and its partners (in the same frame, or on the form when it
// stands in no frame) are cleared, then its command runs; a check box
// toggles; a button runs its command, whether or not it is enabled or
// visible. Returns false for a name that is no control of an open window.
bool Clic(Vetrina& v, std::string_view name);

}  // namespace vf

#endif  // VF_COMMANDS_CLIC_H_
