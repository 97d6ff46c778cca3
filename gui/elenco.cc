#include "gui/elenco.h"

#include <QItemSelectionModel>
#include <algorithm>
#include <limits>

namespace vf::gui {
namespace {

int Righe(const ListBox& lista) {
  return static_cast<int>(std::min<int64_t>(lista.ListCount(), std::numeric_limits<int>::max()));
}

// Sets a flag for the length of a scope.
class Bandierina {
 public:
  explicit Bandierina(bool& b) : b_(b), prima_(b) { b_ = true; }
  ~Bandierina() { b_ = prima_; }
  Bandierina(const Bandierina&) = delete;
  Bandierina& operator=(const Bandierina&) = delete;

 private:
  bool& b_;
  bool prima_;
};

}  // namespace

ModelloElenco::ModelloElenco(const ListBox& lista, QObject* parent)
    : QAbstractListModel(parent),
      lista_(lista),
      righe_(Righe(lista)),
      revisione_(lista.revision()) {}

int ModelloElenco::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : righe_;
}

QVariant ModelloElenco::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid()) return {};
  // A row that the list lost since the last Allinea reads as empty.
  const std::string& s = lista_.List(index.row());
  return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

bool ModelloElenco::InPari() const {
  return revisione_ == lista_.revision() && righe_ == Righe(lista_);
}

ModelloElenco::Cambio ModelloElenco::Allinea(bool durante) {
  const uint64_t revisione = lista_.revision();
  if (revisione == revisione_) return Cambio::kNessuno;
  const int righe = Righe(lista_);
  const int prima = righe_;
  // AddItem is the only change that adds one row for one revision; so when
  // rows and revisions grew by the same amount, nothing but appends happened.
  const bool solo_aggiunte = revisione > revisione_ && righe > prima &&
                             revisione - revisione_ == static_cast<uint64_t>(righe - prima);
  revisione_ = revisione;
  if (solo_aggiunte) {
    beginInsertRows({}, prima, righe - 1);
    righe_ = righe;
    endInsertRows();
    // Appends leave the old rows as they were; outside a repaint point they
    // are painted again anyway, at the cost of one viewport update.
    if (!durante && prima > 0) Q_EMIT dataChanged(index(0), index(prima - 1), {Qt::DisplayRole});
    return Cambio::kAggiunte;
  }
  if (righe == prima) {
    if (righe > 0) Q_EMIT dataChanged(index(0), index(righe - 1), {Qt::DisplayRole});
    return Cambio::kStesseRighe;
  }
  beginResetModel();
  righe_ = righe;
  endResetModel();
  return Cambio::kRiazzerato;
}

void ModelloElenco::Riconosci(bool era_in_pari) {
  if (era_in_pari) revisione_ = lista_.revision();
}

VistaElenco::VistaElenco(ListBox& lista, QWidget* parent)
    : QListView(parent), lista_(lista), modello_(new ModelloElenco(lista, this)) {
  setModel(modello_);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  // All rows have one height: the view lays out 100,000 rows without asking
  // each one for its size.
  setUniformItemSizes(true);
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
          [this](const QItemSelection& scelte, const QItemSelection& tolte) {
            if (!allineando_) SelezioneAlModello(scelte, tolte);
          });
  connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& corrente) {
            if (!allineando_) lista_.ListIndex = corrente.isValid() ? corrente.row() : -1;
          });
  SelezioneDalModello();
  CorrenteDalModello();
}

void VistaElenco::SelezioneAlModello(const QItemSelection& scelte, const QItemSelection& tolte) {
  const bool in_pari = modello_->InPari();
  for (const QItemSelectionRange& r : tolte) {
    for (int i = r.top(); i <= r.bottom(); ++i) lista_.SetSelected(i, false);
  }
  for (const QItemSelectionRange& r : scelte) {
    for (int i = r.top(); i <= r.bottom(); ++i) lista_.SetSelected(i, true);
  }
  modello_->Riconosci(in_pari);
}

void VistaElenco::SelezioneDalModello() {
  QItemSelection sel;
  const int righe = modello_->rowCount();
  for (int i = 0; i < righe; ++i) {
    if (!lista_.Selected(i)) continue;
    int fine = i;
    while (fine + 1 < righe && lista_.Selected(fine + 1)) ++fine;
    sel.select(modello_->index(i), modello_->index(fine));
    i = fine;
  }
  Bandierina b(allineando_);
  if (sel.isEmpty() && !selectionModel()->hasSelection()) return;
  selectionModel()->select(sel, QItemSelectionModel::ClearAndSelect);
}

void VistaElenco::CorrenteDalModello() {
  const int64_t voluta = lista_.ListIndex;
  const QModelIndex attuale = selectionModel()->currentIndex();
  const int64_t riga = attuale.isValid() ? attuale.row() : -1;
  if (riga == voluta) return;
  Bandierina b(allineando_);
  if (voluta >= 0 && voluta < modello_->rowCount()) {
    selectionModel()->setCurrentIndex(modello_->index(static_cast<int>(voluta)),
                                      QItemSelectionModel::NoUpdate);
  } else {
    selectionModel()->clearCurrentIndex();
  }
}

void VistaElenco::Aggiorna(bool durante) {
  ModelloElenco::Cambio cambio;
  {
    Bandierina b(allineando_);
    cambio = modello_->Allinea(durante);
  }
  // Rows appended at a repaint point come unselected, as the view shows
  // them; every other change may have touched the selection.
  if (cambio != ModelloElenco::Cambio::kNessuno &&
      !(durante && cambio == ModelloElenco::Cambio::kAggiunte)) {
    SelezioneDalModello();
  }
  CorrenteDalModello();
}

}  // namespace vf::gui
