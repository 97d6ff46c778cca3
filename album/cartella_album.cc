#include "album/cartella_album.h"

#include <algorithm>
#include <string>

#include "platform/failure.h"
#include "publish/site_names.h"
#include "shell/testo.h"

namespace vf {

std::string Coda_Copia(const StatoEsecuzione& s) {
  return "\r\rCopia " + s.File_Origine + " " + s.File_Destinazione;
}

void Interrompi_Ciclo(StatoEsecuzione& s) {
  s.Ind_Elenco = 10000;
  s.Num_Img_Album = -1;
  s.Fine_Ciclo = true;
}

void Passo_Album(Vetrina& v, StatoEsecuzione& s) {
  s.Dir_Album = CasoScelto(v, v.Module1.Dir_Output + AlbumFolderName(s.Num_Album, Maiuscole(v)));
  s.Ultimo_Album_Iniziato = std::max(s.Ultimo_Album_Iniziato, s.Num_Album);
  s.Nota(v.fs.MakeFolder(s.Dir_Album));
  v.ui.Repaint();
  s.File_Origine = s.Dir_File + s.Nome_File;
  s.File_Destinazione =
      CasoScelto(v, s.Dir_Album + "\\" +
                        CopyName(s.Num_Img_Album + 1, CopyExtension(s.File_Origine), Maiuscole(v)));
  s.Err = 0;
  // After a refused rename the folded path may name another file that
  // differs only in case; the entry's own text always names its own file.
  const std::string& sorgente = s.Rinomina_Riuscita ? s.File_Origine : s.Voce;
  int failure = v.fs.Copy(sorgente, s.File_Destinazione);
  if (failure == kOk) {
    v.Sito_Costruito.Add({sorgente, s.File_Destinazione, s.Num_Album, s.Num_Img_Album + 1});
  } else {
    s.Err = failure;
    v.ui.Message("Errore nella copia delle immagini ERR=" + ConBlank(failure) + " - " +
                 FailureText(failure) + Coda_Copia(s));
    Interrompi_Ciclo(s);
  }
}

}  // namespace vf
