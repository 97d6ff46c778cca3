#ifndef VF_GUI_PANNELLO_H_
#define VF_GUI_PANNELLO_H_

#include <QFont>
#include <QWidget>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "gui/scala.h"
#include "shell/controls.h"

namespace vf::gui {

// A window drawn from a model of controls: one widget for each control, at
// the control's place, and nothing else. The model holds every state; the
// widgets pass clicks and typing on at once and show the model again when
// Aggiorna is called.
class Pannello : public QWidget {
 public:
  // A click on a control, by the name that Clic of the logic takes.
  using Clic = std::function<void(const std::string&)>;

  // `prefisso` goes before each control's name in a click ("frmALBUM1.");
  // `carattere` is the font of every control that sets none.
  Pannello(std::vector<Control*> controlli, std::string prefisso, Scala scala,
           const QFont& carattere, Clic clic);

  // Shows the model: text, caption, value, enabled, visible and place of
  // every control. `durante` is true at a repaint point inside a command.
  virtual void Aggiorna(bool durante);

  // The widget of a control by its name in the model, nullptr if none.
  QWidget* Widget(const std::string& nome) const;
  const Scala& scala() const { return scala_; }

  // Called instead of closing when the user closes the window; the owner
  // decides what closing means.
  std::function<void()> alla_chiusura;

 protected:
  // Puts a widget that the subclass made under the model's control: place,
  // visible and enabled follow the model.
  void Lega(Control* c, QWidget* w);
  // Chains the focusable widgets by the controls' tab positions.
  void OrdinaTab();
  // The font a control is meant to have; its text is drawn smaller only
  // where it would not fit its place.
  void Carattere(const std::string& nome, const QFont& font);
  void closeEvent(QCloseEvent* event) override;

 private:
  struct Legame {
    Control* c;
    QWidget* w;
  };
  QWidget* Crea(Control* c, QWidget* genitore);
  void AggiornaUno(const Legame& l);
  void Adatta(const Legame& l);

  std::vector<Control*> controlli_;
  std::string prefisso_;
  Scala scala_;
  Clic clic_;
  std::vector<Legame> legami_;
  std::map<const QWidget*, QFont> caratteri_;
};

}  // namespace vf::gui

#endif  // VF_GUI_PANNELLO_H_
