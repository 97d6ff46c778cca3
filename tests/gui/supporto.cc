#include "tests/gui/supporto.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTranslator>

#include "gui/avvio_qt.h"

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
