#include "commands/clic.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "commands/anteprima.h"
#include "commands/creazione_index.h"
#include "commands/creazione_pagine.h"
#include "filelist/caricamento.h"
#include "filelist/dialoghi.h"
#include "filelist/modifica_elenco.h"
#include "shell/avvio.h"

namespace vf {
namespace {

using Comando = std::function<void(Vetrina&)>;

const std::map<std::string_view, Comando>& Comandi_frmALBUM() {
  static const std::map<std::string_view, Comando> comandi = {
      {"Command1", Command1_Click},
      {"Command2", Command2_Click},
      {"Command3", Command3_Click},
      {"Command4", Command4_Click},
      {"Command5", Command5_Click},
      {"Command6", Command6_Click},
      {"Command7", Command7_Click},
      {"cmdCONFERMA", cmdCONFERMA_Click},
      {"cmdCONFERMA_Tutti", cmdCONFERMA_Tutti_Click},
      {"cmdIns_File", cmdIns_File_Click},
      {"cmdCANC_FILE", cmdCANC_FILE_Click},
      {"cmdFINE", [](Vetrina& v) { cmdFINE_Click(v); }},
      {"Option3(0)", [](Vetrina& v) { Option3_Click(v, 0); }},
      {"Option3(1)", [](Vetrina& v) { Option3_Click(v, 1); }},
  };
  return comandi;
}

const std::map<std::string_view, Comando>& Comandi_frmALBUM1() {
  static const std::map<std::string_view, Comando> comandi = {
      {"Option1", frmALBUM1_Option1_Click},
      {"Option2", frmALBUM1_Option2_Click},
      {"Command1", frmALBUM1_Command1_Click},
      {"Command2", [](Vetrina& v) { frmALBUM1_Command2_Click(v); }},
  };
  return comandi;
}

void Seleziona_Opzione(Control& scelta, const std::vector<Control*>& controlli) {
  for (Control* c : controlli) {
    if (c != &scelta && c->kind == Control::kOption && c->container == scelta.container) {
      c->Value = 0;
    }
  }
  scelta.Value = 1;
}

bool Clic_Su(Vetrina& v, Control* c, const std::vector<Control*>& controlli,
             const std::map<std::string_view, Comando>& comandi) {
  if (c == nullptr) return false;
  if (c->kind == Control::kOption) Seleziona_Opzione(*c, controlli);
  if (c->kind == Control::kCheck) c->Value = c->Value == 1 ? 0 : 1;
  auto it = comandi.find(c->Name);
  if (it != comandi.end()) it->second(v);
  return true;
}

}  // namespace

bool Clic(Vetrina& v, std::string_view name) {
  constexpr std::string_view kDialogo = "frmALBUM1.";
  if (name.substr(0, kDialogo.size()) == kDialogo) {
    if (!v.frmALBUM1.Loaded) return false;
    FrmAlbum1& d = v.frmALBUM1;
    return Clic_Su(v, d.Find(name.substr(kDialogo.size())), d.Controls(), Comandi_frmALBUM1());
  }
  if (!v.frmALBUM_Loaded) return false;
  FrmAlbum& f = v.frmALBUM;
  return Clic_Su(v, f.Find(name), f.Controls(), Comandi_frmALBUM());
}

}  // namespace vf
