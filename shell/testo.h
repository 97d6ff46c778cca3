#ifndef VF_SHELL_TESTO_H_
#define VF_SHELL_TESTO_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vf {

// The leading number of a text: the number at its start (blanks before it
// are skipped), as a floating-point value; 0 when the text begins with none.
double NumeroIniziale(std::string_view text);

// Blanks (character 32 only) cut from both ends.
std::string Trim(std::string_view text);

// A whole number for counting with a floating-point value: values beyond
// the range of int64_t, and NaN, are clamped, so no conversion is undefined.
int64_t Intero(double value);

// A number as plain decimal text: "12", "-1", "2.5".
std::string Decimale(double value);

// A number as decimal text with a leading blank for a non-negative number:
// " 12", "-1".
std::string ConBlank(int64_t value);

// A number rounded to the nearest whole number, a half to the even one.
int64_t ArrotondaPari(double value);

}  // namespace vf

#endif  // VF_SHELL_TESTO_H_
