#include "qz/system/objects/grid_util.h"

#include <emmintrin.h>

#include <algorithm>

namespace QZSystem {

namespace {

// Whether a coordinate in points from the first one is between two points. Such a number fits an integer, and a
// not-a-number is none.
inline bool isInside(double at, double last) { return at >= 0.0 && at < last; }

// Two interpolations side by side.
using Pair = __m128d;

inline Pair between(Pair a, Pair b, double fraction) {
  return _mm_add_pd(a, _mm_mul_pd(_mm_sub_pd(b, a), _mm_set1_pd(fraction)));
}

inline Pair load(const float* neighbours) {
  return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(neighbours))));
}

// Interpolates along x, on two rows.
inline Pair alongX(const float* first, const float* second, double fraction) {
  const Pair one = load(first), two = load(second);
  return between(_mm_unpacklo_pd(one, two), _mm_unpackhi_pd(one, two), fraction);
}

}  // namespace

// The geometry is taken from the base class itself: seven virtual calls would cost as much as the arithmetic.
float QZFloatGridLinearInterpolate(const QZFixedGrid<float>& grid, float x, float y, float z, const float& outside) {
  const std::size_t row = grid.QZGridBase::GetXDim();
  const std::size_t plane = row * grid.QZGridBase::GetYDim();
  const double scale = 1.0 / static_cast<double>(grid.QZGridBase::GetSpacing());
  const double lastX = static_cast<double>(grid.QZGridBase::GetXDim()) - 1.0;
  const double lastY = static_cast<double>(grid.QZGridBase::GetYDim()) - 1.0;
  const double lastZ = static_cast<double>(grid.QZGridBase::GetZDim()) - 1.0;
  const double atX = static_cast<double>(x - grid.QZGridBase::GetXMid()) * scale + lastX * 0.5;
  const double atY = static_cast<double>(y - grid.QZGridBase::GetYMid()) * scale + lastY * 0.5;
  const double atZ = static_cast<double>(z - grid.QZGridBase::GetZMid()) * scale + lastZ * 0.5;
  if (!isInside(atX, lastX) || !isInside(atY, lastY) || !isInside(atZ, lastZ)) return outside;

  const long i = static_cast<long>(atX), j = static_cast<long>(atY), k = static_cast<long>(atZ);
  const float* const near = grid.GetValues() + static_cast<std::size_t>(i) + row * static_cast<std::size_t>(j) +
                            plane * static_cast<std::size_t>(k);
  const float* const far = near + plane;
  const double fractionX = atX - static_cast<double>(i);
  const Pair thisRow = alongX(near, far, fractionX);
  const Pair nextRow = alongX(near + row, far + row, fractionX);
  const Pair planes = between(thisRow, nextRow, atY - static_cast<double>(j));
  const Pair value = between(planes, _mm_unpackhi_pd(planes, planes), atZ - static_cast<double>(k));
  return static_cast<float>(_mm_cvtsd_f64(value));
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
