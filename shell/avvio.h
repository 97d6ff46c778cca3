#ifndef VF_SHELL_AVVIO_H_
#define VF_SHELL_AVVIO_H_

#include "shell/vetrina.h"

namespace vf {

// The start-up: Tipo_Utilizzo := 2, load frmALBUM (its Form_Load runs) and
// show it. The usage dialog is not opened.
void Main(Vetrina& v);

// A start-up that opens the usage dialog frmALBUM1 in place of frmALBUM and
// leaves Tipo_Utilizzo to it.
void Main_Con_Scelta(Vetrina& v);

// The defaults of the main window, set when it is loaded.
void Form_Load(Vetrina& v);

// Ends the program at once: no question, nothing saved.
[[noreturn]] void cmdFINE_Click(Vetrina& v);

// The usage dialog's commands.
void frmALBUM1_Option1_Click(Vetrina& v);
void frmALBUM1_Option2_Click(Vetrina& v);
void frmALBUM1_Command1_Click(Vetrina& v);
[[noreturn]] void frmALBUM1_Command2_Click(Vetrina& v);

}  // namespace vf

#endif  // VF_SHELL_AVVIO_H_
