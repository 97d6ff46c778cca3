#include "pages/italian_date.h"

#include <cstdio>
#include <string_view>
#include <tuple>
#include <utility>

namespace vf {
namespace {

constexpr std::string_view kMonths[] = {"gennaio",   "febbraio", "marzo",    "aprile",
                                        "maggio",    "giugno",   "luglio",   "agosto",
                                        "settembre", "ottobre",  "novembre", "dicembre"};
constexpr std::string_view kEnDash = "\u2013";
// Two days of a month this close or closer are written as a span of days.
constexpr int kMostDaysApart = 7;

bool HasMonth(TakenDate d) { return d.month >= 1 && d.month <= 12; }

std::string MonthAndYear(TakenDate d) {
  return std::string(kMonths[d.month - 1]) + " " + std::to_string(d.year);
}

}  // namespace

std::string DateInItalian(TakenDate d) {
  if (!HasMonth(d)) return "";
  return std::to_string(d.day) + " " + MonthAndYear(d);
}

std::string IsoDate(TakenDate d) {
  if (!HasMonth(d)) return "";
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", d.year, d.month, d.day);
  return text;
}

std::string SpanInItalian(TakenDate first, TakenDate last) {
  if (!HasMonth(first) || !HasMonth(last)) return "";
  if (std::tie(last.year, last.month, last.day) < std::tie(first.year, first.month, first.day)) {
    std::swap(first, last);
  }
  if (first.year != last.year) {
    return MonthAndYear(first) + " " + std::string(kEnDash) + " " + MonthAndYear(last);
  }
  if (first.month != last.month) {
    return std::string(kMonths[first.month - 1]) + " " + std::string(kEnDash) + " " +
           MonthAndYear(last);
  }
  if (first.day == last.day) return DateInItalian(first);
  if (last.day - first.day <= kMostDaysApart) {
    return std::to_string(first.day) + std::string(kEnDash) + DateInItalian(last);
  }
  return MonthAndYear(last);
}

}  // namespace vf
