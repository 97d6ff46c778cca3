#include "platform/sizes_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vf {
namespace {

TEST(SizesFileTest, GoodLinesGiveSizesAndBadOnesAreNamed) {
  const SizesFile f = ParseSizesFile(
      "# formato: cartella pixel\r\n"
      "mini 480\r\n"
      "\r\n"
      "  web\t1600  \r\n"
      "zero 0\n"
      "meno -5\n"
      "mezzo 2.5\n"
      "troppo 20001\n"
      "tanto 20000\n"
      "uno 1\n"
      "../fuori 300\n"
      "a/b 300\n"
      "a\\b 300\n"
      ".. 300\n"
      "punto. 300\n"
      "due:punti 300\n"
      "MINI 200\n"
      "solo\n"
      "tre parole 300\n"
      "300");
  std::vector<std::string> sizes;
  for (const DerivedSize& s : f.sizes) sizes.push_back(s.folder + " " + std::to_string(s.pixels));
  EXPECT_EQ(sizes, (std::vector<std::string>{"mini 480", "web 1600", "tanto 20000", "uno 1"}));
  EXPECT_EQ(f.bad_lines,
            (std::vector<std::string>{
                "riga 5: zero 0", "riga 6: meno -5", "riga 7: mezzo 2.5", "riga 8: troppo 20001",
                "riga 11: ../fuori 300", "riga 12: a/b 300", "riga 13: a\\b 300", "riga 14: .. 300",
                "riga 15: punto. 300", "riga 16: due:punti 300", "riga 17: MINI 200",
                "riga 18: solo", "riga 19: tre parole 300", "riga 20: 300"}));
}

}  // namespace
}  // namespace vf
