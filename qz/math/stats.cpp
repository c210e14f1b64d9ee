#include "qz/math/stats.h"

#include <alloca.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "qz/math/elementary_impl.h"
#include "qz/platform/machine.h"
#include "qz/system/frame/error.h"

namespace QZMath {

using QZPlatform::QZMallocaFits;
using QZPlatform::QZMallocaPtr;
using QZPlatform::QZMallocaSize;
using QZSystem::QZThrow;

namespace {

constexpr const char* tooManyDegrees = "To Many Degrees of Freedom";
constexpr const char* badNumberOfPoints = "QZGetHealPix: Bad number of points: %u";

// Numerator and denominator of a rational function, which take the same steps at once.
using Fraction [[gnu::vector_size(16)]] = double;

// Both polynomials, their coefficients from the constant term up. Even and odd powers apart, by Horner's rule in x^2:
// two short chains of operations take less time than one long one.
template <std::size_t size>
double quotient(const Fraction (&coefficients)[size], double x, double factor) {
  const double square = x * x;
  std::size_t i = (size - 1) / 2 * 2;
  Fraction even = coefficients[i];
  for (; i > 0; i -= 2) even = even * square + coefficients[i - 2];
  i = size / 2 * 2 - 1;
  Fraction odd = coefficients[i];
  for (; i > 1; i -= 2) odd = odd * square + coefficients[i - 2];
  const Fraction result = odd * x + even;
  return factor * result[0] / result[1];
}

double erfcOfPositive(double x) {
  if (x < 0.5) {
    static constexpr Fraction near[] = {{3209.3775891384694, 2844.236833439171},
                                        {377.485237685302, 1282.6165260773723},
                                        {113.86415415105016, 244.02463793444417},
                                        {3.1611237438705655, 23.601290952344122},
                                        {0.18577770618460315, 1}};
    return 1 - quotient(near, x * x, x);
  }
  if (x < 4) {
    static constexpr Fraction middle[] = {{1230.3393547979972, 1230.3393548037495},
                                          {2051.0783778260716, 3439.3676741437216},
                                          {1712.0476126340707, 4362.619090143247},
                                          {881.952221241769, 3290.7992357334597},
                                          {298.6351381974001, 1621.3895745666903},
                                          {66.11919063714163, 537.1811018620099},
                                          {8.883149794388377, 117.6939508913125},
                                          {0.5641884969886701, 15.744926110709835},
                                          {2.1531153547440383e-08, 1}};
    return quotient(middle, x, Elementary::ExpOfModerate(-x * x));
  }
  static constexpr Fraction far[] = {
      {-0.0006587491615298378, 0.0023352049762686918}, {-0.016083785148742275, 0.06051834131244132},
      {-0.12578172611122926, 0.5279051029514285},      {-0.36034489994980445, 1.8729528499234604},
      {-0.30532663496123236, 2.568520192289822},       {-0.016315387137302097, 1}};
  const double y = 1 / (x * x);
  return Elementary::Exp(-x * x) / x * (0.5641895835477563 + quotient(far, y, y));
}

// An even grid: directions in rings of equal height, crossed with turns.
struct OrientationGrid {
  unsigned int count;
  unsigned int rings;
  unsigned int pointsOfRing;
  unsigned int turns;
};
constexpr OrientationGrid orientationGrids[] = {{18, 2, 3, 3}, {32, 2, 4, 4},  {45, 3, 3, 5},
                                                {72, 3, 4, 6}, {112, 4, 4, 7}, {160, 4, 5, 8}};

constexpr double pi = 3.141592653589793;

// The orientation whose z axis points at the height and longitude, turned about that axis by psi.
void setQuaternion(double height, double longitude, double psi, double* quaternion) {
  const auto [sinePhi, cosinePhi] = Elementary::SineAndCosine(longitude);
  const auto [sineTheta, cosineTheta] = Elementary::SineAndCosine(Elementary::ArcCosine(height) / 2);
  const auto [sinePsi, cosinePsi] = Elementary::SineAndCosine(psi / 2);
  const double x = -sinePhi * sineTheta;
  const double y = cosinePhi * sineTheta;
  // (cosineTheta, x, y, 0) times (cosinePsi, 0, 0, sinePsi)
  quaternion[0] = cosineTheta * cosinePsi;
  quaternion[1] = x * cosinePsi + y * sinePsi;
  quaternion[2] = y * cosinePsi - x * sinePsi;
  quaternion[3] = cosineTheta * sinePsi;
  double squares = 0;
  for (int i = 0; i < 4; ++i) squares += quaternion[i] * quaternion[i];
  if (squares == 0) return;
  const double scale = std::sqrt(1 / squares);
  for (int i = 0; i < 4; ++i) quaternion[i] *= scale;
}

}  // namespace

double QZChiSquare(const unsigned int* counts, unsigned int rows, unsigned int cols) {
  if (rows == 0 || cols == 0) return 0;  // no cells, and no sums to keep
  const std::uint64_t sizeOfRows = QZMallocaSize(std::uint64_t{rows} * sizeof(unsigned int));
  const QZMallocaPtr<unsigned int> rowSums(sizeOfRows, QZMallocaFits(sizeOfRows) ? alloca(sizeOfRows) : nullptr);
  const std::uint64_t sizeOfCols = QZMallocaSize(std::uint64_t{cols} * sizeof(unsigned int));
  const QZMallocaPtr<unsigned int> colSums(sizeOfCols, QZMallocaFits(sizeOfCols) ? alloca(sizeOfCols) : nullptr);
  std::fill_n(rowSums.Get(), rows, 0U);
  std::fill_n(colSums.Get(), cols, 0U);
  unsigned int total = 0;
  const unsigned int* count = counts;
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t col = 0; col < cols; ++col, ++count) {
      rowSums[row] += *count;
      colSums[col] += *count;
      total += *count;
    }
  }
  const double N = total;
  double chi = 0;
  count = counts;
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t col = 0; col < cols; ++col, ++count) {
      // (O - E)^2 / E with E = rc / N.
      const double O = *count;
      const double rc = static_cast<double>(colSums[col]) * static_cast<double>(rowSums[row]);
      chi += O * N * O / rc - (O + O) + rc / N;
    }
  }
  return chi;
}

double QZMaxp(double chi, unsigned int dof) {
  constexpr float critical[2][6] = {{-1, -1, -1, -1, -1, -1}, {2.706F, 3.841F, 5.024F, 6.635F, 7.879F, 10.828F}};
  constexpr float reached[7] = {0, 0.1F, 0.05F, 0.025F, 0.01F, 0.005F, 0.001F};
  if (dof > 1) {
    QZThrow.Warning(tooManyDegrees);
    return 0;
  }
  std::size_t level = 0;
  while (level < 6 && !(chi < static_cast<double>(critical[dof][level]))) ++level;
  return static_cast<double>(reached[level]);
}

double QZPhi(double chi, unsigned int categories, unsigned int total) {
  return std::sqrt(chi / (categories == 1 ? total : (categories - 1) * total));
}

double QZPhi(double chi, unsigned int rows, unsigned int cols, unsigned int total) {
  const unsigned int k = std::min(rows, cols);
  if (k < 2) return 0;
  return std::sqrt(chi / static_cast<double>(static_cast<float>((k - 1) * total)));
}

double QZerfc(double x) {
  // 2 - erfc(-x) for a negative x without a branch, which would be guessed wrongly half the time: the sign bit, moved
  // by one, is the number 2.
  const std::uint64_t sign = Elementary::BitsOf(x) & 0x8000000000000000U;
  const double result = erfcOfPositive(std::abs(x));
  return Elementary::DoubleOf(sign >> 1) + Elementary::DoubleOf(Elementary::BitsOf(result) ^ sign);
}

double QZerf(double x) { return 1 - QZerfc(x); }

int QZLog2(unsigned long value) { return value == 0 ? -1 : 63 - __builtin_clzl(value); }

unsigned int QZNextHealPix(unsigned int count) {
  for (const OrientationGrid& grid : orientationGrids) {
    if (count <= grid.count) return grid.count;
  }
  return 160;
}

bool QZGetHealPix(unsigned int count, double* quaternions) {
  const OrientationGrid* const grid =
      std::find_if(std::begin(orientationGrids), std::end(orientationGrids),
                   [count](const OrientationGrid& each) { return each.count == count; });
  if (grid == std::end(orientationGrids)) {
    QZThrow.Warning(badNumberOfPoints, count);
    return false;
  }
  for (unsigned int i = 0; i < grid->turns; ++i) {
    const double psi = (2 * i + 1) * pi / grid->turns;
    for (unsigned int k = 0; k < grid->rings; ++k) {
      const double height = 1 - (2.0 * k + 1) / grid->rings;
      for (unsigned int l = 0; l < grid->pointsOfRing; ++l, quaternions += 4) {
        // Rings are turned against their neighbours by half a step.
        const unsigned int halfSteps = k % 2 == 0 ? 2 * l + 1 : 2 * l;
        setQuaternion(height, halfSteps * pi / grid->pointsOfRing, psi, quaternions);
      }
    }
  }
  return true;
}

}  // namespace QZMath
