#ifndef VF_PLATFORM_WINDOWS_PATH_H_
#define VF_PLATFORM_WINDOWS_PATH_H_

#include <string>
#include <string_view>
#include <vector>

namespace vf {

// A Windows path after the drive and current-folder rules: a capital drive
// letter and the parts below its root, as typed, with "." and ".." resolved.
struct ParsedPath {
  char drive = 'C';
  std::vector<std::string> parts;
  bool ends_in_separator = false;  // the text names a folder, never a file

  bool operator==(const ParsedPath&) const = default;
};

// Reads `text` against the current drive and folder `current`. A backslash or
// a forward slash separates parts, empty parts are skipped and ".." stops at
// the drive's root. Fails with 52 for an empty text and for a part holding
// one of < > " | ? *, a colon or a control byte, which Windows refuses.
int ParseWindowsPath(std::string_view text, const ParsedPath& current, ParsedPath* out);

// True when a host name can stand in a page's link as it is: no Windows path
// could spell a name holding < > " | ? *, a colon, a backslash or a byte 1-31,
// and a browser decodes a character reference ("&#", or "&", letters or
// digits and ";") inside a link, so "javascript&#58;x" would become a script
// link. Names ending in a dot or a blank, and device names, are usable.
bool NameFitsAPage(std::string_view name);

// "C:\a\b", or "C:\" for a root.
std::string FormatWindowsPath(const ParsedPath& path);

// The capital of an ASCII letter, or 0 for anything else.
char DriveLetter(char c);

}  // namespace vf

#endif  // VF_PLATFORM_WINDOWS_PATH_H_
