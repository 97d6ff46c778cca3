#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QTimer>

#include "tests/gui/supporto.h"

namespace vf::gui::test {
namespace {

std::vector<std::string> Righe(FinestraAlbum& f) {
  std::vector<std::string> righe;
  QAbstractItemModel* m = f.elenco().model();
  for (int i = 0; i < m->rowCount(); ++i) {
    righe.push_back(m->index(i, 0).data().toString().toStdString());
  }
  return righe;
}

bool Contiene(const std::vector<std::string>& eventi, const std::string& inizio) {
  for (const std::string& e : eventi) {
    if (e.rfind(inizio, 0) == 0) return true;
  }
  return false;
}

TEST(Comandi, LoadEditAndBuildThroughTheWindow) {
  Cartella foto;
  foto.Scrivi("foto/a.jpg", "AAA");
  foto.Scrivi("foto/b.jpg", "BBB");
  foto.Scrivi("foto/sotto/c.jpg", "CCC");
  foto.Scrivi("foto/note.txt", "no");
  ProgrammaDiProva t;
  t.p().Avvia();
  const std::string cartella = t.Windows(foto.Host("foto"));

  // Step 2: the folder, chosen by picking one of its files in the dialog.
  t.scelte.push_back(foto.Host("foto/b.jpg"));
  t.Pulsante("Command3")->click();
  EXPECT_EQ(t.Casella("txtPATH_RICERCA")->text().toStdString(), cartella + "\\");
  EXPECT_EQ(t.v().Module1.Dir_Base, cartella + "\\");

  // Step 3: the load.
  t.Pulsante("cmdCONFERMA")->click();
  EXPECT_EQ(Righe(t.finestra()),
            (std::vector<std::string>{cartella + "\\a.jpg", cartella + "\\b.jpg",
                                      cartella + "\\sotto\\c.jpg"}));
  EXPECT_EQ(t.Casella("txtNUM_FILE")->text(), "3");
  EXPECT_TRUE(t.Pulsante("Command1")->isEnabled());
  EXPECT_EQ(t.Casella("txtMAX_PER_RIGA")->text(), "1");
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);

  // An edit: b.jpg selected and current in the list, then removed.
  VistaElenco& elenco = t.finestra().elenco();
  elenco.selectionModel()->setCurrentIndex(elenco.model()->index(1, 0),
                                           QItemSelectionModel::ClearAndSelect);
  EXPECT_EQ(t.v().frmALBUM.List1.ListIndex, 1);
  EXPECT_TRUE(t.v().frmALBUM.List1.Selected(1));
  t.risposte.push_back(true);
  t.Pulsante("cmdCANC_FILE")->click();
  EXPECT_TRUE(Contiene(t.eventi, "ASK: Confermi la cancellazione di " + cartella + "\\b.jpg"));
  EXPECT_EQ(Righe(t.finestra()),
            (std::vector<std::string>{cartella + "\\a.jpg", cartella + "\\sotto\\c.jpg"}));
  EXPECT_FALSE(elenco.selectionModel()->hasSelection());

  // Step 4: the build, into a folder typed by hand.
  t.Scrivi("txtNOME_FILE_HTM", t.Windows(foto.Host()) + "\\Sito\\index.htm");
  foto.Scrivi("Sito/.keep");
  t.Pulsante("Command1")->click();
  EXPECT_TRUE(Contiene(t.eventi, "ASK: Visualizzo la pagina creata"));
  EXPECT_FALSE(Contiene(t.eventi, "RUN:"));
  EXPECT_TRUE(t.Pulsante("Command5")->isEnabled());
  EXPECT_EQ(foto.Leggi("Sito/dir_0001/img_001.jpg"), "AAA");
  EXPECT_EQ(foto.Leggi("Sito/dir_0001/img_002.jpg"), "CCC");
  EXPECT_FALSE(foto.Esiste("Sito/dir_0001/img_003.jpg"));
  EXPECT_NE(foto.Leggi("Sito/index.htm").find("dir_0001"), std::string::npos);
  EXPECT_TRUE(foto.Esiste("Sito/dir_0001/menu.htm") || foto.Esiste("Sito/dir_0001/MENU.HTM"));
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);

  // Step 5: the preview opens the page with the desktop's opener.
  t.Pulsante("Command5")->click();
  EXPECT_TRUE(Contiene(t.eventi, "RUN: xdg-open " + foto.Host("Sito/index.htm")));
  EXPECT_FALSE(t.p().Finito());
}

TEST(Comandi, FineDuringAScanEndsTheProgramThere) {
  Cartella foto;
  foto.Albero("foto", 10, 30);
  ProgrammaDiProva t;
  t.p().Avvia();
  t.Scrivi("txtPATH_RICERCA", t.Windows(foto.Host("foto")));
  // The click lands at the first repaint point of the scan.
  QTimer::singleShot(0, t.Pulsante("cmdFINE"), &QAbstractButton::click);
  t.Pulsante("cmdCONFERMA")->click();

  EXPECT_TRUE(t.p().Finito());
  EXPECT_EQ(t.fine, 1);
  const int64_t letti = t.v().frmALBUM.List1.ListCount();
  EXPECT_GT(letti, 0);
  EXPECT_LT(letti, 300);
  EXPECT_EQ(t.v().frmALBUM.txtNUM_FILE.Text, "");
  EXPECT_FALSE(t.finestra().isVisible());
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  // Nothing runs after the end.
  t.Pulsante("Command2")->click();
  EXPECT_EQ(t.v().frmALBUM.List1.ListCount(), letti);
}

TEST(Comandi, NoSecondCommandInsideALoad) {
  Cartella foto;
  foto.Albero("foto", 10, 50);
  ProgrammaDiProva t;
  t.p().Avvia();
  t.Scrivi("txtPATH_RICERCA", t.Windows(foto.Host("foto")));
  int tentativi = 0;
  QTimer::singleShot(0, t.Pulsante("cmdCONFERMA"), [&] {
    ++tentativi;
    for (const char* n : {"Command2", "cmdCONFERMA", "Command3", "Command1", "Option3(0)"}) {
      t.finestra().Widget(n)->setEnabled(true);
      t.Pulsante(n)->click();
    }
  });
  t.Pulsante("cmdCONFERMA")->click();
  EXPECT_EQ(tentativi, 1);
  EXPECT_EQ(t.v().frmALBUM.List1.ListCount(), 500);
  EXPECT_EQ(t.Casella("txtNUM_FILE")->text(), "500");
  EXPECT_FALSE(Contiene(t.eventi, "DIALOG:"));
  EXPECT_FALSE(t.v().frmALBUM.List1.Selected(0));
  EXPECT_EQ(t.v().frmALBUM.Option3[0].Value, 0);
  EXPECT_FALSE(t.Pulsante("Option3(0)")->isChecked());
  // Once the load is over the buttons work again.
  t.Pulsante("Command2")->click();
  EXPECT_EQ(t.finestra().elenco().model()->rowCount(), 0);
}

TEST(Comandi, ClosingTheWindowEndsTheProgramAtOnceOrAtTheNextRepaintPoint) {
  {
    ProgrammaDiProva t;
    t.p().Avvia();
    t.finestra().close();
    EXPECT_TRUE(t.p().Finito());
    EXPECT_EQ(t.fine, 1);
  }
  {
    Cartella foto;
    foto.Albero("foto", 10, 30);
    ProgrammaDiProva t;
    t.p().Avvia();
    t.Scrivi("txtPATH_RICERCA", t.Windows(foto.Host("foto")));
    QTimer::singleShot(0, &t.finestra(), [&] { t.finestra().close(); });
    t.Pulsante("cmdCONFERMA")->click();
    EXPECT_TRUE(t.p().Finito());
    EXPECT_LT(t.v().frmALBUM.List1.ListCount(), 300);
  }
}

}  // namespace
}  // namespace vf::gui::test
