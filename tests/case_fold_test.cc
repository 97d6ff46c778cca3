#include "platform/case_fold.h"

#include <gtest/gtest.h>

namespace vf {
namespace {

TEST(CaseFoldTest, AsciiAndLatin1Letters) {
  EXPECT_EQ(ToUpper("Città.jpg"), "CITTÀ.JPG");
  EXPECT_EQ(ToLower("ÀÉÌÒÙ ÞÖ"), "àéìòù þö");
  // × ÷ ß ÿ have no partner in the same range and stay as they are.
  EXPECT_EQ(ToUpper("×÷ßÿ"), "×÷ßÿ");
  EXPECT_EQ(ToLower("×÷ßÿ"), "×÷ßÿ");
  EXPECT_TRUE(EqualIgnoringCase("Foto À.JPG", "foto à.jpg"));
  EXPECT_FALSE(EqualIgnoringCase("a", "ab"));
}

TEST(CaseFoldTest, StrayLeadByteHidesNothing) {
  // A lone C3 byte is not a letter and must not swallow the byte after it.
  EXPECT_EQ(ToLower("\xC3\x41\x42"), "\xC3\x61\x62");  // C3 A B
  EXPECT_EQ(ToUpper("\xC3\xC3\xA0"), "\xC3\xC3\x80");
  EXPECT_EQ(ToUpper("end\xC3"), "END\xC3");
}

}  // namespace
}  // namespace vf
