#pragma once

/// The least root-mean-square distance between two sets of points, point i of one to point i of the other, over all
/// rigid motions of the second set, with the motion: by the quaternion characteristic polynomial (Theobald 2005, Rapid
/// calculation of RMSDs using a quaternion-based characteristic polynomial; Liu, Agrafiotis and Theobald 2010, Fast
/// determination of the optimal rotational matrix for macromolecular superpositions).
///
///     double rotation[9], translation[3];
///     const double rms = QZQCPRMSBetweenPoints(fixed.data(), moved.data(), n, rotation, translation);
///     // fixed[i] is near R moved[i] + t
///
/// Coordinates are x0 y0 z0 x1 y1 z1 and so on; the rotation stands row by row. `rotation` may be null, and neither is
/// computed then. REQUIRES: `translation` isn't null where `rotation` isn't.
///
/// Where this method can't give a sound answer (fewer than three points, points that all coincide, weights that are all
/// 0) it says so on Debug or Verbose and takes that of SimpleRMSBetweenPoints: the result is -1 for `n` of 0 and else
/// the RMS. One below 0.001 is given as 0.
///
/// Nothing is allocated; the cost is two passes over the points, and the same bits come out on every processor.
/// Safe from any thread.
namespace QZMath {

double QZQCPRMSBetweenPoints(const double* a, const double* b, unsigned int n, double* rotation, double* translation);
double QZQCPRMSBetweenPoints(const float* a, const float* b, unsigned int n, double* rotation, double* translation);

/// With a weight for each pair; null stands for weights of 1. In the `float` form the centres and the products of
/// weights with coordinates are rounded to `float`; all else is `double`.
double QZQCPRMSBetweenWeightedPoints(const double* a, const double* b, const double* weights, unsigned int n,
                                     double* rotation, double* translation);
double QZQCPRMSBetweenWeightedPoints(const float* a, const float* b, const float* weights, unsigned int n,
                                     double* rotation, double* translation);

}  // namespace QZMath
