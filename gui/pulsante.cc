#include "gui/pulsante.h"

#include <QFontMetrics>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace vf::gui {
namespace {

constexpr int kFlags = Qt::AlignCenter | Qt::TextWordWrap;
constexpr int kMargine = 2;  // pixels kept free between the caption and the bevel
constexpr double kPuntiMinimi = 6.0;

}  // namespace

PulsanteACapo::PulsanteACapo(QWidget* parent) : QPushButton(parent) {}

QSize PulsanteACapo::sizeHint() const {
  // The window places every button itself; the hint only serves layouts
  // of dialogs built around one.
  QFontMetrics m(font());
  return m.boundingRect(QRect(0, 0, 160, 1000), kFlags, text()).size() + QSize(12, 10);
}

QFont PulsanteACapo::FontCheEntra(const QRect& area) const {
  QFont f = font();
  for (double punti = f.pointSizeF(); punti > 0; punti -= 0.5) {
    f.setPointSizeF(punti);
    QRect serve = QFontMetrics(f).boundingRect(area, kFlags, text());
    if (punti - 0.5 < kPuntiMinimi ||
        (serve.width() <= area.width() && serve.height() <= area.height())) {
      break;
    }
  }
  return f;
}

void PulsanteACapo::paintEvent(QPaintEvent*) {
  QStylePainter p(this);
  QStyleOptionButton opt;
  initStyleOption(&opt);
  const QString caption = opt.text;
  opt.text.clear();
  p.drawControl(QStyle::CE_PushButton, opt);

  QRect area = style()->subElementRect(QStyle::SE_PushButtonContents, &opt, this);
  area.adjust(kMargine, 0, -kMargine, 0);
  if (isDown() || isChecked()) {
    area.translate(style()->pixelMetric(QStyle::PM_ButtonShiftHorizontal, &opt, this),
                   style()->pixelMetric(QStyle::PM_ButtonShiftVertical, &opt, this));
  }
  p.setFont(FontCheEntra(area));
  style()->drawItemText(&p, area, kFlags, opt.palette, isEnabled(), caption, QPalette::ButtonText);
}

}  // namespace vf::gui
