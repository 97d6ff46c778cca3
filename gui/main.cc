#include "gui/avvio_qt.h"

// The window program takes no options: it always starts with the main window.
int main(int argc, char** argv) { return vf::gui::Esegui(argc, argv, false); }
