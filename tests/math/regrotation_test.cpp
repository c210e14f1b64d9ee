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
    const double scale = std::pow(10, round % 7);
    double m[4][4] = {}, whole[4][4] = {}, values[4], vector[4];
    for (int i = 0; i < 4; ++i) {
      for (int j = i; j < 4; ++j) m[i][j] = whole[i][j] = whole[j][i] = normal(engine) * scale;
    }
    const double least = QZJacobiReduction(values, m, vector);
    const double found =
        *std::min_element(values, values + 4, [](double a, double b) { return std::abs(a) < std::abs(b); });
    EXPECT_EQ(least, std::abs(found)) << round;
    const double trace = whole[0][0] + whole[1][1] + whole[2][2] + whole[3][3];
    EXPECT_NEAR(values[0] + values[1] + values[2] + values[3], trace, 1e-14 * scale) << round;
    double length = 0;
    for (int i = 0; i < 4; ++i) {
      double image = 0;
      for (int j = 0; j < 4; ++j) image += whole[i][j] * vector[j];
      EXPECT_NEAR(image, found * vector[i], 2e-14 * scale) << round;
      length += vector[i] * vector[i];
    }
    EXPECT_NEAR(length, 1, 1e-14) << round;
  }
}

TEST(JacobiReduction, ReadsTheUpperTriangleAndTakesTheFirstOfEqualOnes) {
  double m[4][4] = {{-2, 0, 0, 0}, {9, 2, 0, 0}, {9, 9, 5, 0}, {9, 9, 9, 7}};
  double values[4], vector[4];
  EXPECT_EQ(QZJacobiReduction(values, m, vector), 2);
  const double expectedValues[4] = {-2, 2, 5, 7}, expectedVector[4] = {1, 0, 0, 0};
  EXPECT_TRUE(std::equal(values, values + 4, expectedValues));
  EXPECT_TRUE(std::equal(vector, vector + 4, expectedVector));
}

TEST(RotationMatrix, IsTheIdentityWithoutAnAxis) {
  for (double real : {1.0, -1.0, 1.0000001, -1.5}) {
    const double q[4] = {real, 0.1, 0, 0};
    double r[3][3];
    QZGenerateRotationMatrix(q, r);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(r[i / 3][i % 3], i % 4 == 0 ? 1 : 0) << real;
  }
}

}  // namespace
