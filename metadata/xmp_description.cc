#include "metadata/xmp_description.h"

#include <optional>

#include "metadata/text_decode.h"

namespace vf {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// The packet as UTF-8.
std::string PacketText(std::string_view packet) {
  if (packet.starts_with("\xEF\xBB\xBF")) return std::string(packet.substr(3));
  if (packet.starts_with("\xFE\xFF")) return Utf16ToUtf8(packet.substr(2), true);
  if (packet.starts_with("\xFF\xFE")) return Utf16ToUtf8(packet.substr(2), false);
  // Without a mark, XML's first character, "<" or a blank, shows the order.
  if (packet.size() >= 2 && (packet[0] == 0) != (packet[1] == 0)) {
    return Utf16ToUtf8(packet, packet[0] == 0);
  }
  return std::string(packet);
}

// Appends `raw` with its entities replaced by their characters; an
// ampersand that starts no entity stays as it is.
void AppendDecoded(std::string_view raw, std::string* out) {
  for (size_t at = 0; at < raw.size();) {
    const size_t amp = raw.find('&', at);
    out->append(raw.substr(at, amp - at));
    if (amp == raw.npos) return;
    at = amp + 1;
    const size_t semicolon = raw.substr(at, 10).find(';');
    if (semicolon == raw.npos) {
      out->push_back('&');
      continue;
    }
    const std::string_view name = raw.substr(at, semicolon);
    char32_t c = 0;
    if (name == "amp") {
      c = '&';
    } else if (name == "lt") {
      c = '<';
    } else if (name == "gt") {
      c = '>';
    } else if (name == "quot") {
      c = '"';
    } else if (name == "apos") {
      c = '\'';
    } else if (name.size() > 1 && name[0] == '#') {
      const bool hex = name[1] == 'x' || name[1] == 'X';
      const std::string_view digits = name.substr(hex ? 2 : 1);
      for (const char d : digits) {
        const int value = d >= '0' && d <= '9'          ? d - '0'
                          : hex && d >= 'a' && d <= 'f' ? d - 'a' + 10
                          : hex && d >= 'A' && d <= 'F' ? d - 'A' + 10
                                                        : -1;
        if (value < 0) {
          c = 0;
          break;
        }
        c = c * (hex ? 16 : 10) + value;  // at most 8 digits: no overflow
      }
      if (digits.empty() || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0;
    }
    if (c == 0) {
      out->push_back('&');
      continue;
    }
    AppendUtf8(c, out);
    at += semicolon + 1;
  }
}

bool HasText(std::string_view s) { return s.find_first_not_of(kBlanks) != s.npos; }

bool IsXDefault(std::string_view lang) {
  constexpr std::string_view kDefault = "x-default";
  if (lang.size() != kDefault.size()) return false;
  for (size_t k = 0; k < lang.size(); ++k) {
    if ((lang[k] | 0x20) != kDefault[k]) return false;
  }
  return true;
}

// The forms found so far, and where the scan is.
struct Scan {
  std::optional<std::string> x_default, first_item, simple, attribute;
  bool in_description = false, in_item = false, item_is_default = false;
  std::string item, simple_text;

  void Text(std::string_view raw, bool decode) {
    std::string* into = in_item ? &item : in_description ? &simple_text : nullptr;
    if (into == nullptr) return;
    if (decode) {
      AppendDecoded(raw, into);
    } else {
      into->append(raw);
    }
  }
  void StartTag(std::string_view name, std::string_view lang, bool empty) {
    if (empty) return;
    if (name == "dc:description") {
      in_description = true, in_item = false;
      simple_text.clear();
    } else if (name == "rdf:li" && in_description) {
      in_item = true, item_is_default = IsXDefault(lang);
      item.clear();
    }
  }
  void EndTag(std::string_view name) {
    if (name == "rdf:li" && in_item) {
      in_item = false;
      if (!HasText(item)) return;
      if (item_is_default && !x_default) x_default = item;
      if (!first_item) first_item = item;
    } else if (name == "dc:description" && in_description) {
      in_description = in_item = false;
      if (!simple && HasText(simple_text)) simple = simple_text;
    }
  }
  void Attribute(std::string_view name, std::string_view raw) {
    if (name != "dc:description" || attribute) return;
    std::string value;
    AppendDecoded(raw, &value);
    if (HasText(value)) attribute = std::move(value);
  }
};

// Reads the start tag whose name begins at `at`, up to its ">" or "/>";
// returns where it ends, npos when the packet ends first.
size_t ReadStartTag(std::string_view text, size_t at, Scan* scan) {
  const size_t name_end = text.find_first_of(" \t\r\n/>", at);
  if (name_end == text.npos) return text.npos;
  const std::string_view name = text.substr(at, name_end - at);
  std::string_view lang;
  for (at = name_end; at < text.size();) {
    const char c = text[at];
    if (c == '>' || text.compare(at, 2, "/>") == 0) {
      scan->StartTag(name, lang, c == '/');
      return at + (c == '/' ? 2 : 1);
    }
    const size_t attribute_end = text.find_first_of(" \t\r\n=/>", at);
    if (attribute_end == at || attribute_end == text.npos) {
      ++at;  // a blank, or a stray "/" or "="
      continue;
    }
    const std::string_view attribute = text.substr(at, attribute_end - at);
    at = text.find_first_not_of(kBlanks, attribute_end);
    if (at == text.npos || text[at] != '=') continue;
    at = text.find_first_not_of(kBlanks, at + 1);
    if (at == text.npos) return text.npos;
    if (text[at] != '"' && text[at] != '\'') continue;
    const size_t close = text.find(text[at], at + 1);
    if (close == text.npos) return text.npos;
    const std::string_view raw = text.substr(at + 1, close - at - 1);
    if (attribute == "xml:lang") lang = raw;
    scan->Attribute(attribute, raw);
    at = close + 1;
  }
  return text.npos;
}

}  // namespace

std::vector<std::string> XmpDescriptions(std::string_view packet) {
  const std::string owned = PacketText(packet);
  const std::string_view text = owned;
  Scan scan;
  // Each step moves past what it read, and each search starts where the
  // last one ended, so the whole scan reads the packet a bounded number of
  // times.
  for (size_t at = 0; at < text.size();) {
    if (text[at] != '<') {
      const size_t next = text.find('<', at);
      scan.Text(text.substr(at, next - at), true);
      at = next;
      continue;
    }
    size_t end = text.npos;
    if (text.compare(at, 4, "<!--") == 0) {
      end = text.find("-->", at + 4);
      if (end != text.npos) end += 3;
    } else if (text.compare(at, 9, "<![CDATA[") == 0) {
      end = text.find("]]>", at + 9);
      if (end != text.npos) {
        scan.Text(text.substr(at + 9, end - at - 9), false);
        end += 3;
      }
    } else if (text.compare(at, 2, "<?") == 0) {
      end = text.find("?>", at + 2);
      if (end != text.npos) end += 2;
    } else if (text.compare(at, 2, "<!") == 0) {
      end = text.find('>', at + 2);
      if (end != text.npos) end += 1;
    } else if (text.compare(at, 2, "</") == 0) {
      end = text.find('>', at + 2);
      if (end != text.npos) {
        const std::string_view name = text.substr(at + 2, end - at - 2);
        scan.EndTag(name.substr(0, name.find_last_not_of(kBlanks) + 1));
        end += 1;
      }
    } else {
      end = ReadStartTag(text, at + 1, &scan);
    }
    at = end;
  }
  std::vector<std::string> found;
  for (auto* form : {&scan.x_default, &scan.first_item, &scan.simple, &scan.attribute}) {
    if (*form) found.push_back(std::move(**form));
  }
  return found;
}

}  // namespace vf
