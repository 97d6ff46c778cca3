#include "gui/qt_ui.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <exception>
#include <string_view>

#include "platform/host_file_system.h"
#include "platform/windows_path.h"

namespace vf::gui {
namespace {

QString DaHost(const std::string& s) { return QFile::decodeName(QByteArray::fromStdString(s)); }
std::string AHost(const QString& s) { return QFile::encodeName(s).toStdString(); }

// A file dialog in which a folder can be chosen too: "Apri" on a folder
// (or on the folder shown, with nothing selected) chooses that folder, a
// double click still opens it.
class DialogoFile : public QFileDialog {
 public:
  using QFileDialog::QFileDialog;

  std::optional<QString> cartella_scelta;

  void accept() override {
    const QStringList scelti = selectedFiles();
    if (!scelti.isEmpty() && QFileInfo(scelti.first()).isDir()) {
      cartella_scelta = scelti.first();
      QDialog::accept();
      return;
    }
    QFileDialog::accept();
  }
};

bool IniziaCon(std::string_view testo, std::string_view prefisso) {
  if (testo.size() < prefisso.size()) return false;
  for (size_t i = 0; i < prefisso.size(); ++i) {
    if (QChar::toUpper(static_cast<char16_t>(static_cast<unsigned char>(testo[i]))) !=
        QChar::toUpper(static_cast<char16_t>(static_cast<unsigned char>(prefisso[i])))) {
      return false;
    }
  }
  return true;
}

// The page named by a command line of the preview, or nothing for a line
// of another form.
std::optional<std::string> PaginaDellaRiga(const std::string& riga) {
  for (std::string_view forma : {"START /max /w ", "CMD /C ", "CMD /C"}) {
    if (IniziaCon(riga, forma)) return riga.substr(forma.size());
  }
  return std::nullopt;
}

// Every part of a Windows path below its drive can stand in a page's link.
bool NomiDaPagina(const std::string& windows) {
  size_t inizio = windows.find('\\');
  while (inizio != std::string::npos) {
    const size_t fine = windows.find('\\', inizio + 1);
    const std::string_view parte = std::string_view(windows).substr(
        inizio + 1, fine == std::string::npos ? std::string::npos : fine - inizio - 1);
    if (!NameFitsAPage(parte)) return false;
    inizio = fine;
  }
  return true;
}

}  // namespace

std::unique_ptr<QMessageBox> CreaMessaggio(const std::string& testo, bool domanda,
                                           QWidget* genitore) {
  auto box = std::make_unique<QMessageBox>(genitore);
  box->setWindowTitle(QString());
  box->setIcon(QMessageBox::NoIcon);
  box->setTextFormat(Qt::PlainText);
  QString t = QString::fromUtf8(testo.data(), static_cast<qsizetype>(testo.size()));
  t.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  t.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  box->setText(t);
  if (domanda) {
    box->setDefaultButton(box->addButton(QString::fromUtf8("Sì"), QMessageBox::YesRole));
    box->addButton(QStringLiteral("No"), QMessageBox::NoRole);
  } else {
    box->setDefaultButton(box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole));
  }
  return box;
}

class QtUi::Attesa {
 public:
  explicit Attesa(QtUi& ui) : ui_(ui) {
    ++ui_.in_attesa_;
    if (ui_.prima_degli_eventi) ui_.prima_degli_eventi();
  }
  ~Attesa() { --ui_.in_attesa_; }
  Attesa(const Attesa&) = delete;
  Attesa& operator=(const Attesa&) = delete;

 private:
  QtUi& ui_;
};

QtUi::QtUi(HostFileSystem& fs) : fs_(fs) {}

QtUi::~QtUi() { CursoreNormale(); }

void QtUi::Message(const std::string& text) {
  Attesa attesa(*this);
  if (risponditore) {
    risponditore(text, false);
    return;
  }
  CreaMessaggio(text, false, genitore)->exec();
}

bool QtUi::Question(const std::string& text) {
  Attesa attesa(*this);
  if (risponditore) return risponditore(text, true);
  auto box = CreaMessaggio(text, true, genitore);
  box->exec();
  return box->clickedButton() != nullptr &&
         box->buttonRole(box->clickedButton()) == QMessageBox::YesRole;
}

void QtUi::Beep() { QApplication::beep(); }

void QtUi::Cursor(bool busy) {
  // The logic sets the cursor as a state, not as a stack: only a change
  // touches Qt's stack of override cursors.
  if (busy == occupato_) return;
  occupato_ = busy;
  if (busy) {
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
  } else {
    QGuiApplication::restoreOverrideCursor();
  }
}

void QtUi::Eventi() {
  // A scan reaches this once per entry; letting events run every time
  // would cost more than the scan itself.
  if (ultimo_giro_.isValid() && ultimo_giro_.elapsed() < intervallo_ms) return;
  if (prima_degli_eventi) prima_degli_eventi();
  QCoreApplication::processEvents();
  ultimo_giro_.start();
}

void QtUi::Repaint() {
  ++ridisegni;
  if (fine_richiesta_) throw FineProgramma{};
  Eventi();
  // F I N E clicked meanwhile: the command stops here, not inside Qt.
  if (fine_richiesta_) throw FineProgramma{};
}

bool QtUi::ImmagineRidotta(size_t fatte, size_t tutte) {
  if (immagini_ridotte) immagini_ridotte(fatte, tutte);
  Eventi();
  return !fine_richiesta_;
}

QString QtUi::CartellaIniziale(const std::string& start_folder) {
  std::string cartella = start_folder.empty() ? fs_.CurrentFolder() : start_folder;
  // Up one part at a time until a folder is there; a drive's root ends it.
  for (int giri = 0; giri < 1000 && !cartella.empty(); ++giri) {
    if (std::optional<std::string> host = fs_.HostPath(cartella)) {
      const QString trovata = DaHost(*host);
      if (QFileInfo(trovata).isDir()) return trovata;
    }
    while (!cartella.empty() && (cartella.back() == '\\' || cartella.back() == '/')) {
      cartella.pop_back();
    }
    const size_t barra = cartella.find_last_of("\\/");
    if (barra == std::string::npos) break;
    cartella.erase(barra + 1);
  }
  return QDir::homePath();
}

std::optional<std::string> QtUi::SceltaUtente(const std::string& title, const QString& inizio) {
  DialogoFile d(genitore, QString::fromUtf8(title.c_str()), inizio);
  d.setOption(QFileDialog::DontUseNativeDialog);
  d.setFileMode(QFileDialog::AnyFile);
  d.setAcceptMode(QFileDialog::AcceptOpen);
  // The pattern "*.*" means every file; on this host many have no dot.
  d.setNameFilter(QStringLiteral("Tutti i file (*)"));
  d.setLabelText(QFileDialog::LookIn, QStringLiteral("Cerca in:"));
  d.setLabelText(QFileDialog::FileName, QStringLiteral("Nome file:"));
  d.setLabelText(QFileDialog::FileType, QStringLiteral("Tipo file:"));
  d.setLabelText(QFileDialog::Accept, QStringLiteral("Apri"));
  d.setLabelText(QFileDialog::Reject, QStringLiteral("Annulla"));
  if (d.exec() != QDialog::Accepted) return std::nullopt;
  if (d.cartella_scelta) return AHost(*d.cartella_scelta);
  const QStringList scelti = d.selectedFiles();
  if (scelti.isEmpty()) return std::nullopt;
  return AHost(scelti.first());
}

std::string QtUi::FileDialog(const std::string& title, const std::string& start_folder,
                             const std::string&) {
  std::optional<std::string> host;
  {
    Attesa attesa(*this);
    try {
      const QString inizio = CartellaIniziale(start_folder);
      host = scelta_file ? scelta_file(title, AHost(inizio)) : SceltaUtente(title, inizio);
    } catch (const std::exception&) {
      return "";
    }
  }
  if (!host || host->empty()) return "";
  std::optional<std::string> windows = fs_.WindowsPath(*host);
  if (!windows || !NomiDaPagina(*windows)) {
    // A name that no page could link to would break the site or run a
    // script in it; the user learns why nothing was chosen.
    Message("Il nome " + *host +
            " non può stare in una pagina web: contiene uno dei caratteri < > \" | ? * : \\ "
            "o un riferimento a un carattere (&# oppure &nome;).\r\r"
            "Rinominare il file o la cartella e sceglierlo di nuovo.");
    return "";
  }
  return *windows;
}

double QtUi::ScreenWidthTwips() {
  const QScreen* s = genitore != nullptr ? genitore->screen() : QGuiApplication::primaryScreen();
  const int larghezza = s != nullptr ? s->geometry().width() : 1024;
  return larghezza * 15.0;
}

std::string QtUi::ProgramFolder() {
  std::string cartella = fs_.WindowsPath(cartella_programma).value_or("C:\\");
  if (cartella.size() > 3 && cartella.back() == '\\') cartella.pop_back();
  return cartella;
}

bool QtUi::StartCommand(const std::string& line) {
  std::optional<std::string> pagina = PaginaDellaRiga(line);
  if (!pagina) return false;
  // The page is a Windows path, maybe relative to the current folder that
  // the build set; the desktop's opener gets its host path.
  std::optional<std::string> host = fs_.HostPath(*pagina);
  if (!host) return false;
  const QString percorso = DaHost(*host);
  if (!QFileInfo(percorso).isFile()) return false;
  if (avviatore) return avviatore(QStringLiteral("xdg-open"), {percorso});
  const QString apri = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
  if (apri.isEmpty()) return false;
  return QProcess::startDetached(apri, {percorso});
}

void QtUi::End() {
  fine_richiesta_ = true;
  throw FineProgramma{};
}

}  // namespace vf::gui
