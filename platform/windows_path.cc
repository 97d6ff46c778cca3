#include "platform/windows_path.h"

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

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

bool IsLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

bool NameFitsAPage(std::string_view name) {
  for (size_t i = 0; i < name.size(); ++i) {
    const char c = name[i];
    if (IsRefusedByte(static_cast<unsigned char>(c)) || c == '\\') return false;
    if (c != '&') continue;
    if (i + 1 < name.size() && name[i + 1] == '#') return false;
    size_t j = i + 1;
    while (j < name.size() && IsLetterOrDigit(name[j])) ++j;
    if (j > i + 1 && j < name.size() && name[j] == ';') return false;
  }
  return true;
}

char DriveLetter(char c) {
  if (c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
  if (c >= 'A' && c <= 'Z') return c;
  return 0;
}

int ParseWindowsPath(std::string_view text, const ParsedPath& current, ParsedPath* out) {
  if (text.empty()) return kNomeNonValido;
  ParsedPath result;
  result.drive = current.drive;
  if (text.size() >= 2 && text[1] == ':' && DriveLetter(text[0]) != 0) {
    result.drive = DriveLetter(text[0]);
    text.remove_prefix(2);
    // "X:name" goes on from the current folder only on the current drive;
    // another drive's own current folder is not kept, so it starts at its root.
    if (result.drive == current.drive && (text.empty() || !IsSeparator(text[0]))) {
      result.parts = current.parts;
    }
  } else if (!IsSeparator(text[0])) {
    result.parts = current.parts;
  }
  size_t pos = 0;
  while (pos <= text.size()) {
    size_t end = pos;
    while (end < text.size() && !IsSeparator(text[end])) ++end;
    std::string_view part = text.substr(pos, end - pos);
    pos = end + 1;
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      if (!result.parts.empty()) result.parts.pop_back();
      continue;
    }
    for (char c : part) {
      if (IsRefusedByte(static_cast<unsigned char>(c))) return kNomeNonValido;
    }
    result.parts.emplace_back(part);
  }
  result.ends_in_separator = !text.empty() && IsSeparator(text.back());
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
