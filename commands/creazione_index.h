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

// A refused build: a beep and the message.
void Rifiuta(Vetrina& v, const char* messaggio);

// The first step of every build: Conferma_Esistente cleared, so that even a
// refused build clears it, then the refusal of a list that the counter's text
// says is empty. False when the build is refused.
bool Elenco_Da_Elaborare(Vetrina& v);

// The first steps of a build that passed its checks: Dir_Output and
// Nome_File_Input from txtNOME_FILE_HTM, the output folder made current, and
// no album copy noted yet.
void Prepara_Uscita(Vetrina& v);

// What the build hands to the publishing step once its site files are
// written: the album copies it noted, in the case it chose. The notes start
// again empty.
BuiltSite Sito_Da_Pubblicare(Vetrina& v);

}  // namespace vf

#endif  // VF_COMMANDS_CREAZIONE_INDEX_H_
