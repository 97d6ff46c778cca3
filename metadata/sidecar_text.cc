#include <string>

#include "metadata/photo_words.h"
#include "metadata/text_decode.h"

namespace vf {
namespace {

// Whether `tail` is the start of a UTF-8 sequence, cut before its end.
bool CutSequence(std::string_view tail) {
  const auto lead = static_cast<unsigned char>(tail[0]);
  const size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                        : lead >= 0xE0 && lead <= 0xEF ? 3
                        : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                       : 0;
  if (tail.size() >= length) return false;
  for (const char byte : tail.substr(1)) {
    if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) return false;
  }
  return true;
}

// The file's text as UTF-8, by its byte order mark or else by whether it is
// well-formed UTF-8; a character that a cut read split in two is left out.
std::string FileText(std::string_view bytes, bool longer_than_read) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const bool little = bytes.starts_with("\xFF\xFE"), big = bytes.starts_with("\xFE\xFF");
  if (little || big) {
    std::string text = Utf16ToUtf8(bytes.substr(2), big);
    // A first half of a pair at the very end of the read was made U+FFFD.
    if (longer_than_read && text.ends_with("\uFFFD")) text.resize(text.size() - 3);
    return text;
  }
  // Well-formed up to `end`, and either to the very end or to a sequence
  // that the end of the read cut.
  size_t end = bytes.size();
  for (size_t at = 0; at < bytes.size();) {
    const size_t start = at;
    NextChar(bytes, &at);
    if (at == start + 1 && static_cast<unsigned char>(bytes[start]) >= 0x80) {
      end = start;
      break;
    }
  }
  const bool utf8 = end == bytes.size() || (longer_than_read && CutSequence(bytes.substr(end)));
  if (utf8) return std::string(bytes.substr(0, end));
  std::string text;
  for (const char byte : bytes)
    AppendUtf8(FromWindows1252(static_cast<unsigned char>(byte)), &text);
  return text;
}

// A NUL, or more than a quarter of control characters other than those of
// plain text (tab, line breaks, form feed).
bool LooksBinary(std::string_view text) {
  size_t chars = 0, controls = 0;
  for (size_t at = 0; at < text.size(); ++chars) {
    const char32_t c = NextChar(text, &at);
    if (c == 0) return true;
    if (IsControl(c) && c != '\t' && c != '\n' && c != '\r' && c != '\f') ++controls;
  }
  return controls * 4 > chars;
}

}  // namespace

std::string SidecarDescription(std::string_view bytes, bool longer_than_read) {
  const std::string text = FileText(bytes, longer_than_read);
  if (LooksBinary(text)) return "";
  // The first paragraph: lines up to the first one with nothing but white
  // space, once a line with something has been seen.
  size_t start = std::string::npos, end = text.size();
  for (size_t line = 0; line < text.size();) {
    size_t next = text.find_first_of("\r\n", line);
    if (next == std::string::npos) next = text.size();
    const bool empty =
        text.find_first_not_of(" \t\f\v", line) >= next;  // only ASCII blanks count as nothing
    if (!empty && start == std::string::npos) start = line;
    if (empty && start != std::string::npos) {
      end = line;
      break;
    }
    line = next + (text.compare(next, 2, "\r\n") == 0 ? 2 : 1);
  }
  if (start == std::string::npos) return "";
  std::string_view paragraph = std::string_view(text).substr(start, end - start);
  const bool cut = longer_than_read && end == text.size();
  if (cut) {
    // The read may have stopped inside the last word.
    const size_t last_blank = paragraph.find_last_of(" \t\r\n");
    if (last_blank != paragraph.npos) paragraph = paragraph.substr(0, last_blank);
  }
  std::string description = CleanDescription(paragraph);
  if (cut && !description.empty() && !description.ends_with("\u2026")) description += "\u2026";
  return description;
}

}  // namespace vf
