#ifndef VF_COMMANDS_CREAZIONE_INDEX_H_
#define VF_COMMANDS_CREAZIONE_INDEX_H_

#include <string>

#include "shell/vetrina.h"

namespace vf {

// "Creazione INDEX.HTM": the whole list becomes one index page with its
// albums, then the site files, then the offer to show the page.
void Command1_Click(Vetrina& v);

struct Nome_Output {
  std::string cartella;  // up to and including the last backslash
  std::string nome;      // what follows it
};

// txtNOME_FILE_HTM trimmed, folded whole to the chosen case, split at its
// last backslash.
Nome_Output Dividi_Nome_Output(const Vetrina& v);

// Nome_File_Output from Nome_File_Input: the text before its first dot with
// ".HTM" or ".htm".
void Componi_Nome_Output(Vetrina& v);

// Makes the folder the current folder and then, unless it starts with a
// backslash, its first character the current drive. A folder that cannot be
// reached leaves the current folder as it was: the page write decides.
void Cambia_Cartella(Vetrina& v, const std::string& cartella);

// The leading number of a control's text.
double Numero(const Control& c);

// Marks the program busy for the length of a command.
class Occupato {
 public:
  explicit Occupato(Vetrina& v) : v_(v), prima_(v.occupato) { v_.occupato = true; }
  ~Occupato() { v_.occupato = prima_; }
  Occupato(const Occupato&) = delete;
  Occupato& operator=(const Occupato&) = delete;

 private:
  Vetrina& v_;
  bool prima_;
};

}  // namespace vf

#endif  // VF_COMMANDS_CREAZIONE_INDEX_H_
