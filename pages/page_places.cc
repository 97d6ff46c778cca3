#include "pages/page_places.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace vf {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\f'; }

bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }

std::string Lowered(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = Lower(c);
  return out;
}

struct Attribute {
  std::string name;  // in small letters
  size_t begin = 0;  // the whole attribute, name to value, in the page
  size_t end = 0;
  std::string value;
};

// A start tag on one line: "<name attributes>".
struct StartTag {
  size_t begin = 0;
  size_t end = 0;    // past its ">"
  size_t close = 0;  // where "/>" or ">" starts, for an attribute added
  std::string name;  // in small letters
  std::vector<Attribute> attributes;

  const Attribute* Find(std::string_view wanted) const {
    for (const Attribute& a : attributes) {
      if (a.name == wanted) return &a;
    }
    return nullptr;
  }
};

// The start tag at `at` (a "<"), or nothing when there is none there or it
// does not end on its own line.
std::optional<StartTag> ParseStartTag(std::string_view page, size_t at) {
  StartTag tag;
  tag.begin = at;
  size_t i = at + 1;
  auto is_name = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == ':';
  };
  while (i < page.size() && is_name(page[i])) tag.name += Lower(page[i++]);
  if (tag.name.empty() || !(tag.name[0] >= 'a' && tag.name[0] <= 'z')) return std::nullopt;
  while (i < page.size()) {
    while (i < page.size() && IsBlank(page[i])) ++i;
    if (i >= page.size() || IsLineEnd(page[i])) return std::nullopt;
    if (page[i] == '>' || (page[i] == '/' && i + 1 < page.size() && page[i + 1] == '>')) {
      tag.close = i;
      tag.end = page.find('>', i) + 1;
      return tag;
    }
    Attribute a;
    a.begin = i;
    while (i < page.size() && !IsBlank(page[i]) && !IsLineEnd(page[i]) && page[i] != '=' &&
           page[i] != '>' && !(page[i] == '/' && i + 1 < page.size() && page[i + 1] == '>')) {
      a.name += Lower(page[i++]);
    }
    if (a.name.empty()) ++i;  // a stray "/" or "=": skipped as browsers do
    size_t after_name = i;
    while (i < page.size() && IsBlank(page[i])) ++i;
    if (i < page.size() && page[i] == '=') {
      ++i;
      while (i < page.size() && IsBlank(page[i])) ++i;
      if (i < page.size() && (page[i] == '"' || page[i] == '\'')) {
        const size_t quote_end = page.find(page[i], i + 1);
        if (quote_end == std::string_view::npos) return std::nullopt;
        const std::string_view value = page.substr(i + 1, quote_end - i - 1);
        if (value.find_first_of("\r\n") != std::string_view::npos) return std::nullopt;
        a.value = std::string(value);
        i = quote_end + 1;
      } else {
        const size_t start = i;
        while (i < page.size() && !IsBlank(page[i]) && !IsLineEnd(page[i]) && page[i] != '>') ++i;
        a.value = std::string(page.substr(start, i - start));
      }
    } else {
      i = after_name;
    }
    a.end = i;
    if (!a.name.empty()) tag.attributes.push_back(std::move(a));
  }
  return std::nullopt;
}

// The tag's text with attributes set to the values given (already escaped),
// each replacing one of that name or added before the tag's end.
std::string WithAttributes(std::string_view page, const StartTag& tag,
                           const std::vector<std::pair<std::string, std::string>>& set) {
  std::string out;
  size_t at = tag.begin;
  std::vector<const std::pair<std::string, std::string>*> added;
  for (const auto& attribute : set) {
    if (tag.Find(attribute.first) == nullptr) added.push_back(&attribute);
  }
  for (const Attribute& a : tag.attributes) {
    for (const auto& [name, value] : set) {
      if (a.name != name) continue;
      out.append(page.substr(at, a.begin - at));
      out += name + "=\"" + value + "\"";
      at = a.end;
      break;
    }
  }
  out.append(page.substr(at, tag.close - at));
  for (const auto* attribute : added) {
    if (!out.empty() && !IsBlank(out.back())) out += ' ';
    out += attribute->first + "=\"" + attribute->second + "\"";
  }
  out.append(page.substr(tag.close, tag.end - tag.close));
  return out;
}

// The content a place takes, or "" to leave it.
std::string ContentOf(const std::string& kind, const StartTag& tag, const PlaceTexts& texts) {
  if (kind == "sito") return texts.sito;
  if (kind == "titolo") return texts.titolo;
  if (kind == "didascalia") return texts.didascalia;
  if (kind == "data") return texts.data_iso.empty() ? std::string() : texts.data;
  if (kind == "album") return tag.name == "style" ? texts.album_rules : texts.album;
  return {};
}

// True when every URL of a srcset ("a.avif 480w, b.avif 1600w") is there.
bool AllThere(std::string_view srcset, const std::function<bool(std::string_view)>& exists) {
  size_t at = 0;
  while (at < srcset.size()) {
    const size_t comma = std::min(srcset.find(',', at), srcset.size());
    std::string_view candidate = srcset.substr(at, comma - at);
    const size_t start = candidate.find_first_not_of(" \t");
    if (start != std::string_view::npos) {
      candidate.remove_prefix(start);
      const std::string_view url = candidate.substr(0, candidate.find_first_of(" \t"));
      if (!exists(url)) return false;
    }
    at = comma + 1;
  }
  return true;
}

}  // namespace

bool FillPlaces(std::string* page, const PlaceTexts& texts) {
  const std::string_view in(*page);
  std::string out;
  size_t copied = 0;  // the page is copied up to here
  size_t i = 0;
  bool changed = false;
  while ((i = in.find('<', i)) != std::string_view::npos) {
    const std::optional<StartTag> tag = ParseStartTag(in, i);
    const Attribute* place = tag ? tag->Find("data-vf") : nullptr;
    if (place == nullptr) {
      i = tag ? tag->end : i + 1;
      continue;
    }
    const std::string kind = Lowered(place->value);
    if (kind == "avif" && tag->name == "source" && texts.exists) {
      const Attribute* srcset = tag->Find("srcset");
      if (srcset == nullptr || !AllThere(srcset->value, texts.exists)) {
        out.append(in.substr(copied, i - copied));
        copied = tag->end;
        changed = true;
      }
      i = tag->end;
      continue;
    }
    std::vector<std::pair<std::string, std::string>> set;
    if (kind == "foto" && tag->name == "img" && texts.picture) {
      const Attribute* src = tag->Find("src");
      const PictureFacts facts = src != nullptr ? texts.picture(src->value) : PictureFacts{};
      if (!facts.alt.empty()) set.emplace_back("alt", facts.alt);
      if (facts.width > 0 && facts.height > 0) {
        set.emplace_back("width", std::to_string(facts.width));
        set.emplace_back("height", std::to_string(facts.height));
      }
    }
    const std::string content = ContentOf(kind, *tag, texts);
    if (kind == "data" && !content.empty()) set.emplace_back("datetime", texts.data_iso);
    size_t resume = tag->end;
    if (!content.empty()) {
      // The content runs to the element's end tag on the same line.
      const size_t line_end = std::min(in.find_first_of("\r\n", tag->end), in.size());
      const std::string line = Lowered(in.substr(tag->end, line_end - tag->end));
      const size_t end_tag = line.find("</" + tag->name);
      if (end_tag == std::string::npos) {
        i = tag->end;
        continue;
      }
      out.append(in.substr(copied, i - copied));
      out += WithAttributes(in, *tag, set);
      out += content;
      copied = resume = tag->end + end_tag;
      changed = true;
    } else if (!set.empty()) {
      out.append(in.substr(copied, i - copied));
      out += WithAttributes(in, *tag, set);
      copied = tag->end;
      changed = true;
    }
    i = resume;
  }
  if (!changed) return false;
  out.append(in.substr(copied));
  *page = std::move(out);
  return true;
}

}  // namespace vf
