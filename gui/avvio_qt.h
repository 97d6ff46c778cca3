#ifndef VF_GUI_AVVIO_QT_H_
#define VF_GUI_AVVIO_QT_H_

class QTranslator;

namespace vf::gui {

// Qt's own texts (the file dialogs, their buttons, the context menus) in
// Italian, whatever the desktop's language: loads Qt's Italian translation
// into `traduttore`, which must outlive the application, and installs it.
// False when the translation is not installed.
bool CaricaItaliano(QTranslator& traduttore);

// Runs the window program until it ends: the normal start-up, or with
// `con_scelta` the one that opens the usage dialog first. Returns the exit
// status.
int Esegui(int argc, char** argv, bool con_scelta);

}  // namespace vf::gui

#endif  // VF_GUI_AVVIO_QT_H_
