#include "gui/avvio_qt.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include "gui/programma.h"

namespace vf::gui {

bool CaricaItaliano(QTranslator& traduttore) {
  QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
  if (!traduttore.load(QLocale(QLocale::Italian, QLocale::Italy), QStringLiteral("qtbase"),
                       QStringLiteral("_"), QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    return false;
  }
  return QCoreApplication::installTranslator(&traduttore);
}

int Esegui(int argc, char** argv, bool con_scelta) {
  QApplication app(argc, argv);
  QTranslator traduttore;
  CaricaItaliano(traduttore);
  QApplication::setApplicationName(QStringLiteral("vetrina-foto"));
  QGuiApplication::setDesktopFileName(QStringLiteral("vetrina-foto"));
  // One style everywhere: the layout places small controls by the pixel,
  // and some desktop styles pad them beyond their places.
  QApplication::setStyle(QStringLiteral("Fusion"));
  // The program ends by F I N E or by closing its window, never because a
  // window went away on its own.
  QApplication::setQuitOnLastWindowClosed(false);

  Programma programma;
  QObject::connect(&programma, &Programma::fine, &app, &QCoreApplication::quit,
                   Qt::QueuedConnection);
  if (con_scelta) {
    programma.AvviaConScelta();
  } else {
    programma.Avvia();
  }
  return QApplication::exec();
}

}  // namespace vf::gui
