#pragma once

/// Statistics of contingency tables, the error function, and even grids of orientations.
///
///     unsigned int counts[4] = {10, 20, 30, 40};                   // a table of 2 by 2, row by row
///     const double chi = QZChiSquare(counts, 2, 2);                // 0.79365
///     const double level = QZMaxp(chi, 1);                         // 0: not even at 0.1
///     const double strength = QZPhi(chi, 2, 2, 100);               // 0.089
///
/// Safe from any thread.
namespace QZMath {

/// The chi-square of a table of counts, row by row, against independence of rows and columns. The sums are taken in 32
/// bits. A row or a column without counts gives a NaN; a table without rows gives 0.
[[nodiscard]] double QZChiSquare(const unsigned int* counts, unsigned int rows, unsigned int cols);

/// The strongest of the significance levels 0.1, 0.05, 0.025, 0.01, 0.005 and 0.001 that a chi-square reaches, in
/// single precision; 0 if it reaches none. Knows one degree of freedom (and 0, where -1 is critical at each level): for
/// more it warns "To Many Degrees of Freedom" and gives 0.
[[nodiscard]] double QZMaxp(double chi, unsigned int dof);

/// The strength of an association, the square root of chi / ((categories - 1) * total); for one category that of
/// chi / total. The product has 32 bits.
[[nodiscard]] double QZPhi(double chi, unsigned int categories, unsigned int total);

/// The same for a table, with the smaller of `rows` and `cols` for the categories; 0 if that is below 2. The product is
/// rounded to single precision.
[[nodiscard]] double QZPhi(double chi, unsigned int rows, unsigned int cols, unsigned int total);

/// The complementary error function, by three rational approximations (Cody 1969, Rational Chebyshev approximations for
/// the error function). Relative error below 5e-16 for x below 0.5, 3e-15 up to 4, 2e-13 up to 26; the results below
/// 2.3e-308, from there on, lose digits.
[[nodiscard]] double QZerfc(double x);

/// The error function, as 1 - QZerfc(x): near 0 the error is relative to 1.
[[nodiscard]] double QZerf(double x);

/// The position of the highest bit that is set, the floor of the logarithm to base 2; -1 for 0.
[[nodiscard]] int QZLog2(unsigned long value);

/// The least count of an orientation grid, of 18, 32, 45, 72, 112 and 160, that is at or above `count`; 160 if none is.
[[nodiscard]] unsigned int QZNextHealPix(unsigned int count);

/// Fills `count` unit quaternions, four doubles each in the order w, x, y, z, that cover orientation space evenly:
/// directions on the sphere in rings, crossed with equally spaced turns about the direction, the turns in the outer
/// loop. For a count that isn't one of the six above it warns "QZGetHealPix: Bad number of points: %u", writes nothing
/// and gives false. REQUIRES: `quaternions` has room for 4 * `count` doubles, where `count` is one of the six.
bool QZGetHealPix(unsigned int count, double* quaternions);

}  // namespace QZMath
