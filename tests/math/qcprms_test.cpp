#include "qz/math/qcprms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>

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

const Motion none{0, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {0, 0, 0}};

template <class Number>
Motion polynomial(const PointSets& sets) {
  const std::vector<Number> a(sets.a.begin(), sets.a.end()), b(sets.b.begin(), sets.b.end());
  const std::vector<Number> w(sets.weights.begin(), sets.weights.end());
  Motion m;
  m.rms = QZQCPRMSBetweenWeightedPoints(a.data(), b.data(), w.empty() ? nullptr : w.data(), sets.Count(), m.rotation,
                                        m.translation);
  return m;
}

template <class Number>
Motion jacobi(const PointSets& sets) {
  const std::vector<Number> a(sets.a.begin(), sets.a.end()), b(sets.b.begin(), sets.b.end());
  const std::vector<Number> w(sets.weights.begin(), sets.weights.end());
  double result[12];
  Motion m;
  m.rms = SimpleRMSBetweenWeightedPoints(a.data(), b.data(), w.empty() ? nullptr : w.data(), sets.Count(), result);
  std::copy(result, result + 9, m.rotation);
  std::copy(result + 9, result + 12, m.translation);
  return m;
}

void expectMotion(const Motion& found, const Motion& expected, double tolerance) {
  EXPECT_NEAR(found.rms, expected.rms, tolerance);
  for (std::size_t k = 0; k < 9; ++k) EXPECT_NEAR(found.rotation[k], expected.rotation[k], tolerance) << k;
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(found.translation[k], expected.translation[k], tolerance) << k;
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
  const Solver solvers[] = {{"polynomial", polynomial<double>, true, 0, 1e-9},
                            {"polynomial of floats", polynomial<float>, true, 1e-6, 1e-5},
                            {"Jacobi", jacobi<double>, false, 0, 1e-12},
                            {"Jacobi of floats", jacobi<float>, false, 1e-6, 1e-12}};
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
        EXPECT_NEAR(DistanceFromRotation(found.rotation), 0, 1e-9) << what;
      }
    }
  }
}
#endif

TEST(Superposition, RecoversAMotion) {
  PointSetMaker maker;
  for (int i = 0; i < 20; ++i) {
    SCOPED_TRACE(i);
    PointSets sets = maker.Make("unchanged", i % 2 == 1);
    const Motion m = polynomial<double>(sets);
    EXPECT_EQ(m.rms, 0.0);
    EXPECT_LT(RmsAfter(sets, m.rotation, m.translation), 1e-12);
    sets.b = sets.a;
    expectMotion(polynomial<double>(sets), none, 1e-11);
  }
}

TEST(Superposition, GivesTheSameWithoutAMotion) {
  PointSetMaker maker;
  const PointSets sets = maker.Make("random", false);
  const double rms = polynomial<double>(sets).rms;
  EXPECT_EQ(QZQCPRMSBetweenPoints(sets.a.data(), sets.b.data(), sets.Count(), nullptr, nullptr), rms);
  EXPECT_NEAR(SimpleRMSBetweenPoints(sets.a.data(), sets.b.data(), sets.Count(), nullptr), rms, 1e-9);
  const std::vector<double> ones(sets.Count(), 1.0);
  EXPECT_EQ(QZQCPRMSBetweenWeightedPoints(sets.a.data(), sets.b.data(), ones.data(), sets.Count(), nullptr, nullptr),
            rms);
}

// Weights that are whole numbers are the same as points that are repeated; one of 0 leaves a point out.
TEST(Superposition, WeightsCountAsRepeatedPoints) {
  PointSetMaker maker;
  for (auto solve : {polynomial<double>, jacobi<double>}) {
    PointSets sets = maker.Make("random", true);
    PointSets repeated;
    for (std::size_t i = 0; i < sets.Count(); ++i) {
      sets.weights[i] = static_cast<double>(i % 3);
      for (std::size_t k = 0; k < i % 3; ++k) {
        repeated.a.insert(repeated.a.end(), &sets.a[3 * i], &sets.a[3 * i] + 3);
        repeated.b.insert(repeated.b.end(), &sets.b[3 * i], &sets.b[3 * i] + 3);
      }
    }
    expectMotion(solve(sets), solve(repeated), 1e-9);
  }
}

// What the polynomial can't answer soundly it says, and hands on.
class Fallback : public testing::Test {
 protected:
  Fallback() { QZThrow.SetLevel(QZSystem::QZErrorLevel::Debug); }
  ~Fallback() override { QZThrow.SetLevel(QZSystem::QZErrorLevel::Info); }

  Motion Solve(const PointSets& sets, const std::string& report) {
    const Motion m = polynomial<double>(sets);
    const std::string told = messages.Take();
    EXPECT_NE(told.find(report + " Falling back to Jacobi RMS."), std::string::npos) << told;
    return m;
  }

  Messages messages;
};

TEST_F(Fallback, TakesFewPoints) {
  const std::string few = "QN RMS requires 3 independent coordinates.";
  Motion expected = none;
  expected.rms = -1;
  expectMotion(Solve({}, few), expected, 0);
  expectMotion(Solve({"one", {1, 2, 3}, {0, 0, 0}, {}}, few), {0, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {1, 2, 3}}, 0);
  // Two pairs 3 and 5 apart: each point stays 1 away, and the y axis turns into the x axis.
  const Motion two = Solve({"two", {1, 2, 3, 4, 2, 3}, {0, 0, 0, 0, 5, 0}, {}}, few);
  EXPECT_NEAR(two.rms, 1, 1e-12);
  EXPECT_NEAR(two.rotation[1], 1, 1e-12);
}

TEST_F(Fallback, TakesPointsThatCoincideOrHaveNoWeight) {
  const std::string failed = "Newton raphson failed.";
  const PointSets same{"same", std::vector<double>(12, 3.0), std::vector<double>(12, 5.0), {}};
  expectMotion(Solve(same, failed), {0, {1, 0, 0, 0, 1, 0, 0, 0, 1}, {-2, -2, -2}}, 0);
  PointSets weightless = PointSetMaker().Make("random", false);
  weightless.weights.assign(weightless.Count(), 0.0);
  expectMotion(Solve(weightless, failed), none, 0);
  for (double bad : {std::nan(""), HUGE_VAL, DBL_MAX}) {
    PointSets sets = PointSetMaker().Make("random", false);
    sets.a[4] = bad;
    Solve(sets, failed);
  }
}

// Points a hundredth apart leave nothing of the cofactors, whose squares go with the twelfth power of the size.
TEST_F(Fallback, TakesPointsTooCloseOrTooFarForARotation) {
  for (const double scale : {1e-3, 1e26}) {
    SCOPED_TRACE(scale);
    PointSets sets = PointSetMaker().Make("shaken", false);
    for (double& each : sets.a) each *= scale;
    for (double& each : sets.b) each *= scale;
    expectMotion(Solve(sets, "Failed to generate rotation matrix."), jacobi<double>(sets), 0);
  }
}

TEST_F(Fallback, TakesWhatHasNoSquareRoot) {
  // Large sets that match: the rounding of the sums leaves less than -0.0001 for the square.
  MtRng<Mt64Traits> engine(1);
  std::string text;
  for (int i = 0; i < 200 && text.find("Sqrt yields non-normal number -0.") == std::string::npos; ++i) {
    std::vector<double> a(60);
    for (double& each : a) each = 1e7 * (engine.getUnitDouble() - 0.5);
    EXPECT_EQ(QZQCPRMSBetweenPoints(a.data(), a.data(), 20, nullptr, nullptr), 0.0);
    text = messages.Take();
  }
  EXPECT_NE(text.find("nan. Falling back to Jacobi RMS."), std::string::npos) << text;
}

}  // namespace
