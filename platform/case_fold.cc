#include "platform/case_fold.h"

namespace vf {
namespace {

// Second byte of a UTF-8 sequence C3 xx: 0x80..0x9E are capitals, 0xA0..0xBE
// the matching small letters; 0x97 (×) and 0xB7 (÷) are no letters.
bool IsLatin1Upper(unsigned char b) { return b >= 0x80 && b <= 0x9E && b != 0x97; }
bool IsLatin1Lower(unsigned char b) { return b >= 0xA0 && b <= 0xBE && b != 0xB7; }

template <bool kUpper>
std::string Fold(std::string_view text) {
  std::string out(text);
  // Only the byte right after a lead byte C3 can be a Latin-1 letter; a stray
  // C3 before an ASCII letter does not hide it.
  bool after_c3 = false;
  for (char& byte : out) {
    const unsigned char c = static_cast<unsigned char>(byte);
    const bool other_case = kUpper ? (c >= 'a' && c <= 'z') || (after_c3 && IsLatin1Lower(c))
                                   : (c >= 'A' && c <= 'Z') || (after_c3 && IsLatin1Upper(c));
    if (other_case) byte = static_cast<char>(c ^ 0x20);  // the case bit, in both ranges
    after_c3 = c == 0xC3;
  }
  return out;
}

}  // namespace

std::string ToUpper(std::string_view text) { return Fold<true>(text); }
std::string ToLower(std::string_view text) { return Fold<false>(text); }

bool EqualIgnoringCase(std::string_view a, std::string_view b) { return ToLower(a) == ToLower(b); }

}  // namespace vf
