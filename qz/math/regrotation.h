#pragma once

/// The steps of superposing points by a quaternion: the 4-by-4 matrix of a set of point pairs, whose eigenvector to the
/// smallest eigenvalue is the best rotation (Horn 1987, Closed-form solution of absolute orientation using unit
/// quaternions), its eigenproblem, and the rotation.
///
///     double m[4][4] = {}, eigenvalues[4], quaternion[4], rotation[3][3];
///     for (int i = 0; i < n; ++i) QZBuildupMatrix(p[i], q[i], m);      // centred points
///     const double squares = QZJacobiReduction(eigenvalues, m, quaternion);
///     QZGenerateRotationMatrix(quaternion, rotation);                  // brings q onto p; squares is what remains
///
/// Safe from any thread.
namespace QZMath {

/// Adds a pair of centred points, three coordinates each, to the upper triangle of `m`.
void QZBuildupMatrix(const double* p, const double* q, double (*m)[4]);

/// The same with every term times `weight`.
void QZBuildupWeightedMatrix(const double* p, const double* q, double weight, double (*m)[4]);

/// Diagonalises the symmetric `m` by cyclic Jacobi rotations; only its upper triangle is read, and destroyed. Fills the
/// four eigenvalues, in no order, and the unit eigenvector to the one of smallest magnitude, the first of equal ones;
/// returns that magnitude. At most 49 sweeps; a matrix with a NaN gives NaNs.
double QZJacobiReduction(double* eigenvalues, double (*m)[4], double* eigenvector);

/// Fills the rotation matrix, row by row, of a unit quaternion, its real part first. The rotation is the identity where
/// the real part is 1 or -1, or beyond.
void QZGenerateRotationMatrix(const double* quaternion, double (*rotation)[3]);

}  // namespace QZMath
