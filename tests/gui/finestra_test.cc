#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTest>
#include <set>
#include <tuple>

#include "tests/gui/supporto.h"

namespace vf::gui::test {
namespace {

QString Testo(const QWidget* w) {
  if (auto* e = qobject_cast<const QLineEdit*>(w)) return e->text();
  if (auto* b = qobject_cast<const QAbstractButton*>(w)) return b->text();
  if (auto* l = qobject_cast<const QLabel*>(w)) return l->text();
  if (auto* g = qobject_cast<const QGroupBox*>(w)) return g->title();
  return {};
}

TEST(Finestra, EveryControlStandsAtItsPlaceWithItsText) {
  ProgrammaDiProva t;
  t.p().Avvia();
  FinestraAlbum& f = t.finestra();
  ASSERT_TRUE(f.isVisible());
  EXPECT_EQ(f.windowTitle(), "Vetrina Foto Digitali .HTML per Internet");
  const Scala& s = f.scala();
  EXPECT_EQ(f.size(), QSize(s.Px(9285), s.Px(7095)));
  // At 96 DPI the window is drawn at 15 twips a pixel.
  EXPECT_EQ(Scala(96).Px(9285), 619);

  int widgets = 0;
  for (Control* c : t.v().frmALBUM.Controls()) {
    if (c->kind == Control::kDialog) continue;
    QWidget* w = f.Widget(c->Name);
    ASSERT_NE(w, nullptr) << c->Name;
    ++widgets;
    EXPECT_EQ(w->geometry(), s.Rettangolo(*c)) << c->Name;
    const std::string& testo = c->kind == Control::kTextBox ? c->Text : c->Caption;
    if (c->kind != Control::kListBox && c->kind != Control::kShape) {
      EXPECT_EQ(Testo(w).toStdString(), testo) << c->Name;
    }
  }
  EXPECT_EQ(widgets, 41);
  // The two options of Frame1 are placed inside it.
  EXPECT_EQ(f.Widget("Option3(1)")->parentWidget(), f.Widget("Frame1"));
  EXPECT_EQ(t.Casella("txtMAX_N_FILES")->text(), "9");
  EXPECT_EQ(t.Casella("txtNOME_FILE_HTM")->text().toStdString(),
            t.v().ui.ProgramFolder() + "\\index.htm");
}

TEST(Finestra, HiddenAndDisabledButtonsFollowTheModel) {
  ProgrammaDiProva t;
  t.p().Avvia();
  EXPECT_TRUE(t.Pulsante("cmdCONFERMA_Tutti")->isHidden());
  EXPECT_TRUE(t.Pulsante("Command4")->isHidden());
  EXPECT_FALSE(t.Pulsante("Command1")->isEnabled());
  EXPECT_FALSE(t.Pulsante("Command5")->isEnabled());
  EXPECT_TRUE(t.Pulsante("cmdCONFERMA")->isEnabled());
  // An option button shows the model's group, not Qt's own toggling.
  t.Pulsante("Option1")->click();
  t.Pulsante("Option1")->click();
  EXPECT_TRUE(t.Pulsante("Option1")->isChecked());
  EXPECT_FALSE(t.Pulsante("Option2")->isChecked());

  t.v().frmALBUM.Command4.Visible = true;
  t.v().frmALBUM.Label6[3].Top = 2940;
  t.finestra().Aggiorna(false);
  EXPECT_FALSE(t.Pulsante("Command4")->isHidden());
  EXPECT_EQ(t.finestra().Widget("Label6(3)")->y(), t.finestra().scala().Px(2940));
}

TEST(Finestra, FontsAndColours) {
  ProgrammaDiProva t;
  t.p().Avvia();
  FinestraAlbum& f = t.finestra();
  // A caption is drawn smaller only where it would not fit, never larger.
  const std::vector<std::tuple<std::string, double, bool>> caratteri = {
      {"Command1", 8.25, true},  {"cmdCONFERMA_Tutti", 8.25, true}, {"cmdFINE", 8.25, true},
      {"Label6(0)", 13.5, true}, {"Label6(6)", 13.5, true},         {"Label3", 9, true},
      {"Label6(5)", 9.75, true}, {"Command2", 8.25, false},         {"Label1", 8.25, false}};
  for (const auto& [nome, punti, grassetto] : caratteri) {
    QFont font = f.Widget(nome)->font();
    EXPECT_EQ(font.bold(), grassetto) << nome;
    EXPECT_LE(font.pointSizeF(), punti) << nome;
    EXPECT_GE(font.pointSizeF(), punti - 1.5) << nome;
  }
  for (const char* n : {"txtPATH_RICERCA", "txtMAX_N_FILES", "txtMAX_PER_RIGA"}) {
    EXPECT_EQ(f.Widget(n)->palette().color(QPalette::Base), QColor(255, 255, 128)) << n;
  }
  EXPECT_NE(f.Widget("txtESTENSIONE")->palette().color(QPalette::Base), QColor(255, 255, 128));
  EXPECT_EQ(f.Widget("Label6(4)")->palette().color(QPalette::WindowText), QColor(128, 128, 255));
  // The banner's shadow lies over its coloured copy, one pixel left and lower.
  QWidget* colore = f.Widget("Label6(4)");
  QWidget* ombra = f.Widget("Label6(5)");
  EXPECT_EQ(ombra->pos(), colore->pos() + QPoint(-1, 1));
  EXPECT_FALSE(ombra->autoFillBackground());
  const QObjectList& figli = f.children();
  EXPECT_GT(figli.indexOf(ombra), figli.indexOf(colore));
}

TEST(Finestra, TabOrderFollowsTheTabPositions) {
  ProgrammaDiProva t;
  t.p().Avvia();
  FinestraAlbum& f = t.finestra();
  std::vector<std::string> attesi;
  std::set<std::string> nomi;
  for (Control* c : t.v().frmALBUM.Controls()) {
    QWidget* w = f.Widget(c->Name);
    if (w == nullptr || w->focusPolicy() == Qt::NoFocus) continue;
    attesi.push_back(c->Name);
    nomi.insert(c->Name);
  }
  ASSERT_EQ(attesi.front(), "txtPATH_RICERCA");
  ASSERT_EQ(attesi.back(), "Option3(1)");
  std::vector<std::string> catena;
  QWidget* w = f.Widget("txtPATH_RICERCA");
  do {
    std::string nome = w->objectName().toStdString();
    if (nomi.count(nome) != 0 && w->focusPolicy() != Qt::NoFocus) catena.push_back(nome);
    w = w->nextInFocusChain();
  } while (w != f.Widget("txtPATH_RICERCA") && catena.size() <= attesi.size());
  EXPECT_EQ(catena, attesi);
}

TEST(Finestra, TypingGoesToTheModelAtOnce) {
  ProgrammaDiProva t;
  t.p().Avvia();
  t.Scrivi("txtESTENSIONE", "jpg");
  EXPECT_EQ(t.v().frmALBUM.txtESTENSIONE.Text, "jpg");
  QTest::keyClicks(t.Casella("txtNUM_FILE"), "12");
  EXPECT_EQ(t.v().frmALBUM.txtNUM_FILE.Text, "12");
}

TEST(DialogoUtilizzo, ConfermaOpensTheSimplifiedWindowBesideTheDialog) {
  ProgrammaDiProva t;
  t.p().AvviaConScelta();
  ASSERT_NE(t.p().dialogo(), nullptr);
  EXPECT_EQ(t.p().finestra(), nullptr);
  DialogoUtilizzo& d = *t.p().dialogo();
  EXPECT_TRUE(d.isVisible());
  EXPECT_EQ(d.windowTitle(), "ALB-VIS");
  EXPECT_EQ(d.size(), QSize(d.scala().Px(4170), d.scala().Px(2040)));
  EXPECT_EQ(qobject_cast<QGroupBox*>(d.Widget("Frame1"))->title(), "Selzione tipo utilizzo");
  auto* semplificata = qobject_cast<QAbstractButton*>(d.Widget("Option1"));
  EXPECT_EQ(semplificata->text(), "Versione programma semplificata");
  EXPECT_TRUE(semplificata->isChecked());
  EXPECT_EQ(semplificata->parentWidget(), d.Widget("Frame1"));

  qobject_cast<QAbstractButton*>(d.Widget("Command1"))->click();
  ASSERT_NE(t.p().finestra(), nullptr);
  EXPECT_TRUE(t.finestra().isVisible());
  EXPECT_TRUE(d.isVisible());
  EXPECT_TRUE(t.Pulsante("Command1")->isHidden());
  EXPECT_TRUE(t.Pulsante("Command2")->isHidden());
  EXPECT_TRUE(t.Casella("txtNOME_FILE_HTM")->isHidden());
  EXPECT_FALSE(t.Pulsante("Command4")->isHidden());
  EXPECT_TRUE(t.finestra().Widget("Label6(0)")->isHidden());
  EXPECT_EQ(qobject_cast<QLabel*>(t.finestra().Widget("Label6(6)"))->text(), "4");
  EXPECT_EQ(t.finestra().Widget("Label6(3)")->y(), t.finestra().scala().Px(2940));
  EXPECT_EQ(t.fine, 0);
}

TEST(DialogoUtilizzo, CompleteVersionAndAnnulla) {
  {
    ProgrammaDiProva t;
    t.p().AvviaConScelta();
    DialogoUtilizzo& d = *t.p().dialogo();
    qobject_cast<QAbstractButton*>(d.Widget("Option2"))->click();
    EXPECT_FALSE(qobject_cast<QAbstractButton*>(d.Widget("Option1"))->isChecked());
    qobject_cast<QAbstractButton*>(d.Widget("Command1"))->click();
    EXPECT_FALSE(t.Pulsante("Command1")->isHidden());
    EXPECT_TRUE(t.Pulsante("Command4")->isHidden());
  }
  {
    ProgrammaDiProva t;
    t.p().AvviaConScelta();
    DialogoUtilizzo& d = *t.p().dialogo();
    qobject_cast<QAbstractButton*>(d.Widget("Command2"))->click();
    EXPECT_TRUE(t.p().Finito());
    EXPECT_EQ(t.fine, 1);
    EXPECT_EQ(t.p().finestra(), nullptr);
    EXPECT_FALSE(d.isVisible());
  }
}

}  // namespace
}  // namespace vf::gui::test
