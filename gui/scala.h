#ifndef VF_GUI_SCALA_H_
#define VF_GUI_SCALA_H_

#include <QRect>
#include <cmath>
#include <cstdint>

#include "shell/controls.h"

class QScreen;

namespace vf::gui {

// Twips to pixels. The layout was drawn at 15 twips a pixel on a 96 DPI
// screen; a screen with a higher logical resolution gets the same layout
// scaled, so fonts in points and positions in twips stay in proportion.
class Scala {
 public:
  explicit Scala(double dpi = 96.0) : pixel_per_twip_(dpi / 1440.0) {}

  int Px(int64_t twips) const {
    return static_cast<int>(std::lround(static_cast<double>(twips) * pixel_per_twip_));
  }
  QRect Rettangolo(const Control& c) const {
    return QRect(Px(c.Left), Px(c.Top), Px(c.Width), Px(c.Height));
  }

 private:
  double pixel_per_twip_;
};

// The scale of the screen a window opens on (96 DPI when there is none).
Scala ScalaDelloSchermo(const QScreen* screen);

}  // namespace vf::gui

#endif  // VF_GUI_SCALA_H_
