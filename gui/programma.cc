#include "gui/programma.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLineEdit>
#include <algorithm>
#include <exception>

#include "commands/clic.h"
#include "desktop/typed_path.h"
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

Ambiente AmbienteDi(const std::string& casa) {
  const UserArea area = UserAreaOf(casa);
  return {
      casa, UserDrives(area), area,
      InstalledTemplates(QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString())};
}

Programma::Programma(const Ambiente& ambiente)
    : fs_(std::make_unique<HostFileSystem>(ambiente.dischi)),
      ui_(std::make_unique<QtUi>(*fs_)),
      pubblicazione_(std::make_unique<SitePublishing>(
          *fs_, *ui_,
          [this](size_t fatte, size_t tutte) { return ui_->ImmagineRidotta(fatte, tutte); })),
      v_(std::make_unique<Vetrina>(*fs_, *ui_, *pubblicazione_)),
      ambiente_(ambiente) {
  ui_->cartella_programma = ambiente.area.program_folder;
  ui_->prima_degli_eventi = [this] { Aggiorna(true); };
  ui_->immagini_ridotte = [this](size_t fatte, size_t tutte) {
    // The pass has a second of its own before it shows how far it is.
    if (lavoro_ != Lavoro::kImmagini) inizio_lavoro_.start();
    lavoro_ = Lavoro::kImmagini;
    immagini_fatte_ = fatte;
    immagini_tutte_ = tutte;
  };
}

Programma::~Programma() = default;

void Programma::PreparaCartella() {
  if (ambiente_.modelli.empty()) return;
  const std::string errore = PrepareUserArea(ambiente_.area, ambiente_.modelli);
  if (!errore.empty()) ui_->Message(errore);
}

void Programma::Avvia() {
  PreparaCartella();
  Main(*v_);
  Aggiorna(false);
}

void Programma::AvviaConScelta() {
  PreparaCartella();
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
  lavoro_ = nome == "cmdCONFERMA" || nome == "cmdCONFERMA_Tutti" ? Lavoro::kCaricamento
            : nome == "Command1" || nome == "Command4"           ? Lavoro::kCreazione
                                                                 : Lavoro::kNessuno;
  inizio_lavoro_.start();
  ridisegni_all_inizio_ = ui_->ridisegni;
  try {
    ContaComando in_corso(in_corso_);
    vf::Clic(*v_, nome);
    lavoro_ = Lavoro::kNessuno;
  } catch (const FineProgramma&) {
    Termina();
    return;
  } catch (const std::exception& e) {
    // Nothing may cross Qt's event loop; the program goes on as after a
    // command that stopped.
    ui_->CursoreNormale();
    ui_->Message(std::string("Errore interno: ") + e.what());
  }
  lavoro_ = Lavoro::kNessuno;
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
    for (const char* nome : {"txtPATH_RICERCA", "txtNOME_FILE_HTM"}) {
      if (auto* casella = qobject_cast<QLineEdit*>(finestra_->Widget(nome))) {
        connect(casella, &QLineEdit::editingFinished, this,
                [this, nome] { CasellaLasciata(nome); });
      }
    }
    ui_->genitore = finestra_.get();
    finestra_->show();
  }
  if (dialogo_) dialogo_->Aggiorna(durante);
  if (finestra_) finestra_->Aggiorna(durante);
  MostraAvanzamento();
}

void Programma::CasellaLasciata(const std::string& nome) {
  if (finito_ || !finestra_) return;
  Control* casella = v_->frmALBUM.Find(nome);
  if (casella == nullptr) return;
  if (std::optional<std::string> windows =
          WindowsFormOfTyped(casella->Text, ambiente_.casa, *fs_)) {
    casella->Text = *windows;
    finestra_->Aggiorna(false);
  }
}

void Programma::MostraAvanzamento() {
  if (!finestra_) return;
  QString titolo = QString::fromUtf8(FrmAlbum::kTitolo);
  // A command shorter than about a second shows nothing: the title would
  // only flicker.
  // While a command waits for the user the title is the window's own: the
  // count would read as work going on.
  if (lavoro_ != Lavoro::kNessuno && !ui_->InAttesa() &&
      inizio_lavoro_.elapsed() >= avanzamento_dopo_ms) {
    const int64_t voci = v_->frmALBUM.List1.ListCount();
    if (lavoro_ == Lavoro::kCaricamento) {
      titolo += QStringLiteral(" - Caricamento: %1 file trovati").arg(voci);
    } else if (lavoro_ == Lavoro::kImmagini) {
      titolo +=
          QStringLiteral(" - Immagini ridotte: %1 di %2").arg(immagini_fatte_).arg(immagini_tutte_);
    } else {
      const int64_t fatte = std::min(ui_->ridisegni - ridisegni_all_inizio_, voci);
      titolo += QStringLiteral(" - Creazione pagine: %1 di %2 voci").arg(fatte).arg(voci);
    }
  }
  if (finestra_->windowTitle() != titolo) finestra_->setWindowTitle(titolo);
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
