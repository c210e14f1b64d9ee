#include "qz/system/objects/grid_util.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

using namespace QZSystem;

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float Outside = -77.0F;

// A grid with random values of its own.
struct Sample {
  std::vector<float> values;
  QZFixedGrid<float> grid;

  Sample(const QZGridBase& geometry, unsigned int seed) : values(geometry.GetSize()), grid(geometry, values.data()) {
    std::mt19937 bits(seed);
    for (float& value : values) value = static_cast<float>(bits()) / 65536.0F - 30000.0F;
  }
};

// The sum of all points, each with the weight that its distance on the three axes gives it.
double naiveInterpolation(const QZFixedGrid<float>& grid, float x, float y, float z) {
  const unsigned int dims[3] = {grid.GetXDim(), grid.GetYDim(), grid.GetZDim()};
  const float offsets[3] = {x - grid.GetXMid(), y - grid.GetYMid(), z - grid.GetZMid()};
  const double spacing = static_cast<double>(grid.GetSpacing());
  double at[3];
  for (int axis = 0; axis < 3; ++axis) {
    at[axis] = static_cast<double>(offsets[axis]) / spacing + (dims[axis] - 1.0) / 2.0;
    if (at[axis] < 0.0 || at[axis] >= dims[axis] - 1.0) return static_cast<double>(Outside);
  }
  const auto weight = [&](int axis, unsigned int point) { return std::max(0.0, 1.0 - std::abs(at[axis] - point)); };
  double sum = 0.0;
  for (unsigned int k = 0; k < dims[2]; ++k)
    for (unsigned int j = 0; j < dims[1]; ++j)
      for (unsigned int i = 0; i < dims[0]; ++i)
        sum += weight(0, i) * weight(1, j) * weight(2, k) * static_cast<double>(grid.GetValue(i, j, k));
  return sum;
}

}  // namespace

TEST(GridInterpolation, OnALineOfThreePoints) {
  float values[] = {10.0F, 20.0F, 40.0F, 10.0F, 20.0F, 40.0F, 10.0F, 20.0F, 40.0F, 10.0F, 20.0F, 40.0F};
  const QZFixedGrid<float> grid(QZGridBase(3, 2, 2, 0.0F, 0.0F, 0.0F, 1.0F, ""), values);
  const float below = std::nextafter(-1.0F, -2.0F);
  const float underLast = std::nextafter(1.0F, 0.0F);
  const struct {
    float x, expected;
  } cases[] = {
      {-1.0F, 10.0F},   {-0.5F, 15.0F},   {0.0F, 20.0F},     {0.5F, 30.0F},       {underLast, 40.0F},   {1.0F, Outside},
      {below, Outside}, {NaN, Outside},   {-NaN, Outside},   {Infinity, Outside}, {-Infinity, Outside}, {1e9F, Outside},
      {3e9F, Outside},  {1e19F, Outside}, {-1e19F, Outside}, {3e38F, Outside},    {-3e38F, Outside},
  };
  for (const auto& each : cases) {
    EXPECT_FLOAT_EQ(QZFloatGridLinearInterpolate(grid, each.x, 0.0F, 0.0F, Outside), each.expected) << each.x;
  }
  for (float bad : {NaN, 0.5F, -0.75F, 1e30F}) {
    EXPECT_EQ(QZFloatGridLinearInterpolate(grid, 0.0F, bad, 0.0F, Outside), Outside) << bad;
    EXPECT_EQ(QZFloatGridLinearInterpolate(grid, 0.0F, 0.0F, bad, Outside), Outside) << bad;
  }
}

TEST(GridInterpolation, AgreesWithTheWeightedSumOfAllPoints) {
  const QZGridBase geometries[] = {
      QZGridBase(2, 2, 2, 0.0F, 0.0F, 0.0F, 1.0F, ""), QZGridBase(3, 4, 5, 1.0F, -2.0F, 3.0F, 0.5F, ""),
      QZGridBase(7, 2, 3, 100.0F, 0.1F, -9.0F, 0.3F, ""), QZGridBase(1, 5, 5, 0.0F, 0.0F, 0.0F, 1.0F, "")};
  std::mt19937 bits(17);
  int inside = 0;
  for (const QZGridBase& geometry : geometries) {
    const Sample sample(geometry, 18);
    for (int i = 0; i < 3000; ++i) {
      const auto draw = [&](float low, float high) {
        return low + (high - low) * static_cast<float>(bits()) / 4294967296.0F;
      };
      const float x = draw(geometry.GetXMin(), geometry.GetXMax());
      const float y = draw(geometry.GetYMin(), geometry.GetYMax());
      const float z = draw(geometry.GetZMin(), geometry.GetZMax());
      const float got = QZFloatGridLinearInterpolate(sample.grid, x, y, z, Outside);
      ASSERT_NEAR(static_cast<double>(got), naiveInterpolation(sample.grid, x, y, z), 0.02)
          << x << ' ' << y << ' ' << z;
      if (got != Outside) ++inside;
    }
  }
  EXPECT_GT(inside, 1000);
}

TEST(GridInterpolation, AGeometryWithoutALatticeHasNothingInside) {
  float value = 1.0F;
  const QZGridBase geometries[] = {QZGridBase(), QZGridBase(0, 5, 5, 0.0F, 0.0F, 0.0F, 1.0F, ""),
                                   QZGridBase(1, 1, 1, NaN, 0.0F, 0.0F, 0.0F, ""),
                                   QZGridBase(1, 1, 1, 0.0F, 0.0F, 0.0F, NaN, "")};
  for (const QZGridBase& geometry : geometries) {
    const QZFixedGrid<float> grid(geometry, &value);
    EXPECT_EQ(QZFloatGridLinearInterpolate(grid, 0.0F, 0.0F, 0.0F, Outside), Outside);
  }
}

TEST(GridBoundary, IsZeroAndTheRestStays) {
  for (unsigned int x = 1; x <= 4; ++x) {
    for (unsigned int y = 1; y <= 4; ++y) {
      for (unsigned int z = 1; z <= 4; ++z) {
        Sample sample(QZGridBase(x, y, z, 0.0F, 0.0F, 0.0F, 1.0F, ""), 5);
        const Sample before(QZGridBase(x, y, z, 0.0F, 0.0F, 0.0F, 1.0F, ""), 5);
        EXPECT_TRUE(QZZeroFloatGridBoundary(sample.grid));
        for (unsigned int k = 0; k < z; ++k)
          for (unsigned int j = 0; j < y; ++j)
            for (unsigned int i = 0; i < x; ++i) {
              const bool border = i == 0 || i == x - 1 || j == 0 || j == y - 1 || k == 0 || k == z - 1;
              ASSERT_EQ(sample.grid.GetValue(i, j, k), border ? 0.0F : before.grid.GetValue(i, j, k))
                  << x << ' ' << y << ' ' << z << " at " << i << ' ' << j << ' ' << k;
            }
      }
    }
  }
}

TEST(GridCenterAndExtents, GivesWhatHasBeenSet) {
  using Numbers = std::array<float, 6>;
  const auto ask = [](const QZGridBase& grid, bool hasCenter, bool hasExtents) {
    Numbers numbers = {1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F};
    QZGetCenterAndExtents(grid, hasCenter ? numbers.data() : nullptr, hasExtents ? numbers.data() + 3 : nullptr);
    return numbers;
  };
  const Numbers untouched = {1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F};
  QZGridBase grid;
  grid.SetDim(2, 3, 4);
  EXPECT_EQ(ask(grid, true, true), untouched);
  grid.SetSpacing(0.5F);
  EXPECT_EQ(ask(grid, true, true), (Numbers{1.0F, 2.0F, 3.0F, 1.0F, 1.5F, 2.0F}));
  grid.SetXMid(7.0F);
  grid.SetYMid(8.0F);
  EXPECT_EQ(ask(grid, true, true), (Numbers{1.0F, 2.0F, 3.0F, 1.0F, 1.5F, 2.0F}));
  grid.SetZMid(9.0F);
  EXPECT_EQ(ask(grid, true, true), (Numbers{7.0F, 8.0F, 9.0F, 1.0F, 1.5F, 2.0F}));
  EXPECT_EQ(ask(grid, false, true), untouched);
  EXPECT_EQ(ask(grid, true, false), untouched);
}
