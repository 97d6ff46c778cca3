#include "shell/testo.h"

#include <cmath>
#include <cstdio>
#include <limits>

namespace vf {

double NumeroIniziale(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  auto digit = [&](size_t k) { return k < text.size() && text[k] >= '0' && text[k] <= '9'; };
  std::string number;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) number += text[i++];
  size_t digits = 0;
  while (digit(i)) {
    number += text[i++];
    ++digits;
  }
  if (i < text.size() && text[i] == '.') {
    number += text[i++];
    while (digit(i)) {
      number += text[i++];
      ++digits;
    }
  }
  if (digits == 0) return 0;
  if (i + 1 < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    size_t k = i + 1;
    std::string exponent = "e";
    if (text[k] == '-' || text[k] == '+') exponent += text[k++];
    if (digit(k)) {
      while (digit(k)) exponent += text[k++];
      number += exponent;
    }
  }
  double value = std::strtod(number.c_str(), nullptr);
  if (!std::isfinite(value)) return 0;
  return value;
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
  if (value >= kMax) return static_cast<int64_t>(kMax);
  if (value <= -kMax) return -static_cast<int64_t>(kMax);
  return static_cast<int64_t>(value);
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

std::string Cifre(int64_t value, int width) {
  std::string text = "0000" + std::to_string(value);
  return text.substr(text.size() - static_cast<size_t>(width));
}

int64_t ArrotondaPari(double value) { return Intero(std::nearbyint(value)); }

}  // namespace vf
