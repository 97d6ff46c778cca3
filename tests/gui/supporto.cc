#include "tests/gui/supporto.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace vf::gui::test {

Cartella::Cartella() = default;

std::string Cartella::Host(const std::string& relativo) const {
  QString p = dir_.path();
  if (!relativo.empty()) p += QLatin1Char('/') + QString::fromStdString(relativo);
  return QFile::encodeName(p).toStdString();
}

void Cartella::Scrivi(const std::string& relativo, const std::string& byte) const {
  const QString p = QString::fromStdString(Host(relativo));
  QDir().mkpath(QFileInfo(p).path());
  QFile f(p);
  if (f.open(QIODevice::WriteOnly)) f.write(byte.data(), static_cast<qint64>(byte.size()));
}

bool Cartella::Esiste(const std::string& relativo) const {
  return QFileInfo::exists(QString::fromStdString(Host(relativo)));
}

std::string Cartella::Leggi(const std::string& relativo) const {
  QFile f(QString::fromStdString(Host(relativo)));
  if (!f.open(QIODevice::ReadOnly)) return "<missing>";
  return f.readAll().toStdString();
}

void Cartella::Albero(const std::string& sotto, int cartelle, int per_cartella) const {
  for (int c = 0; c < cartelle; ++c) {
    for (int i = 0; i < per_cartella; ++i) {
      Scrivi(sotto + "/d" + std::to_string(1000 + c) + "/f" + std::to_string(1000 + i) + ".jpg");
    }
  }
}

ProgrammaDiProva::ProgrammaDiProva(const Ambiente& ambiente)
    : programma_(std::make_unique<Programma>(ambiente)) {
  QtUi& ui = programma_->ui();
  ui.intervallo_ms = 0;
  ui.risponditore = [this](const std::string& testo, bool domanda) {
    if (!domanda) {
      eventi.push_back("MSG: " + testo);
      return true;
    }
    bool si = !risposte.empty() && risposte.front();
    if (!risposte.empty()) risposte.pop_front();
    eventi.push_back("ASK: " + testo + (si ? " -> YES" : " -> NO"));
    return si;
  };
  ui.scelta_file = [this](const std::string& titolo, const std::string& inizio) {
    std::optional<std::string> scelta;
    if (!scelte.empty()) {
      scelta = scelte.front();
      scelte.pop_front();
    }
    eventi.push_back("DIALOG: " + titolo + " | " + inizio + " -> " + scelta.value_or(""));
    return scelta;
  };
  ui.avviatore = [this](const QString& programma, const QStringList& argomenti) {
    eventi.push_back("RUN: " + programma.toStdString() + " " + argomenti.join(' ').toStdString());
    return true;
  };
  QObject::connect(programma_.get(), &Programma::fine, [this] { ++fine; });
}

QAbstractButton* ProgrammaDiProva::Pulsante(const std::string& nome) {
  return qobject_cast<QAbstractButton*>(finestra().Widget(nome));
}

QLineEdit* ProgrammaDiProva::Casella(const std::string& nome) {
  return qobject_cast<QLineEdit*>(finestra().Widget(nome));
}

void ProgrammaDiProva::Scrivi(const std::string& nome, const std::string& testo) {
  QLineEdit* e = Casella(nome);
  e->selectAll();
  QTest::keyClick(e, Qt::Key_Delete);
  // Qt's test keyboard knows only ASCII: other letters come as typed text.
  for (const QChar c : QString::fromStdString(testo)) {
    if (c.unicode() < 128) {
      QTest::keyClick(e, c.toLatin1());
    } else {
      QTest::sendKeyEvent(QTest::Click, e, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
  }
}

std::string ProgrammaDiProva::Windows(const std::string& host) {
  return programma_->fs().WindowsPath(host).value_or("<none>");
}

}  // namespace vf::gui::test
