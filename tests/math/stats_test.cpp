#include "qz/math/stats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/system/cli/messages.h"

using namespace QZMath;
using QZSystem::Messages;

namespace {

TEST(ChiSquare, AgreesWithTablesComputedByHand) {
  struct Case {
    std::vector<unsigned int> counts;
    unsigned int rows;
    unsigned int cols;
    double expected;
  };
  const Case cases[] = {
      {{10, 20, 30, 40}, 2, 2, 50.0 / 63},
      {{10, 20, 20, 40}, 2, 2, 0},
      {{5, 0, 0, 5}, 2, 2, 10},
      {{1, 2, 3, 3, 2, 1}, 2, 3, 2},
      {{7, 9, 12}, 1, 3, 0},
      {{12, 6, 8, 10, 4, 20}, 3, 2, 295.0 / 27},
      {{}, 0, 4, 0},
      {{}, 3, 0, 0},
      {{}, 4294967295, 0, 0},
      {{}, 0, 4294967295, 0},
  };
  for (const Case& each : cases) {
    EXPECT_NEAR(QZChiSquare(each.counts.data(), each.rows, each.cols), each.expected, 1e-13)
        << each.rows << " by " << each.cols << ", expected " << each.expected;
  }
}

TEST(ChiSquare, IsNoNumberForAnEmptyRowOrColumn) {
  const unsigned int column[4] = {3, 0, 5, 0};
  const unsigned int row[4] = {0, 0, 5, 1};
  EXPECT_TRUE(std::isnan(QZChiSquare(column, 2, 2)));
  EXPECT_TRUE(std::isnan(QZChiSquare(row, 2, 2)));
}

// Sums of 32 bits wrap: 2^31 counted twice in a row are none.
TEST(ChiSquare, SumsIn32Bits) {
  const unsigned int counts[4] = {0x80000000U, 0x80000000U, 1, 1};
  EXPECT_TRUE(std::isinf(QZChiSquare(counts, 2, 2)));
}

TEST(ChiSquare, TakesTablesBeyondTheStack) {
  std::vector<unsigned int> counts(2UL * 200000, 3);
  EXPECT_NEAR(QZChiSquare(counts.data(), 2, 200000), 0, 1e-6);
  EXPECT_NEAR(QZChiSquare(counts.data(), 200000, 2), 0, 1e-6);
}

TEST(Maxp, NamesTheStrongestLevelReached) {
  struct Case {
    double chi;
    unsigned int dof;
    float expected;
  };
  const Case cases[] = {
      {0, 1, 0},          {2.705, 1, 0},      {2.7061, 1, 0.1F},         {static_cast<double>(3.841F), 1, 0.05F},
      {3.8409, 1, 0.1F},  {5.03, 1, 0.025F},  {6.64, 1, 0.01F},          {7.88, 1, 0.005F},
      {10.82, 1, 0.005F}, {10.83, 1, 0.001F}, {std::nan(""), 1, 0.001F}, {-1.1, 0, 0},
      {-1, 0, 0.001F},    {5, 0, 0.001F}};
  for (const Case& each : cases) {
    EXPECT_EQ(QZMaxp(each.chi, each.dof), static_cast<double>(each.expected)) << each.chi << ' ' << each.dof;
  }
  Messages messages;
  EXPECT_EQ(QZMaxp(100, 2), 0);
  EXPECT_EQ(messages.Take(), "Warning: To Many Degrees of Freedom\n");
}

TEST(Phi, DividesByCategoriesLessOne) {
  EXPECT_DOUBLE_EQ(QZPhi(8, 3, 4), 1);
  EXPECT_DOUBLE_EQ(QZPhi(4, 1, 100), 0.2);
  EXPECT_DOUBLE_EQ(QZPhi(50.0 / 63, 2, 2, 100), std::sqrt(50.0 / 6300));
  EXPECT_DOUBLE_EQ(QZPhi(12, 5, 4, 4), 1);
  EXPECT_DOUBLE_EQ(QZPhi(12, 4, 5, 4), 1);
  EXPECT_EQ(QZPhi(3, 1, 1, 100), 0);
  EXPECT_EQ(QZPhi(3, 0, 9, 100), 0);
  // The product of 32 bits: 2 * 2^31 is 0, -1 * 2 is 2^32 - 2, and 16777217 is no float.
  EXPECT_TRUE(std::isinf(QZPhi(1, 3, 0x80000000U)));
  EXPECT_DOUBLE_EQ(QZPhi(1, 0, 2), std::sqrt(1 / 4294967294.0));
  EXPECT_DOUBLE_EQ(QZPhi(1, 2, 16777217), std::sqrt(1 / 16777217.0));
  EXPECT_DOUBLE_EQ(QZPhi(1, 2, 2, 16777217), std::sqrt(1 / 16777216.0));
}

TEST(ErrorFunction, IsAsAccurateAsItSays) {
  struct Range {
    double low;
    double high;
    double most;
  };
  for (const Range& range : {Range{-7, 0.5, 5e-16}, Range{0.5, 4, 3e-15}, Range{4, 26, 2e-13}}) {
    double greatest = 0;
    for (int i = 0; i < 300000; ++i) {
      const double x = range.low + (range.high - range.low) * i / 300000;
      const long double exact = std::erfc(static_cast<long double>(x));
      greatest =
          std::max(greatest, static_cast<double>(std::abs((static_cast<long double>(QZerfc(x)) - exact) / exact)));
      ASSERT_NEAR(QZerf(x), std::erf(x), 5e-16) << x;
    }
    EXPECT_LT(greatest, range.most) << range.low;
    EXPECT_GT(greatest, range.most / 4) << range.low << ": the documentation says too much";
  }
}

TEST(ErrorFunction, KnowsTheEnds) {
  EXPECT_EQ(QZerfc(0), 1);
  EXPECT_EQ(QZerfc(-0.0), 1);
  EXPECT_EQ(QZerf(0), 0);
  EXPECT_EQ(QZerfc(-1), 2 - QZerfc(1));
  EXPECT_EQ(QZerfc(-0.25), 2 - QZerfc(0.25));
  EXPECT_EQ(QZerfc(HUGE_VAL), 0);
  EXPECT_EQ(QZerfc(-HUGE_VAL), 2);
  EXPECT_EQ(QZerfc(1e200), 0);
  EXPECT_EQ(QZerfc(30), 0);
  EXPECT_NEAR(QZerfc(27), std::erfc(27), 1e-322);
  EXPECT_TRUE(std::isnan(QZerfc(std::nan(""))));
}

TEST(Log2, IsThePositionOfTheHighestBit) {
  EXPECT_EQ(QZLog2(0), -1);
  for (int bit = 0; bit < 64; ++bit) {
    const unsigned long power = 1UL << bit;
    EXPECT_EQ(QZLog2(power), bit);
    EXPECT_EQ(QZLog2(power | (power - 1)), bit);
  }
}

TEST(HealPix, KnowsSixCounts) {
  const unsigned int cases[][2] = {{0, 18},  {18, 18},  {19, 32},   {32, 32},   {33, 45},   {45, 45},   {46, 72},
                                   {72, 72}, {73, 112}, {112, 112}, {113, 160}, {160, 160}, {161, 160}, {1000, 160}};
  for (const auto& [count, expected] : cases) EXPECT_EQ(QZNextHealPix(count), expected) << count;
  Messages messages;
  double untouched[4] = {7, 7, 7, 7};
  EXPECT_FALSE(QZGetHealPix(19, untouched));
  EXPECT_EQ(messages.Take(), "Warning: QZGetHealPix: Bad number of points: 19\n");
  EXPECT_EQ(untouched[0], 7);
}

// The product of the tilt of the z axis onto a direction and the turn about it.
std::vector<double> orientation(double z, double phi, double psi) {
  const double theta = std::acos(z);
  const double a[4] = {std::cos(theta / 2), -std::sin(phi) * std::sin(theta / 2), std::cos(phi) * std::sin(theta / 2),
                       0};
  const double b[4] = {std::cos(psi / 2), 0, 0, std::sin(psi / 2)};
  return {a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3], a[0] * b[1] + a[1] * b[0] + a[2] * b[3] - a[3] * b[2],
          a[0] * b[2] - a[1] * b[3] + a[2] * b[0] + a[3] * b[1], a[0] * b[3] + a[1] * b[2] - a[2] * b[1] + a[3] * b[0]};
}

TEST(HealPix, OrdersTurnsThenRingsThenPoints) {
  constexpr double pi = 3.141592653589793;
  struct Case {
    unsigned int count;
    std::size_t number;
    double z;
    double phi;
    double psi;
  };
  const Case cases[] = {{18, 0, 0.5, pi / 3, pi / 3},
                        {18, 6, 0.5, pi / 3, pi},
                        {18, 2, 0.5, 5 * pi / 3, pi / 3},
                        {18, 3, -0.5, 0, pi / 3},
                        {18, 4, -0.5, 2 * pi / 3, pi / 3},
                        {45, 8, -2.0 / 3, 5 * pi / 3, pi / 5},
                        {45, 3, 0, 0, pi / 5},
                        {160, 159, -0.75, 8 * pi / 5, 15 * pi / 8}};
  for (const Case& each : cases) {
    std::vector<double> quaternions(4UL * each.count);
    ASSERT_TRUE(QZGetHealPix(each.count, quaternions.data()));
    const std::vector<double> expected = orientation(each.z, each.phi, each.psi);
    for (std::size_t k = 0; k < 4; ++k) {
      EXPECT_NEAR(quaternions[4 * each.number + k], expected[k], 2e-16) << each.count << ' ' << each.number << ' ' << k;
    }
  }
}

TEST(HealPix, CoversOrientationsEvenly) {
  for (unsigned int count : {18U, 32U, 45U, 72U, 112U, 160U}) {
    std::vector<double> q(4UL * count);
    ASSERT_TRUE(QZGetHealPix(count, q.data()));
    double least = 10;
    double greatest = 0;
    for (std::size_t i = 0; i < count; ++i) {
      double nearest = 10;
      for (std::size_t j = 0; j < count; ++j) {
        double dot = 0;
        for (std::size_t k = 0; k < 4; ++k) dot += q[4 * i + k] * q[4 * j + k];
        if (i == j) {
          EXPECT_NEAR(dot, 1, 1e-15) << count << ' ' << i;
          continue;
        }
        // q and -q are one orientation.
        nearest = std::min(nearest, 2 * std::acos(std::min(1.0, std::abs(dot))));
      }
      least = std::min(least, nearest);
      greatest = std::max(greatest, nearest);
    }
    EXPECT_LE(greatest, 1.05 * least) << count;
  }
}

}  // namespace
