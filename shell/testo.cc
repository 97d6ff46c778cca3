#include "shell/testo.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vf {

double NumeroIniziale(std::string_view text) {
  // Blanks and tabs may stand before the number, and one "+" before it.
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return 0;
  }
  // The longest number the text begins with: digits with a point and a
  // fraction, and an exponent only where digits follow the "e" and its sign.
  // Infinity and NaN are words, no digits: they count as no number, as does
  // a value too large for a double.
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc()) return 0;
  return std::isfinite(value) ? value : 0;
}

std::string Trim(std::string_view text) {
  size_t begin = text.find_first_not_of(' ');
  if (begin == std::string_view::npos) return "";
  size_t end = text.find_last_not_of(' ');
  return std::string(text.substr(begin, end - begin + 1));
}

int64_t Intero(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kMax = 9.2e18;
  return static_cast<int64_t>(std::clamp(value, -kMax, kMax));
}

std::string Decimale(double value) {
  if (std::isfinite(value) && value == std::floor(value) && std::fabs(value) < 9e15) {
    return std::to_string(static_cast<int64_t>(value));
  }
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.15g", value);
  return buffer;
}

std::string ConBlank(int64_t value) {
  std::string digits = std::to_string(value);
  return value >= 0 ? " " + digits : digits;
}

int64_t ArrotondaPari(double value) { return Intero(std::nearbyint(value)); }

}  // namespace vf
