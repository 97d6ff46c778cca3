#ifndef VF_SHELL_MODULE1_H_
#define VF_SHELL_MODULE1_H_

#include <array>
#include <cstdint>
#include <string>

namespace vf {

// The shared state through which the window's commands and the page
// generator talk to each other. It lives in memory only; a new start begins
// from these values. Counts are wide so that nothing overflows on long lists.
struct Module1 {
  int16_t Tipo_Utilizzo = 0;     // 1 simplified, 2 complete
  std::string Nome_File_Input;   // name part of txtNOME_FILE_HTM, folded
  std::string Nome_File_Output;  // file name of the page being built
  std::string Dir_Base;          // folder chosen last with a dialog
  std::string Dir_Output;        // folder of the page, with its trailing backslash
  int64_t Num_File = 0;          // entries of List1 when last counted
  double Primo_File = 0;         // 1-based first entry of a generator run
  double Ultimo_File = 0;        // 1-based last entry; may be a fraction or past the end
  int64_t Num_Pagina = 0;        // running page number of a paged build
  std::array<std::string, 1001> Elenco_Pagine;  // page names, index 1 to 1000
  int16_t Conferma_Esistente = 0;               // 1 once the user agreed to overwrite in this build
};

}  // namespace vf

#endif  // VF_SHELL_MODULE1_H_
