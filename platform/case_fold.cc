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
  for (size_t i = 0; i < out.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(out[i]);
    if (kUpper && c >= 'a' && c <= 'z') {
      out[i] = static_cast<char>(c - 32);
    } else if (!kUpper && c >= 'A' && c <= 'Z') {
      out[i] = static_cast<char>(c + 32);
    } else if (c == 0xC3 && i + 1 < out.size()) {
      unsigned char d = static_cast<unsigned char>(out[i + 1]);
      if (kUpper && IsLatin1Lower(d)) out[i + 1] = static_cast<char>(d - 0x20);
      if (!kUpper && IsLatin1Upper(d)) out[i + 1] = static_cast<char>(d + 0x20);
      // Only a continuation byte belongs to this letter; a stray C3 before
      // another letter must not hide it.
      if (d >= 0x80 && d <= 0xBF) ++i;
    }
  }
  return out;
}

}  // namespace

std::string ToUpper(std::string_view text) { return Fold<true>(text); }
std::string ToLower(std::string_view text) { return Fold<false>(text); }

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ToLower(a) == ToLower(b);
}

}  // namespace vf
