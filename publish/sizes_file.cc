#include "publish/sizes_file.h"

#include <sstream>
#include <string_view>

#include "platform/case_fold.h"

namespace vf {
namespace {

constexpr int kMaxPixels = 20000;
constexpr size_t kMaxNameCharacters = 64;
constexpr size_t kShownLineCharacters = 80;

// The number of characters of UTF-8 text, counting no continuation byte.
size_t Characters(std::string_view text) {
  size_t n = 0;
  for (unsigned char c : text) n += (c & 0xC0) != 0x80;
  return n;
}

// The line as a message shows it: past 80 characters it is cut, at the
// start of a character, and ends in "…".
std::string Shown(const std::string& line) {
  size_t count = 0;
  for (size_t i = 0; i < line.size(); ++i) {
    if ((static_cast<unsigned char>(line[i]) & 0xC0) != 0x80 && count++ == kShownLineCharacters) {
      return line.substr(0, i) + "…";
    }
  }
  return line;
}

bool WholeNumber(const std::string& text, int* value) {
  if (text.empty() || text.size() > 5) return false;
  int n = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    n = n * 10 + (c - '0');
  }
  *value = n;
  return n >= 1 && n <= kMaxPixels;
}

// A name that a Windows folder can have, and that stays inside its parent.
bool FolderName(const std::string& name) {
  if (!SizeFolderIsSafe(name) || Characters(name) > kMaxNameCharacters) return false;
  for (unsigned char c : name) {
    if (c < 32 || std::string_view("<>:\"|?*\\/").find(static_cast<char>(c)) != std::string::npos) {
      return false;
    }
  }
  return name.back() != '.';
}

}  // namespace

SizesFile ParseSizesFile(const std::string& text) {
  SizesFile out;
  std::istringstream lines(text);
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream words(line);
    std::string name, pixels, more;
    words >> name >> pixels >> more;
    if (name.empty() || name.front() == '#') continue;
    int value = 0;
    bool good = more.empty() && WholeNumber(pixels, &value) && FolderName(name);
    for (const DerivedSize& earlier : out.sizes) {
      if (EqualIgnoringCase(earlier.folder, name)) good = false;
    }
    if (good) {
      out.sizes.push_back({name, value});
    } else {
      out.bad_lines.push_back({number, Shown(line)});
    }
  }
  return out;
}

}  // namespace vf
