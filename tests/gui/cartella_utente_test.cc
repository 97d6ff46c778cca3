#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QHeaderView>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include "tests/gui/supporto.h"

namespace vf::gui::test {
namespace {

std::string LeggiHost(const QString& percorso) {
  QFile f(percorso);
  return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : "<missing>";
}

// A first start with a fresh home and a build with the default output name,
// in small letters and in capitals: the site stands in the program's folder
// beside the templates, which stay byte for byte as installed, and nothing
// else is written in the home folder.
TEST(CartellaUtente, AFirstBuildWithTheDefaultsEndsInTheProgramsFolder) {
  Cartella foto;
  foto.Scrivi("Città d'arte/a.jpg", "AAA");
  foto.Scrivi("Città d'arte/b.jpg", "BBB");
  for (bool maiuscole : {false, true}) {
    Cartella casa;
    ProgrammaDiProva t(AmbienteDi(casa.Host()));
    const Ambiente a = AmbienteDi(casa.Host());
    t.p().Avvia();
    EXPECT_TRUE(t.eventi.empty()) << t.eventi.front();
    EXPECT_EQ(t.Casella("txtNOME_FILE_HTM")->text().toStdString(),
              t.Windows(casa.Host("Vetrina-Foto")) + "\\index.htm");

    // The folder typed as a Linux path, left with Enter.
    t.Scrivi("txtPATH_RICERCA", foto.Host("Città d'arte") + "/");
    QTest::keyClick(t.Casella("txtPATH_RICERCA"), Qt::Key_Return);
    EXPECT_EQ(t.v().frmALBUM.txtPATH_RICERCA.Text, t.Windows(foto.Host("Città d'arte")) + "\\");
    t.Pulsante("cmdCONFERMA")->click();
    EXPECT_EQ(t.v().frmALBUM.List1.ListCount(), 2);
    if (maiuscole) t.Pulsante("Option1")->click();
    t.Pulsante("Command1")->click();

    const QString programma = QString::fromStdString(a.area.program_folder);
    const char* pagina = maiuscole ? "Vetrina-Foto/INDEX.HTM" : "Vetrina-Foto/index.htm";
    EXPECT_NE(casa.Leggi(pagina).find(maiuscole ? "DIR_0001" : "dir_0001"), std::string::npos);
    EXPECT_EQ(casa.Leggi(maiuscole ? "Vetrina-Foto/DIR_0001/IMG_002.JPG"
                                   : "Vetrina-Foto/dir_0001/img_002.jpg"),
              "BBB");
    int modelli = 0;
    for (QDirIterator it(QString::fromStdString(a.modelli), QDir::Files | QDir::Hidden,
                         QDirIterator::Subdirectories);
         it.hasNext();) {
      const QString installato = it.next();
      if (it.fileName().startsWith('.')) continue;
      ++modelli;
      const QString copia = programma + installato.mid(static_cast<int>(a.modelli.size()));
      EXPECT_EQ(LeggiHost(copia), LeggiHost(installato)) << copia.toStdString();
    }
    EXPECT_GE(modelli, 27);
    EXPECT_EQ(QDir(QString::fromStdString(casa.Host()))
                  .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList{"Vetrina-Foto"});
  }
}

TEST(CartellaUtente, AFolderThatCannotBeMadeIsToldAtStart) {
  Cartella casa;
  casa.Scrivi("Vetrina-Foto", "un file");
  ProgrammaDiProva t(AmbienteDi(casa.Host()));
  t.p().Avvia();
  ASSERT_EQ(t.eventi.size(), 1u);
  EXPECT_EQ(
      t.eventi[0].rfind(
          "MSG: Impossibile preparare la cartella del programma " + casa.Host("Vetrina-Foto"), 0),
      0u);
  EXPECT_TRUE(t.finestra().isVisible());
  EXPECT_EQ(casa.Leggi("Vetrina-Foto"), "un file");
}

// Typed texts: a Linux path on leaving the box, a Windows one and anything
// else as typed, in both path boxes.
TEST(CartellaUtente, LinuxPathsTypedInAPathBoxTakeTheirWindowsForm) {
  Cartella casa;
  ProgrammaDiProva t(AmbienteDi(casa.Host()));
  t.p().Avvia();
  const struct {
    const char* casella;
    std::string scritto, atteso;
  } righe[] = {
      {"txtNOME_FILE_HTM", "~/Sito nuovo/index.htm",
       t.Windows(casa.Host()) + "\\Sito nuovo\\index.htm"},
      {"txtNOME_FILE_HTM", "C:\\Sito/index.htm", "C:\\Sito/index.htm"},
      {"txtPATH_RICERCA", "/usr/share/", "Z:\\usr\\share\\"},
      {"txtPATH_RICERCA", "foto", "foto"},
  };
  for (const auto& r : righe) {
    t.Scrivi(r.casella, r.scritto);
    // The box is left (Enter is the first test's).
    Q_EMIT t.Casella(r.casella)->editingFinished();
    EXPECT_EQ(t.v().frmALBUM.Find(r.casella)->Text, r.atteso) << r.scritto;
    EXPECT_EQ(t.Casella(r.casella)->text().toStdString(), r.atteso);
  }
}

// During a load and a build that last long enough, the title tells how far
// they are; afterwards it is the window's own again.
TEST(CartellaUtente, ProgressInTheTitle) {
  Cartella foto;
  foto.Albero("foto", 3, 20);
  Cartella casa;
  // No web sizes: the build's own progress is the one looked at here.
  casa.Scrivi("Vetrina-Foto/DIMENSIONI.TXT", "");
  ProgrammaDiProva t(AmbienteDi(casa.Host()));
  t.p().avanzamento_dopo_ms = 0;
  t.p().Avvia();
  const QString titolo = t.finestra().windowTitle();
  std::vector<std::string> visti;
  QTimer guarda;
  QObject::connect(&guarda, &QTimer::timeout, [&] {
    const std::string s = t.finestra().windowTitle().toStdString();
    if (visti.empty() || visti.back() != s) visti.push_back(s);
  });
  guarda.start(0);
  t.Scrivi("txtPATH_RICERCA", t.Windows(foto.Host("foto")));
  t.Pulsante("cmdCONFERMA")->click();
  ASSERT_FALSE(visti.empty());
  EXPECT_EQ(visti.front(), titolo.toStdString() + " - Caricamento: 1 file trovati");
  EXPECT_EQ(t.finestra().windowTitle(), titolo);
  visti.clear();
  t.Scrivi("txtNOME_FILE_HTM", t.Windows(casa.Host("Vetrina-Foto")) + "\\index.htm");
  t.Pulsante("Command1")->click();
  ASSERT_GE(visti.size(), 2u);
  EXPECT_EQ(visti.front(), titolo.toStdString() + " - Creazione pagine: 1 di 60 voci");
  EXPECT_EQ(visti.back(), titolo.toStdString() + " - Creazione pagine: 60 di 60 voci");
  EXPECT_EQ(t.finestra().windowTitle(), titolo);
}

// The web-size pass of a build shows how far it is, and F I N E stops it
// between two pictures: the program ends and no half picture is left.
TEST(CartellaUtente, FineStopsTheWebSizePassCleanly) {
  Cartella foto;
  const std::string jpeg = LeggiHost(QCoreApplication::applicationDirPath() + "/diaposit.jpg");
  for (int i = 0; i < 30; ++i) foto.Scrivi("foto/f" + std::to_string(100 + i) + ".jpg", jpeg);
  Cartella casa;
  casa.Scrivi("Vetrina-Foto/DIMENSIONI.TXT", "mini 100\r\nweb 200\r\n");
  ProgrammaDiProva t(AmbienteDi(casa.Host()));
  t.p().avanzamento_dopo_ms = 0;
  t.p().Avvia();
  std::string titolo;
  auto mostra = t.p().ui().immagini_ridotte;
  t.p().ui().immagini_ridotte = [&](size_t fatte, size_t tutte) {
    mostra(fatte, tutte);
    if (fatte == 3) {
      t.p().Clic("cmdFINE");
      titolo = t.finestra().windowTitle().toStdString();
    }
  };
  t.Scrivi("txtPATH_RICERCA", t.Windows(foto.Host("foto")));
  t.Pulsante("cmdCONFERMA")->click();
  t.Pulsante("Command1")->click();
  EXPECT_EQ(t.fine, 1);
  EXPECT_TRUE(t.p().Finito());
  EXPECT_NE(titolo.find(" - Immagini ridotte: 3 di 30"), std::string::npos) << titolo;
  int fatte = 0;
  for (QDirIterator it(QString::fromStdString(casa.Host("Vetrina-Foto")),
                       QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
       it.hasNext();) {
    const QString f = it.next();
    EXPECT_FALSE(it.fileName().startsWith(".derivate-")) << f.toStdString();
    if (!f.contains("/mini/") && !f.contains("/web/")) continue;
    ++fatte;
    const std::string byte = LeggiHost(f);
    EXPECT_EQ(byte.substr(byte.size() - 2), "\xFF\xD9") << f.toStdString();
  }
  EXPECT_GE(fatte, 6);
  EXPECT_LT(fatte, 60);
}

}  // namespace
}  // namespace vf::gui::test
