#include "metadata/text_decode.h"

namespace vf {
namespace {

// Windows-1252's characters for the bytes 0x80 to 0x9F; the undefined ones
// keep their own value.
constexpr char16_t kHighHalf[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

char32_t FromWindows1252(unsigned char byte) {
  return byte >= 0x80 && byte < 0xA0 ? kHighHalf[byte - 0x80] : byte;
}

char32_t NextChar(std::string_view text, size_t* at) {
  const size_t start = *at;
  const unsigned char lead = static_cast<unsigned char>(text[start]);
  *at = start + 1;
  if (lead < 0x80) return lead;
  // The sequence's length and the smallest value it may carry, so that an
  // overlong form is refused.
  size_t length = 0;
  char32_t c = 0, least = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, c = lead & 0x1F, least = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, c = lead & 0x0F, least = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, c = lead & 0x07, least = 0x10000;
  } else {
    return FromWindows1252(lead);
  }
  if (text.size() - start < length) return FromWindows1252(lead);
  for (size_t k = 1; k < length; ++k) {
    const unsigned char next = static_cast<unsigned char>(text[start + k]);
    if ((next & 0xC0) != 0x80) return FromWindows1252(lead);
    c = c << 6 | (next & 0x3F);
  }
  if (c < least || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return FromWindows1252(lead);
  *at = start + length;
  return c;
}

void AppendUtf8(char32_t c, std::string* out) {
  if (c < 0x80) {
    out->push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out->push_back(static_cast<char>(0xC0 | c >> 6));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | c >> 12));
    out->push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | c >> 18));
    out->push_back(static_cast<char>(0x80 | (c >> 12 & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

std::string Utf16ToUtf8(std::string_view bytes, bool big) {
  const auto unit = [bytes, big](size_t at) -> char32_t {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return big ? first << 8 | second : second << 8 | first;
  };
  std::string out;
  out.reserve(bytes.size());
  for (size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const char32_t c = unit(at);
    if (c >= 0xD800 && c <= 0xDBFF && at + 3 < bytes.size()) {
      const char32_t low = unit(at + 2);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        AppendUtf8(0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00), &out);
        at += 2;
        continue;
      }
    }
    AppendUtf8(c >= 0xD800 && c <= 0xDFFF ? 0xFFFD : c, &out);
  }
  return out;
}

}  // namespace vf
