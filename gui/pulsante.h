#ifndef VF_GUI_PULSANTE_H_
#define VF_GUI_PULSANTE_H_

#include <QFont>
#include <QPushButton>

namespace vf::gui {

// A push button whose caption wraps onto several lines, as the captions of
// the window's tall buttons need. A caption that does not fit even wrapped
// is drawn in a slightly smaller font rather than cut off.
class PulsanteACapo : public QPushButton {
 public:
  explicit PulsanteACapo(QWidget* parent);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  // The font in which the caption fits the button's inner rectangle.
  QFont FontCheEntra(const QRect& area) const;
};

}  // namespace vf::gui

#endif  // VF_GUI_PULSANTE_H_
