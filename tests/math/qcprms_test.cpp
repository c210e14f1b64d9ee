#include "qz/math/qcprms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>

#include "qz/math/qcpsums_impl.h"
#include "qz/math/simplerms.h"
#include "tests/math/pointsets.h"
#include "tests/system/cli/messages.h"

#if __has_include(<eigen3/Eigen/SVD>)
#include <eigen3/Eigen/LU>
#include <eigen3/Eigen/SVD>
#endif

using namespace QZMath;
using QZSystem::Messages;
using QZSystem::QZThrow;

namespace {

struct Motion {
  double rms;
  double rotation[9];
  double translation[3];
};

std::vector<float> floats(const std::vector<double>& numbers) {
  std::vector<float> result;
  for (double each : numbers) result.push_back(static_cast<float>(each));
  return result;
}

Motion polynomial(const PointSets& sets) {
  Motion m;
  m.rms = QZQCPRMSBetweenWeightedPoints(sets.a.data(), sets.b.data(), sets.Weights(), sets.Count(), m.rotation,
                                        m.translation);
  return m;
}

Motion polynomialOfFloats(const PointSets& sets) {
  const std::vector<float> a = floats(sets.a);
  const std::vector<float> b = floats(sets.b);
  const std::vector<float> w = floats(sets.weights);
  Motion m;
  m.rms = QZQCPRMSBetweenWeightedPoints(a.data(), b.data(), w.empty() ? nullptr : w.data(), sets.Count(), m.rotation,
                                        m.translation);
  return m;
}

Motion jacobi(const PointSets& sets) {
  double result[12];
  Motion m;
  m.rms = SimpleRMSBetweenWeightedPoints(sets.a.data(), sets.b.data(), sets.Weights(), sets.Count(), result);
  std::copy(result, result + 9, m.rotation);
  std::copy(result + 9, result + 12, m.translation);
  return m;
}

Motion jacobiOfFloats(const PointSets& sets) {
  const std::vector<float> a = floats(sets.a);
  const std::vector<float> b = floats(sets.b);
  const std::vector<float> w = floats(sets.weights);
  double result[12];
  Motion m;
  m.rms = SimpleRMSBetweenWeightedPoints(a.data(), b.data(), w.empty() ? nullptr : w.data(), sets.Count(), result);
  std::copy(result, result + 9, m.rotation);
  std::copy(result + 9, result + 12, m.translation);
  return m;
}

void expectProper(const double* r, const std::string& what) {
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const double dot = r[3 * i] * r[3 * j] + r[3 * i + 1] * r[3 * j + 1] + r[3 * i + 2] * r[3 * j + 2];
      EXPECT_NEAR(dot, i == j ? 1 : 0, 1e-9) << what;
    }
  }
  const double determinant =
      r[0] * (r[4] * r[8] - r[5] * r[7]) - r[1] * (r[3] * r[8] - r[5] * r[6]) + r[2] * (r[3] * r[7] - r[4] * r[6]);
  EXPECT_NEAR(determinant, 1, 1e-9) << what;
}

#if __has_include(<eigen3/Eigen/SVD>)
// The solution by singular values (Kabsch 1976, 1978).
Motion kabsch(const PointSets& sets) {
  using Points = Eigen::Map<const Eigen::Matrix<double, 3, Eigen::Dynamic>>;
  const Points a(sets.a.data(), 3, sets.Count());
  const Points b(sets.b.data(), 3, sets.Count());
  Eigen::VectorXd w = Eigen::VectorXd::Ones(sets.Count());
  if (sets.Weights()) w = Eigen::Map<const Eigen::VectorXd>(sets.Weights(), sets.Count());
  const Eigen::Vector3d ca = a * w / w.sum();
  const Eigen::Vector3d cb = b * w / w.sum();
  const Eigen::Matrix3d h = (b.colwise() - cb) * w.asDiagonal() * (a.colwise() - ca).transpose();
  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(h, Eigen::ComputeFullU | Eigen::ComputeFullV);
  Eigen::Matrix3d signs = Eigen::Matrix3d::Identity();
  if ((svd.matrixV() * svd.matrixU().transpose()).determinant() < 0) signs(2, 2) = -1;
  const Eigen::Matrix<double, 3, 3, Eigen::RowMajor> r = svd.matrixV() * signs * svd.matrixU().transpose();
  const Eigen::Vector3d t = ca - r * cb;
  Motion m;
  std::copy(r.data(), r.data() + 9, m.rotation);
  std::copy(t.data(), t.data() + 3, m.translation);
  m.rms = RmsAfter(sets, m.rotation, m.translation);
  return m;
}

struct Solver {
  const char* name;
  Motion (*solve)(const PointSets&);
  bool stopsEarly;   // within a millionth of the eigenvalue
  double rounding;   // of coordinates, relative to their size
  double cancelled;  // of the square of the RMS, the difference of large sums, for sets 10 wide
};

// Points on a line leave the eigenvalue double, and Newton's steps to it then end a millionth of it above.
double tolerance(const Solver& solver, const PointSets& sets, double rms) {
  double size = 0;
  for (std::size_t i = 0; i < sets.a.size(); ++i) size = std::max({size, std::abs(sets.a[i]), std::abs(sets.b[i])});
  const bool isDouble = sets.kind.compare(0, 9, "collinear") == 0;
  const double early = solver.stopsEarly && isDouble ? 4e-6 * size * size : 0;
  return std::sqrt(rms * rms + early + solver.cancelled) - rms + 1e-10 + size * solver.rounding;
}

TEST(Superposition, AgreesWithSingularValues) {
  const Solver solvers[] = {{"polynomial", polynomial, true, 0, 1e-9},
                            {"polynomial of floats", polynomialOfFloats, true, 1e-6, 1e-5},
                            {"Jacobi", jacobi, false, 0, 1e-12},
                            {"Jacobi of floats", jacobiOfFloats, false, 1e-6, 1e-12}};
  PointSetMaker maker;
  for (const char* kind : PointSetMaker::kinds) {
    for (int i = 0; i < 130; ++i) {
      const PointSets sets = maker.Make(kind, i % 2 == 1);
      const Motion best = kabsch(sets);
      for (const Solver& solver : solvers) {
        const std::string what = solver.name + (", " + sets.kind) + ", set " + std::to_string(i);
        const Motion found = solver.solve(sets);
        const double allowed = tolerance(solver, sets, best.rms);
        // What is below 0.001 is told as 0 by the polynomial.
        if (!solver.stopsEarly || best.rms > 0.0011 || found.rms != 0) {
          EXPECT_NEAR(found.rms, best.rms, allowed) << what;
        }
        EXPECT_NEAR(RmsAfter(sets, found.rotation, found.translation), best.rms, allowed) << what;
        expectProper(found.rotation, what);
      }
    }
  }
}
#endif

TEST(Superposition, RecoversAMotion) {
  PointSetMaker maker;
  for (int i = 0; i < 20; ++i) {
    const PointSets sets = maker.Make("unchanged", i % 2 == 1);
    const Motion m = polynomial(sets);
    EXPECT_EQ(m.rms, 0.0) << i;
    EXPECT_LT(RmsAfter(sets, m.rotation, m.translation), 1e-12) << i;
    PointSets same = sets;
    same.b = same.a;
    const Motion none = polynomial(same);
    EXPECT_EQ(none.rms, 0.0) << i;
    for (std::size_t k = 0; k < 9; ++k) EXPECT_NEAR(none.rotation[k], k % 4 == 0 ? 1 : 0, 1e-12) << i;
    for (double each : none.translation) EXPECT_NEAR(each, 0, 1e-11) << i;
  }
}

TEST(Superposition, GivesTheSameWithoutAMotion) {
  PointSetMaker maker;
  const PointSets sets = maker.Make("random", false);
  const Motion m = polynomial(sets);
  EXPECT_EQ(QZQCPRMSBetweenPoints(sets.a.data(), sets.b.data(), sets.Count(), nullptr, nullptr), m.rms);
  EXPECT_NEAR(SimpleRMSBetweenPoints(sets.a.data(), sets.b.data(), sets.Count(), nullptr), m.rms, 1e-9);
  const std::vector<double> ones(sets.Count(), 1.0);
  EXPECT_EQ(QZQCPRMSBetweenWeightedPoints(sets.a.data(), sets.b.data(), ones.data(), sets.Count(), nullptr, nullptr),
            m.rms);
}

// Weights that are whole numbers are the same as points that are repeated; one of 0 leaves a point out.
TEST(Superposition, WeightsCountAsRepeatedPoints) {
  PointSetMaker maker;
  for (auto solve : {polynomial, jacobi}) {
    PointSets sets = maker.Make("random", true);
    PointSets repeated;
    for (std::size_t i = 0; i < sets.Count(); ++i) {
      sets.weights[i] = static_cast<double>(i % 3);
      for (std::size_t k = 0; k < i % 3; ++k) {
        repeated.a.insert(repeated.a.end(), &sets.a[3 * i], &sets.a[3 * i] + 3);
        repeated.b.insert(repeated.b.end(), &sets.b[3 * i], &sets.b[3 * i] + 3);
      }
    }
    const Motion weighted = solve(sets);
    const Motion counted = solve(repeated);
    EXPECT_NEAR(weighted.rms, counted.rms, 1e-9);
    for (std::size_t k = 0; k < 9; ++k) EXPECT_NEAR(weighted.rotation[k], counted.rotation[k], 1e-9) << k;
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(weighted.translation[k], counted.translation[k], 1e-9) << k;
  }
}

// Each number of points that the lanes are left with at the end, against sums made one by one.
TEST(Superposition, SumsEveryPointOnce) {
  PointSetMaker maker;
  for (unsigned int n = 1; n <= 13; ++n) {
    PointSets sets;
    do {
      sets = maker.Make("random", true);
    } while (sets.Count() < n);
    for (const double* weights : {static_cast<const double*>(nullptr), sets.Weights()}) {
      const PointSums sums = SumPoints(sets.a.data(), sets.b.data(), weights, n);
      double w = 0;
      double centers[6] = {};
      for (std::size_t i = 0; i < n; ++i) {
        const double weight = weights ? weights[i] : 1;
        w += weight;
        for (std::size_t k = 0; k < 3; ++k) {
          centers[k] += weight * sets.a[3 * i + k];
          centers[3 + k] += weight * sets.b[3 * i + k];
        }
      }
      double cross[3][3] = {};
      double squares = 0;
      for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t u = 0; u < 3; ++u) {
          const double weight = weights ? weights[i] : 1;
          const double a = sets.a[3 * i + u] - centers[u] / w;
          squares += weight * (a * a + std::pow(sets.b[3 * i + u] - centers[3 + u] / w, 2));
          for (std::size_t v = 0; v < 3; ++v) {
            cross[u][v] += weight * a * (sets.b[3 * i + v] - centers[3 + v] / w);
          }
        }
      }
      EXPECT_NEAR(sums.weight, w, 1e-12) << n;
      EXPECT_NEAR(sums.squares, squares, 1e-10) << n;
      for (std::size_t u = 0; u < 3; ++u) {
        EXPECT_NEAR(sums.centerOfA[u], centers[u] / w, 1e-12) << n;
        EXPECT_NEAR(sums.centerOfB[u], centers[3 + u] / w, 1e-12) << n;
        for (std::size_t v = 0; v < 3; ++v) EXPECT_NEAR(sums.cross[u][v], cross[u][v], 1e-10) << n << u << v;
      }
    }
  }
}

class Fallback : public testing::Test {
 protected:
  Fallback() { QZThrow.SetLevel(QZSystem::QZErrorLevel::Debug); }
  ~Fallback() override { QZThrow.SetLevel(QZSystem::QZErrorLevel::Info); }

  Messages messages;
};

TEST_F(Fallback, TakesFewPoints) {
  const double a[6] = {1, 2, 3, 4, 2, 3};
  const double b[6] = {0, 0, 0, 0, 5, 0};
  const char* report = "QN RMS requires 3 independent coordinates. Falling back to Jacobi RMS.";
  double rotation[9];
  double translation[3];
  EXPECT_EQ(QZQCPRMSBetweenPoints(a, b, 0, rotation, translation), -1.0);
  EXPECT_NE(messages.Take().find(report), std::string::npos);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(rotation[i], i % 4 == 0 ? 1 : 0);
  for (double each : translation) EXPECT_EQ(each, 0);

  EXPECT_EQ(QZQCPRMSBetweenPoints(a, b, 1, rotation, translation), 0.0);
  EXPECT_NE(messages.Take().find(report), std::string::npos);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(translation[i], a[i]);

  // Two pairs 3 and 5 apart: each point stays 1 away.
  EXPECT_NEAR(QZQCPRMSBetweenPoints(a, b, 2, rotation, translation), 1, 1e-12);
  EXPECT_NE(messages.Take().find(report), std::string::npos);
  EXPECT_NEAR(rotation[1], 1, 1e-12);  // the y axis turns into the x axis
}

TEST_F(Fallback, TakesPointsThatCoincide) {
  const std::vector<double> a(12, 3.0);
  const std::vector<double> b(12, 5.0);
  double rotation[9];
  double translation[3];
  EXPECT_EQ(QZQCPRMSBetweenPoints(a.data(), b.data(), 4, rotation, translation), 0.0);
  EXPECT_NE(messages.Take().find("Newton raphson failed. Falling back to Jacobi RMS."), std::string::npos);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(rotation[i], i % 4 == 0 ? 1 : 0);
  for (double each : translation) EXPECT_EQ(each, -2);
}

TEST_F(Fallback, TakesWeightsThatAreAllZero) {
  PointSetMaker maker;
  const PointSets sets = maker.Make("random", false);
  const std::vector<double> zeros(sets.Count(), 0.0);
  double rotation[9];
  double translation[3] = {9, 9, 9};
  EXPECT_EQ(
      QZQCPRMSBetweenWeightedPoints(sets.a.data(), sets.b.data(), zeros.data(), sets.Count(), rotation, translation),
      0.0);
  EXPECT_NE(messages.Take().find("Newton raphson failed. Falling back to Jacobi RMS."), std::string::npos);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(rotation[i], i % 4 == 0 ? 1 : 0);
  for (double each : translation) EXPECT_EQ(each, 0);
}

// Points a hundredth apart leave nothing of the cofactors, whose squares go with the twelfth power of the size.
TEST_F(Fallback, TakesPointsTooCloseOrTooFarForARotation) {
  for (const double scale : {1e-3, 1e26}) {
    SCOPED_TRACE(scale);
    PointSetMaker maker;
    PointSets sets = maker.Make("shaken", false);
    for (double& each : sets.a) each *= scale;
    for (double& each : sets.b) each *= scale;
    const Motion found = polynomial(sets);
    EXPECT_NE(messages.Take().find("Failed to generate rotation matrix. Falling back to Jacobi RMS."),
              std::string::npos);
    const Motion expected = jacobi(sets);
    EXPECT_EQ(found.rms, expected.rms);
    for (std::size_t k = 0; k < 9; ++k) EXPECT_EQ(found.rotation[k], expected.rotation[k]) << k;
    for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(found.translation[k], expected.translation[k]) << k;
  }
}

TEST_F(Fallback, TakesWhatHasNoSquareRoot) {
  // Large sets that match: the rounding of the sums leaves less than -0.0001 for the square.
  MtRng<Mt64Traits> engine(1);
  bool met = false;
  for (int i = 0; i < 200 && !met; ++i) {
    std::vector<double> a;
    for (int k = 0; k < 60; ++k) a.push_back(1e7 * (engine.getUnitDouble() - 0.5));
    const double rms = QZQCPRMSBetweenPoints(a.data(), a.data(), 20, nullptr, nullptr);
    const std::string text = messages.Take();
    const std::size_t at = text.find("Sqrt yields non-normal number -0.");
    if (at == std::string::npos) continue;
    met = true;
    EXPECT_NE(text.find("nan. Falling back to Jacobi RMS."), std::string::npos) << text;
    EXPECT_EQ(rms, 0.0);
  }
  EXPECT_TRUE(met);
}

TEST_F(Fallback, StaysSoundForWhatIsNoNumber) {
  PointSetMaker maker;
  for (double bad : {std::nan(""), HUGE_VAL, DBL_MAX}) {
    PointSets sets = maker.Make("random", false);
    sets.a[4] = bad;
    polynomial(sets);
    EXPECT_NE(messages.Take().find("Newton raphson failed."), std::string::npos) << bad;
  }
}

}  // namespace
