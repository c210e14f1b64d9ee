#include "qz/math/regrotation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "qz/math/ran_num_generators.h"

using namespace QZMath;

namespace {

TEST(JacobiReduction, FindsTheEigenvalueOfLeastMagnitude) {
  MtRng<Mt64Traits> engine(4);
  QZGaussianRNG normal(0, 1);
  for (int round = 0; round < 200; ++round) {
    double m[4][4] = {};
    double copy[4][4] = {};
    double trace = 0;
    for (int i = 0; i < 4; ++i) {
      for (int j = i; j < 4; ++j) m[i][j] = copy[i][j] = copy[j][i] = normal(engine) * std::pow(10, round % 7);
      trace += m[i][i];
    }
    double values[4];
    double vector[4];
    const double least = QZJacobiReduction(values, m, vector);
    const double scale = std::pow(10, round % 7);
    double found = values[0];
    double sum = 0;
    for (double each : values) {
      sum += each;
      if (std::abs(each) < std::abs(found)) found = each;
    }
    EXPECT_EQ(least, std::abs(found)) << round;
    EXPECT_NEAR(sum, trace, 1e-14 * scale) << round;
    double length = 0;
    for (int i = 0; i < 4; ++i) {
      double image = 0;
      for (int j = 0; j < 4; ++j) image += copy[i][j] * vector[j];
      EXPECT_NEAR(image, found * vector[i], 2e-14 * scale) << round;
      length += vector[i] * vector[i];
    }
    EXPECT_NEAR(length, 1, 1e-14) << round;
  }
}

TEST(JacobiReduction, ReadsTheUpperTriangleAndTakesTheFirstOfEqualOnes) {
  double m[4][4] = {{-2, 0, 0, 0}, {9, 2, 0, 0}, {9, 9, 5, 0}, {9, 9, 9, 7}};
  double values[4];
  double vector[4];
  EXPECT_EQ(QZJacobiReduction(values, m, vector), 2);
  const double expectedValues[4] = {-2, 2, 5, 7};
  const double expectedVector[4] = {1, 0, 0, 0};
  EXPECT_TRUE(std::equal(values, values + 4, expectedValues));
  EXPECT_TRUE(std::equal(vector, vector + 4, expectedVector));
}

TEST(RotationMatrix, IsThatOfTheQuaternion) {
  MtRng<Mt64Traits> engine(5);
  std::vector<double> q;
  for (int round = 0; round < 100; ++round) {
    QZUniformOnUnitSphereRNG(3).GetRandomPoint(q, engine);
    double r[3][3];
    QZGenerateRotationMatrix(q.data(), r);
    // v' = q* v q for pure quaternions, which is what the eigenvector of the matrix stands for.
    const double w = q[0];
    const double x = q[1];
    const double y = q[2];
    const double z = q[3];
    const double expected[3][3] = {{1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)},
                                   {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)},
                                   {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)}};
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) EXPECT_NEAR(r[i][j], expected[i][j], 1e-12) << round << ' ' << i << j;
    }
  }
}

TEST(RotationMatrix, IsTheIdentityWithoutAnAxis) {
  for (double real : {1.0, -1.0, 1.0000001, -1.5}) {
    const double q[4] = {real, 0.1, 0, 0};
    double r[3][3];
    QZGenerateRotationMatrix(q, r);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) EXPECT_EQ(r[i][j], i == j ? 1 : 0) << real;
    }
  }
}

// Each element of the matrix, for a pair of points with coordinates that keep the terms apart.
TEST(BuildupMatrix, AddsEachTerm) {
  const double p[3] = {3, 20, 500};
  const double q[3] = {1, 12, 380};
  const double dx = 2, dy = 8, dz = 120, sx = 4, sy = 32, sz = 880;
  const double expected[4][4] = {{dx * dx + dy * dy + dz * dz, sy * dz - dy * sz, dx * sz - sx * dz, sx * dy - dx * sy},
                                 {0, sy * sy + sz * sz + dx * dx, dx * dy - sx * sy, dx * dz - sx * sz},
                                 {0, 0, sx * sx + sz * sz + dy * dy, dy * dz - sy * sz},
                                 {0, 0, 0, sx * sx + sy * sy + dz * dz}};
  double plain[4][4] = {};
  double weighted[4][4] = {};
  QZBuildupMatrix(p, q, plain);
  QZBuildupMatrix(p, q, plain);
  QZBuildupWeightedMatrix(p, q, 2.5, weighted);
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      EXPECT_EQ(plain[i][j], 2 * expected[i][j]) << i << j;
      EXPECT_EQ(weighted[i][j], 2.5 * expected[i][j]) << i << j;
    }
  }
}

}  // namespace
