#include "shell/vetrina.h"

#include "platform/case_fold.h"

namespace vf {

double Larghezza_Schermo(Vetrina& v) { return v.ui.ScreenWidthTwips() / v.ui.TwipsPerPixelX(); }

bool Maiuscole(const Vetrina& v) { return v.frmALBUM.Option1.Value != 0; }

std::string CasoScelto(const Vetrina& v, std::string_view text) {
  return Maiuscole(v) ? ToUpper(text) : ToLower(text);
}

}  // namespace vf
