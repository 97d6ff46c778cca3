// The leading number of a box's text, which nothing after it changes, and the number forms built
// on it; a number's text reads back as that number. The first eight bytes also go in as a raw
// double, so that NaN, infinities and values far beyond int64_t reach the conversions.

#include <cmath>
#include <cstring>

#include "shell/testo.h"
#include "tests/fuzz/fuzz_support.h"

void vf::fuzz::FuzzOne(std::string_view input) {
  const double number = NumeroIniziale(input);
  Check(std::isfinite(number) && NumeroIniziale(std::string(input) + "x") == number,
        "the leading number", input);
  double raw = 0;
  if (input.size() >= sizeof raw) std::memcpy(&raw, input.data(), sizeof raw);
  for (double value : {number, raw}) {
    const int64_t rounded = ArrotondaPari(value);
    const std::string text = Decimale(value), forms = ConBlank(rounded) + Cifre(Intero(value), 4);
    if (!(std::fabs(value) < 1e15)) continue;
    const double off = std::fabs(NumeroIniziale(text) - value);
    Check(off <= (value == std::floor(value) ? 0 : 1e-14 * std::fabs(value)), "Decimale", text);
    Check(std::fabs(static_cast<double>(rounded) - value) <= 0.5, "ArrotondaPari", forms);
  }
}
