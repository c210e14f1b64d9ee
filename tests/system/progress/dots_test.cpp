#include "qz/system/progress/dots.h"

#include <vector>

#include "tests/system/progress/printed.h"

using namespace QZSystem;

TEST(Dots, ADotForASmallStepAndALineForABigOne) {
  const auto printed = [](unsigned int bigstep, unsigned int smallstep, const std::vector<unsigned int>& steps) {
    return Printed([&] {
      QZDots dots(bigstep, smallstep, "items", "seen");
      for (const unsigned int step : steps) dots.Update(step);
      dots.Total();
    });
  };
  EXPECT_EQ(printed(4, 2, {1, 1, 0, 1, 1, 1}), ".. 4 items seen.\n\nTotal: 5 items seen.\n");
  EXPECT_EQ(printed(4, 3, {9}), ".. 4 items seen.\n.\nTotal: 9 items seen.\n");
  EXPECT_EQ(printed(2, 5, {4, 6}), ". 2 items seen.\n. 4 items seen.\n\nTotal: 10 items seen.\n");
  EXPECT_EQ(printed(0, 5, {20}), "\nTotal: 20 items seen.\n");
  EXPECT_EQ(printed(5, 0, {20}), "\nTotal: 20 items seen.\n");
  // Sums beyond 32 bits.
  EXPECT_EQ(printed(4000000000, 3000000000, {2999999999, 4000000000, 1}),
            ".. 4000000000 items seen.\n\nTotal: 2705032704 items seen.\n");
}

TEST(Dots, AMarkStandsInPlaceOfADot) {
  QZDots dots(4, 1, "files", "read");
  EXPECT_EQ(Printed([&] {
              dots.Update('x', 1);
              dots.Update(2);
              dots.Update('!', 2);
              dots.Total();
              dots.Total();
            }),
            "x..! 4 files read.\n!\nTotal: 5 files read.\n\nTotal: 5 files read.\n");
}
