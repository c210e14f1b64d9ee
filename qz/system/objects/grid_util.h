#pragma once

#include "qz/system/objects/grid.h"

/// Reading grids between their points, and other small operations on them.
///
///     float density = QZFloatGridLinearInterpolate(grid, x, y, z, 0.0F);
///     float extents[3];
///     QZGetCenterAndExtents(grid, center, extents);
///
/// Safe from any thread, for grids that nobody changes.
namespace QZSystem {

/// The value at a place in space, interpolated between the eight points around it along x, then y, then z, in `double`.
/// `outside` for a place that isn't inside the lattice: on each axis at or above the first point and below the last
/// one. So a place on the last plane of points is outside, as is all that isn't a number.
[[nodiscard]] float QZFloatGridLinearInterpolate(const QZFixedGrid<float>& grid, float x, float y, float z,
                                                 const float& outside);

/// Sets all points of the six outermost planes to 0. Always true.
bool QZZeroFloatGridBoundary(QZFixedGrid<float>& grid);

/// Puts the centre into `center`, if all its coordinates have been set, and the lengths of the box into `extents`, if
/// the spacing has; otherwise the three numbers stay as they are. If either pointer is null nothing happens.
void QZGetCenterAndExtents(const QZGridBase& grid, float* center, float* extents);

}  // namespace QZSystem
