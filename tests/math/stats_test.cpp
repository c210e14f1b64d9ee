#include "qz/math/stats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/system/cli/messages.h"

using namespace QZMath;
using QZSystem::Messages;

namespace {

TEST(ChiSquare, AgreesWithTablesComputedByHand) {
  using Counts = std::vector<unsigned int>;
  constexpr unsigned int many = 4294967295;
  const std::tuple<Counts, unsigned int, unsigned int, double> cases[] = {
      {{12, 6, 8, 10, 4, 20}, 3, 2, 295.0 / 27}, {{1, 2, 3, 3, 2, 1}, 2, 3, 2}, {{}, many, 0, 0},
      {{10, 20, 30, 40}, 2, 2, 50.0 / 63},       {{10, 20, 20, 40}, 2, 2, 0},   {{}, 0, many, 0},
      {Counts(400000, 3), 2, 200000, 0},         {{5, 0, 0, 5}, 2, 2, 10},      {{}, 0, 4, 0},
      {Counts(400000, 3), 200000, 2, 0},         {{7, 9, 12}, 1, 3, 0},         {{}, 3, 0, 0}};
  for (const auto& [counts, rows, columns, expected] : cases) {
    EXPECT_NEAR(QZChiSquare(counts.data(), rows, columns), expected, counts.size() < 9 ? 1e-13 : 1e-6)
        << rows << " by " << columns << ", expected " << expected;
  }
  EXPECT_TRUE(std::isnan(QZChiSquare(Counts{3, 0, 5, 0}.data(), 2, 2))) << "an empty column";
  EXPECT_TRUE(std::isnan(QZChiSquare(Counts{0, 0, 5, 1}.data(), 2, 2))) << "an empty row";
  EXPECT_TRUE(std::isinf(QZChiSquare(Counts{0x80000000U, 0x80000000U, 1, 1}.data(), 2, 2))) << "sums of 32 bits wrap";
}

TEST(Maxp, NamesTheStrongestLevelReached) {
  const std::tuple<double, unsigned int, float> cases[] = {
      {std::nan(""), 1, 0.001F}, {7.88, 1, 0.005F},  {3.841F, 1, 0.05F}, {6.64, 1, 0.01F},  {10.82, 1, 0.005F},
      {2.705, 1, 0.F},           {10.83, 1, 0.001F}, {-1, 0, 0.001F},    {2.7061, 1, 0.1F}, {-1.1, 0, 0.F},
      {3.8409, 1, 0.1F},         {5, 0, 0.001F},     {5.03, 1, 0.025F},  {0, 1, 0.F}};
  for (const auto& [chi, dof, expected] : cases) {
    EXPECT_EQ(QZMaxp(chi, dof), static_cast<double>(expected)) << chi << ' ' << dof;
  }
  Messages messages;
  EXPECT_EQ(QZMaxp(100, 2), 0);
  EXPECT_EQ(messages.Take(), "Warning: To Many Degrees of Freedom\n");
}

TEST(Phi, DividesByCategoriesLessOne) {
  EXPECT_DOUBLE_EQ(QZPhi(8, 3, 4), 1);
  EXPECT_DOUBLE_EQ(QZPhi(4, 1, 100), 0.2);
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
  for (const auto& [low, high, most] : {std::tuple(-7.0, 0.5, 5e-16), {0.5, 4.0, 3e-15}, {4.0, 26.0, 2e-13}}) {
    long double greatest = 0;
    for (int i = 0; i < 300000; ++i) {
      const double x = low + (high - low) * i / 300000;
      const long double exact = std::erfc(static_cast<long double>(x));
      greatest = std::max(greatest, std::abs((static_cast<long double>(QZerfc(x)) - exact) / exact));
      ASSERT_NEAR(QZerf(x), std::erf(x), 5e-16) << x;
    }
    EXPECT_LT(greatest, most) << low;
    EXPECT_GT(greatest, most / 4) << low << ": the documentation says too much";
  }
  const std::pair<double, double> ends[] = {{0, 1}, {-0.0, 1}, {HUGE_VAL, 0}, {-HUGE_VAL, 2}, {1e200, 0}, {30, 0}};
  for (const auto& [x, expected] : ends) EXPECT_EQ(QZerfc(x), expected) << x;
  for (const double x : {1.0, 0.25}) EXPECT_EQ(QZerfc(-x), 2 - QZerfc(x));
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
  const unsigned int counts[] = {18, 32, 45, 72, 112, 160};
  for (unsigned int count = 0; count < 200; ++count) {
    const unsigned int* const next = std::lower_bound(std::begin(counts), std::end(counts), count);
    EXPECT_EQ(QZNextHealPix(count), next == std::end(counts) ? 160 : *next) << count;
  }
  Messages messages;
  double untouched[4] = {7, 7, 7, 7};
  EXPECT_FALSE(QZGetHealPix(19, untouched));
  EXPECT_EQ(messages.Take(), "Warning: QZGetHealPix: Bad number of points: 19\n");
  EXPECT_EQ(untouched[0], 7);
}

// The tilt of the z axis onto the direction, then the turn by `psi` about it.
TEST(HealPix, OrdersTurnsThenRingsThenPoints) {
  constexpr double pi = 3.141592653589793;
  const std::tuple<unsigned int, std::size_t, double, double, double> cases[] = {
      {160, 159, -0.75, 8 * pi / 5, 15 * pi / 8}, {18, 2, 0.5, 5 * pi / 3, pi / 3}, {18, 3, -0.5, 0, pi / 3},
      {45, 8, -2. / 3, 5 * pi / 3, pi / 5},       {18, 0, 0.5, pi / 3, pi / 3},     {45, 3, 0, 0, pi / 5},
      {18, 4, -0.5, 2 * pi / 3, pi / 3},          {18, 6, 0.5, pi / 3, pi}};
  for (const auto& [count, number, z, phi, psi] : cases) {
    std::vector<double> quaternions(4UL * count);
    ASSERT_TRUE(QZGetHealPix(count, quaternions.data()));
    const double half = std::acos(z) / 2;
    const double expected[4] = {std::cos(half) * std::cos(psi / 2), std::sin(half) * std::sin(psi / 2 - phi),
                                std::sin(half) * std::cos(psi / 2 - phi), std::cos(half) * std::sin(psi / 2)};
    for (std::size_t k = 0; k < 4; ++k) {
      EXPECT_NEAR(quaternions[4 * number + k], expected[k], 3e-16) << count << ' ' << number << ' ' << k;
    }
  }
}

TEST(HealPix, CoversOrientationsEvenly) {
  for (unsigned int count : {18U, 32U, 45U, 72U, 112U, 160U}) {
    std::vector<double> q(4UL * count);
    ASSERT_TRUE(QZGetHealPix(count, q.data()));
    std::vector<double> nearest(count, 10);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = 0; j < count; ++j) {
        double dot = 0;
        for (std::size_t k = 0; k < 4; ++k) dot += q[4 * i + k] * q[4 * j + k];
        if (i == j) {
          EXPECT_NEAR(dot, 1, 1e-15) << count << ' ' << i;
        } else {  // q and -q are one orientation
          nearest[i] = std::min(nearest[i], 2 * std::acos(std::min(1.0, std::abs(dot))));
        }
      }
    }
    const auto [least, greatest] = std::minmax_element(nearest.begin(), nearest.end());
    EXPECT_LE(*greatest, 1.05 * *least) << count;
  }
}

}  // namespace
