#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "qz/math/ran_num_generators.h"
#include "qz/math/rand.h"

namespace QZMath {

/// Two sets of points and, where they are weighted, a weight for each pair.
struct PointSets {
  std::string kind;
  std::vector<double> a;
  std::vector<double> b;
  std::vector<double> weights;

  [[nodiscard]] unsigned int Count() const { return static_cast<unsigned int>(a.size() / 3); }
  [[nodiscard]] const double* Weights() const { return weights.empty() ? nullptr : weights.data(); }
  [[nodiscard]] double Weight(std::size_t i) const { return weights.empty() ? 1 : weights[i]; }
};

/// The root of the weighted mean of the squared distances after the second set has been moved.
inline double RmsAfter(const PointSets& sets, const double* rotation, const double* translation) {
  double sum = 0;
  double weight = 0;
  for (std::size_t i = 0; i < sets.Count(); ++i) {
    const double* b = sets.b.data() + 3 * i;
    weight += sets.Weight(i);
    for (std::size_t k = 0; k < 3; ++k) {
      const double* row = rotation + 3 * k;
      const double d = row[0] * b[0] + row[1] * b[1] + row[2] * b[2] + translation[k] - sets.a[3 * i + k];
      sum += sets.Weight(i) * d * d;
    }
  }
  return std::sqrt(sum / weight);
}

/// How far nine values, row by row, are from a proper rotation: the greatest error of a product of two rows or of the
/// determinant.
inline double DistanceFromRotation(const double* r) {
  const double determinant =
      r[0] * (r[4] * r[8] - r[5] * r[7]) - r[1] * (r[3] * r[8] - r[5] * r[6]) + r[2] * (r[3] * r[7] - r[4] * r[6]);
  double greatest = std::abs(determinant - 1);
  for (const double* a = r; a != r + 9; a += 3) {
    for (const double* b = r; b != r + 9; b += 3) {
      greatest = std::max(greatest, std::abs(a[0] * b[0] + a[1] * b[1] + a[2] * b[2] - (a == b ? 1 : 0)));
    }
  }
  return greatest;
}

/// Sets of 3 to 40 points of every kind that has a difficulty of its own: the second set is the first, turned, moved
/// and changed.
class PointSetMaker {
 public:
  static constexpr const char* kinds[] = {"random",   "shaken",    "planar",           "collinear",
                                          "mirrored", "unchanged", "nearly identical", "far from the origin"};

  PointSets Make(const std::string& kind, bool weighted) {
    PointSets sets;
    sets.kind = kind + (weighted ? ", weighted" : "");
    const std::size_t n = 3 + engine.getUnsigned() % 38;
    for (std::size_t i = 0; i < n; ++i) {
      double p[3] = {uniform(engine), uniform(engine), uniform(engine)};
      if (kind == "planar") p[2] = p[0] - 2 * p[1];
      if (kind == "collinear") p[1] = 2 * p[0], p[2] = -p[0];
      sets.a.insert(sets.a.end(), p, p + 3);
      if (weighted) sets.weights.push_back(0.1 + engine.getUnitDouble());
    }
    move(sets, kind);
    return sets;
  }

 private:
  void move(PointSets& sets, const std::string& kind) {
    std::vector<double> r;
    QZ3DRotationMatrixRNG().GetRotationMatrix(r, engine);
    const double way[3] = {uniform(engine), uniform(engine), uniform(engine)};
    const double noise = kind == "unchanged" ? 0 : kind == "nearly identical" ? 1e-5 : 0.5;
    const double far = kind == "far from the origin" ? 1000 : 0;
    for (std::size_t i = 0; i < sets.Count(); ++i) {
      const double* p = sets.a.data() + 3 * i;
      for (std::size_t k = 0; k < 3; ++k) {
        const double turned = r[3 * k] * p[0] + r[3 * k + 1] * p[1] + r[3 * k + 2] * p[2];
        const double mirrored = kind == "mirrored" ? -turned : turned;
        sets.b.push_back(kind == "random" ? uniform(engine) : mirrored + way[k] + noise * normal(engine));
      }
    }
    for (double& x : sets.a) x += far;
    for (double& x : sets.b) x -= far;
  }

  MtRng<Mt64Traits> engine{2026};
  QZUniformDoubleRNG uniform{-10, 10};
  QZGaussianRNG normal{0, 1};
};

}  // namespace QZMath
