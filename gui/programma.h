#ifndef VF_GUI_PROGRAMMA_H_
#define VF_GUI_PROGRAMMA_H_

#include <QElapsedTimer>
#include <QObject>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "desktop/site_publishing.h"
#include "desktop/user_area.h"
#include "gui/finestra_album.h"
#include "gui/qt_ui.h"
#include "platform/host_file_system.h"
#include "shell/vetrina.h"

namespace vf::gui {

// Where the window stands on this machine: its drives, its area (the
// program's folder and drive C:'s folder on the host), and the installed
// template set that fills the program's folder at start ("" for none).
struct Ambiente {
  std::string casa;  // the home folder, for "~" in a typed path
  std::vector<DriveMapping> dischi;
  UserArea area;
  std::string modelli;
};

// The user's own, for the home folder `casa`: the per-user program folder
// ~/Vetrina-Foto, filled from the template set installed with the
// executable, C: inside it, Z: the root.
Ambiente AmbienteDi(const std::string& casa);
inline Ambiente AmbienteDellUtente() { return AmbienteDi(HomeFolder()); }

// The program with its windows: the logic, the file layer and the Qt user
// operations, and the one place where clicks of both windows become
// commands. A command runs to its end or to the end of the program; while
// one runs, every other click but F I N E is ignored.
class Programma : public QObject {
  Q_OBJECT

 public:
  explicit Programma(const Ambiente& ambiente = AmbienteDellUtente());
  ~Programma() override;

  // The normal start-up: the main window, no usage dialog. The windows
  // open on the screen given by Qt's primary screen. Both start-ups first
  // fill the program's folder with the templates it lacks, and say so in a
  // message when that fails.
  void Avvia();
  // The start-up that opens the usage dialog first.
  void AvviaConScelta();

  // A click on a control by its name, as the windows pass it on.
  void Clic(const std::string& nome);

  bool Finito() const { return finito_; }
  // A load or build that lasts longer than this shows its progress.
  int avanzamento_dopo_ms = 1000;
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
  void PreparaCartella();
  // A Linux path typed in a path box becomes its Windows form.
  void CasellaLasciata(const std::string& nome);
  // How far a long load or build is, in the window's title.
  void MostraAvanzamento();

  enum class Lavoro { kNessuno, kCaricamento, kCreazione, kImmagini };

  std::unique_ptr<HostFileSystem> fs_;
  std::unique_ptr<QtUi> ui_;
  std::unique_ptr<SitePublishing> pubblicazione_;
  std::unique_ptr<Vetrina> v_;
  std::unique_ptr<FinestraAlbum> finestra_;
  std::unique_ptr<DialogoUtilizzo> dialogo_;
  Ambiente ambiente_;
  Lavoro lavoro_ = Lavoro::kNessuno;
  QElapsedTimer inizio_lavoro_;
  int64_t ridisegni_all_inizio_ = 0;
  size_t immagini_fatte_ = 0;
  size_t immagini_tutte_ = 0;
  int in_corso_ = 0;
  bool finito_ = false;
};

}  // namespace vf::gui

#endif  // VF_GUI_PROGRAMMA_H_
