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

  explicit Sample(const QZGridBase& geometry) : values(geometry.GetSize()), grid(geometry, values.data()) {
    std::mt19937 bits(18);
    for (float& value : values) value = static_cast<float>(bits()) / 65536.0F - 30000.0F;
  }

  template <class Visit>
  void ForEachPoint(Visit visit) const {
    for (unsigned int k = 0; k < grid.GetZDim(); ++k)
      for (unsigned int j = 0; j < grid.GetYDim(); ++j)
        for (unsigned int i = 0; i < grid.GetXDim(); ++i) visit(std::array{i, j, k}, grid.GetValue(i, j, k));
  }
};

// The sum of all points, each with the weight that its distance on the three axes gives it.
double naiveInterpolation(const Sample& sample, const std::array<float, 3>& place) {
  const QZGridBase& grid = sample.grid;
  const unsigned int dims[3] = {grid.GetXDim(), grid.GetYDim(), grid.GetZDim()};
  const float centre[3] = {grid.GetXMid(), grid.GetYMid(), grid.GetZMid()};
  double at[3], sum = 0.0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    at[axis] = static_cast<double>(place[axis] - centre[axis]) / static_cast<double>(grid.GetSpacing());
    at[axis] += (dims[axis] - 1.0) / 2.0;
    if (at[axis] < 0.0 || at[axis] >= dims[axis] - 1.0) return static_cast<double>(Outside);
  }
  sample.ForEachPoint([&](const auto& point, float value) {
    double weight = 1.0;
    for (std::size_t axis = 0; axis < 3; ++axis) weight *= std::max(0.0, 1.0 - std::abs(at[axis] - point[axis]));
    sum += weight * static_cast<double>(value);
  });
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
  for (const QZGridBase& none :
       {QZGridBase(), QZGridBase(0, 5, 5, 0.0F, 0.0F, 0.0F, 1.0F, ""), QZGridBase(1, 1, 1, 0.0F, 0.0F, 0.0F, NaN, "")})
    EXPECT_EQ(QZFloatGridLinearInterpolate({none, values}, 0.0F, 0.0F, 0.0F, Outside), Outside) << "without a lattice";
}

TEST(GridInterpolation, AgreesWithTheWeightedSumOfAllPoints) {
  std::mt19937 bits(17);
  int inside = 0;
  for (const QZGridBase& geometry :
       {QZGridBase(2, 2, 2, 0.0F, 0.0F, 0.0F, 1.0F, ""), QZGridBase(3, 4, 5, 1.0F, -2.0F, 3.0F, 0.5F, ""),
        QZGridBase(7, 2, 3, 100.0F, 0.1F, -9.0F, 0.3F, ""), QZGridBase(1, 5, 5, 0.0F, 0.0F, 0.0F, 1.0F, "")}) {
    const Sample sample(geometry);
    const float low[3] = {geometry.GetXMin(), geometry.GetYMin(), geometry.GetZMin()};
    const unsigned int dims[3] = {geometry.GetXDim(), geometry.GetYDim(), geometry.GetZDim()};
    for (int i = 0; i < 3000; ++i) {
      std::array<float, 3> place;
      for (std::size_t axis = 0; axis < 3; ++axis)
        place[axis] = low[axis] + geometry.GetSpacing() *
                                      static_cast<float>(dims[axis] * (static_cast<double>(bits()) / 4294967296.0));
      const float got = QZFloatGridLinearInterpolate(sample.grid, place[0], place[1], place[2], Outside);
      ASSERT_NEAR(static_cast<double>(got), naiveInterpolation(sample, place), 0.02) << testing::PrintToString(place);
      if (got != Outside) ++inside;
    }
  }
  EXPECT_GT(inside, 1000);
}

TEST(GridBoundary, IsZeroAndTheRestStays) {
  for (unsigned int shape = 0; shape < 64; ++shape) {
    const std::array last = {shape % 4, shape / 4 % 4, shape / 16};
    Sample sample(QZGridBase(last[0] + 1, last[1] + 1, last[2] + 1, 0.0F, 0.0F, 0.0F, 1.0F, ""));
    const Sample before(sample.grid);
    EXPECT_TRUE(QZZeroFloatGridBoundary(sample.grid));
    before.ForEachPoint([&](const auto& point, float value) {
      bool border = false;
      for (std::size_t axis = 0; axis < 3; ++axis) border = border || point[axis] == 0 || point[axis] == last[axis];
      EXPECT_EQ(sample.grid.GetValue(point[0], point[1], point[2]), border ? 0.0F : value)
          << testing::PrintToString(last) << " at " << testing::PrintToString(point);
    });
  }
}

TEST(GridCenterAndExtents, GivesWhatHasBeenSet) {
  QZGridBase grid;
  grid.SetDim(2, 3, 4);
  const auto ask = [&grid](bool hasCenter = true, bool hasExtents = true) {
    float numbers[] = {1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F};
    QZGetCenterAndExtents(grid, hasCenter ? numbers : nullptr, hasExtents ? numbers + 3 : nullptr);
    return testing::PrintToString(numbers);
  };
  EXPECT_EQ(ask(), "{ 1, 2, 3, 4, 5, 6 }");
  grid.SetSpacing(0.5F);
  grid.SetXMid(7.0F);
  grid.SetYMid(8.0F);
  EXPECT_EQ(ask(), "{ 1, 2, 3, 1, 1.5, 2 }");
  grid.SetZMid(9.0F);
  EXPECT_EQ(ask(), "{ 7, 8, 9, 1, 1.5, 2 }");
  EXPECT_EQ(ask(false, true) + ask(true, false), "{ 1, 2, 3, 4, 5, 6 }{ 1, 2, 3, 4, 5, 6 }");
}
