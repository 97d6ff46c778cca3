#include "generator/scheletro.h"

#include <string>

#include "album/chiusura_album.h"
#include "platform/case_fold.h"
#include "platform/failure.h"
#include "publish/site_names.h"

namespace vf {
namespace {

bool Spuntato(const Control& check) { return check.Value == 1; }

bool Modelli_2(const Vetrina& v) {
  return Spuntato(v.frmALBUM.Check1) && Spuntato(v.frmALBUM.Check2);
}

// Copies the header template into the page. Failures here are skipped
// without a message; a template with no lines adds nothing.
void Copia_Intestazione(Vetrina& v, StatoEsecuzione& s) {
  std::string path = v.ui.ProgramFolder() + (Modelli_2(v) ? "\\INTEST_2.HTM" : "\\INTESTAZ.HTM");
  if (v.slots.OpenForReading(3, path) != kOk) return;
  while (!v.slots.AtEnd(3)) {
    if (v.slots.ReadLine(3, &s.Riga) != kOk) continue;
    std::string maiuscola = ToUpper(s.Riga);
    if (Spuntato(v.frmALBUM.Check1) && maiuscola.find("BACKGROUND") != std::string::npos) continue;
    if (Spuntato(v.frmALBUM.Check2) && maiuscola.find("MARQUEE") != std::string::npos) continue;
    v.slots.WriteLine(1, s.Riga);
  }
  v.slots.Close(3);
}

void Copia_Piede(Vetrina& v, StatoEsecuzione& s) {
  std::string path = v.ui.ProgramFolder() + (Modelli_2(v) ? "\\PIEDE_2.HTM" : "\\PIEDE.HTM");
  if (v.slots.OpenForReading(3, path) != kOk) {
    s.Nota(v.slots.WriteLine(1, "</HTML>"));
    return;
  }
  while (!v.slots.AtEnd(3)) {
    if (v.slots.ReadLine(3, &s.Riga) != kOk) continue;
    s.Nota(v.slots.WriteLine(1, s.Riga));
  }
  v.slots.Close(3);
}

// A line of the page under its recovery. While the recovery watches, each
// line is handed to the system at once, so that a full disk or a medium that
// refuses it fails here, where the recovery can tell the user, and not at a
// later write or at the close, where no one would hear of it.
int Scrivi_Sorvegliata(Vetrina& v, const StatoEsecuzione& s, const std::string& riga) {
  int failure = v.slots.WriteLine(1, riga);
  if (!s.Armato) return failure;
  return failure != kOk ? failure : v.slots.Flush(1);
}

Esito Righe(Vetrina& v, StatoEsecuzione& s, std::initializer_list<const char*> righe) {
  for (const char* riga : righe) {
    Esito e = Passo(v, s, Scrivi_Sorvegliata(v, s, riga));
    if (e != Esito::kAvanti) return e;
  }
  return Esito::kAvanti;
}

}  // namespace

Esito Apri_Pagina(Vetrina& v, StatoEsecuzione& s) {
  v.ui.Cursor(true);
  const std::string pagina = v.Module1.Dir_Output + v.Module1.Nome_File_Output;
  const int aperta = v.slots.OpenForWriting(1, pagina);
  if (aperta == 0) v.Sito_Costruito.AddIndexPage(pagina);
  Esito e = Passo(v, s, aperta);
  if (e != Esito::kAvanti) return e;
  e = Righe(v, s, {"<HTML>"});
  if (e != Esito::kAvanti) return e;
  Copia_Intestazione(v, s);

  // The return link, unless this page is itself the index.
  const std::string indice = IndexPageName(Maiuscole(v));
  if (v.Module1.Nome_File_Output.find(indice) == std::string::npos) {
    const std::string& q = s.Virgolette;
    std::string link =
        "<H2><a href=" + q + indice + q + " target=" + q + "_top" + q + "><p align=" + q +
        "center" + q + "><font color=" + q + "#FFFF80" + q +
        "><strong><em>Ritorna alla pagina iniziale</strong></em></font></p></a></H2>";
    return Passo(v, s, Scrivi_Sorvegliata(v, s, link));
  }
  return Esito::kAvanti;
}

Esito Apri_Tabella(Vetrina& v, StatoEsecuzione& s) {
  const std::string& q = s.Virgolette;
  std::string tabella = "<table border=" + q + "0" + q + " cellpadding=" + q + "0" + q +
                        " cellspacing=" + q + "10" + q + " width=" + q + "130" + q + ">";
  Esito e = Passo(v, s, v.slots.WriteLine(1, tabella));
  if (e != Esito::kAvanti) return e;
  return Righe(v, s, {"<tr>", " "});
}

Esito Chiudi_Pagina(Vetrina& v, StatoEsecuzione& s) {
  Chiudi_Ultimo_Album(v, s);
  // Without any entry the closing lines are still under the page's recovery.
  Esito e = Righe(v, s, {" </tr>", "</table>", "</center></div>"});
  if (e != Esito::kAvanti) return e;
  Copia_Piede(v, s);
  s.Nota(v.slots.Close(1));
  return Esito::kAvanti;
}

}  // namespace vf
