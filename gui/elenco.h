#ifndef VF_GUI_ELENCO_H_
#define VF_GUI_ELENCO_H_

#include <QAbstractListModel>
#include <QListView>
#include <cstdint>

#include "shell/controls.h"

namespace vf::gui {

// List1 seen by Qt. The rows are the model's own texts, read one at a time
// when the view paints them, never copied as a whole. The view is told of a
// change only when Allinea finds one, by the list's revision: a scan that
// appends gets rowsInserted for the new rows, anything else a reset.
class ModelloElenco : public QAbstractListModel {
 public:
  enum class Cambio { kNessuno, kAggiunte, kStesseRighe, kRiazzerato };

  ModelloElenco(const ListBox& lista, QObject* parent);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

  // Brings the view up to the list. `durante` is true at a repaint point:
  // then rows that were only appended are all that is announced.
  Cambio Allinea(bool durante);
  // The list changed in a way that the view shows already (the user's own
  // selection): nothing to announce for it.
  void Riconosci(bool era_in_pari);
  bool InPari() const;

 private:
  const ListBox& lista_;
  int righe_ = 0;
  uint64_t revisione_ = 0;
};

// The list box: extended selection, with the selection and the current
// position written to the model as the user changes them.
class VistaElenco : public QListView {
 public:
  VistaElenco(ListBox& lista, QWidget* parent);

  void Aggiorna(bool durante);
  ModelloElenco& modello() { return *modello_; }

 private:
  void SelezioneAlModello(const QItemSelection& scelte, const QItemSelection& tolte);
  void SelezioneDalModello();
  void CorrenteDalModello();

  ListBox& lista_;
  ModelloElenco* modello_;  // owned as a child
  bool allineando_ = false;
};

}  // namespace vf::gui

#endif  // VF_GUI_ELENCO_H_
