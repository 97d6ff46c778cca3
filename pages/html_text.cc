#include "pages/html_text.h"

#include <algorithm>
#include <cstdio>

#include "metadata/text_decode.h"

namespace vf {
namespace {

// The case-free form of `c`, for the letters whose two cases Western
// European names use: ASCII, Latin-1 and Latin Extended-A.
char32_t Folded(char32_t c) {
  if ((c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7)) return c + 0x20;
  if (c == 0x178) return 0xFF;
  // Latin Extended-A pairs each capital with the small letter after it,
  // the pairs starting on an even code point but between U+0139 and U+0148
  // and from U+0179, where they start on an odd one.
  const bool odd_pairs = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
  if (c >= 0x100 && c <= 0x17F && c != 0x130 && c != 0x131 && c != 0x138 && c != 0x149 &&
      c != 0x17F && (c % 2 == 1) == odd_pairs) {
    return c + 1;
  }
  return c;
}

std::string FoldedName(std::string_view name) {
  std::string folded;
  for (size_t at = 0; at < name.size();) AppendUtf8(Folded(NextChar(name, &at)), &folded);
  return folded;
}

}  // namespace

std::string HtmlText(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    const char32_t c = NextChar(utf8, &at);
    if (IsControl(c)) continue;
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        if (c < 0x80) {
          out.push_back(static_cast<char>(c));
        } else {
          out += "&#" + std::to_string(static_cast<uint32_t>(c)) + ";";
        }
    }
  }
  return out;
}

std::string CssString(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    const char32_t c = NextChar(utf8, &at);
    if (c == 0) continue;
    if (c == '"' || c == '\\') {
      out.push_back('\\');
      out.push_back(static_cast<char>(c));
    } else if (c >= 0x20 && c < 0x7F && c != '<') {
      out.push_back(static_cast<char>(c));
    } else {
      char escape[16];
      std::snprintf(escape, sizeof escape, "\\%X ", static_cast<unsigned>(c));
      out += escape;
    }
  }
  return out;
}

std::string FolderList(const std::vector<std::string>& names) {
  std::string list;
  std::vector<std::string> seen;
  for (const std::string& name : names) {
    if (name.empty()) continue;
    std::string folded = FoldedName(name);
    if (std::find(seen.begin(), seen.end(), folded) != seen.end()) continue;
    seen.push_back(std::move(folded));
    if (!list.empty()) list += " \u00B7 ";
    list += name;
  }
  return list;
}

}  // namespace vf
