#include "qz/system/util/numeric.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

using namespace QZSystem;

namespace {

TEST(Numeric, PowersOfTwoHaveOneBit) {
  for (int bit = 0; bit < 32; ++bit) EXPECT_TRUE(QZBitIsPowerOf2(1U << bit, false)) << bit;
  for (unsigned int value : {3U, 6U, 0x80000001U, ~0U}) EXPECT_FALSE(QZBitIsPowerOf2(value, true)) << value;
  EXPECT_TRUE(QZBitIsPowerOf2(0, true) && !QZBitIsPowerOf2(0, false));
  EXPECT_TRUE(QZInBitField(6, 12) && !QZInBitField(6, 9));
}

TEST(Numeric, FloatsCompareAbsolutelyOrRelatively) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  const std::tuple<float, float, float, bool> cases[] = {
      {-1000, -1000.5F, 0.001F, true}, {0, 0.001F, 0.001F, true}, {1, nan, 1, false},
      {1000, 1000.5F, 0.001F, true},   {-1, 1, 0.5F, false},      {1, 1, nan, false},
      {1000, 1002, 0.001F, false},     {nan, 1, 1, false},        {2, 2, 0, true}};
  for (const auto& [a, b, tolerance, same] : cases) {
    EXPECT_EQ(QZFloatCompare(a, b, tolerance), same) << a << ' ' << b;
    EXPECT_EQ(QZFloatCompare(double{a}, double{b}, double{tolerance}), same) << a << ' ' << b;
  }
}

// A surface with the term x * y meets its corners and is a line along each side: only the right order of the four
// corner values gives it back.
TEST(Numeric, BilinearInterpolationTakesDiagonalCornersFirst) {
  const auto surface = [](double x, double y) { return 2 + 3 * x - 5 * y + 7 * x * y; };
  for (const auto& [x, y] : {std::pair(1.0, 2.0), {2.5, 3.0}, {4.0, 8.0}, {5.0, 0.0}}) {
    EXPECT_DOUBLE_EQ(
        QZ2DLinearInterpolation(1, 2, 4, 8, surface(1, 2), surface(4, 8), surface(1, 8), surface(4, 2), x, y),
        surface(x, y));
  }
}

}  // namespace
