#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "qz/math/qcprms.h"
#include "qz/math/ran_num_generators.h"
#include "qz/math/simplerms.h"
#include "qz/math/stats.h"

using namespace QZMath;

namespace {

// All bits of a row of numbers (FNV).
class Digest {
 public:
  void Add(double number) {
    std::uint64_t bits;
    std::memcpy(&bits, &number, sizeof bits);
    value = (value ^ bits) * 1099511628211U;
  }
  template <class Numbers>
  void AddAll(const Numbers& numbers) {
    for (double each : numbers) Add(each);
  }

  std::uint64_t value = 14695981039346656037U;
};

// The digests are the same with each compiler, at each level of optimisation, on processors with vector or fused
// operations and without: a change here is a change of what a seed gives.
TEST(SameBits, ComeOfASeedEverywhere) {
  MtRng<Mt64Traits> engine(9);
  QZGaussianRNG normal(0, 1);
  QZGammaRNG large(2.5, 1);
  QZGammaRNG small(0.4, 1);
  QZStudentsTRNG student(0, 1, 3);
  QZGenExtremeValRNG extreme(0, 1, 0.2);
  std::vector<double> rotation;
  Digest digest;
  for (int i = 0; i < 20000; ++i) {
    digest.Add(normal(engine));
    digest.Add(large(engine));
    digest.Add(small(engine));
    digest.Add(student(engine));
    digest.Add(extreme(engine));
    digest.Add(QZerfc(3 * normal(engine)));
    if (i % 10 != 0) continue;
    QZ3DRotationMatrixRNG().GetRotationMatrix(rotation, engine);
    digest.AddAll(rotation);
  }
  EXPECT_EQ(digest.value, 15255564451374213957U);
}

TEST(SameBits, ComeOfPointsEverywhere) {
  MtRng<Mt64Traits> engine(10);
  QZUniformDoubleRNG uniform(-10, 10);
  Digest digest;
  for (unsigned int n = 3; n < 100; ++n) {
    std::vector<double> a(3UL * n);
    std::vector<double> b(3UL * n);
    std::vector<double> w(n);
    for (double& each : a) each = uniform(engine);
    for (double& each : b) each = uniform(engine);
    for (double& each : w) each = engine.getUnitDouble();
    double motion[12];
    digest.Add(QZQCPRMSBetweenPoints(a.data(), b.data(), n, motion, motion + 9));
    digest.AddAll(motion);
    digest.Add(QZQCPRMSBetweenWeightedPoints(a.data(), b.data(), w.data(), n, motion, motion + 9));
    digest.AddAll(motion);
    digest.Add(SimpleRMSBetweenWeightedPoints(a.data(), b.data(), w.data(), n, motion));
    digest.AddAll(motion);
    const std::vector<float> fa(a.begin(), a.end());
    const std::vector<float> fb(b.begin(), b.end());
    const std::vector<float> fw(w.begin(), w.end());
    digest.Add(QZQCPRMSBetweenWeightedPoints(fa.data(), fb.data(), fw.data(), n, motion, motion + 9));
    digest.AddAll(motion);
  }
  EXPECT_EQ(digest.value, 10722229913285711043U);
}

TEST(SameBits, ComeOfTheOrientationsEverywhere) {
  std::vector<double> quaternions(640);
  ASSERT_TRUE(QZGetHealPix(160, quaternions.data()));
  Digest digest;
  digest.AddAll(quaternions);
  EXPECT_EQ(digest.value, 6402343319288349615U);
}

}  // namespace
