#include "album/copia_immagini.h"

#include "album/cartella_album.h"
#include "platform/failure.h"
#include "shell/testo.h"

namespace vf {

void Copia_Immagini_Album(Vetrina& v, StatoEsecuzione& s) {
  s.Err = 0;
  for (const char* nome :
       {"puls_sx3.jpg", "puls_su3.jpg", "puls_dx3.jpg", "sfondo_1.gif", "sfondo_2.gif"}) {
    s.Nome_Asset = nome;
    s.File_Origine = v.ui.ProgramFolder() + "\\" + nome;
    s.File_Destinazione = CasoScelto(v, s.Dir_Album + "\\" + nome);
    s.Err = 0;
    int failure = v.fs.Copy(s.File_Origine, s.File_Destinazione);
    if (failure != kOk) {
      s.Err = failure;
      v.ui.Message("Errore nella copia dell'immagine " + s.Nome_Asset +
                   "\r\nERR=" + ConBlank(failure) + " - " + FailureText(failure) + Coda_Copia(s));
    }
  }
}

void Copia_Immagini_Sito(Vetrina& v) {
  for (const char* nome :
       {"INTESTAZ.HTM", "INTEST_2.HTM", "PIEDE.HTM", "PIEDE_2.HTM", "diaposit.jpg", "film-1a.jpg",
        "foto-1a.jpg", "htm-1a.jpg", "music-1a.jpg", "sfondo1g.jpg", "sfondo1p.jpg", "pulsante.jpg",
        "sfondo_1.gif", "sfondo_2.gif"}) {
    v.fs.Copy(v.ui.ProgramFolder() + "\\" + nome, CasoScelto(v, v.Module1.Dir_Output + nome));
  }
}

}  // namespace vf
