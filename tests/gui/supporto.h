#ifndef VF_TESTS_GUI_SUPPORTO_H_
#define VF_TESTS_GUI_SUPPORTO_H_

#include <QAbstractButton>
#include <QDir>
#include <QLineEdit>
#include <QTemporaryDir>
#include <string>
#include <vector>

#include "gui/programma.h"

namespace vf::gui::test {

inline std::string LeggiFile(const std::string& host) {  // "<missing>" if it cannot be read
  QFile f(QFile::decodeName(QByteArray::fromStdString(host)));
  return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : "<missing>";
}

struct Cartella : QTemporaryDir {  // a temporary folder of files
  std::string Host(const std::string& r = "") const {
    return QFile::encodeName(filePath(QString::fromStdString(r))).toStdString();
  }
  void Scrivi(const std::string& r, const std::string& byte = "x") const {
    QFile f(QString::fromStdString(Host(r)));
    if (QDir().mkpath(QFileInfo(f).path()) && f.open(QIODevice::WriteOnly)) {
      f.write(byte.data(), static_cast<qint64>(byte.size()));
    }
  }
};

// The window program with its user played by the test: messages, questions
// (answered No), file dialogs (given up) and pages opened are only recorded.
struct Prova : Programma {
  explicit Prova(const Ambiente& ambiente = AmbienteDellUtente()) : Programma(ambiente) {
    ui().intervallo_ms = 0;  // pending events run at every repaint point
    ui().risponditore = [this](const std::string& testo, bool domanda) {
      eventi.push_back((domanda ? "ASK: " : "MSG: ") + testo);
      return false;
    };
    ui().scelta_file = [this](const std::string& titolo, const std::string&) {
      eventi.push_back("DIALOG: " + titolo);
      return std::nullopt;
    };
    ui().avviatore = [this](const QString& programma, const QStringList& argomenti) {
      eventi.push_back("RUN: " + (programma + ' ' + argomenti.join(' ')).toStdString());
      return true;
    };
    connect(this, &Programma::fine, [this] { ++finiti; });
  }
  template <typename W = QAbstractButton>
  W* Widget(const std::string& nome) {
    return qobject_cast<W*>(finestra()->Widget(nome));
  }
  void Scrivi(const std::string& casella, const std::string& testo) {  // as the user edits it
    Widget<QLineEdit>(casella)->selectAll();
    Widget<QLineEdit>(casella)->insert(QString::fromStdString(testo));
  }
  std::string Windows(const std::string& host) { return fs().WindowsPath(host).value_or("?"); }
  std::vector<std::string> eventi;
  int finiti = 0;  // times the program said it ended
};

}  // namespace vf::gui::test

#endif  // VF_TESTS_GUI_SUPPORTO_H_
