#ifndef VF_GUI_QT_UI_H_
#define VF_GUI_QT_UI_H_

#include <QElapsedTimer>
#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/user_ops.h"

class QMessageBox;

namespace vf {
class HostFileSystem;
}

namespace vf::gui {

// A message box as the program shows it: no title, no icon, the text as
// plain text with CR as its line break, and the Italian buttons "OK", or
// "Sì" and "No" for a question.
std::unique_ptr<QMessageBox> CreaMessaggio(const std::string& testo, bool domanda,
                                           QWidget* genitore);

// The user operations of the window. Paths go between the logic's Windows
// form and the host through the window's file layer.
class QtUi : public UserOps {
 public:
  explicit QtUi(HostFileSystem& fs);
  ~QtUi() override;

  void Message(const std::string& text) override;
  bool Question(const std::string& text) override;
  void Beep() override;
  void Cursor(bool busy) override;
  void Repaint() override;
  std::string FileDialog(const std::string& title, const std::string& start_folder,
                         const std::string& pattern) override;
  double ScreenWidthTwips() override;
  double TwipsPerPixelX() override { return 15.0; }
  std::string ProgramFolder() override;
  bool StartCommand(const std::string& line) override;
  [[noreturn]] void End() override;

  // The progress of the web-size pass after each picture: pending events run
  // as at a repaint point, and false once F I N E was clicked, which stops
  // the pass between two pictures and ends the program.
  bool ImmagineRidotta(size_t fatte, size_t tutte);
  // The user asked to end the program while a command runs: the next
  // repaint point ends it.
  void RichiediFine() { fine_richiesta_ = true; }
  bool FineRichiesta() const { return fine_richiesta_; }
  // The normal cursor again, whatever the logic left.
  void CursoreNormale() { Cursor(false); }
  // A message, question or file dialog is open: the command waits for the user.
  bool InAttesa() const { return in_attesa_ > 0; }

  // The program's folder on the host; ProgramFolder gives its Windows form.
  std::string cartella_programma;
  // Repaint points reached so far: one per entry copied in a build.
  int64_t ridisegni = 0;

  // Told after each picture of the web-size pass: pictures done, in all.
  std::function<void(size_t fatte, size_t tutte)> immagini_ridotte;

  // Window over which messages and dialogs open.
  QPointer<QWidget> genitore;
  // Called before pending events run at a repaint point and before a
  // message or dialog opens, so that the window shows the model.
  std::function<void()> prima_degli_eventi;
  // Pending events run at most this often inside a long command.
  int intervallo_ms = 10;

  // Test hooks. When set, they stand in for the person in front of the
  // screen: `risponditore` gets each message (domanda false, result
  // ignored) and question; `scelta_file` gets a dialog's title and host
  // start folder and gives the host path chosen (nothing: gave up);
  // `avviatore` starts a program with its arguments.
  std::function<bool(const std::string& testo, bool domanda)> risponditore;
  std::function<std::optional<std::string>(const std::string& titolo, const std::string& inizio)>
      scelta_file;
  std::function<bool(const QString& programma, const QStringList& argomenti)> avviatore;

 private:
  // The host folder a dialog starts in: the nearest folder that exists on
  // the way up from the Windows start folder, else the home folder.
  QString CartellaIniziale(const std::string& start_folder);
  // Lets pending events run, at most every `intervallo_ms`.
  void Eventi();
  std::optional<std::string> SceltaUtente(const std::string& title, const QString& inizio);

  HostFileSystem& fs_;
  // Counts the open message boxes and dialogs for the length of each.
  class Attesa;
  int in_attesa_ = 0;
  bool occupato_ = false;
  bool fine_richiesta_ = false;
  QElapsedTimer ultimo_giro_;
};

}  // namespace vf::gui

#endif  // VF_GUI_QT_UI_H_
