#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QItemSelectionModel>
#include <QSignalSpy>
#include <QWidget>

#include "gui/elenco.h"

namespace vf::gui::test {
namespace {

// A list view over a list box, with the signals the view gets counted.
struct Banco {
  Banco()
      : vista(lista, &genitore),
        inserite(vista.model(), &QAbstractItemModel::rowsInserted),
        azzerate(vista.model(), &QAbstractItemModel::modelReset) {
    genitore.resize(400, 300);
    vista.resize(400, 300);
    genitore.show();
  }
  void Aggiungi(int quante) {
    for (int i = 0; i < quante; ++i) {
      lista.AddItem("C:\\Foto\\d" + std::to_string(lista.ListCount() / 100) + "\\f" +
                    std::to_string(lista.ListCount()) + ".jpg");
    }
  }
  bool VistaScelta(int riga) {
    return vista.selectionModel()->isSelected(vista.model()->index(riga, 0));
  }

  QWidget genitore;
  ListBox lista;
  VistaElenco vista;
  QSignalSpy inserite;
  QSignalSpy azzerate;
};

TEST(Elenco, AScanOf100000EntriesIsAnnouncedAsAppends) {
  Banco b;
  QElapsedTimer t;
  t.start();
  for (int giro = 0; giro < 100; ++giro) {
    b.Aggiungi(1000);
    b.vista.Aggiorna(true);
  }
  b.vista.Aggiorna(false);
  EXPECT_EQ(b.vista.model()->rowCount(), 100000);
  EXPECT_EQ(b.inserite.count(), 100);
  EXPECT_EQ(b.azzerate.count(), 0);
  EXPECT_EQ(b.vista.model()->index(99999, 0).data().toString(), "C:\\Foto\\d999\\f99999.jpg");

  // Select everything, scroll through, and repaint: no step costs time
  // that grows with more than the length of the list.
  b.vista.selectAll();
  for (int i = 0; i < 100000; i += 997) EXPECT_TRUE(b.lista.Selected(i)) << i;
  EXPECT_TRUE(b.lista.Selected(99999));
  b.vista.scrollToBottom();
  b.vista.repaint();
  b.vista.scrollToTop();
  b.vista.repaint();
  b.lista.SetSelected(5, false);
  b.vista.Aggiorna(false);
  EXPECT_FALSE(b.VistaScelta(5));
  EXPECT_TRUE(b.VistaScelta(6));
  EXPECT_EQ(b.azzerate.count(), 0);
  EXPECT_LT(t.elapsed(), 3000);
}

TEST(Elenco, SelectionAndCurrentPositionGoBothWays) {
  Banco b;
  b.Aggiungi(20);
  b.vista.Aggiorna(false);

  // The user's selection reaches the model, and needs no announcing.
  QItemSelection sel(b.vista.model()->index(2, 0), b.vista.model()->index(4, 0));
  b.vista.selectionModel()->select(sel, QItemSelectionModel::ClearAndSelect);
  b.vista.selectionModel()->setCurrentIndex(b.vista.model()->index(4, 0),
                                            QItemSelectionModel::NoUpdate);
  EXPECT_TRUE(b.lista.Selected(2));
  EXPECT_TRUE(b.lista.Selected(4));
  EXPECT_FALSE(b.lista.Selected(5));
  EXPECT_EQ(b.lista.ListIndex, 4);
  EXPECT_EQ(b.vista.modello().Allinea(false), ModelloElenco::Cambio::kNessuno);

  // A command's selection and current position reach the view.
  for (int i = 0; i < 20; ++i) b.lista.SetSelected(i, i % 2 == 0);
  b.lista.ListIndex = 7;
  b.vista.Aggiorna(false);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(b.VistaScelta(i), i % 2 == 0) << i;
  EXPECT_EQ(b.vista.currentIndex().row(), 7);
  // Showing the model wrote nothing back into it.
  EXPECT_EQ(b.lista.ListIndex, 7);
  EXPECT_FALSE(b.lista.Selected(7));
  EXPECT_EQ(b.azzerate.count(), 0);

  b.lista.ListIndex = -1;
  b.vista.Aggiorna(false);
  EXPECT_FALSE(b.vista.currentIndex().isValid());
}

TEST(Elenco, UserSelectionDuringAScanSurvivesTheAppends) {
  Banco b;
  b.Aggiungi(10);
  b.vista.Aggiorna(true);
  b.vista.selectionModel()->select(b.vista.model()->index(0, 0), QItemSelectionModel::Select);
  b.Aggiungi(10);
  b.vista.Aggiorna(true);
  EXPECT_EQ(b.vista.model()->rowCount(), 20);
  EXPECT_EQ(b.azzerate.count(), 0);
  EXPECT_TRUE(b.VistaScelta(0));
  EXPECT_TRUE(b.lista.Selected(0));
  EXPECT_FALSE(b.VistaScelta(10));
}

TEST(Elenco, RemovalsAndRebuildsResetTheView) {
  Banco b;
  b.Aggiungi(10);
  b.vista.Aggiorna(false);
  b.lista.RemoveItem(3);
  b.vista.Aggiorna(false);
  EXPECT_EQ(b.azzerate.count(), 1);
  EXPECT_EQ(b.vista.model()->rowCount(), 9);
  EXPECT_EQ(b.vista.model()->index(3, 0).data().toString(), "C:\\Foto\\d0\\f4.jpg");

  // A rebuild one entry longer than the list looks like one append; the old
  // rows are still painted anew and the selection taken from the model.
  b.vista.selectAll();
  std::vector<std::string> nuove;
  for (int i = 0; i < 10; ++i) nuove.push_back("nuova " + std::to_string(i));
  b.lista.Assign(nuove);
  QSignalSpy cambiate(b.vista.model(), &QAbstractItemModel::dataChanged);
  b.vista.Aggiorna(false);
  EXPECT_EQ(b.vista.model()->rowCount(), 10);
  EXPECT_EQ(b.vista.model()->index(0, 0).data().toString(), "nuova 0");
  EXPECT_EQ(cambiate.count(), 1);
  EXPECT_FALSE(b.vista.selectionModel()->hasSelection());

  b.lista.Clear();
  b.vista.Aggiorna(true);
  EXPECT_EQ(b.vista.model()->rowCount(), 0);
}

}  // namespace
}  // namespace vf::gui::test
