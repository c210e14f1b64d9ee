#include "qz/math/qcprms.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "qz/math/qcpsums_impl.h"
#include "qz/math/simplerms.h"
#include "qz/platform/number.h"
#include "qz/system/frame/error.h"

namespace QZMath {

using QZPlatform::QZIsNormalNum;
using QZSystem::QZThrow;

namespace {

constexpr const char* tooFew = "QN RMS requires 3 independent coordinates. Falling back to Jacobi RMS.";
constexpr const char* noRoot = "Newton raphson failed. Falling back to Jacobi RMS.";
constexpr const char* noRotation = "Failed to generate rotation matrix. Falling back to Jacobi RMS.";
constexpr const char* noSquareRoot = "Sqrt yields non-normal number %f %f. Falling back to Jacobi RMS.";

// The sums and differences of cross sums that the key matrix and its polynomial are made of. Its largest eigenvalue
// tells how close the sets can come; the eigenvector to it is the quaternion of the rotation.
class KeyMatrix {
 public:
  explicit KeyMatrix(const double (&s)[3][3])
      : sxx(s[0][0]),
        sxy(s[0][1]),
        sxz(s[0][2]),
        syx(s[1][0]),
        syy(s[1][1]),
        syz(s[1][2]),
        szx(s[2][0]),
        szy(s[2][1]),
        szz(s[2][2]),
        sxzpSzx(sxz + szx),
        syzpSzy(syz + szy),
        sxypSyx(sxy + syx),
        syzmSzy(syz - szy),
        sxzmSzx(sxz - szx),
        sxymSyx(sxy - syx),
        sxxpSyy(sxx + syy),
        sxxmSyy(sxx - syy) {}

  // The largest root of the polynomial, from a bound above it. False if it doesn't settle.
  bool LargestEigenvalue(double bound, double& eigenvalue) const;

  // False, with the identity, if no row of the adjugate is large enough to be trusted as the eigenvector.
  bool Rotation(double eigenvalue, double* rotation) const;

 private:
  double squaredSum() const {
    return sxx * sxx + sxy * sxy + sxz * sxz + syx * syx + syy * syy + syz * syz + szx * szx + szy * szy + szz * szz;
  }
  double constantTerm() const;

  double sxx, sxy, sxz, syx, syy, syz, szx, szy, szz;
  double sxzpSzx, syzpSzy, sxypSyx, syzmSzy, sxzmSzx, sxymSyx, sxxpSyy, sxxmSyy;
};

double KeyMatrix::constantTerm() const {
  const double a = sxy * sxy + sxz * sxz - syx * syx - szx * szx;
  const double b = syy * syy + szz * szz - sxx * sxx + syz * syz + szy * szy;
  const double d = 2 * (syz * szy - syy * szz);
  const double t1 = -sxzpSzx * syzmSzy + sxymSyx * (sxxmSyy - szz);
  const double t2 = -sxzmSzx * syzpSzy + sxymSyx * (sxxmSyy + szz);
  const double t3 = -sxzmSzx * syzmSzy - sxypSyx * (sxxpSyy + szz);
  const double t4 = -sxzpSzx * syzpSzy - sxypSyx * (sxxpSyy - szz);
  const double t5 = sxzpSzx * (sxxpSyy + szz) - sxymSyx * syzmSzy;
  const double t6 = sxypSyx * syzpSzy + sxzpSzx * (sxxmSyy + szz);
  const double t7 = sxypSyx * syzmSzy + sxzmSzx * (sxxmSyy - szz);
  const double t8 = -sxymSyx * syzpSzy + sxzmSzx * (sxxpSyy - szz);
  return a * a + (b + d) * (b - d) + t1 * t2 + t3 * t4 + t5 * t6 + t7 * t8;
}

bool KeyMatrix::LargestEigenvalue(double bound, double& eigenvalue) const {
  constexpr int mostSteps = 50;
  constexpr double precision = 1e-6;
  const double c2 = -2 * squaredSum();
  const double c1 =
      8 * (sxx * syz * szy + syy * szx * sxz + szz * sxy * syx - sxx * syy * szz - syz * szx * sxy - szy * syx * sxz);
  const double c0 = constantTerm();
  eigenvalue = bound;
  for (int i = 0; i < mostSteps; ++i) {
    const double before = eigenvalue;
    const double x = before * before;
    const double b = (x + c2) * before;
    const double c = b + c1;
    eigenvalue = before - (before * c + c0) / (2 * x * before + b + c);
    if (std::abs(eigenvalue - before) < std::abs(eigenvalue) * precision) return true;
  }
  return false;
}

// The signed determinant of a 4-by-4 matrix without a row and a column.
double cofactor(const double (&m)[4][4], int row, int column) {
  const int r0 = row == 0 ? 1 : 0;
  const int r1 = row <= 1 ? 2 : 1;
  const int r2 = row <= 2 ? 3 : 2;
  const int c0 = column == 0 ? 1 : 0;
  const int c1 = column <= 1 ? 2 : 1;
  const int c2 = column <= 2 ? 3 : 2;
  const double determinant = m[r0][c0] * (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]) -
                             m[r0][c1] * (m[r1][c0] * m[r2][c2] - m[r1][c2] * m[r2][c0]) +
                             m[r0][c2] * (m[r1][c0] * m[r2][c1] - m[r1][c1] * m[r2][c0]);
  return (row + column) % 2 == 0 ? determinant : -determinant;
}

bool KeyMatrix::Rotation(double eigenvalue, double* rotation) const {
  constexpr double leastSquares = 1e-7;
  const double m[4][4] = {{sxxpSyy + szz - eigenvalue, syzmSzy, -sxzmSzx, sxymSyx},
                          {syzmSzy, sxxmSyy - szz - eigenvalue, sxypSyx, sxzpSzx},
                          {-sxzmSzx, sxypSyx, syy - sxx - szz - eigenvalue, syzpSzy},
                          {sxymSyx, sxzpSzx, syzpSzy, szz - sxxpSyy - eigenvalue}};
  double q1 = 0;
  double q2 = 0;
  double q3 = 0;
  double q4 = 0;
  double s = 0;
  for (int row = 0; row < 4; ++row) {
    q1 = cofactor(m, row, 0);
    q2 = cofactor(m, row, 1);
    q3 = cofactor(m, row, 2);
    q4 = cofactor(m, row, 3);
    s = q1 * q1 + q2 * q2 + q3 * q3 + q4 * q4;
    if (!(s < leastSquares)) break;
  }
  // Of sets beyond 1e25 or so the squares overflow.
  if (s < leastSquares || !std::isfinite(s)) {
    for (int i = 0; i < 9; ++i) rotation[i] = i % 4 == 0 ? 1 : 0;
    return false;
  }
  const double values[9] = {
      q1 * q1 + q2 * q2 - q3 * q3 - q4 * q4, 2 * (q2 * q3 + q1 * q4), 2 * (q2 * q4 - q1 * q3), 2 * (q2 * q3 - q1 * q4),
      q1 * q1 - q2 * q2 + q3 * q3 - q4 * q4, 2 * (q3 * q4 + q1 * q2), 2 * (q2 * q4 + q1 * q3), 2 * (q3 * q4 - q1 * q2),
      q1 * q1 - q2 * q2 - q3 * q3 + q4 * q4};
  const double scale = s == 0 || s == 1 ? 1 : 1 / s;
  for (int i = 0; i < 9; ++i) rotation[i] = values[i] * scale;
  return true;
}

template <class T>
double fallBack(const T* a, const T* b, const T* weights, unsigned int n, double* rotation, double* translation) {
  if (!rotation) return SimpleRMSBetweenWeightedPoints(a, b, weights, n, nullptr);
  double motion[12];
  const double rms = SimpleRMSBetweenWeightedPoints(a, b, weights, n, motion);
  std::copy(motion, motion + 9, rotation);
  std::copy(motion + 9, motion + 12, translation);
  return rms;
}

template <class T>
double superpose(const T* a, const T* b, const T* weights, unsigned int n, double* rotation, double* translation) {
  assert(!rotation || translation);
  const auto jacobi = [&] { return fallBack(a, b, weights, n, rotation, translation); };
  if (n < 3) {
    QZThrow.Debug(tooFew);
    return jacobi();
  }
  const PointSums sums = SumPoints(a, b, weights, n);
  const KeyMatrix key(sums.cross);
  double eigenvalue;
  if (!key.LargestEigenvalue(sums.squares / 2, eigenvalue)) {
    QZThrow.Verbose(noRoot);
    return jacobi();
  }
  if (rotation) {
    if (!key.Rotation(eigenvalue, rotation)) {
      QZThrow.Verbose(noRotation);
      return jacobi();
    }
    const double* c = sums.centerOfB;
    for (int i = 0; i < 3; ++i) {
      const double* row = rotation + 3 * i;
      translation[i] = sums.centerOfA[i] - (row[0] * c[0] + row[1] * c[1] + row[2] * c[2]);
    }
  }
  // Rounding leaves a little on either side of 0 where the sets match.
  const double square = (sums.squares - 2 * eigenvalue) / sums.weight;
  if (square > -0.0001 && square < 1e-6) return 0.0;
  const double rms = std::sqrt(square);
  if (!QZIsNormalNum(rms)) {
    QZThrow.Verbose(noSquareRoot, square, rms);
    return jacobi();
  }
  return rms;
}

}  // namespace

double QZQCPRMSBetweenPoints(const double* a, const double* b, unsigned int n, double* rotation, double* translation) {
  return superpose<double>(a, b, nullptr, n, rotation, translation);
}

double QZQCPRMSBetweenPoints(const float* a, const float* b, unsigned int n, double* rotation, double* translation) {
  return superpose<float>(a, b, nullptr, n, rotation, translation);
}

double QZQCPRMSBetweenWeightedPoints(const double* a, const double* b, const double* weights, unsigned int n,
                                     double* rotation, double* translation) {
  return superpose(a, b, weights, n, rotation, translation);
}

double QZQCPRMSBetweenWeightedPoints(const float* a, const float* b, const float* weights, unsigned int n,
                                     double* rotation, double* translation) {
  return superpose(a, b, weights, n, rotation, translation);
}

}  // namespace QZMath
