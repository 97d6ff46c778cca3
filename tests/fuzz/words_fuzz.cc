// Any bytes as a picture's metadata blobs (EXIF, XMP and IPTC, split at
// "|VF|"), as a sidecar file and as text to clean. Every description is
// well-formed UTF-8 of at most 300 characters and "…", without control
// characters or blanks at its ends, and cleans to itself; on a page it is
// ASCII that opens no element and closes no attribute.

#include <string>

#include "metadata/photo_words.h"
#include "pages/html_text.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

// The characters of well-formed UTF-8 (shortest forms, no surrogates), or
// -1; a control character counts as not well-formed here.
long CheckedChars(std::string_view s) {
  long chars = 0;
  for (size_t at = 0; at < s.size(); ++chars) {
    const auto lead = static_cast<unsigned char>(s[at]);
    const size_t length = lead < 0x80                    ? 1
                          : lead >= 0xC2 && lead <= 0xDF ? 2
                          : lead >= 0xE0 && lead <= 0xEF ? 3
                          : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                         : 0;
    if (length == 0 || s.size() - at < length) return -1;
    char32_t c = length == 1 ? lead : lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(s[at + k]);
      if ((next & 0xC0) != 0x80) return -1;
      c = c << 6 | (next & 0x3F);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (c < kLeast[length] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return -1;
    if (c < 0x20 || (c >= 0x7F && c <= 0x9F)) return -1;
    at += length;
  }
  return chars;
}

void CheckDescription(const std::string& d, const char* from) {
  using vf::fuzz::Check;
  const long chars = CheckedChars(d);
  Check(chars >= 0, "not UTF-8 or with a control character", d);
  Check(chars <= 300 || (chars == 301 && d.ends_with("\u2026")), "too long", from);
  Check(d.empty() || (d.front() != ' ' && d.back() != ' '), "blank at an end", d);
  Check(d.find("  ") == d.npos, "two blanks", d);
  if (chars <= 300) Check(vf::CleanDescription(d) == d, "cleans otherwise again", d);
  const std::string html = vf::HtmlText(d);
  for (const char c : html) {
    Check(c != '<' && c != '>' && c != '"' && c != '\'' && c >= 0x20 && c < 0x7F, "HTML", html);
  }
  const std::string css = vf::CssString(d);
  for (size_t k = 0; k < css.size(); ++k) {
    const char c = css[k];
    Check(c != '<' && c >= 0x20 && c < 0x7F, "CSS", css);
    // A quote is escaped, so the string goes on: an odd run of backslashes before it.
    if (c == '"') {
      size_t backslashes = 0;
      while (backslashes < k && css[k - 1 - backslashes] == '\\') ++backslashes;
      Check(backslashes % 2 == 1, "CSS string ends early", css);
    }
  }
}

}  // namespace

void vf::fuzz::FuzzOne(std::string_view input) {
  constexpr std::string_view kSplit = "|VF|";
  std::string_view parts[3];
  std::string_view rest = input;
  for (int k = 0; k < 2; ++k) {
    const size_t at = rest.find(kSplit);
    parts[k] = rest.substr(0, at);
    rest = at == rest.npos ? std::string_view() : rest.substr(at + kSplit.size());
  }
  parts[2] = rest;
  const PhotoWords words = WordsFromBlobs(parts[0], parts[1], parts[2]);
  CheckDescription(words.description, "blobs");
  if (words.taken) {
    const TakenDate d = *words.taken;
    Check(d.year >= 1800 && d.year <= 2200 && d.month >= 1 && d.month <= 12 && d.day >= 1 &&
              d.day <= 31,
          "no real date", parts[0]);
  }
  CheckDescription(SidecarDescription(input, false), "sidecar");
  CheckDescription(SidecarDescription(input, true), "cut sidecar");
  CheckDescription(CleanDescription(input), "text");
}
