// Times a load through the window: the program starts offscreen, the
// folder given goes into txtPATH_RICERCA and cmdCONFERMA is clicked, as a
// user would. Prints the entries loaded and the milliseconds it took.
//
//   vf_bench_load_window HOST_FOLDER
#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <cstdio>

#include "gui/programma.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "uso: %s CARTELLA\n", argv[0]);
    return 2;
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  vf::gui::Programma programma;
  programma.Avvia();
  std::optional<std::string> cartella = programma.fs().WindowsPath(argv[1]);
  if (!cartella) {
    std::fprintf(stderr, "%s: nessuna unità contiene %s\n", argv[0], argv[1]);
    return 1;
  }
  programma.vetrina().frmALBUM.txtPATH_RICERCA.Text = *cartella;
  programma.finestra()->Aggiorna(false);
  auto* carica = qobject_cast<QAbstractButton*>(programma.finestra()->Widget("cmdCONFERMA"));

  QElapsedTimer tempo;
  tempo.start();
  carica->click();
  const qint64 ms = tempo.elapsed();
  std::printf("%lld voci in %lld ms\n",
              static_cast<long long>(programma.vetrina().frmALBUM.List1.ListCount()),
              static_cast<long long>(ms));
  return 0;
}
