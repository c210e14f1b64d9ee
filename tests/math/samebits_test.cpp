#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
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
  template <class Numbers>
  void Add(const Numbers& numbers) {
    for (double each : numbers) {
      std::uint64_t bits;
      std::memcpy(&bits, &each, sizeof bits);
      value = (value ^ bits) * 1099511628211U;
    }
  }
  void Add(std::initializer_list<double> numbers) { Add<std::initializer_list<double>>(numbers); }

  std::uint64_t value = 14695981039346656037U;
};

// The digests are the same with each compiler, at each level of optimisation, on processors with vector or fused
// operations and without: a change here is a change of what a seed gives.
TEST(SameBits, ComeOfASeedEverywhere) {
  MtRng<Mt64Traits> engine(9);
  QZGaussianRNG normal(0, 1);
  QZGammaRNG large(2.5, 1), small(0.4, 1);
  QZStudentsTRNG student(0, 1, 3);
  QZGenExtremeValRNG extreme(0, 1, 0.2);
  std::vector<double> rotation;
  Digest digest;
  for (int i = 0; i < 20000; ++i) {
    digest.Add({normal(engine), large(engine), small(engine), student(engine), extreme(engine)});
    digest.Add({QZerfc(3 * normal(engine))});
    if (i % 10 != 0) continue;
    QZ3DRotationMatrixRNG().GetRotationMatrix(rotation, engine);
    digest.Add(rotation);
  }
  EXPECT_EQ(digest.value, 15255564451374213957U);

  std::vector<double> quaternions(640);
  ASSERT_TRUE(QZGetHealPix(160, quaternions.data()));
  Digest orientations;
  orientations.Add(quaternions);
  EXPECT_EQ(orientations.value, 6402343319288349615U);
}

TEST(SameBits, ComeOfPointsEverywhere) {
  MtRng<Mt64Traits> engine(10);
  QZUniformDoubleRNG uniform(-10, 10);
  Digest digest;
  for (unsigned int n = 3; n < 100; ++n) {
    std::vector<double> a(3UL * n), b(3UL * n), w(n);
    for (double& each : a) each = uniform(engine);
    for (double& each : b) each = uniform(engine);
    for (double& each : w) each = engine.getUnitDouble();
    const std::vector<float> fa(a.begin(), a.end()), fb(b.begin(), b.end()), fw(w.begin(), w.end());
    double motion[12];
    digest.Add({QZQCPRMSBetweenPoints(a.data(), b.data(), n, motion, motion + 9)});
    digest.Add(motion);
    digest.Add({QZQCPRMSBetweenWeightedPoints(a.data(), b.data(), w.data(), n, motion, motion + 9)});
    digest.Add(motion);
    digest.Add({SimpleRMSBetweenWeightedPoints(a.data(), b.data(), w.data(), n, motion)});
    digest.Add(motion);
    digest.Add({QZQCPRMSBetweenWeightedPoints(fa.data(), fb.data(), fw.data(), n, motion, motion + 9)});
    digest.Add(motion);
  }
  EXPECT_EQ(digest.value, 10722229913285711043U);
}

}  // namespace
