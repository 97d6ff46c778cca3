#include "publish/sizes_file.h"

#include <cstdint>
#include <sstream>
#include <string_view>

#include "platform/case_fold.h"

namespace vf {
namespace {

constexpr int kMaxPixels = 20000;
constexpr size_t kMaxNameCharacters = 64;
constexpr size_t kShownLineCharacters = 80;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
// The words of the setting lines, which no size may take as its folder.
constexpr std::string_view kMetadataWord = "metadati";
constexpr std::string_view kAvifWord = "avif";
constexpr std::string_view kTitleWord = "titolo";

// True when the text is well-formed UTF-8: every sequence whole, shortest,
// and no surrogate or code point past U+10FFFF.
bool ValidUtf8(std::string_view text) {
  for (size_t i = 0; i < text.size();) {
    const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(i);
    size_t length = lead < 0x80                    ? 1
                    : lead >= 0xC2 && lead <= 0xDF ? 2
                    : lead >= 0xE0 && lead <= 0xEF ? 3
                    : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                   : 0;
    if (length == 0 || i + length > text.size()) return false;
    uint32_t code = length == 1 ? lead : lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) {
      if ((byte(i + k) & 0xC0) != 0x80) return false;
      code = code << 6 | (byte(i + k) & 0x3F);
    }
    const uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < least[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    i += length;
  }
  return true;
}

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
  // An editor may begin a UTF-8 file with its byte order mark.
  std::istringstream lines(text.starts_with(kByteOrderMark) ? text.substr(3) : text);
  int number = 0;
  bool metadata_said = false, avif_said = false, title_said = false;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream words(line);
    std::string name, value, more;
    words >> name >> value >> more;
    if (name.empty() || name.front() == '#') continue;
    bool good = more.empty() && ValidUtf8(line);
    if (EqualIgnoringCase(name, kMetadataWord)) {
      // A setting is said once; a second line, or a value it has not, is bad.
      good = good && !metadata_said &&
             (EqualIgnoringCase(value, "tieni") || EqualIgnoringCase(value, "togli"));
      if (good) {
        metadata_said = true;
        out.keep_metadata = EqualIgnoringCase(value, "tieni");
        continue;
      }
    }
    if (EqualIgnoringCase(name, kAvifWord)) {
      good =
          good && !avif_said && (EqualIgnoringCase(value, "si") || EqualIgnoringCase(value, "no"));
      if (good) {
        avif_said = true;
        out.avif = EqualIgnoringCase(value, "si");
        continue;
      }
    }
    if (EqualIgnoringCase(name, kTitleWord)) {
      // The title is the rest of the line, blanks inside it kept.
      const size_t start =
          line.find_first_not_of(" \t", line.find_first_not_of(" \t") + name.size());
      const size_t end = line.find_last_not_of(" \t");
      if (start != std::string::npos && !title_said && ValidUtf8(line)) {
        title_said = true;
        out.title = line.substr(start, end + 1 - start);
        continue;
      }
      good = false;
    }
    int pixels = 0;
    good = good && !EqualIgnoringCase(name, kMetadataWord) && !EqualIgnoringCase(name, kAvifWord) &&
           WholeNumber(value, &pixels) && FolderName(name);
    for (const DerivedSize& earlier : out.sizes) {
      if (EqualIgnoringCase(earlier.folder, name)) good = false;
    }
    if (good) {
      out.sizes.push_back({name, pixels});
    } else {
      out.bad_lines.push_back({number, Shown(line)});
    }
  }
  return out;
}

}  // namespace vf
