#include "gui/programma.h"

#include <QDir>
#include <QGuiApplication>
#include <exception>

#include "commands/clic.h"
#include "shell/avvio.h"

namespace vf::gui {
namespace {

// Counts a running command for the length of a scope, also when the
// program ends in the middle of it.
class ContaComando {
 public:
  explicit ContaComando(int& n) : n_(n) { ++n_; }
  ~ContaComando() { --n_; }
  ContaComando(const ContaComando&) = delete;
  ContaComando& operator=(const ContaComando&) = delete;

 private:
  int& n_;
};

}  // namespace

std::vector<DriveMapping> DischiDellaFinestra() {
  return {{'C', QFile::encodeName(QDir::homePath()).toStdString(), false}, {'Z', "/", false}};
}

Programma::Programma(const std::vector<DriveMapping>& dischi)
    : fs_(std::make_unique<HostFileSystem>(dischi)),
      ui_(std::make_unique<QtUi>(*fs_)),
      v_(std::make_unique<Vetrina>(*fs_, *ui_)) {
  ui_->prima_degli_eventi = [this] { Aggiorna(true); };
}

Programma::~Programma() = default;

void Programma::Avvia() {
  Main(*v_);
  Aggiorna(false);
}

void Programma::AvviaConScelta() {
  Main_Con_Scelta(*v_);
  Aggiorna(false);
}

void Programma::Clic(const std::string& nome) {
  if (finito_) return;
  if (InCorso()) {
    // Inside a running command only the end of the program (F I N E, or
    // Annulla of the usage dialog) gets through, at the command's next
    // repaint point. The widget that was clicked shows the model again.
    if (nome == "cmdFINE" || nome == "frmALBUM1.Command2") ui_->RichiediFine();
    Aggiorna(true);
    return;
  }
  try {
    ContaComando in_corso(in_corso_);
    vf::Clic(*v_, nome);
  } catch (const FineProgramma&) {
    Termina();
    return;
  } catch (const std::exception& e) {
    // Nothing may cross Qt's event loop; the program goes on as after a
    // command that stopped.
    ui_->CursoreNormale();
    ui_->Message(std::string("Errore interno: ") + e.what());
  }
  // F I N E clicked during a command that reached no repaint point after it.
  if (ui_->FineRichiesta()) {
    Termina();
    return;
  }
  Aggiorna(false);
}

void Programma::Aggiorna(bool durante) {
  if (finito_) return;
  if (v_->frmALBUM1.Loaded && !dialogo_) {
    dialogo_ = std::make_unique<DialogoUtilizzo>(
        v_->frmALBUM1, ScalaDelloSchermo(QGuiApplication::primaryScreen()),
        [this](const std::string& n) { Clic(n); });
    dialogo_->alla_chiusura = [this] { ChiusuraDialogo(); };
    dialogo_->show();
  }
  if (v_->frmALBUM_Loaded && !finestra_) {
    finestra_ = std::make_unique<FinestraAlbum>(v_->frmALBUM,
                                                ScalaDelloSchermo(QGuiApplication::primaryScreen()),
                                                [this](const std::string& n) { Clic(n); });
    finestra_->alla_chiusura = [this] { Chiusura(); };
    ui_->genitore = finestra_.get();
    finestra_->show();
  }
  if (dialogo_) dialogo_->Aggiorna(durante);
  if (finestra_) finestra_->Aggiorna(durante);
}

void Programma::ChiusuraDialogo() {
  // Beside the open main window the dialog is only put away; before it,
  // closing the dialog is giving up, as "Annulla" is.
  if (finestra_) {
    dialogo_->hide();
    return;
  }
  Chiusura();
}

void Programma::Chiusura() {
  if (InCorso()) {
    ui_->RichiediFine();
    return;
  }
  Termina();
}

void Programma::Termina() {
  if (finito_) return;
  finito_ = true;
  ui_->CursoreNormale();
  if (dialogo_) dialogo_->hide();
  if (finestra_) finestra_->hide();
  Q_EMIT fine();
}

}  // namespace vf::gui
