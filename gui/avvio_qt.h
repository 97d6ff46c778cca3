#ifndef VF_GUI_AVVIO_QT_H_
#define VF_GUI_AVVIO_QT_H_

namespace vf::gui {

// Runs the window program until it ends: the normal start-up, or with
// `con_scelta` the one that opens the usage dialog first. Returns the exit
// status.
int Esegui(int argc, char** argv, bool con_scelta);

}  // namespace vf::gui

#endif  // VF_GUI_AVVIO_QT_H_
