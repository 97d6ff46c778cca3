#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <algorithm>
#include <stdexcept>

#include "tests/gui/supporto.h"

namespace vf::gui::test {
namespace {

QStringList Pulsanti(const QMessageBox& box) {
  QStringList testi;
  for (QAbstractButton* b : box.buttons()) testi << b->text();
  testi.sort();
  return testi;
}

TEST(QtUi, MessagesHaveNoTitleItalianButtonsAndCrLineBreaks) {
  auto msg = CreaMessaggio("Errore ERR= 53\r\rCopia <a> b", false, nullptr);
  EXPECT_EQ(msg->windowTitle(), "");
  EXPECT_EQ(msg->text(), "Errore ERR= 53\n\nCopia <a> b");
  EXPECT_EQ(msg->textFormat(), Qt::PlainText);
  EXPECT_EQ(Pulsanti(*msg), QStringList{"OK"});

  auto domanda = CreaMessaggio("Sovrascrivo (S/N) ", true, nullptr);
  EXPECT_EQ(Pulsanti(*domanda), (QStringList{"No", QString::fromUtf8("Sì")}));
  EXPECT_EQ(domanda->defaultButton()->text(), QString::fromUtf8("Sì"));
  EXPECT_EQ(domanda->buttonRole(domanda->defaultButton()), QMessageBox::YesRole);
}

TEST(QtUi, QuestionWithoutAnswererShowsABoxAndReadsTheButton) {
  Programma p;
  for (bool si : {true, false}) {
    QTimer::singleShot(0, [si] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      for (QAbstractButton* b : box->buttons()) {
        if ((box->buttonRole(b) == QMessageBox::YesRole) == si) b->click();
      }
    });
    EXPECT_EQ(p.ui().Question("Continuo?"), si);
  }
}

TEST(QtUi, PathsInWindowsFormWithTheWindowsDrives) {
  Cartella casa;
  ProgrammaDiProva t(AmbienteDi(casa.Host()));
  EXPECT_EQ(t.Windows(casa.Host("Vetrina-Foto/Disco C/Sito/a.jpg")), "C:\\Sito\\a.jpg");
  std::string foto = "Z:" + casa.Host("Foto");
  std::replace(foto.begin(), foto.end(), '/', '\\');
  EXPECT_EQ(t.Windows(casa.Host("Foto")), foto);
  EXPECT_EQ(t.Windows("/usr/share"), "Z:\\usr\\share");
  EXPECT_EQ(t.p().ui().ProgramFolder(), t.Windows(casa.Host("Vetrina-Foto")));
  EXPECT_EQ(t.p().ui().ScreenWidthTwips(),
            QGuiApplication::primaryScreen()->geometry().width() * 15.0);
  EXPECT_EQ(t.p().ui().TwipsPerPixelX(), 15.0);
}

TEST(QtUi, FileDialogStartsInTheHostFolderAndAnswersInWindowsForm) {
  Cartella c;
  c.Scrivi("Foto/Mare/a.jpg");
  ProgrammaDiProva t;
  QtUi& ui = t.p().ui();
  const std::string foto = t.Windows(c.Host("Foto"));

  t.scelte.push_back(c.Host("Foto/Mare/a.jpg"));
  EXPECT_EQ(ui.FileDialog("Titolo", foto + "\\MARE\\", "*.*"), foto + "\\Mare\\a.jpg");
  EXPECT_EQ(t.eventi.back(),
            "DIALOG: Titolo | " + c.Host("Foto/Mare") + " -> " + c.Host("Foto/Mare/a.jpg"));
  // A start folder that is not there opens the nearest one above it.
  t.scelte.push_back(std::nullopt);
  EXPECT_EQ(ui.FileDialog("Titolo", foto + "\\Monti\\Neve\\", "*.*"), "");
  EXPECT_EQ(t.eventi.back(), "DIALOG: Titolo | " + c.Host("Foto") + " -> ");

  ui.scelta_file = [](const std::string&, const std::string&) -> std::optional<std::string> {
    throw std::runtime_error("rotto");
  };
  EXPECT_EQ(ui.FileDialog("Titolo", foto, "*.*"), "");
}

TEST(QtUi, TheRealDialogChoosesAFileOrAFolder) {
  Cartella c;
  c.Scrivi("Foto/senza_punto");
  c.Scrivi("Foto/Mare/a.jpg");
  ProgrammaDiProva t;
  QtUi& ui = t.p().ui();
  ui.scelta_file = nullptr;
  const std::string foto = t.Windows(c.Host("Foto"));
  QStringList visti;
  auto scegli = [&](const QString& nome) {
    QTimer::singleShot(0, [&, nome] {
      auto* d = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(d, nullptr);
      EXPECT_TRUE(d->testOption(QFileDialog::DontUseNativeDialog));
      visti = d->directory().entryList(d->filter());
      // Qt's own texts of the dialog are Italian too.
      auto* vista = d->findChild<QTreeView*>(QStringLiteral("treeView"));
      ASSERT_NE(vista, nullptr);
      EXPECT_EQ(vista->model()->headerData(0, Qt::Horizontal).toString(), "Nome");
      auto* nuova = d->findChild<QToolButton*>(QStringLiteral("newFolderButton"));
      ASSERT_NE(nuova, nullptr);
      EXPECT_EQ(nuova->toolTip(), "Crea nuova cartella");
      d->selectFile(nome);
      QMetaObject::invokeMethod(d, "accept");
    });
  };
  scegli("senza_punto");
  EXPECT_EQ(ui.FileDialog("Scegli", foto + "\\", "*.*"), foto + "\\senza_punto");
  EXPECT_TRUE(visti.contains("senza_punto"));
  scegli("Mare");
  EXPECT_EQ(ui.FileDialog("Scegli", foto + "\\", "*.*"), foto + "\\Mare");
}

TEST(QtUi, StartingAPageUsesTheHostPathOfTheWindowsPath) {
  Cartella c;
  c.Scrivi("Sito/index.htm", "<html>");
  ProgrammaDiProva t;
  QtUi& ui = t.p().ui();
  const std::string sito = t.Windows(c.Host("Sito"));
  const std::string atteso = "RUN: xdg-open " + c.Host("Sito/index.htm");

  EXPECT_TRUE(ui.StartCommand("START /max /w " + sito + "\\INDEX.HTM"));
  EXPECT_EQ(t.eventi.back(), atteso);
  EXPECT_TRUE(ui.StartCommand("CMD /C" + sito + "\\index.htm"));
  EXPECT_EQ(t.eventi.back(), atteso);
  // The single build names the page alone, in the folder it made current.
  ASSERT_EQ(t.p().fs().SetCurrentFolder(sito), 0);
  EXPECT_TRUE(ui.StartCommand("CMD /C index.htm"));
  EXPECT_EQ(t.eventi.back(), atteso);

  t.eventi.clear();
  EXPECT_FALSE(ui.StartCommand("START /max /w " + sito + "\\manca.htm"));
  EXPECT_FALSE(ui.StartCommand("START /max /w " + sito));
  EXPECT_FALSE(ui.StartCommand("notepad " + sito + "\\index.htm"));
  EXPECT_TRUE(t.eventi.empty());
  ui.avviatore = [](const QString&, const QStringList&) { return false; };
  EXPECT_FALSE(ui.StartCommand("START /max /w index.htm"));
}

TEST(QtUi, BusyCursorIsAStateNotAStack) {
  Cartella c;
  ProgrammaDiProva t;
  QtUi& ui = t.p().ui();
  ui.Cursor(true);
  ui.Cursor(true);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  ui.Cursor(false);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  ui.Cursor(false);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST(QtUi, RepaintRunsPendingEventsAtMostEveryFewMilliseconds) {
  ProgrammaDiProva t;
  QtUi& ui = t.p().ui();
  int eseguiti = 0;
  int prima = 0;
  ui.prima_degli_eventi = [&] { ++prima; };
  ui.intervallo_ms = 60000;
  QTimer::singleShot(0, [&] { ++eseguiti; });
  ui.Repaint();
  EXPECT_EQ(eseguiti, 1);
  EXPECT_EQ(prima, 1);
  QTimer::singleShot(0, [&] { ++eseguiti; });
  ui.Repaint();
  EXPECT_EQ(eseguiti, 1);
  EXPECT_EQ(prima, 1);

  // The end asked for meanwhile comes out of the next repaint point, even
  // one that lets no events run.
  ui.RichiediFine();
  EXPECT_THROW(ui.Repaint(), FineProgramma);
  EXPECT_THROW(ui.End(), FineProgramma);
}

}  // namespace
}  // namespace vf::gui::test
