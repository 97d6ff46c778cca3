#ifndef VF_PLATFORM_CASE_FOLD_H_
#define VF_PLATFORM_CASE_FOLD_H_

#include <string>
#include <string_view>

namespace vf {

// Case folding of the program's texts. ASCII letters and the Latin-1 letters
// written in UTF-8 (à and À, U+00C0 to U+00DE and U+00E0 to U+00FE, less
// × and ÷) change case; every other byte stays as it is, so a text of any
// bytes keeps its length and never becomes invalid.
std::string ToUpper(std::string_view text);
std::string ToLower(std::string_view text);

// True when the two texts are equal ignoring case in the sense above.
bool EqualIgnoringCase(std::string_view a, std::string_view b);

}  // namespace vf

#endif  // VF_PLATFORM_CASE_FOLD_H_
