#include "tests/support/tiff_builder.h"

namespace vf::test {

using namespace std::string_literals;

std::string Num(uint64_t n, int size, bool big) {
  std::string s;
  for (int i = 0; i < size; ++i) s += static_cast<char>(n >> 8 * (big ? size - 1 - i : i));
  return s;
}

Entry Ascii(uint16_t tag, const std::string& text) {
  return {tag, 2, static_cast<uint32_t>(text.size() + 1), 0, text + '\0'};
}

std::string Tiff(bool big, const std::vector<std::vector<Entry>>& ifds, int64_t next) {
  const size_t n = ifds.size();
  std::vector<int64_t> at(n + 1, 8);
  for (size_t k = 1; k < n; ++k)
    at[k + 1] = at[0] = at[k] + 6 + 12 * static_cast<int64_t>(ifds[k].size());
  const auto value = [&at](int64_t v) { return v < 0 ? at[-1 - v] : v; };
  std::string tiff = (big ? "MM\0*"s : "II*\0"s) + Num(at[0], 4, big), values;
  const size_t values_at = at[0] + 6 + 12 * (n > 0 ? ifds[0].size() : 0);
  for (size_t k = 1; k <= n; ++k) {
    tiff += Num(ifds[k % n].size(), 2, big);
    for (const Entry& e : ifds[k % n]) {
      tiff += Num(e.tag, 2, big) + Num(e.type, 2, big) + Num(e.count, 4, big);
      if (e.data.size() > 4) {
        tiff += Num(values_at + values.size(), 4, big);
        values += e.data;
      } else if (!e.data.empty()) {
        tiff += e.data + std::string(4 - e.data.size(), '\0');
      } else {
        tiff += e.type == 3 ? Num(e.value, 2, big) + "\0\0"s : Num(value(e.value), 4, big);
      }
    }
    tiff += Num(k == n ? value(next) : 0, 4, big);
  }
  return tiff + values;
}

}  // namespace vf::test
