#include "filelist/caricamento.h"

#include <string>

#include "filelist/legge_dir.h"
#include "shell/testo.h"
#include "shell/vetrina.h"

namespace vf {
namespace {

// Pictures per table row: one for a short list, else as many as the screen
// is wide enough for. The user's own value is overwritten.
const char* Immagini_Per_Riga(Vetrina& v, int64_t conta) {
  if (conta <= 54) return "1";
  return Larghezza_Schermo(v) < 800 ? "4" : "5";
}

// What the scan left out, in one message after the load; a name's control
// bytes show as "?" so that a name cannot break the message's lines.
void Avvisa_Scartati(Vetrina& v) {
  const StatoScansione& s = v.frmALBUM.scansione;
  if (s.Scartati <= 0) return;
  std::string testo = std::to_string(s.Scartati) +
                      (s.Scartati == 1 ? " file con nome non utilizzabile in una pagina web non "
                                         "è stato caricato:"
                                       : " file con nomi non utilizzabili in una pagina web non "
                                         "sono stati caricati:");
  for (std::string nome : s.Primi_Scartati) {
    for (char& c : nome) {
      if (static_cast<unsigned char>(c) < 0x20) c = '?';
    }
    testo += "\r" + nome;
  }
  const int64_t altri = s.Scartati - static_cast<int64_t>(s.Primi_Scartati.size());
  if (altri > 0) testo += "\re altri " + std::to_string(altri);
  v.ui.Message(testo);
}

}  // namespace

std::string Togli_Asterischi(std::string Percorso) {
  auto stella_in_coda = [&Percorso] {
    size_t da = Percorso.size() > 3 ? Percorso.size() - 3 : 0;
    return Percorso.find('*', da) != std::string::npos;
  };
  while (stella_in_coda()) Percorso.pop_back();
  return Percorso;
}

void cmdCONFERMA_Click(Vetrina& v) {
  FrmAlbum& f = v.frmALBUM;
  if (f.txtESTENSIONE.Text.find('.') != std::string::npos) {
    v.ui.Beep();
    v.ui.Message("Indicare solo l'estensione dei files da cercare !!!");
    return;
  }
  Occupato occupato(v);
  v.ui.Cursor(true);
  f.cmdCONFERMA.Enabled = false;
  f.cmdCONFERMA_Tutti.Enabled = false;

  std::string Percorso = Trim(f.txtPATH_RICERCA.Text);
  if (Percorso.empty()) Percorso = "c:\\";
  Percorso = Togli_Asterischi(std::move(Percorso));
  // A start folder that cannot be listed at all (a drive that is not there,
  // a missing folder, a name the system refuses) adds nothing and says
  // nothing, like an empty folder: the load finishes as usual, so the
  // buttons and the cursor come back and the window stays usable.
  Legge_Dir(v, Percorso);

  int64_t conta = f.List1.ListCount();
  f.txtNUM_FILE.Text = std::to_string(conta);
  if (conta > 0) {
    f.Command1.Enabled = true;
    f.Command4.Enabled = true;
  }
  f.txtMAX_PER_RIGA.Text = Immagini_Per_Riga(v, conta);
  v.ui.Beep();
  f.cmdCONFERMA.Enabled = true;
  f.cmdCONFERMA_Tutti.Enabled = true;
  v.ui.Cursor(false);
  Avvisa_Scartati(v);
}

void cmdCONFERMA_Tutti_Click(Vetrina& v) {
  v.frmALBUM.txtESTENSIONE.Text = "*";
  cmdCONFERMA_Click(v);
}

}  // namespace vf
