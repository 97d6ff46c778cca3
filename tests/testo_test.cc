#include "shell/testo.h"

#include <gtest/gtest.h>

namespace vf {
namespace {

TEST(Testo, LeadingNumberOfAControlsText) {
  EXPECT_EQ(NumeroIniziale("12abc"), 12);
  EXPECT_EQ(NumeroIniziale("  9"), 9);
  EXPECT_EQ(NumeroIniziale("2.5"), 2.5);
  EXPECT_EQ(NumeroIniziale("-3x"), -3);
  EXPECT_EQ(NumeroIniziale(".5"), 0.5);
  EXPECT_EQ(NumeroIniziale("1e3"), 1000);
  EXPECT_EQ(NumeroIniziale("9e"), 9);
  EXPECT_EQ(NumeroIniziale("abc"), 0);
  EXPECT_EQ(NumeroIniziale(""), 0);
  EXPECT_EQ(NumeroIniziale("-"), 0);
  EXPECT_EQ(NumeroIniziale("."), 0);
  // Out of range gives no infinity that a count could not hold.
  EXPECT_EQ(NumeroIniziale("1e999"), 0);
}

TEST(Testo, NumberFormsAndRounding) {
  EXPECT_EQ(Cifre(1, 4), "0001");
  EXPECT_EQ(Cifre(12, 3), "012");
  EXPECT_EQ(Cifre(1000, 3), "000");
  EXPECT_EQ(Cifre(10000, 4), "0000");
  EXPECT_EQ(Cifre(0, 3), "000");
  EXPECT_EQ(ConBlank(1), " 1");
  EXPECT_EQ(ConBlank(-1), "-1");
  EXPECT_EQ(Decimale(18), "18");
  EXPECT_EQ(Decimale(2.5), "2.5");
  EXPECT_EQ(ArrotondaPari(2.5), 2);
  EXPECT_EQ(ArrotondaPari(3.5), 4);
  EXPECT_EQ(ArrotondaPari(1.4), 1);
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(Intero(1e300), Intero(9.3e18));
}

}  // namespace
}  // namespace vf
