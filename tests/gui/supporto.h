#ifndef VF_TESTS_GUI_SUPPORTO_H_
#define VF_TESTS_GUI_SUPPORTO_H_

#include <QAbstractButton>
#include <QLineEdit>
#include <QTemporaryDir>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gui/programma.h"

namespace vf::gui::test {

// A temporary folder of files, gone with the object.
class Cartella {
 public:
  Cartella();
  std::string Host(const std::string& relativo = "") const;
  void Scrivi(const std::string& relativo, const std::string& byte = "x") const;
  bool Esiste(const std::string& relativo) const;
  std::string Leggi(const std::string& relativo) const;
  // `cartelle` folders of `per_cartella` pictures each, under `sotto`.
  void Albero(const std::string& sotto, int cartelle, int per_cartella) const;

 private:
  QTemporaryDir dir_;
};

// The window program with the person in front of it played by the test:
// questions are answered from a queue (No when it is empty), file dialogs
// give host paths from a queue (gave up when it is empty), nothing is
// started, and every event is recorded.
class ProgrammaDiProva {
 public:
  explicit ProgrammaDiProva(const Ambiente& ambiente = AmbienteDellUtente());

  Programma& p() { return *programma_; }
  FinestraAlbum& finestra() { return *programma_->finestra(); }
  Vetrina& v() { return programma_->vetrina(); }
  QAbstractButton* Pulsante(const std::string& nome);
  QLineEdit* Casella(const std::string& nome);
  // Types a text into a text box in place of the one there.
  void Scrivi(const std::string& nome, const std::string& testo);
  // The Windows form of a host path, as the window shows it.
  std::string Windows(const std::string& host);

  std::deque<bool> risposte;
  std::deque<std::optional<std::string>> scelte;
  std::vector<std::string> eventi;
  int fine = 0;  // times the program said it ended

 private:
  std::unique_ptr<Programma> programma_;
};

}  // namespace vf::gui::test

#endif  // VF_TESTS_GUI_SUPPORTO_H_
