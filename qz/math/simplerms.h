#pragma once

/// The least root-mean-square distance between two sets of points, point i of one to point i of the other, over all
/// rigid motions of the second set, with the motion: by a 4-by-4 eigenproblem that is solved whatever the points are.
///
///     double motion[12];
///     const double rms = SimpleRMSBetweenPoints(fixed.data(), moved.data(), n, motion);
///     // fixed[i] is near R moved[i] + t; R stands in motion[0] to [8], row by row, t in motion[9] to [11]
///
/// Coordinates are x0 y0 z0 x1 y1 z1 and so on. `result` may be null. For `n` of 0 the result is -1, with the identity
/// and no translation. Nothing is allocated; cost is linear in `n`. For speed see QZQCPRMSBetweenPoints.
/// Safe from any thread.
namespace QZMath {

double SimpleRMSBetweenPoints(const double* a, const double* b, unsigned int n, double* result);
double SimpleRMSBetweenPoints(const float* a, const float* b, unsigned int n, double* result);

/// With a weight for each pair. `weights` may be null: then all are 1. Where they sum to 8e-05 or less the sum itself
/// stands for its inverse, so that weights that are all 0 give 0 and the identity.
double SimpleRMSBetweenWeightedPoints(const double* a, const double* b, const double* weights, unsigned int n,
                                      double* result);
double SimpleRMSBetweenWeightedPoints(const float* a, const float* b, const float* weights, unsigned int n,
                                      double* result);

/// What the above call; T is `float` or `double`.
template <class T>
double RMSBetweenPoints(const T* a, const T* b, const T* weights, int n, double* result);

extern template double RMSBetweenPoints(const double*, const double*, const double*, int, double*);
extern template double RMSBetweenPoints(const float*, const float*, const float*, int, double*);

}  // namespace QZMath
