#include "qz/system/objects/grid_util.h"

#include <algorithm>

namespace QZSystem {

namespace {

// Where a coordinate lies on an axis of the lattice: between a point and the next one.
struct Place {
  bool inside;
  std::size_t point;
  double fraction;
};

// The comparisons are such that a not-a-number is outside, and that no number goes to an integer which can't hold it.
inline Place placeOn(float coordinate, float mid, double pointsPerLength, unsigned int points) {
  const double last = static_cast<double>(points) - 1.0;
  const double at = static_cast<double>(coordinate - mid) * pointsPerLength + last * 0.5;
  if (!(at >= 0.0 && at < last)) return {false, 0, 0.0};
  const long point = static_cast<long>(at);
  return {true, static_cast<std::size_t>(point), at - static_cast<double>(point)};
}

inline double between(double a, double b, double fraction) { return a + (b - a) * fraction; }

inline double between(const float* pair, double fraction) {
  return between(static_cast<double>(pair[0]), static_cast<double>(pair[1]), fraction);
}

}  // namespace

// The geometry is taken from the base class itself: seven virtual calls would cost as much as the arithmetic.
float QZFloatGridLinearInterpolate(const QZFixedGrid<float>& grid, float x, float y, float z, const float& outside) {
  const std::size_t row = grid.QZGridBase::GetXDim();
  const std::size_t plane = row * grid.QZGridBase::GetYDim();
  const double scale = 1.0 / static_cast<double>(grid.QZGridBase::GetSpacing());
  const Place i = placeOn(x, grid.QZGridBase::GetXMid(), scale, grid.QZGridBase::GetXDim());
  const Place j = placeOn(y, grid.QZGridBase::GetYMid(), scale, grid.QZGridBase::GetYDim());
  const Place k = placeOn(z, grid.QZGridBase::GetZMid(), scale, grid.QZGridBase::GetZDim());
  if (!(i.inside && j.inside && k.inside)) return outside;

  const float* const lower = grid.GetValues() + i.point + row * j.point + plane * k.point;
  const float* const upper = lower + plane;
  const double near = between(between(lower, i.fraction), between(lower + row, i.fraction), j.fraction);
  const double far = between(between(upper, i.fraction), between(upper + row, i.fraction), j.fraction);
  return static_cast<float>(between(near, far, k.fraction));
}

bool QZZeroFloatGridBoundary(QZFixedGrid<float>& grid) {
  const std::size_t xDim = grid.GetXDim(), yDim = grid.GetYDim(), zDim = grid.GetZDim();
  if (grid.GetSize() == 0) return true;
  float* row = grid.GetValues();
  for (std::size_t k = 0; k < zDim; ++k) {
    for (std::size_t j = 0; j < yDim; ++j, row += xDim) {
      if (k == 0 || k == zDim - 1 || j == 0 || j == yDim - 1) {
        std::fill(row, row + xDim, 0.0F);
      } else {
        row[0] = row[xDim - 1] = 0.0F;
      }
    }
  }
  return true;
}

void QZGetCenterAndExtents(const QZGridBase& grid, float* center, float* extents) {
  if (!center || !extents) return;
  if (grid.IsSpacingSet()) {
    extents[0] = static_cast<float>(grid.GetXDim()) * grid.GetSpacing();
    extents[1] = static_cast<float>(grid.GetYDim()) * grid.GetSpacing();
    extents[2] = static_cast<float>(grid.GetZDim()) * grid.GetSpacing();
  }
  float mid[3];
  if (grid.GetMid(mid[0], mid[1], mid[2])) std::copy(mid, mid + 3, center);
}

}  // namespace QZSystem
