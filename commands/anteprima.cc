#include "commands/anteprima.h"

#include "shell/testo.h"

namespace vf {

void Anteprima_Singola(Vetrina& v, bool percorso_intero) {
  const Module1& m = v.Module1;
  std::string pagina = percorso_intero ? m.Dir_Output + m.Nome_File_Output : m.Nome_File_Output;
  if (!v.ui.StartCommand("START /max /w " + pagina)) v.ui.StartCommand("CMD /C " + pagina);
}

void Anteprima_Pagine(Vetrina& v) {
  v.ui.StartCommand("START /max /w " + v.Module1.Dir_Output + v.Module1.Nome_File_Output);
}

void Command5_Click(Vetrina& v) {
  const Module1& m = v.Module1;
  if (Trim(m.Nome_File_Output).empty()) return;
  if (!v.ui.StartCommand("START /max /w " + m.Dir_Output + m.Nome_File_Output)) {
    v.ui.StartCommand("CMD /C" + m.Dir_Output + m.Nome_File_Output);
  }
}

}  // namespace vf
