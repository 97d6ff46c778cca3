#include "album/pagina_immagine.h"

#include <algorithm>
#include <string>

#include "album/cartella_album.h"
#include "album/marcatori.h"
#include "platform/case_fold.h"
#include "platform/failure.h"
#include "publish/site_names.h"
#include "shell/testo.h"

namespace vf {

void Passo_Pagina_Immagine(Vetrina& v, StatoEsecuzione& s) {
  // The template set keeps one page per place, in the folder of album 1.
  const std::string pagina = PicturePageName(s.Num_Img_Album + 1, Maiuscole(v));
  s.File_Origine = CasoScelto(v, v.ui.ProgramFolder() + "\\VETRINA-FOTO_DEFAULT\\" +
                                     AlbumFolderName(1, false) + "\\" + pagina);
  s.File_Destinazione = CasoScelto(v, s.Dir_Album + "\\" + pagina);
  Crea_Pagina_Immagine(v, s);
  if (s.Err != kOk) {
    v.ui.Message("Errore nella copia singoli HTML ERR=" + ConBlank(s.Err) + " - " +
                 FailureText(s.Err) + Coda_Copia(s));
    Interrompi_Ciclo(s);
  }
}

void Crea_Pagina_Immagine(Vetrina& v, StatoEsecuzione& s) {
  s.Err = 0;
  s.Nota(v.slots.OpenForReading(3, s.File_Origine));
  s.Nota(v.slots.OpenForWriting(4, s.File_Destinazione));
  if (s.Err == kOk) {
    // A template with no lines gives an empty page and no failure.
    while (!v.slots.AtEnd(3)) {
      s.Nota(v.slots.ReadLine(3, &s.Riga));
      s.Riga_Nuova = s.Riga;
      if (ToUpper(s.Riga).find(".JPG") != std::string::npos) {
        Nomi_Immagini(v, s, ToLower(s.Riga));
      }
      // The page's number, the three digits before ".HTM".
      const std::string& d = s.File_Destinazione;
      const size_t numero = d.size() - std::min<size_t>(d.size(), 7);
      if (NumeroIniziale(std::string_view(d).substr(numero, 3)) == Dimensione_Album(v)) {
        size_t p = ToLower(s.Riga).find(kMarcaSuccessivo);
        if (p != std::string::npos) Link_Successivo(v, s, p);
      }
      s.Nota(v.slots.WriteLine(4, s.Riga_Nuova));
    }
  }
  // The template stays open until the next template's open closes its slot.
  s.Nota(v.slots.Close(4));
}

}  // namespace vf
