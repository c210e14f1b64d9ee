#include "qz/system/util/numeric.h"

#include <gtest/gtest.h>

#include <limits>

using namespace QZSystem;

namespace {

TEST(Numeric, PowersOfTwoHaveOneBit) {
  for (int bit = 0; bit < 32; ++bit) EXPECT_TRUE(QZBitIsPowerOf2(1U << bit, false)) << bit;
  for (unsigned int value : {3U, 6U, 0x80000001U, ~0U}) EXPECT_FALSE(QZBitIsPowerOf2(value, true)) << value;
  EXPECT_TRUE(QZBitIsPowerOf2(0, true));
  EXPECT_FALSE(QZBitIsPowerOf2(0, false));
  EXPECT_TRUE(QZInBitField(6, 12));
  EXPECT_FALSE(QZInBitField(6, 9));
}

TEST(Numeric, FloatsCompareAbsolutelyOrRelatively) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double a, b, tolerance;
    bool same;
  } cases[] = {
      {1000.0, 1000.5, 0.001, true},  // relative alone
      {0.0, 0.001, 0.001, true},      // absolute alone
      {-1000.0, -1000.5, 0.001, true}, {1000.0, 1002.0, 0.001, false}, {-1.0, 1.0, 0.5, false}, {2.0, 2.0, 0.0, true},
      {nan, 1.0, 1.0, false},          {1.0, nan, 1.0, false},         {1.0, 1.0, nan, false},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(QZFloatCompare(each.a, each.b, each.tolerance), each.same) << each.a << ' ' << each.b;
    EXPECT_EQ(
        QZFloatCompare(static_cast<float>(each.a), static_cast<float>(each.b), static_cast<float>(each.tolerance)),
        each.same)
        << each.a << ' ' << each.b;
  }
}

// A surface with the term x * y meets its corners and is a line along each side: only the right order of the four
// corner values gives it back.
TEST(Numeric, BilinearInterpolationTakesDiagonalCornersFirst) {
  const auto surface = [](double x, double y) { return 2 + 3 * x - 5 * y + 7 * x * y; };
  const double x1 = 1, y1 = 2, x2 = 4, y2 = 8;
  for (const double x : {1.0, 2.5, 4.0, 5.0}) {
    for (const double y : {2.0, 3.0, 8.0, 0.0}) {
      EXPECT_DOUBLE_EQ(QZ2DLinearInterpolation(x1, y1, x2, y2, surface(x1, y1), surface(x2, y2), surface(x1, y2),
                                               surface(x2, y1), x, y),
                       surface(x, y))
          << x << ' ' << y;
    }
  }
}

}  // namespace
