#include "filelist/legge_dir.h"

#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "platform/case_fold.h"
#include "platform/failure.h"
#include "shell/testo.h"

namespace vf {
namespace {

// Folders already read in this scan, by device and inode. A folder reached
// through a link is followed, but a folder already read is not read again, so
// a tree whose links lead back into itself still ends.
using CartelleLette = std::set<std::pair<uint64_t, uint64_t>>;

// One level deeper for the length of a visit, and back again even when the
// program ends in the middle of it.
class LivelloSotto {
 public:
  explicit LivelloSotto(StatoScansione& s) : s_(s) { ++s_.Livello; }
  ~LivelloSotto() { --s_.Livello; }
  LivelloSotto(const LivelloSotto&) = delete;
  LivelloSotto& operator=(const LivelloSotto&) = delete;

 private:
  StatoScansione& s_;
};

bool FiltroVuoto(const Vetrina& v) { return Trim(v.frmALBUM.txtESTENSIONE.Text).empty(); }

// A name left out by the listing that the user would have had: a file that
// passes the filter, or a folder, whose whole tree is lost with it.
void Scarta(Vetrina& v, const std::string& Path_Corrente, const FolderEntry& e) {
  StatoScansione& s = v.frmALBUM.scansione;
  if (e.hidden || e.kind == FolderEntry::kSystem) return;
  if (e.kind == FolderEntry::kFile &&
      (FiltroVuoto(v) || !Passa_Filtro(e.name, v.frmALBUM.txtESTENSIONE.Text))) {
    return;
  }
  s.Scartati += 1;
  if (s.Primi_Scartati.size() < kScartatiMostrati) {
    s.Primi_Scartati.push_back(Path_Corrente + e.name +
                               (e.kind == FolderEntry::kFolder ? "\\" : ""));
  }
}

// One folder: its files, then its subfolders each with its own tree. The
// listing is taken once and serves both passes. Window events may run at each
// repaint, so the filter is read again at every test and nothing points into
// List1 across a repaint.
void Leggi_Cartella(Vetrina& v, CartelleLette& lette, const std::string& Path_Ricerca) {
  std::string Path_Corrente = Path_Ricerca;
  if (Path_Corrente.empty() || Path_Corrente.back() != '\\') Path_Corrente += '\\';
  if (v.frmALBUM.scansione.Livello > kLivelloMassimo) return;

  // Full paths of the subfolders, in listing order. Each visit keeps its own,
  // so that a level's table survives the visits to its subfolders; the rest
  // of the listing is let go before going deeper.
  std::vector<std::string> Tab_Dir;
  {
    FolderListing elenco = v.fs.ListFolder(Path_Corrente);
    // A folder that is missing, unreadable or on a drive that is not there
    // gives nothing, silently: the level above goes on with its next one.
    if (elenco.failure != kOk) return;
    // A listing without an identity (0, 0) cannot be told apart, so it is
    // always read.
    bool identificata = (elenco.device | elenco.inode) != 0;
    if (identificata && !lette.emplace(elenco.device, elenco.inode).second) return;
    for (const FolderEntry& e : elenco.unusable) Scarta(v, Path_Corrente, e);

    if (!FiltroVuoto(v)) {
      for (const FolderEntry& e : elenco.entries) {
        if (e.kind != FolderEntry::kFile || e.hidden) continue;
        if (!Passa_Filtro(e.name, v.frmALBUM.txtESTENSIONE.Text)) continue;
        v.frmALBUM.List1.AddItem(Path_Corrente + e.name);
        v.ui.Repaint();
      }
    }
    for (FolderEntry& e : elenco.entries) {
      if (e.kind != FolderEntry::kFolder || e.hidden) continue;
      e.name.insert(0, Path_Corrente);
      Tab_Dir.push_back(std::move(e.name));
    }
  }
  if (Tab_Dir.empty()) return;

  for (const std::string& sotto : Tab_Dir) {
    if (FiltroVuoto(v)) {
      v.frmALBUM.List1.AddItem("<" + Trim(sotto) + ">");
      v.ui.Repaint();
    }
    LivelloSotto livello(v.frmALBUM.scansione);
    Leggi_Cartella(v, lette, sotto);
  }
  v.ui.Repaint();
}

}  // namespace

bool Passa_Filtro(const std::string& Nome, const std::string& Filtro) {
  std::string F = Trim(Filtro);
  if (F.empty()) return false;
  size_t Pos_Punto = Nome.find('.');
  if (Pos_Punto == std::string::npos) return false;
  // The extension is what follows the first dot, not the last: foto.2003.jpg
  // has the extension 2003.JPG.
  std::string Est_File = ToUpper(Trim(std::string_view(Nome).substr(Pos_Punto + 1)));
  if (ToUpper(F) == Est_File) return true;
  if (F != "*") return false;
  // "*" stands for the five picture types the program knows, not for every
  // file: pages, sounds and films are added by their own extension or one at
  // a time.
  for (const char* nota : {"JPG", "BMP", "TIF", "GIF", "WMF"}) {
    if (Est_File == nota) return true;
  }
  return false;
}

void Legge_Dir(Vetrina& v, const std::string& Path_Ricerca) {
  // Each outer call is one scan with its own record of the folders read; the
  // tables of the old window (500 names a folder) are gone, so the 501st
  // name of a folder is listed like the first.
  CartelleLette lette;
  v.frmALBUM.scansione.Scartati = 0;
  v.frmALBUM.scansione.Primi_Scartati.clear();
  Leggi_Cartella(v, lette, Path_Ricerca);
}

}  // namespace vf
