#include <gtest/gtest.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QDirIterator>
#include <QFileDialog>
#include <QGroupBox>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

#include "tests/gui/supporto.h"

namespace vf::gui::test {

// Each control's widget has the model's frame, place, text, state and value.
static void SegueIlModello(Pannello& p, const std::vector<Control*>& controlli) {
  for (const Control* c : controlli) {
    const QWidget* w = p.Widget(c->Name);
    if (c->kind == Control::kDialog) continue;
    SCOPED_TRACE(c->Name);
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(w->parentWidget(), c->container.empty() ? &p : p.Widget(c->container));
    EXPECT_EQ(w->geometry(), p.scala().Rettangolo(*c));
    EXPECT_EQ(w->isHidden(), !c->Visible);
    EXPECT_EQ(w->isEnabledTo(w->parentWidget()), c->Enabled);
    const QVariant testo = w->property(qobject_cast<const QGroupBox*>(w) ? "title" : "text");
    EXPECT_EQ(testo.toString().toStdString(), c->kind == Control::kTextBox ? c->Text : c->Caption);
    EXPECT_EQ(w->property("checked").toBool(), c->Value != 0);
  }
}

TEST(Finestra, EveryWidgetFollowsItsControl) {
  Prova t;
  t.Avvia();
  FrmAlbum& m = t.vetrina().frmALBUM;
  SegueIlModello(*t.finestra(), m.Controls());
  // An option shows the model's group, not Qt's own toggling.
  for (int i = 0; i < 2; ++i) t.Widget("Option2")->click();
  EXPECT_EQ(m.Option2.Value, 1);
  m.Command4.Visible = !m.Command4.Visible;
  m.Command2.Enabled = false;
  m.Label6[3].Top = 2940;
  m.Label1.Caption = m.txtESTENSIONE.Text = "nuovo";
  m.Check1.Value = !m.Check1.Value;
  t.finestra()->Aggiorna(false);
  SegueIlModello(*t.finestra(), m.Controls());
}

// Closing the window or F I N E ends the program, at once or at the next
// repaint point of the running command, which takes no other click meanwhile.
TEST(Finestra, ClosingAndFineEndTheProgram) {
  Cartella foto;
  for (int i = 0; i < 300; ++i) foto.Scrivi("f" + std::to_string(i) + ".jpg");
  for (bool chiudi : {false, true}) {
    for (bool durante : {false, true}) {
      Prova t;
      t.Avvia();
      auto finisci = [&] { chiudi ? void(t.finestra()->close()) : t.Widget("cmdFINE")->click(); };
      t.Scrivi("txtPATH_RICERCA", t.Windows(foto.Host()));
      QTimer::singleShot(0, t.finestra(), [&] {
        t.Widget("Command3")->setEnabled(true);
        t.Widget("Command3")->click();
        finisci();
      });
      durante ? t.Widget("cmdCONFERMA")->click() : finisci();
      EXPECT_TRUE(t.Finito() && !t.finestra()->isVisible() && t.finiti == 1);
      EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
      EXPECT_EQ(t.eventi, std::vector<std::string>{});
      const int64_t letti = t.vetrina().frmALBUM.List1.ListCount();
      EXPECT_TRUE(durante ? letti > 0 && letti < 300 : letti == 0) << letti;
      t.Widget("cmdCONFERMA")->click();  // nothing runs after the end
      EXPECT_EQ(t.vetrina().frmALBUM.List1.ListCount(), letti);
    }
  }
}

// A scan is shown as appends, fast, keeping the user's selection; selection
// and current row go both ways; a removal or a rebuild shows the list anew.
TEST(Finestra, TheListFollowsList1) {
  Prova t;
  t.Avvia();
  VistaElenco& v = t.finestra()->elenco();
  ListBox& l = t.vetrina().frmALBUM.List1;
  auto riga = [&](int r) { return v.model()->index(r, 0); };
  auto scelta = [&](int r) { return v.selectionModel()->isSelected(riga(r)); };
  QSignalSpy inserite(v.model(), &QAbstractItemModel::rowsInserted);
  QSignalSpy azzerate(v.model(), &QAbstractItemModel::modelReset);
  QDeadlineTimer scadenza(3000);
  for (int i = 0; i < 100000; ++i) {
    l.AddItem("f" + std::to_string(i));
    if (i % 1000 == 999) v.Aggiorna(true);
    if (i == 999) v.selectionModel()->select(riga(0), QItemSelectionModel::Select);
  }
  EXPECT_EQ(riga(99999).data().toString(), "f99999");
  EXPECT_EQ(inserite.count(), 100);
  EXPECT_TRUE(scelta(0) && l.Selected(0) && !scelta(1) && !l.Selected(1));
  v.selectAll();
  EXPECT_TRUE(l.Selected(50000) && l.Selected(99999));
  v.scrollToBottom();
  v.repaint();
  EXPECT_EQ(azzerate.count(), 0);
  EXPECT_FALSE(scadenza.hasExpired());

  l.Assign(std::vector<std::string>(20, "f"));
  v.Aggiorna(false);
  v.selectionModel()->select(QItemSelection(riga(2), riga(4)), QItemSelectionModel::ClearAndSelect);
  v.selectionModel()->setCurrentIndex(riga(4), QItemSelectionModel::NoUpdate);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(l.Selected(i), i >= 2 && i <= 4) << i;
  EXPECT_EQ(l.ListIndex, 4);
  for (int i = 0; i < 20; ++i) l.SetSelected(i, i % 2 == 0);
  l.ListIndex = 7;
  v.Aggiorna(false);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(scelta(i), i % 2 == 0) << i;
  EXPECT_EQ(v.currentIndex().row(), 7);
  EXPECT_TRUE(l.ListIndex == 7 && !l.Selected(7));  // showing it wrote nothing back
  l.RemoveItem(3);
  v.Aggiorna(true);
  EXPECT_EQ(azzerate.count(), 2);
  // A rebuild one entry longer looks like an append, yet every row is new.
  QSignalSpy cambiate(v.model(), &QAbstractItemModel::dataChanged);
  l.Assign(std::vector<std::string>(20, "nuova"));
  v.Aggiorna(false);
  EXPECT_EQ(cambiate.count(), 1);
  EXPECT_FALSE(v.selectionModel()->hasSelection());
}

// A fresh home gets the program's folder with the templates and the site, and
// nothing else. Typed Linux paths take their Windows form; a load and a build
// show their progress in the title; F I N E ends the web-size pass cleanly.
TEST(Finestra, AFirstBuildInAFreshHome) {
  Cartella foto, casa;
  Prova t(AmbienteDi(casa.Host()));
  t.avanzamento_dopo_ms = 0;
  t.Avvia();
  EXPECT_EQ(t.eventi, std::vector<std::string>{});
  const std::string jpeg = LeggiFile(casa.Host("Vetrina-Foto/diaposit.jpg"));
  EXPECT_EQ(jpeg, LeggiFile(AmbienteDi(casa.Host()).modelli + "/diaposit.jpg"));  // installed
  for (int i = 0; i < 30; ++i) foto.Scrivi("Città/f" + std::to_string(i) + ".jpg", jpeg);
  const std::string programma = t.Windows(casa.Host("Vetrina-Foto"));
  EXPECT_EQ(t.vetrina().frmALBUM.txtNOME_FILE_HTM.Text, programma + "\\index.htm");
  const std::string casi[][3] = {
      {"txtNOME_FILE_HTM", "C:\\Sito/index.htm", "C:\\Sito/index.htm"},
      {"txtNOME_FILE_HTM", "~/Vetrina-Foto/index.htm", programma + "\\index.htm"},
      {"txtPATH_RICERCA", foto.Host("Città") + "/", t.Windows(foto.Host("Città")) + "\\"}};
  for (const auto& [casella, scritto, atteso] : casi) {
    t.Scrivi(casella, scritto);
    Q_EMIT t.Widget<QLineEdit>(casella)->editingFinished();  // the box is left
    EXPECT_EQ(t.vetrina().frmALBUM.Find(casella)->Text, atteso) << scritto;
    EXPECT_EQ(t.Widget<QLineEdit>(casella)->text().toStdString(), atteso);
  }
  QStringList visti;
  QObject::connect(t.finestra(), &QWidget::windowTitleChanged, [&](const QString& titolo) {
    visti << titolo.mid(titolo.indexOf(" - ") + 3);
    if (visti.back() == "Immagini ridotte: 3 di 30") t.Widget("cmdFINE")->click();
  });
  t.Widget("cmdCONFERMA")->click();
  EXPECT_EQ(visti.value(0), "Caricamento: 1 file trovati");
  EXPECT_EQ(t.finestra()->windowTitle(), FrmAlbum::kTitolo);
  visti.clear();
  t.Widget("Command1")->click();
  EXPECT_EQ(t.finiti, 1);
  EXPECT_EQ(visti.value(0), "Creazione pagine: 1 di 30 voci");
  EXPECT_TRUE(visti.contains("Creazione pagine: 30 di 30 voci"));
  EXPECT_NE(LeggiFile(casa.Host("Vetrina-Foto/index.htm")).find("dir_0001"), std::string::npos);
  EXPECT_EQ(LeggiFile(casa.Host("Vetrina-Foto/dir_0001/img_002.jpg")), jpeg);
  int ridotte = 0;
  QDirIterator it(casa.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
  while (it.hasNext()) {
    const std::string f = QFile::encodeName(it.next()).toStdString(), byte = LeggiFile(f);
    EXPECT_EQ(f.find("/.derivate-"), std::string::npos) << f;
    if (f.find("/mini/") == std::string::npos && f.find("/web/") == std::string::npos) continue;
    ++ridotte;
    EXPECT_EQ(byte.substr(byte.size() - 2), "\xFF\xD9") << f;  // a whole picture
  }
  EXPECT_TRUE(ridotte >= 6 && ridotte < 60) << ridotte;
  EXPECT_EQ(QDir(casa.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
            QStringList{"Vetrina-Foto"});
}

TEST(Finestra, AProgramFolderThatCannotBeMadeIsToldAtStart) {
  Cartella casa;
  casa.Scrivi("Vetrina-Foto", "un file");
  Prova t(AmbienteDi(casa.Host()));
  t.Avvia();
  const std::string atteso = "MSG: Impossibile preparare la cartella del programma ";
  ASSERT_EQ(t.eventi.size(), 1u);
  EXPECT_TRUE(t.eventi[0].starts_with(atteso + casa.Host("Vetrina-Foto"))) << t.eventi[0];
  EXPECT_TRUE(t.finestra()->isVisible());
  EXPECT_EQ(LeggiFile(casa.Host("Vetrina-Foto")), "un file");
}

// With no answerer, a message or a question is a box with no title, plain
// text with CR as line break, and Italian buttons; the answer is the button.
TEST(QtUi, MessagesAndQuestionsShowAnItalianBox) {
  Programma p;
  for (int caso = 0; caso < 3; ++caso) {
    const bool domanda = caso > 0, si = caso < 2;
    QTimer::singleShot(0, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      EXPECT_EQ(box->windowTitle(), "");
      EXPECT_EQ(box->text(), "Errore 53\n\nCopia <a>\nb");
      EXPECT_EQ(box->textFormat(), Qt::PlainText);
      EXPECT_EQ(box->buttons().size(), domanda ? 2 : 1);
      const QString predefinito = box->defaultButton()->text();
      EXPECT_EQ(predefinito, domanda ? "Sì" : "OK");
      for (QAbstractButton* b : box->buttons()) {
        if (b->text() == (si ? predefinito : "No")) b->click();
      }
    });
    const std::string testo = "Errore 53\r\rCopia <a>\r\nb";
    EXPECT_EQ(domanda ? p.ui().Question(testo) : (p.ui().Message(testo), true), si);
  }
}

// The real dialog opens in the nearest folder that is there; a file, with or
// without a dot, or a folder comes back in Windows form, giving up as "".
TEST(QtUi, FileDialogAnswersInWindowsForm) {
  Cartella c;
  c.Scrivi("senza_punto");
  c.Scrivi("Mare/a.jpg");
  Programma p;
  const std::string foto = p.fs().WindowsPath(c.Host()).value_or("?");
  const std::string casi[][4] = {
      {foto + "\\MARE\\", "Mare", "a.jpg", foto + "\\Mare\\a.jpg"},
      {foto + "\\Monti\\Neve\\", "", "senza_punto", foto + "\\senza_punto"},
      {foto + "\\", "", "Mare", foto + "\\Mare"},
      {foto, "", "", ""}};
  for (const auto& [inizio, cartella, scelta, risposta] : casi) {
    QTimer::singleShot(0, [&] {
      auto* d = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(d, nullptr);
      EXPECT_EQ(QFile::encodeName(d->directory().path()).toStdString(), c.Host(cartella));
      d->selectFile(QString::fromStdString(scelta));
      QMetaObject::invokeMethod(d, scelta.empty() ? "reject" : "accept");
      if (d->isVisible()) d->reject();  // the choice did not close it
    });
    EXPECT_EQ(p.ui().FileDialog("Scegli", inizio, "*.*"), risposta) << inizio;
  }
}

// The preview's command lines open the page by its host path with the
// desktop's opener; a page alone is in the folder the build made current.
TEST(QtUi, APageOpensThroughItsHostPath) {
  Cartella c;
  c.Scrivi("index.htm");
  Prova t;
  const std::string sito = t.Windows(c.Host());
  ASSERT_EQ(t.fs().SetCurrentFolder(sito), 0);
  const std::pair<std::string, bool> casi[] = {{"START /max /w " + sito + "\\INDEX.HTM", true},
                                               {"CMD /C" + sito + "\\index.htm", true},
                                               {"CMD /C index.htm", true},
                                               {"START /max /w manca.htm", false},
                                               {"START /max /w " + sito, false},
                                               {"notepad index.htm", false}};
  for (const auto& [riga, aperta] : casi) {
    t.eventi.clear();
    EXPECT_EQ(t.ui().StartCommand(riga), aperta) << riga;
    EXPECT_EQ(t.eventi,
              std::vector<std::string>(aperta ? 1 : 0, "RUN: xdg-open " + c.Host("index.htm")));
  }
}

// A repaint point shows the model and runs pending events, at most every
// `intervallo_ms`; an end asked for meanwhile comes out of the next one. The
// busy cursor is a state: one reset undoes it, and takes no one else's.
TEST(QtUi, RepaintPointsAndTheBusyCursor) {
  Programma p;
  QObject contesto;
  int eseguiti = 0, mostrato = 0;
  p.ui().prima_degli_eventi = [&] { ++mostrato; };
  p.ui().intervallo_ms = 60000;
  for (int giro = 0; giro < 2; ++giro) {
    QTimer::singleShot(0, &contesto, [&] { ++eseguiti; });
    p.ui().Repaint();
    EXPECT_TRUE(eseguiti == 1 && mostrato == 1) << giro;
  }
  p.ui().RichiediFine();
  EXPECT_THROW(p.ui().Repaint(), FineProgramma);

  QGuiApplication::setOverrideCursor(Qt::CrossCursor);
  for (bool occupato : {false, true, true, false, false}) {
    p.ui().Cursor(occupato);
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(),
              occupato ? Qt::WaitCursor : Qt::CrossCursor);
  }
  QGuiApplication::restoreOverrideCursor();
}

}  // namespace vf::gui::test
