#include <string>
#include <vector>

#include "metadata/photo_words.h"
#include "metadata/text_decode.h"

namespace vf {
namespace {

constexpr size_t kMostChars = 300;

bool IsWhiteSpace(char32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

// Characters that would change how the page around the text is laid out,
// or that show as nothing: the bidirectional embeddings, overrides and
// isolates, and a byte order mark left inside joined text.
bool IsDropped(char32_t c) {
  return IsControl(c) || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) ||
         c == 0xFEFF;
}

}  // namespace

std::string CleanDescription(std::string_view text) {
  // The characters kept, each run of white space as one blank. Reading stops
  // once it is sure the text will be cut: past the limit, with a character
  // that is not a blank after it.
  std::vector<char32_t> kept;
  bool blank = false;
  for (size_t at = 0; at < text.size() && kept.size() <= kMostChars;) {
    const char32_t c = NextChar(text, &at);
    if (IsWhiteSpace(c)) {
      blank = !kept.empty();
    } else if (!IsDropped(c)) {
      if (blank) kept.push_back(U' ');
      blank = false;
      kept.push_back(c);
    }
  }
  size_t end = kept.size();
  const bool cut = end > kMostChars;
  if (cut) {
    end = kMostChars;
    // At the end of the last word that ends within the limit, unless a
    // single word fills it all.
    if (kept[end] != U' ') {
      size_t space = end;
      while (space > 0 && kept[space - 1] != U' ') --space;
      if (space > 0) end = space - 1;
    }
  }
  std::string out;
  out.reserve(end + 3);
  for (size_t k = 0; k < end; ++k) AppendUtf8(kept[k], &out);
  if (cut) out += "\u2026";
  return out;
}

}  // namespace vf
