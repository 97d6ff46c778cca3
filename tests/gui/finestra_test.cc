#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QTranslator>

#include "gui/avvio_qt.h"
#include "gui/programma.h"

namespace vf::gui {
namespace {

struct Cartella : QTemporaryDir {  // a temporary folder of files
  std::string Host(const std::string& r = "") const {
    return QFile::encodeName(filePath(QString::fromStdString(r))).toStdString();
  }
  void Scrivi(const std::string& r) const {
    QFile f(QString::fromStdString(Host(r)));
    if (QDir().mkpath(QFileInfo(f).path()) && f.open(QIODevice::WriteOnly)) f.write("x");
  }
};

// The window program with its user played by the test: messages and
// questions (answered No) are only counted.
struct Prova : Programma {
  explicit Prova(const Ambiente& ambiente = AmbienteDellUtente()) : Programma(ambiente) {
    ui().intervallo_ms = 0;  // pending events run at every repaint point
    ui().risponditore = [this](const std::string&, bool) { return ++messaggi, false; };
    connect(this, &Programma::fine, [this] { ++finiti; });
  }
  auto* Widget(const char* n) { return qobject_cast<QAbstractButton*>(finestra()->Widget(n)); }
  std::string Windows(const std::string& host) { return fs().WindowsPath(host).value_or("?"); }
  int messaggi = 0, finiti = 0;  // finiti: times the program said it ended
};

// Every control's widget has the model's frame, place, text, state and value,
// before and after all of them change; an option shows the model, not Qt's toggle.
TEST(Finestra, EveryWidgetFollowsItsControl) {
  Prova t;
  t.Avvia();
  t.Widget("Option2")->click();  // it is on: Qt would toggle it off
  for (int giro = 0; giro < 2; ++giro) {
    for (Control* c : t.vetrina().frmALBUM.Controls()) {
      const QWidget* w = t.finestra()->Widget(c->Name);
      if (c->kind == Control::kDialog) continue;
      SCOPED_TRACE(c->Name);
      EXPECT_EQ(w->parentWidget(),
                c->container.empty() ? t.finestra() : t.finestra()->Widget(c->container));
      EXPECT_EQ(w->geometry(), t.finestra()->scala().Rettangolo(*c));
      EXPECT_TRUE(w->isHidden() != c->Visible && w->isEnabledTo(w->parentWidget()) == c->Enabled);
      const QVariant testo = w->property(qobject_cast<const QGroupBox*>(w) ? "title" : "text");
      EXPECT_EQ(testo.toString().toStdString(), testo.isValid() ? c->Text + c->Caption : "");
      EXPECT_EQ(w->property("checked").toBool(), c->Value != 0);
      // A frame keeps its state: Qt passes a disabled frame on to its controls.
      c->Visible = !c->Visible, c->Enabled ^= c->kind != Control::kFrame, c->Top += 150;
      c->Value ^= c->kind == Control::kOption || c->kind == Control::kCheck, c->Width += 30;
      if (testo.isValid()) (c->kind == Control::kTextBox ? c->Text : c->Caption) += " è";
    }
    t.finestra()->Aggiorna(false);
  }
}

// A fresh home gets the program's folder; a typed Linux path takes its Windows
// form. Closing the window or F I N E ends the program, at once or at the next
// repaint point of a scan, which shows its progress and takes no other click.
TEST(Finestra, StartAndEndOfTheProgram) {
  Cartella foto;
  for (int i = 0; i < 300; ++i) foto.Scrivi("f" + std::to_string(i) + ".jpg");
  for (int caso = 0; caso < 4; ++caso) {
    Cartella casa;
    Prova t(AmbienteDi(casa.Host()));
    t.avanzamento_dopo_ms = 0;
    t.Avvia();
    EXPECT_TRUE(QFile::exists(casa.filePath("Vetrina-Foto/MENU.HTM")));
    auto finisci = [&] { caso & 1 ? void(t.finestra()->close()) : t.Widget("cmdFINE")->click(); };
    auto* e = qobject_cast<QLineEdit*>(t.finestra()->Widget("txtPATH_RICERCA"));
    e->selectAll();
    e->insert(QString::fromStdString(foto.Host() + "/"));  // typed, then the box is left
    Q_EMIT e->editingFinished();
    EXPECT_TRUE(e->text().toStdString() == t.vetrina().frmALBUM.txtPATH_RICERCA.Text &&
                e->text().toStdString() == t.Windows(foto.Host()) + "\\");
    QTimer::singleShot(0, t.finestra(), [&] {
      EXPECT_TRUE(t.finestra()->windowTitle().endsWith(" file trovati"));
      t.Widget("Command3")->setEnabled(true);
      t.Widget("Command3")->click();
      finisci();
    });
    caso & 2 ? t.Widget("cmdCONFERMA")->click() : finisci();
    const int64_t letti = t.vetrina().frmALBUM.List1.ListCount();
    EXPECT_TRUE(t.Finito() && !t.finestra()->isVisible() && t.finiti == 1 && !t.messaggi);
    EXPECT_TRUE(!QApplication::overrideCursor() && (caso & 2 ? letti > 0 && letti < 300 : !letti));
    t.Widget("cmdCONFERMA")->click();  // nothing runs after the end
    EXPECT_EQ(t.vetrina().frmALBUM.List1.ListCount(), letti);
  }
}

// A scan is shown as appends, keeping the user's selection; selection
// and current row go both ways; a removal or a rebuild shows the list anew.
TEST(Finestra, TheListFollowsList1) {
  Prova t;
  t.Avvia();
  VistaElenco& v = t.finestra()->elenco();
  QItemSelectionModel& s = *v.selectionModel();
  ListBox& l = t.vetrina().frmALBUM.List1;
  auto riga = [&](int r) { return v.model()->index(r, 0); };
  QSignalSpy inserite(v.model(), &QAbstractItemModel::rowsInserted);
  QSignalSpy azzerate(v.model(), &QAbstractItemModel::modelReset);
  for (int i = 0; i < 100000; ++i) {
    l.AddItem("f" + std::to_string(i));
    if (i % 1000 == 999) v.Aggiorna(true);
    if (i == 999) s.select(riga(0), QItemSelectionModel::Select);
  }
  EXPECT_TRUE(inserite.count() == 100 && riga(99999).data() == "f99999");
  EXPECT_TRUE(s.isSelected(riga(0)) && l.Selected(0) && !s.isSelected(riga(1)) && !l.Selected(1));
  v.selectAll(), v.scrollToBottom(), v.repaint();  // the user's selection is written back
  EXPECT_TRUE(l.Selected(50000) && l.Selected(99999) && azzerate.count() == 0);
  l.Assign(std::vector<std::string>(20, "f")), v.Aggiorna(false);
  s.select(QItemSelection(riga(2), riga(4)), QItemSelectionModel::ClearAndSelect);
  s.setCurrentIndex(riga(4), QItemSelectionModel::NoUpdate);
  EXPECT_TRUE(!l.Selected(1) && l.Selected(2) && l.Selected(4) && !l.Selected(5) &&
              l.ListIndex == 4);
  l.SetSelected(3, false), l.SetSelected(9, true), l.ListIndex = 7;
  v.Aggiorna(false);
  EXPECT_TRUE(s.isSelected(riga(2)) && !s.isSelected(riga(3)) && s.isSelected(riga(9)));
  EXPECT_TRUE(v.currentIndex().row() == 7 && !l.Selected(7));  // showing it wrote nothing back
  l.RemoveItem(3), v.Aggiorna(true);
  EXPECT_EQ(azzerate.count(), 2);
  QSignalSpy cambiate(v.model(), &QAbstractItemModel::dataChanged);
  l.Assign(std::vector<std::string>(20, "nuova")), v.Aggiorna(false);  // one longer, all new
  EXPECT_TRUE(cambiate.count() == 1 && !s.hasSelection());
}

// While a command waits for the user the title is the window's own, not the
// progress of the build; a file chosen with a name no page can carry is
// refused with a message and gives the empty result.
TEST(Finestra, WaitingForTheUserAndNamesNoPageCanCarry) {
  Cartella casa, foto;
  foto.Scrivi("a.jpg");
  foto.Scrivi("javascript&#58;x.jpg");
  foto.Scrivi("ok&.jpg");
  Prova t(AmbienteDi(casa.Host()));
  t.avanzamento_dopo_ms = 0;
  t.Avvia();
  std::vector<std::string> titoli;
  t.ui().risponditore = [&](const std::string&, bool) {
    titoli.push_back(t.finestra()->windowTitle().toStdString());
    return false;
  };
  auto& f = t.vetrina().frmALBUM;
  f.txtPATH_RICERCA.Text = t.Windows(foto.Host());
  t.Widget("cmdCONFERMA")->click();
  QFile(QString::fromStdString(casa.Host("Vetrina-Foto/index.htm"))).open(QIODevice::WriteOnly);
  t.Widget("Command1")->click();  // the page is there: asked, and No
  ASSERT_EQ(titoli.size(), 3u);   // what the load left out, the page there, the preview
  for (const std::string& titolo : titoli) EXPECT_EQ(titolo, FrmAlbum::kTitolo);
  for (const char* nome : {"javascript&#58;x.jpg", "ok&.jpg"}) {
    t.ui().scelta_file = [&](const std::string&, const std::string&) { return foto.Host(nome); };
    const std::string scelto = t.ui().FileDialog("Scegli", "", "*.*");
    EXPECT_EQ(scelto, nome[0] == 'o' ? t.Windows(foto.Host(nome)) : "") << nome;
  }
  EXPECT_EQ(titoli.size(), 4u);
}

// With no answerer the real boxes open: a message or a question has no title,
// plain text with CR as line break and Italian buttons, and the answer is the
// button; the file dialog opens in the nearest folder that is there and gives
// a file, with or without a dot, or a folder in Windows form, giving up as "".
TEST(QtUi, TheRealBoxesAndFileDialog) {
  Cartella c;
  c.Scrivi("senza_punto");
  c.Scrivi("Mare/a.jpg");
  Prova p;
  p.ui().risponditore = nullptr;
  for (int caso = 0; caso < 3; ++caso) {
    const bool domanda = caso > 0, si = caso < 2;
    QTimer::singleShot(0, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      EXPECT_TRUE(box->windowTitle().isEmpty() && box->textFormat() == Qt::PlainText);
      EXPECT_EQ(box->text(), "Errore 53\n\nCopia <a>\nb");
      EXPECT_EQ(box->buttons().size(), domanda ? 2 : 1);
      EXPECT_EQ(box->defaultButton()->text(), domanda ? "Sì" : "OK");
      for (QAbstractButton* b : box->buttons()) {
        if (b->text() == (si ? box->defaultButton()->text() : "No")) b->click();
      }
    });
    const std::string testo = "Errore 53\r\rCopia <a>\r\nb";
    EXPECT_EQ(domanda ? p.ui().Question(testo) : (p.ui().Message(testo), true), si);
  }
  const std::string f = p.Windows(c.Host());
  const std::string casi[][4] = {{f + "\\MARE\\", "Mare", "a.jpg", f + "\\Mare\\a.jpg"},
                                 {f + "\\Monti\\Neve\\", "", "senza_punto", f + "\\senza_punto"},
                                 {f + "\\", "", "Mare", f + "\\Mare"},
                                 {f, "", "", ""}};
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

}  // namespace
}  // namespace vf::gui

// No display, Qt's own texts in Italian, and a home folder of the tests' own.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QTemporaryDir casa;
  qputenv("HOME", casa.path().toLocal8Bit());
  QApplication app(argc, argv);
  QTranslator traduttore;
  vf::gui::CaricaItaliano(traduttore);
  return RUN_ALL_TESTS();
}
