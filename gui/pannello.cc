#include "gui/pannello.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QStyleOptionButton>
#include <algorithm>
#include <climits>

#include "gui/pulsante.h"

namespace vf::gui {
namespace {

QString Testo(const std::string& s) {
  return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

// Sets a text only when it differs: a text box keeps its cursor, and an
// unchanged caption costs nothing at a repaint point. True on a change.
template <typename W>
bool Imposta(W* w, const QString& testo, void (W::*set)(const QString&),
             QString (W::*get)() const) {
  if ((w->*get)() == testo) return false;
  (w->*set)(testo);
  return true;
}

constexpr double kPuntiMinimi = 6.0;

// Whether a text fits a control in a given font: a label within its box,
// wrapped at words; a check box or option button on one line beside its
// indicator.
bool Entra(const QWidget* w, const QFont& font) {
  QFontMetrics m(font);
  if (auto* t = qobject_cast<const QLabel*>(w)) {
    QRect box = t->contentsRect();
    QRect serve = m.boundingRect(QRect(0, 0, box.width(), INT_MAX / 2),
                                 Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, t->text());
    return serve.width() <= box.width() && serve.height() <= box.height();
  }
  if (auto* b = qobject_cast<const QAbstractButton*>(w)) {
    QStyleOptionButton opt;
    opt.initFrom(b);
    const bool opzione = qobject_cast<const QRadioButton*>(w) != nullptr;
    QRect testo = b->style()->subElementRect(
        opzione ? QStyle::SE_RadioButtonContents : QStyle::SE_CheckBoxContents, &opt, b);
    return m.horizontalAdvance(b->text()) <= testo.width();
  }
  return true;
}

}  // namespace

Pannello::Pannello(std::vector<Control*> controlli, std::string prefisso, Scala scala,
                   const QFont& carattere, Clic clic)
    : controlli_(std::move(controlli)),
      prefisso_(std::move(prefisso)),
      scala_(scala),
      clic_(std::move(clic)) {
  setFont(carattere);
  // Frames first, so that the controls inside one find their parent.
  for (Control* c : controlli_) {
    if (c->kind == Control::kFrame && c->container.empty()) Lega(c, Crea(c, this));
  }
  for (Control* c : controlli_) {
    if (c->kind == Control::kFrame && c->container.empty()) continue;
    QWidget* genitore = c->container.empty() ? this : Widget(c->container);
    if (genitore == nullptr) genitore = this;
    if (QWidget* w = Crea(c, genitore)) Lega(c, w);
  }
}

QWidget* Pannello::Crea(Control* c, QWidget* genitore) {
  const std::string nome = prefisso_ + c->Name;
  switch (c->kind) {
    case Control::kTextBox: {
      auto* w = new QLineEdit(genitore);
      // Typing goes to the model at once: a command reads the text box at
      // the moment of use, also at a repaint point inside another command.
      connect(w, &QLineEdit::textEdited, w,
              [c](const QString& t) { c->Text = t.toUtf8().toStdString(); });
      return w;
    }
    case Control::kButton: {
      auto* w = new PulsanteACapo(genitore);
      w->setAutoDefault(false);
      connect(w, &QPushButton::clicked, w, [this, nome] { clic_(nome); });
      return w;
    }
    case Control::kOption: {
      // The model decides which option of a group is on; the widget only
      // reports the click and shows the model afterwards.
      auto* w = new QRadioButton(genitore);
      w->setAutoExclusive(false);
      connect(w, &QRadioButton::clicked, w, [this, nome] { clic_(nome); });
      return w;
    }
    case Control::kCheck: {
      auto* w = new QCheckBox(genitore);
      connect(w, &QCheckBox::clicked, w, [this, nome] { clic_(nome); });
      return w;
    }
    case Control::kLabel: {
      auto* w = new QLabel(genitore);
      w->setTextFormat(Qt::PlainText);
      w->setWordWrap(true);
      w->setAlignment(Qt::AlignLeft | Qt::AlignTop);
      return w;
    }
    case Control::kFrame:
      return new QGroupBox(genitore);
    case Control::kShape: {
      auto* w = new QFrame(genitore);
      w->setFrameStyle(QFrame::Box | QFrame::Plain);
      w->setLineWidth(1);
      // Only an outline: the controls it frames stay clickable.
      w->setAttribute(Qt::WA_TransparentForMouseEvents);
      w->lower();
      return w;
    }
    case Control::kListBox:
    case Control::kDialog:
      return nullptr;
  }
  return nullptr;
}

void Pannello::Lega(Control* c, QWidget* w) {
  legami_.push_back({c, w});
  w->setObjectName(QString::fromStdString(c->Name));
  AggiornaUno(legami_.back());
}

QWidget* Pannello::Widget(const std::string& nome) const {
  for (const Legame& l : legami_) {
    if (l.c->Name == nome) return l.w;
  }
  return nullptr;
}

void Pannello::OrdinaTab() {
  std::vector<Legame> ordine;
  for (const Legame& l : legami_) {
    if (l.c->tab >= 0 && l.w->focusPolicy() != Qt::NoFocus) ordine.push_back(l);
  }
  std::stable_sort(ordine.begin(), ordine.end(),
                   [](const Legame& a, const Legame& b) { return a.c->tab < b.c->tab; });
  for (size_t i = 1; i < ordine.size(); ++i) setTabOrder(ordine[i - 1].w, ordine[i].w);
}

void Pannello::Aggiorna(bool) {
  for (const Legame& l : legami_) AggiornaUno(l);
}

void Pannello::AggiornaUno(const Legame& l) {
  const Control& c = *l.c;
  QWidget* w = l.w;
  bool cambiato = false;
  QRect posto = scala_.Rettangolo(c);
  if (w->geometry() != posto) {
    w->setGeometry(posto);
    cambiato = true;
  }
  if (w->isEnabled() != c.Enabled) w->setEnabled(c.Enabled);
  if (w->isHidden() == c.Visible) w->setHidden(!c.Visible);
  if (auto* e = qobject_cast<QLineEdit*>(w)) {
    Imposta(e, Testo(c.Text), &QLineEdit::setText, &QLineEdit::text);
  } else if (auto* b = qobject_cast<QAbstractButton*>(w)) {
    cambiato |= Imposta(b, Testo(c.Caption), &QAbstractButton::setText, &QAbstractButton::text);
    if (c.kind == Control::kOption || c.kind == Control::kCheck) {
      if (b->isChecked() != (c.Value != 0)) b->setChecked(c.Value != 0);
    }
  } else if (auto* t = qobject_cast<QLabel*>(w)) {
    cambiato |= Imposta(t, Testo(c.Caption), &QLabel::setText, &QLabel::text);
  } else if (auto* g = qobject_cast<QGroupBox*>(w)) {
    Imposta(g, Testo(c.Caption), &QGroupBox::setTitle, &QGroupBox::title);
  }
  if (cambiato) Adatta(l);
}

void Pannello::Carattere(const std::string& nome, const QFont& font) {
  for (const Legame& l : legami_) {
    if (l.c->Name != nome) continue;
    caratteri_[l.w] = font;
    l.w->setFont(font);
    Adatta(l);
  }
}

void Pannello::Adatta(const Legame& l) {
  if (l.c->kind != Control::kLabel && l.c->kind != Control::kCheck &&
      l.c->kind != Control::kOption) {
    return;
  }
  auto voluto = caratteri_.find(l.w);
  QFont f = voluto != caratteri_.end() ? voluto->second : font();
  for (double punti = f.pointSizeF(); punti - 0.25 >= kPuntiMinimi && !Entra(l.w, f);
       punti -= 0.25) {
    f.setPointSizeF(punti - 0.25);
  }
  if (l.w->font() != f) l.w->setFont(f);
}

void Pannello::closeEvent(QCloseEvent* event) {
  if (!alla_chiusura) {
    QWidget::closeEvent(event);
    return;
  }
  event->ignore();
  alla_chiusura();
}

}  // namespace vf::gui
