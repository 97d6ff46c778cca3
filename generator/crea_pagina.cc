#include "generator/crea_pagina.h"

#include <algorithm>
#include <string>

#include "generator/ciclo_voci.h"
#include "generator/scheletro.h"
#include "platform/failure.h"
#include "shell/testo.h"

namespace vf {
namespace {

const char kCR[] = "\r";

std::string PercorsoPagina(const Vetrina& v) {
  return v.Module1.Dir_Output + v.Module1.Nome_File_Output;
}

std::string Dettaglio(int failure) {
  return std::string(kCR) + kCR + " ERR=" + ConBlank(failure) + " - " + FailureText(failure);
}

// The same folder on drive C:. A folder without a drive letter and colon
// goes to the root of C: followed by the text without its leading
// backslashes.
std::string SuDiscoC(const std::string& dir) {
  // A colon as the second character, compared on what the text has there.
  if (dir.compare(std::min<size_t>(dir.size(), 1), 1, ":") == 0) return "C:" + dir.substr(2);
  size_t start = dir.find_first_not_of('\\');
  return "C:\\" + (start == std::string::npos ? std::string() : dir.substr(start));
}

Esito Ripristino_Pagina(Vetrina& v, StatoEsecuzione& s, int failure) {
  v.slots.Close(1);
  v.ui.Beep();
  Module1& m = v.Module1;
  bool cartella = failure == kErroreAccesso || failure == kPercorsoNonTrovato;
  if (cartella && s.Num_Tentativi == 0) {
    v.ui.Message("Errore in registrazione Elenco (forse e' un CD-ROM) " + PercorsoPagina(v) + kCR +
                 kCR + "Tento di registrare sul disco C: " + Dettaglio(failure));
    s.Num_Tentativi += 1;
    m.Dir_Output = SuDiscoC(m.Dir_Output);
    return Esito::kRicomincia;
  }
  if (cartella && !s.Secondo_Ripiego) {
    v.ui.Message("Errore in registrazione Elenco (non esiste stessa cartella) " +
                 PercorsoPagina(v) + kCR + kCR +
                 "Tento di registrare sul disco con il nome C:\\index.htm " + Dettaglio(failure));
    m.Dir_Output = "C:\\";
    m.Nome_File_Output = "index.htm";
    s.Secondo_Ripiego = true;
    return Esito::kRicomincia;
  }
  v.ui.Message("Errore in registrazione Elenco " + PercorsoPagina(v) + Dettaglio(failure));
  // When C:\index.htm cannot be written either there is nowhere left to
  // try: the run ends after this one message instead of trying again.
  return cartella ? Esito::kFine : Esito::kAvanti;
}

// Opens a file to see that it is there, and closes it again. Any failure
// counts as missing: a page that another program holds counts as no page.
// An open closes its slot first, so no slot needs closing before it.
bool Si_Apre(Vetrina& v, int slot, const std::string& path) {
  int failure = v.slots.OpenForReading(slot, path);
  v.slots.Close(slot);
  return failure == kOk;
}

bool Controlli(Vetrina& v) {
  const std::string programma = v.ui.ProgramFolder();
  Module1& m = v.Module1;
  if (!Si_Apre(v, 1, programma + "\\MENU.HTM")) {
    v.ui.Beep();
    if (!v.ui.Question(std::string("Manca il file MENU.HTM, continuo ?") + kCR + kCR)) return false;
  }
  if (Si_Apre(v, 1, PercorsoPagina(v)) && m.Conferma_Esistente != 1) {
    v.ui.Beep();
    if (!v.ui.Question("Elenco  " + PercorsoPagina(v) + "  gia' esistente, continuo (S/N)")) {
      return false;
    }
    m.Conferma_Esistente = 1;
  }
  for (const char* nome : {"INTESTAZ.HTM", "PIEDE.HTM"}) {
    std::string path = programma + "\\" + nome;
    if (!Si_Apre(v, 3, path)) {
      v.ui.Beep();
      if (!v.ui.Question(std::string("Manca il file ") + nome + ", continuo ?" + kCR + kCR +
                         path)) {
        return false;
      }
    }
  }
  return true;
}

Esito Scrittura_Pagina(Vetrina& v, StatoEsecuzione& s) {
  s.Armato = true;
  Esito e = Apri_Pagina(v, s);
  if (e != Esito::kAvanti) return e;
  s.Num_Colonna = 0;
  s.Num_Img_Album = 0;
  s.Num_Album = v.Primo_Album;
  e = Apri_Tabella(v, s);
  if (e != Esito::kAvanti) return e;
  Ciclo_Voci(v, s);
  return Chiudi_Pagina(v, s);
}

}  // namespace

Esito Passo(Vetrina& v, StatoEsecuzione& s, int failure) {
  if (failure == kOk) return Esito::kAvanti;
  // Once the recovery is disarmed a failed line is skipped and noted as that
  // step's failure, as every step of the run's continue mode is.
  if (!s.Armato) {
    s.Nota(failure);
    return Esito::kAvanti;
  }
  return Ripristino_Pagina(v, s, failure);
}

void Fine_Pagina(Vetrina& v) {
  v.ui.Cursor(false);
  v.ui.Beep();
}

void Crea_Pagina(Vetrina& v) {
  StatoEsecuzione s;
  s.Virgolette = "\"";
  if (Controlli(v)) {
    while (Scrittura_Pagina(v, s) == Esito::kRicomincia) {
    }
  }
  // Each block has closed the page it wrote and the footer the last template
  // read, so no file stays open after the run.
  v.Album_Successivo = s.Ultimo_Album_Iniziato > 0 ? s.Ultimo_Album_Iniziato + 1 : v.Primo_Album;
  Fine_Pagina(v);
}

}  // namespace vf
