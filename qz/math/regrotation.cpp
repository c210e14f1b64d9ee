#include "qz/math/regrotation.h"

#include <cmath>

#include "qz/math/elementary_impl.h"

namespace QZMath {

namespace {

// Rutishauser's form of the Jacobi method (1966, The Jacobi method for real symmetric matrices): eigenvalues are moved
// by small corrections, which gather in `change` over a sweep and are then added at once, so that they lose least.
struct Reduction {
  double (*m)[4];
  double vectors[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  double values[4];
  double atSweep[4];
  double change[4] = {0, 0, 0, 0};

  explicit Reduction(double (*matrix)[4]) : m(matrix) {
    for (int i = 0; i < 4; ++i) atSweep[i] = values[i] = m[i][i];
  }

  double sumOfUpper() const {
    double sum = 0;
    for (int p = 0; p < 3; ++p) {
      for (int q = p + 1; q < 4; ++q) sum += std::abs(m[p][q]);
    }
    return sum;
  }

  void sweep(double threshold, bool dropsSmall) {
    for (int p = 0; p < 3; ++p) {
      for (int q = p + 1; q < 4; ++q) {
        const double small = 100 * std::abs(m[p][q]);
        if (dropsSmall && isNothingTo(values[p], small) && isNothingTo(values[q], small)) {
          m[p][q] = 0;
        } else if (std::abs(m[p][q]) > threshold) {
          rotate(p, q, small);
        }
      }
    }
    for (int i = 0; i < 4; ++i) {
      atSweep[i] += change[i];
      values[i] = atSweep[i];
      change[i] = 0;
    }
  }

 private:
  static bool isNothingTo(double number, double addend) { return std::abs(number) + addend == std::abs(number); }

  static double tangent(double element, double difference, double small) {
    if (isNothingTo(difference, small)) return element / difference;
    const double u = 0.5 * difference / element;
    const double size = 1 / (std::abs(u) + std::sqrt(u * u + 1));
    return u < 0 ? -size : size;
  }

  void rotate(int p, int q, double small) {
    const double t = tangent(m[p][q], values[q] - values[p], small);
    const double cosine = std::sqrt(1 / (t * t + 1));
    const double s = t * cosine;
    const double w = s / (1 + cosine);
    const double e = t * m[p][q];
    change[p] -= e;
    values[p] -= e;
    change[q] += e;
    values[q] += e;
    m[p][q] = 0;
    const auto turn = [s, w](double& first, double& second) {
      const double g = first;
      const double h = second;
      first = g - s * (h + g * w);
      second = h + s * (g - h * w);
    };
    for (int j = 0; j < p; ++j) turn(m[j][p], m[j][q]);
    for (int j = p + 1; j < q; ++j) turn(m[p][j], m[j][q]);
    for (int j = q + 1; j < 4; ++j) turn(m[p][j], m[q][j]);
    for (auto& row : vectors) turn(row[p], row[q]);
  }
};

}  // namespace

void QZBuildupMatrix(const double* p, const double* q, double (*m)[4]) { QZBuildupWeightedMatrix(p, q, 1, m); }

void QZBuildupWeightedMatrix(const double* p, const double* q, double weight, double (*m)[4]) {
  const double dx = p[0] - q[0];
  const double dy = p[1] - q[1];
  const double dz = p[2] - q[2];
  const double sx = p[0] + q[0];
  const double sy = p[1] + q[1];
  const double sz = p[2] + q[2];
  m[0][0] += weight * (dx * dx + dy * dy + dz * dz);
  m[1][1] += weight * (sy * sy + sz * sz + dx * dx);
  m[2][2] += weight * (sx * sx + sz * sz + dy * dy);
  m[3][3] += weight * (sx * sx + sy * sy + dz * dz);
  m[0][1] += weight * (sy * dz - dy * sz);
  m[0][2] += weight * (dx * sz - sx * dz);
  m[0][3] += weight * (sx * dy - dx * sy);
  m[1][2] += weight * (dx * dy - sx * sy);
  m[1][3] += weight * (dx * dz - sx * sz);
  m[2][3] += weight * (dy * dz - sy * sz);
}

double QZJacobiReduction(double* eigenvalues, double (*m)[4], double* eigenvector) {
  constexpr int mostSweeps = 49;
  Reduction reduction(m);
  for (int i = 1; i <= mostSweeps; ++i) {
    const double sum = reduction.sumOfUpper();
    if (sum == 0) break;
    reduction.sweep(i < 4 ? 0.0125 * sum : 0, i > 4);
  }
  int least = 0;
  for (int i = 0; i < 4; ++i) {
    eigenvalues[i] = reduction.values[i];
    if (std::abs(eigenvalues[i]) < std::abs(eigenvalues[least])) least = i;
  }
  for (int i = 0; i < 4; ++i) eigenvector[i] = reduction.vectors[i][least];
  return std::abs(eigenvalues[least]);
}

void QZGenerateRotationMatrix(const double* quaternion, double (*rotation)[3]) {
  const double square = 1 - quaternion[0] * quaternion[0];
  if (!(square > 0)) {
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) rotation[i][j] = i == j ? 1 : 0;
    }
    return;
  }
  const double r = std::sqrt(square);
  const auto [S, C] = Elementary::SineAndCosine(-2 * Elementary::ArcCosine(quaternion[0]));
  const double D = 1 - C;
  const double x = quaternion[1] / r;
  const double y = quaternion[2] / r;
  const double z = quaternion[3] / r;
  rotation[0][0] = x * x + (1 - x * x) * C;
  rotation[1][1] = y * y + (1 - y * y) * C;
  rotation[2][2] = z * z + (1 - z * z) * C;
  rotation[0][1] = x * y * D - z * S;
  rotation[1][0] = x * y * D + z * S;
  rotation[0][2] = x * z * D + y * S;
  rotation[2][0] = x * z * D - y * S;
  rotation[1][2] = y * z * D - x * S;
  rotation[2][1] = y * z * D + x * S;
}

}  // namespace QZMath
