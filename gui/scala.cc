#include "gui/scala.h"

#include <QScreen>

namespace vf::gui {

Scala ScalaDelloSchermo(const QScreen* screen) {
  return Scala(screen != nullptr ? screen->logicalDotsPerInchX() : 96.0);
}

}  // namespace vf::gui
