#ifndef VF_TESTS_SUPPORT_TIFF_BUILDER_H_
#define VF_TESTS_SUPPORT_TIFF_BUILDER_H_

#include <cstdint>
#include <string>
#include <vector>

namespace vf::test {

// `n` in `size` bytes, big-endian unless told.
std::string Num(uint64_t n, int size, bool big = true);

// One IFD entry of a TIFF block made by Tiff. A value below zero points at
// an IFD: IfdAt(k) at the k-th. When `data` is given it is the value's
// bytes: in the value field when they fit, else placed after the IFDs with
// the field pointing at them.
struct Entry {
  uint16_t tag, type;
  uint32_t count;
  int64_t value;
  std::string data = {};
};
constexpr int64_t IfdAt(int k) { return -1 - k; }

// An ASCII entry holding `text` and its closing NUL.
Entry Ascii(uint16_t tag, const std::string& text);

// A TIFF block: its IFDs one after the other from offset 8, IFD0 last, so
// that its link to the next IFD (`next`) ends the block but for the values
// that do not fit in their entries.
std::string Tiff(bool big, const std::vector<std::vector<Entry>>& ifds, int64_t next = 0);

}  // namespace vf::test

#endif  // VF_TESTS_SUPPORT_TIFF_BUILDER_H_
