#ifndef VF_METADATA_TEXT_DECODE_H_
#define VF_METADATA_TEXT_DECODE_H_

#include <string>
#include <string_view>

namespace vf {

// Text that anyone may have written, read one character (code point) at a
// time. Pictures, sidecar files and folder names come from every kind of
// program, so a byte that does not start a well-formed UTF-8 sequence is
// taken as Windows-1252, the single-byte encoding such text most often is.

// The character of `text` at `*at` (which must be inside it), moving `*at`
// past it: a well-formed UTF-8 sequence (no overlong form, no surrogate,
// nothing past U+10FFFF), else that one byte as Windows-1252. The five
// bytes Windows-1252 leaves undefined give the C1 control of their value.
char32_t NextChar(std::string_view text, size_t* at);

// Windows-1252's character for `byte`.
char32_t FromWindows1252(unsigned char byte);

// Appends `c` (a Unicode scalar value) to `out` in UTF-8.
void AppendUtf8(char32_t c, std::string* out);

// UTF-16 code units in either byte order, as UTF-8. A surrogate without its
// pair gives U+FFFD; an odd last byte is left out.
std::string Utf16ToUtf8(std::string_view bytes, bool big);

// The C0 controls, DEL and the C1 controls.
inline bool IsControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F); }

}  // namespace vf

#endif  // VF_METADATA_TEXT_DECODE_H_
