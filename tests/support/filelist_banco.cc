#include "tests/support/filelist_banco.h"

#include "shell/avvio.h"

namespace vf::test {

Banco::Banco() {
  Main(v);
  ui.events.clear();
}

std::vector<std::string> Banco::Voci() const {
  std::vector<std::string> voci;
  const ListBox& l = v.frmALBUM.List1;
  for (int64_t i = 0; i < l.ListCount(); ++i) voci.push_back(l.List(i));
  return voci;
}

void Banco::Aggiungi(const std::vector<std::string>& voci) {
  for (const std::string& voce : voci) v.frmALBUM.List1.AddItem(voce);
}

}  // namespace vf::test
