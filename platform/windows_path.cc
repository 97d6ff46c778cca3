#include "platform/windows_path.h"

#include <algorithm>
#include <ranges>

#include "platform/failure.h"

namespace vf {
namespace {

bool IsRefusedByte(unsigned char c) {
  switch (c) {
    case '<':
    case '>':
    case '"':
    case '|':
    case '?':
    case '*':
    case ':':
      return true;
    default:
      return c < 0x20;
  }
}

bool IsLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

bool NameFitsAPage(std::string_view name) {
  for (size_t i = 0; i < name.size(); ++i) {
    const char c = name[i];
    if (IsRefusedByte(static_cast<unsigned char>(c)) || c == '\\') return false;
    if (c != '&') continue;
    const std::string_view rest = name.substr(i + 1);
    const auto letters =
        static_cast<size_t>(std::ranges::find_if_not(rest, IsLetterOrDigit) - rest.begin());
    if (rest.starts_with('#') || (letters > 0 && rest.substr(letters).starts_with(';'))) {
      return false;
    }
  }
  return true;
}

char DriveLetter(char c) {
  if (c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
  if (c >= 'A' && c <= 'Z') return c;
  return 0;
}

int ParseWindowsPath(std::string_view typed, const ParsedPath& current, ParsedPath* out) {
  if (typed.empty()) return kNomeNonValido;
  // A forward slash separates parts as a backslash does.
  std::string unified(typed);
  std::ranges::replace(unified, '/', '\\');
  std::string_view text = unified;
  ParsedPath result;
  result.drive = current.drive;
  if (text.size() >= 2 && text[1] == ':' && DriveLetter(text[0]) != 0) {
    result.drive = DriveLetter(text[0]);
    text.remove_prefix(2);
    // "X:name" goes on from the current folder only on the current drive;
    // another drive's own current folder is not kept, so it starts at its root.
    if (result.drive == current.drive && !text.starts_with('\\')) result.parts = current.parts;
  } else if (!text.starts_with('\\')) {
    result.parts = current.parts;
  }
  result.ends_in_separator = text.ends_with('\\');
  while (!text.empty()) {
    const size_t cut = std::min(text.find('\\'), text.size());
    std::string part(text.substr(0, cut));
    text.remove_prefix(std::min(cut + 1, text.size()));
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      if (!result.parts.empty()) result.parts.pop_back();
      continue;
    }
    for (char c : part) {
      if (IsRefusedByte(static_cast<unsigned char>(c))) return kNomeNonValido;
    }
    result.parts.push_back(std::move(part));
  }
  *out = std::move(result);
  return kOk;
}

std::string FormatWindowsPath(const ParsedPath& path) {
  std::string text{path.drive, ':', '\\'};
  for (size_t i = 0; i < path.parts.size(); ++i) {
    if (i > 0) text += '\\';
    text += path.parts[i];
  }
  return text;
}

}  // namespace vf
