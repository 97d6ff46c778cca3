#include "album/menu_album.h"

#include <string>

#include "album/marcatori.h"
#include "platform/case_fold.h"
#include "platform/failure.h"
#include "shell/testo.h"

namespace vf {

void Crea_Menu_Album(Vetrina& v, StatoEsecuzione& s) {
  s.Err = 0;
  s.Nota(v.slots.OpenForWriting(4, CasoScelto(v, s.Dir_Album + "\\MENU.HTM")));
  s.Err = 0;
  if (v.slots.OpenForReading(3, v.ui.ProgramFolder() + "\\MENU.HTM") == kOk) {
    while (!v.slots.AtEnd(3)) {
      s.Nota(v.slots.ReadLine(3, &s.Riga));
      s.Riga_Nuova = s.Riga;
      if (!Trim(s.Riga).empty()) {
        std::string minuscola = ToLower(s.Riga);
        size_t p = minuscola.find(kMarcaTitolo);
        if (p != std::string::npos) Numero_Titolo(s, p);
        p = minuscola.find(kMarcaPrecedente);
        if (p != std::string::npos) Link_Precedente(v, s, p);
        p = minuscola.find(kMarcaSuccessivo);
        if (p != std::string::npos) Link_Successivo(v, s, p);
        Nomi_Immagini(v, s, minuscola);
      }
      s.Nota(v.slots.WriteLine(4, s.Riga_Nuova));
    }
  }
  s.Nota(v.slots.Close(4));
}

}  // namespace vf
