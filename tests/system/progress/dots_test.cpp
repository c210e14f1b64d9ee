#include "qz/system/progress/dots.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace QZSystem;

namespace {

std::string Printed(const std::function<void()>& work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

// What dots print of these updates and of the total.
std::string Of(unsigned int bigstep, unsigned int smallstep, const std::vector<unsigned int>& steps) {
  return Printed([&] {
    QZDots dots(bigstep, smallstep, "items", "seen");
    for (const unsigned int step : steps) dots.Update(step);
    dots.Total();
  });
}

}  // namespace

TEST(Dots, ADotForASmallStepAndALineForABigOne) {
  const struct {
    unsigned int bigstep, smallstep;
    std::vector<unsigned int> steps;
    const char* printed;
  } cases[] = {
      {1000, 100, {2500}, ".......... 1000 items seen.\n.......... 2000 items seen.\n.....\nTotal: 2500 items seen.\n"},
      {4, 2, {1, 1, 0, 1, 1, 1}, ".. 4 items seen.\n\nTotal: 5 items seen.\n"},
      {4, 3, {9}, ".. 4 items seen.\n.\nTotal: 9 items seen.\n"},
      {2, 5, {4, 6}, ". 2 items seen.\n. 4 items seen.\n\nTotal: 10 items seen.\n"},
      {0, 5, {20}, "\nTotal: 20 items seen.\n"},
      {5, 0, {20}, "\nTotal: 20 items seen.\n"},
      {9, 5, {}, "\nTotal: 0 items seen.\n"},
      // Sums beyond 32 bits.
      {4000000000,
       3000000000,
       {2999999999, 4000000000, 1},
       ".. 4000000000 items seen.\n\nTotal: 2705032704 items seen.\n"},
  };
  for (const auto& each : cases) EXPECT_EQ(Of(each.bigstep, each.smallstep, each.steps), each.printed);
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
