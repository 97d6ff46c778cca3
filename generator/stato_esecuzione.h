#ifndef VF_GENERATOR_STATO_ESECUZIONE_H_
#define VF_GENERATOR_STATO_ESECUZIONE_H_

#include <cstdint>
#include <string>

namespace vf {

// The state of one generator run, shared by all its blocks. Made when the
// run starts and dropped when it ends: nothing passes from one run to the
// next.
struct StatoEsecuzione {
  std::string Virgolette;
  int64_t Num_Album = 0;
  int64_t Num_Img_Album = 0;
  int64_t Num_Colonna = 0;
  int64_t Ultimo_Gruppo = 0;
  double Ind_Elenco = 0;
  std::string Riga;
  std::string Nome_File;
  std::string Dir_File;
  std::string Dir_Relativa;
  std::string Dir_Album;
  std::string File_Origine;
  std::string File_Destinazione;
  std::string Riga_Nuova;
  std::string Estensione;
  std::string Link_Menu;
  std::string Etichetta;
  std::string Nome_Asset;

  // The failure noted in continue mode, 0 when none is noted.
  int Err = 0;
  // The entry exactly as the list holds it, and whether the rename to the
  // chosen case went through. When it did not, the folded text may name
  // another file on a host that honours case, so the copy takes the entry
  // as it stands.
  std::string Voce;
  bool Rinomina_Riuscita = false;
  // The item loop ends at its next test (a failed copy or page).
  bool Fine_Ciclo = false;
  // The highest album number that this run began, 0 for none.
  int64_t Ultimo_Album_Iniziato = 0;

  // Recovery of the page: in force from the opening of the page up to the
  // first list entry that is not blank.
  bool Armato = true;
  // The page's first fallback counts here; it is only tested for being 0.
  int16_t Num_Tentativi = 0;
  bool Secondo_Ripiego = false;  // the page was moved to C:\index.htm

  // Notes a failure in continue mode: the step is skipped and the next runs.
  void Nota(int failure) {
    if (failure != 0) Err = failure;
  }
};

}  // namespace vf

#endif  // VF_GENERATOR_STATO_ESECUZIONE_H_
