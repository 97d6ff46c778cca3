// The leading number of a control's text, and the number forms built on it.
// The input is the text of a box such as txtMAX_N_FILES; its first eight
// bytes are also taken as a raw double, so that NaN, infinities and values
// far outside int64_t reach the conversions.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "commands/creazione_index.h"
#include "shell/controls.h"
#include "shell/testo.h"
#include "tests/fuzz/fuzz_support.h"

namespace vf::fuzz {
namespace {

void CheckForms(double value) {
  const int64_t whole = Intero(value);
  const int64_t rounded = ArrotondaPari(value);
  if (std::isfinite(value) && std::fabs(value) < 1e15) {
    Check(std::fabs(static_cast<double>(whole) - std::trunc(value)) < 1, "Intero drops more");
    Check(std::fabs(static_cast<double>(rounded) - value) <= 0.5, "ArrotondaPari rounds far");
    // Decimale is what the runner prints and what a person may type back.
    const double back = NumeroIniziale(Decimale(value));
    const bool exact = value == std::floor(value);
    Check(exact ? back == value : std::fabs(back - value) <= 1e-14 * std::fabs(value),
          "Decimale does not read back", Decimale(value));
  } else {
    Decimale(value);
  }
  for (int width : {3, 4}) {
    Check(Cifre(whole, width).size() == static_cast<size_t>(width), "Cifre has another width");
    Check(Cifre(rounded, width).size() == static_cast<size_t>(width), "Cifre has another width");
  }
  const std::string blank = ConBlank(whole);
  Check(!blank.empty() && (blank[0] == ' ') == (whole >= 0), "ConBlank's sign place");
}

}  // namespace
}  // namespace vf::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vf;
  using namespace vf::fuzz;
  const std::string text(reinterpret_cast<const char*>(data), size);

  const double value = NumeroIniziale(text);
  Check(std::isfinite(value), "a leading number that is not finite", text);
  Check(NumeroIniziale(" \t" + text) == value, "leading blanks change the number", text);
  // What follows the number does not count, whatever it is.
  Check(NumeroIniziale(text + "x") == value, "a letter after the text changes the number", text);
  Control box;
  box.kind = Control::kTextBox;
  box.Text = text;
  Check(Numero(box) == value, "a control's number differs from the text's", text);

  const std::string trimmed = Trim(text);
  Check(trimmed.empty() || (trimmed.front() != ' ' && trimmed.back() != ' '), "Trim leaves blanks");
  Check(text.find(trimmed) != std::string::npos, "Trim makes a new text", text);

  CheckForms(value);
  if (size >= sizeof(double)) {
    double raw = 0;
    std::memcpy(&raw, data, sizeof raw);
    CheckForms(raw);
  }
  return 0;
}
