#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QTranslator>

#include "gui/avvio_qt.h"

// The window tests need a QApplication; they never need a display. The
// window fills a folder of its own in the home folder, so the tests give it
// a home of their own.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QTemporaryDir casa;
  qputenv("HOME", casa.path().toLocal8Bit());
  QApplication app(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  QTranslator traduttore;
  vf::gui::CaricaItaliano(traduttore);
  return RUN_ALL_TESTS();
}
