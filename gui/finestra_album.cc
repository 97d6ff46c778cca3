#include "gui/finestra_album.h"

#include <QFont>
#include <QLabel>
#include <QPalette>

namespace vf::gui {
namespace {

QFont Carattere(const QStringList& famiglie, double punti, bool grassetto) {
  QFont font;
  font.setFamilies(famiglie);
  font.setStyleHint(QFont::SansSerif);
  font.setPointSizeF(punti);
  font.setBold(grassetto);
  return font;
}

void Colora(QWidget* w, QPalette::ColorRole ruolo, QColor colore) {
  if (w == nullptr) return;
  QPalette p = w->palette();
  p.setColor(ruolo, colore);
  w->setPalette(p);
}

void Dimensiona(Pannello& p, int64_t larghezza, int64_t altezza) {
  p.setFixedSize(p.scala().Px(larghezza), p.scala().Px(altezza));
}

}  // namespace

QFont CarattereFinestra(double punti, bool grassetto) {
  return Carattere({"MS Sans Serif", "Microsoft Sans Serif", "Liberation Sans", "Arial",
                    "Helvetica", "Nimbus Sans", "DejaVu Sans"},
                   punti, grassetto);
}

QFont CarattereArial(double punti, bool grassetto) {
  return Carattere({"Arial", "Liberation Sans", "Helvetica", "Nimbus Sans", "DejaVu Sans"}, punti,
                   grassetto);
}

FinestraAlbum::FinestraAlbum(FrmAlbum& f, Scala scala, Clic clic)
    : Pannello(f.Controls(), "", scala, CarattereFinestra(), std::move(clic)),
      f_(f),
      elenco_(new VistaElenco(f.List1, this)) {
  setWindowTitle(QString::fromUtf8(FrmAlbum::kTitolo));
  // Controls neither move nor scale with the window, so it keeps its size.
  Dimensiona(*this, FrmAlbum::kWidth, FrmAlbum::kHeight);
  move(this->scala().Px(FrmAlbum::kLeft), this->scala().Px(FrmAlbum::kTop));
  Lega(&f.List1Frame, elenco_);
  Caratteri();
  Colori();
  if (QWidget* maiuscole = Widget("Option1")) {
    maiuscole->setToolTip(QStringLiteral(
        "In maiuscolo il sito funziona solo dove i nomi dei file non distinguono maiuscole e "
        "minuscole: non su un server Linux né in anteprima su questo computer"));
  }
  // The shadow of the banner lies over its coloured copy.
  if (QWidget* ombra = Widget("Label6(5)")) ombra->raise();
  OrdinaTab();
}

void FinestraAlbum::Caratteri() {
  for (const char* nome :
       {"Command1", "Command3", "cmdCONFERMA", "cmdCONFERMA_Tutti", "Command4", "cmdFINE"}) {
    Carattere(nome, CarattereFinestra(8.25, true));
  }
  for (const char* nome : {"Label6(0)", "Label6(1)", "Label6(2)", "Label6(3)", "Label6(6)"}) {
    Carattere(nome, CarattereFinestra(13.5, true));
  }
  Carattere("Label3", CarattereArial(9, true));
  for (const char* nome : {"Label6(4)", "Label6(5)"}) Carattere(nome, CarattereArial(9.75, true));
}

void FinestraAlbum::Colori() {
  for (const char* nome : {"txtPATH_RICERCA", "txtMAX_N_FILES", "txtMAX_PER_RIGA"}) {
    Colora(Widget(nome), QPalette::Base, QColor(255, 255, 128));
  }
  Colora(Widget("Label6(4)"), QPalette::WindowText, QColor(128, 128, 255));
  Colora(Widget("Shape1"), QPalette::WindowText, Qt::black);
}

void FinestraAlbum::Aggiorna(bool durante) {
  Pannello::Aggiorna(durante);
  elenco_->Aggiorna(durante);
}

DialogoUtilizzo::DialogoUtilizzo(FrmAlbum1& d, Scala scala, Clic clic)
    : Pannello(d.Controls(), "frmALBUM1.", scala, CarattereFinestra(), std::move(clic)) {
  setWindowFlag(Qt::Dialog);
  setWindowTitle(QString::fromUtf8(FrmAlbum1::kTitolo));
  Dimensiona(*this, FrmAlbum1::kWidth, FrmAlbum1::kHeight);
  move(this->scala().Px(FrmAlbum1::kLeft), this->scala().Px(FrmAlbum1::kTop));
  OrdinaTab();
}

}  // namespace vf::gui
