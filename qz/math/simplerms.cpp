#include "qz/math/simplerms.h"

#include <climits>
#include <cmath>
#include <cstddef>

#include "qz/math/regrotation.h"

namespace QZMath {

namespace {

struct Centroids {
  double ofA[3] = {0, 0, 0};
  double ofB[3] = {0, 0, 0};
  double factor;  // 1 over the sum of the weights
};

template <class T>
Centroids centroids(const T* a, const T* b, const T* weights, std::size_t n) {
  constexpr double leastWeight = 8e-05;
  Centroids result;
  double sum = 0;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      // A product of two floats is rounded to one.
      result.ofA[k] += weights ? static_cast<T>(weights[i] * a[3 * i + k]) : a[3 * i + k];
      result.ofB[k] += weights ? static_cast<T>(weights[i] * b[3 * i + k]) : b[3 * i + k];
    }
    sum += weights ? weights[i] : 1;
  }
  result.factor = !weights || sum > leastWeight ? 1 / sum : sum;
  for (std::size_t k = 0; k < 3; ++k) {
    result.ofA[k] *= result.factor;
    result.ofB[k] *= result.factor;
  }
  return result;
}

template <class T>
void buildUp(const T* a, const T* b, const T* weights, std::size_t n, const Centroids& centers, double (*m)[4]) {
  for (std::size_t i = 0; i < n; ++i) {
    double p[3];
    double q[3];
    for (std::size_t k = 0; k < 3; ++k) {
      p[k] = a[3 * i + k] - centers.ofA[k];
      q[k] = b[3 * i + k] - centers.ofB[k];
    }
    if (weights) {
      QZBuildupWeightedMatrix(p, q, weights[i], m);
    } else {
      QZBuildupMatrix(p, q, m);
    }
  }
  for (int row = 1; row < 4; ++row) {
    for (int column = 0; column < row; ++column) m[row][column] = m[column][row];
  }
}

void setMotion(const double (*rotation)[3], const Centroids& centers, double* result) {
  if (!result) return;
  for (int i = 0; i < 3; ++i) {
    double moved = 0;
    for (int j = 0; j < 3; ++j) {
      result[3 * i + j] = rotation[i][j];
      moved += rotation[i][j] * centers.ofB[j];
    }
    result[9 + i] = centers.ofA[i] - moved;
  }
}

constexpr double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

}  // namespace

template <class T>
double RMSBetweenPoints(const T* a, const T* b, const T* weights, int n, double* result) {
  if (n < 1) {
    setMotion(identity, Centroids(), result);
    return -1.0;
  }
  const std::size_t count = static_cast<std::size_t>(n);
  const Centroids centers = centroids(a, b, weights, count);
  double m[4][4] = {};
  buildUp(a, b, weights, count, centers, m);
  if (m[0][0] == 0.0) {
    setMotion(identity, centers, result);
    return 0.0;
  }
  double eigenvalues[4];
  double quaternion[4];
  const double squares = QZJacobiReduction(eigenvalues, m, quaternion);
  if (result) {
    double rotation[3][3];
    QZGenerateRotationMatrix(quaternion, rotation);
    setMotion(rotation, centers, result);
  }
  return std::sqrt(centers.factor * squares);
}

template double RMSBetweenPoints(const double*, const double*, const double*, int, double*);
template double RMSBetweenPoints(const float*, const float*, const float*, int, double*);

double SimpleRMSBetweenPoints(const double* a, const double* b, unsigned int n, double* result) {
  return SimpleRMSBetweenWeightedPoints(a, b, nullptr, n, result);
}

double SimpleRMSBetweenPoints(const float* a, const float* b, unsigned int n, double* result) {
  return SimpleRMSBetweenWeightedPoints(a, b, nullptr, n, result);
}

double SimpleRMSBetweenWeightedPoints(const double* a, const double* b, const double* weights, unsigned int n,
                                      double* result) {
  return RMSBetweenPoints(a, b, weights, static_cast<int>(n), result);
}

double SimpleRMSBetweenWeightedPoints(const float* a, const float* b, const float* weights, unsigned int n,
                                      double* result) {
  return RMSBetweenPoints(a, b, weights, static_cast<int>(n), result);
}

}  // namespace QZMath
