#ifndef VF_GUI_PROGRAMMA_H_
#define VF_GUI_PROGRAMMA_H_

#include <QObject>
#include <memory>
#include <string>
#include <vector>

#include "gui/finestra_album.h"
#include "gui/qt_ui.h"
#include "platform/host_file_system.h"
#include "shell/vetrina.h"

namespace vf::gui {

// The drives of the window: C: is the user's home folder, Z: the root.
std::vector<DriveMapping> DischiDellaFinestra();

// The program with its windows: the logic, the file layer and the Qt user
// operations, and the one place where clicks of both windows become
// commands. A command runs to its end or to the end of the program; while
// one runs, every other click but F I N E is ignored.
class Programma : public QObject {
  Q_OBJECT

 public:
  explicit Programma(const std::vector<DriveMapping>& dischi = DischiDellaFinestra());
  ~Programma() override;

  // The normal start-up: the main window, no usage dialog. The windows
  // open on the screen given by Qt's primary screen.
  void Avvia();
  // The start-up that opens the usage dialog first.
  void AvviaConScelta();

  // A click on a control by its name, as the windows pass it on.
  void Clic(const std::string& nome);

  bool Finito() const { return finito_; }
  bool InCorso() const { return in_corso_ > 0 || v_->occupato; }
  Vetrina& vetrina() { return *v_; }
  QtUi& ui() { return *ui_; }
  HostFileSystem& fs() { return *fs_; }
  // nullptr until the window has been opened.
  FinestraAlbum* finestra() { return finestra_.get(); }
  DialogoUtilizzo* dialogo() { return dialogo_.get(); }

 Q_SIGNALS:
  // The program has ended: its windows are closed.
  void fine();

 private:
  // Both windows show the model; the main window opens once it is loaded.
  void Aggiorna(bool durante);
  // The user closed the main window (or the dialog).
  void Chiusura();
  void ChiusuraDialogo();
  void Termina();

  std::unique_ptr<HostFileSystem> fs_;
  std::unique_ptr<QtUi> ui_;
  std::unique_ptr<Vetrina> v_;
  std::unique_ptr<FinestraAlbum> finestra_;
  std::unique_ptr<DialogoUtilizzo> dialogo_;
  int in_corso_ = 0;
  bool finito_ = false;
};

}  // namespace vf::gui

#endif  // VF_GUI_PROGRAMMA_H_
