#pragma once

#include <cstddef>

/// What the superposition of two sets of points needs to know of them.
///
///     const PointSums sums = SumPoints(a, b, nullptr, n);
///
/// Safe from any thread.
namespace QZMath {

struct PointSums {
  double centerOfA[3];
  double centerOfB[3];
  double weight;       // the sum of the weights, or n
  double cross[3][3];  // the u coordinate of a times the v coordinate of b, of centred points
  double squares;      // of the lengths of all centred points, of a and of b
};

/// The sums over `n` points, at least 1. `weights` may be null. They run in four lanes, point i in lane i mod 4, and
/// the lanes are joined as (0 + 1) + (2 + 3), so that every processor gives the same bits, whatever it adds at a time.
PointSums SumPoints(const double* a, const double* b, const double* weights, std::size_t n);

/// The sums for the centres, the centres, the differences from them and the products of a weight with a coordinate of a
/// are floats; all else is double.
PointSums SumPoints(const float* a, const float* b, const float* weights, std::size_t n);

}  // namespace QZMath
