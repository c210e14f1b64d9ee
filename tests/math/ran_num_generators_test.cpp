#include "qz/math/ran_num_generators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <map>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/math/pointsets.h"

using namespace QZMath;

namespace {

constexpr double pi = 3.141592653589793;

// An engine that counts its words.
class Counting : public QZRanNumEngine {
 public:
  explicit Counting(unsigned long seed) : engine(seed) {}
  unsigned int getUnsigned() override { return ++words, engine.getUnsigned(); }
  double getUnitDouble() override { return ++words, engine.getUnitDouble(); }

  int words = 0;

 private:
  MtRng<Mt64Traits> engine;
};

// An engine that gives what it was given.
class Scripted : public QZRanNumEngine {
 public:
  explicit Scripted(std::vector<double> script) : numbers(std::move(script)) {}
  unsigned int getUnsigned() override { return static_cast<unsigned int>(numbers.at(at++)); }
  double getUnitDouble() override { return numbers.at(at++); }
  bool IsUsedUp() const { return at == numbers.size(); }

 private:
  std::vector<double> numbers;
  std::size_t at = 0;
};

using Draw = std::function<double(QZRanNumEngine&)>;

// Name, distribution, first and hundredth draw of the seed 42, and the words that a hundred draws consume. The values
// come from a second implementation, in another language, on its mathematical library.
TEST(Distributions, DrawTheSameNumbersForASeed) {
  const std::tuple<const char*, Draw, double, double, int> cases[] = {
      {"extreme value below", QZGenExtremeValRNG(0, 1, -0.4), 0.9957557307351774, -0.8565124085742415, 100},
      {"gamma large", QZGammaRNG(2.5, 3), 9.979014285692383, 2.8885404229913254, 224},
      {"extreme value", QZGenExtremeValRNG(1, 2, 0.3), 4.09165148187758, -0.32166857289168194, 100},
      {"gaussian", QZGaussianRNG(10, 2), 11.40997653284172, 10.660681019075602, 120},
      {"uniform double", QZUniformDoubleRNG(2, 5), 4.2654665988636165, 2.371553832153663, 100},
      {"chi-square", QZChiSquaredRNG(3), 4.492840952639874, 4.548044530615701, 242},
      {"Student's t", QZStudentsTRNG(1, 2, 5), 3.2371950309150055, -0.5398528461715477, 360},
      {"Gumbel", QZGumbelRNG(1, 2), 3.540000532295338, -0.4730586469732212, 100},
      {"gamma of shape 1", QZGammaRNG(1, 1), 1.7703240198053811, 0.016415939590768064, 262},
      {"beta", QZBetaRNG(2, 3), 0.6792048545662149, 0.4031054505721587, 466},
      {"Snedecor's F", QZSnedecorsFRNG(4, 7), 2.955393617716621, 1.2062570250186728, 462},
      {"uniform int", QZUniformIntRNG(-2, 3), -2, 2, 100},
      {"gamma small", QZGammaRNG(0.5, 2), 0.15773271562093835, 0.2179683994269358, 288}};
  for (const auto& [name, draw, first, hundredth, words] : cases) {
    Counting engine(42);
    EXPECT_DOUBLE_EQ(draw(engine), first) << name;
    for (int i = 1; i < 99; ++i) draw(engine);
    EXPECT_DOUBLE_EQ(draw(engine), hundredth) << name;
    EXPECT_EQ(engine.words, words) << name;
  }
}

template <class Distribution, class... Parameters>
void expectSetParams(const char* name, Distribution changed, Parameters... parameters) {
  Distribution fresh(parameters...);
  changed.SetParams(parameters...);
  Counting first(5), second(5);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(changed(first), fresh(second)) << name << ' ' << i;
}

TEST(Distributions, SetParamsIsAsGoodAsANewOne) {
  expectSetParams("uniform int", QZUniformIntRNG(0, 1), 3, 9);
  expectSetParams("uniform double", QZUniformDoubleRNG(0, 1), 3, 9);
  expectSetParams("gaussian", QZGaussianRNG(0, 1), 3, 9);
  expectSetParams("gamma up", QZGammaRNG(0.5, 1), 3, 9);
  expectSetParams("gamma down", QZGammaRNG(3, 1), 0.5, 9);
  expectSetParams("Student's t", QZStudentsTRNG(0, 1, 1), 3, 9, 2);
  expectSetParams("chi-square", QZChiSquaredRNG(7), 1);
  expectSetParams("Snedecor's F", QZSnedecorsFRNG(1, 1), 3, 9);
  expectSetParams("beta", QZBetaRNG(1, 1), 3, 9);
  expectSetParams("Gumbel", QZGumbelRNG(0, 1), 3, 9);
  expectSetParams("extreme value", QZGenExtremeValRNG(0, 1, 1), 3, 9, 0);
}

TEST(UniformInt, MeetsBothBoundsOfAnyRange) {
  const std::tuple<int, int, double, int> cases[] = {
      {-5, INT_MAX, INT_MAX, INT_MAX - 5}, {INT_MIN, INT_MAX, 0, INT_MIN}, {3, 3, 2147483647, 3},
      {INT_MIN, INT_MAX, INT_MAX, -1},     {0, INT_MAX, INT_MAX, INT_MAX}, {-1, 1, 2, 1},
      {INT_MIN, -2, INT_MAX, INT_MIN},     {INT_MIN, -1, INT_MAX, -1},     {7, 3, 5, 7}};
  for (const auto& [low, high, word, expected] : cases) {
    Scripted engine({word});
    EXPECT_EQ(QZUniformIntRNG(low, high)(engine), expected) << low << " to " << high;
    EXPECT_TRUE(engine.IsUsedUp()) << low << " to " << high;
  }
}

TEST(Gaussian, KeepsTheSecondOfAPair) {
  // u = v = 1 is outside the circle, u = v = 0 its center; the pair that counts is u = 0, v = -0.5.
  Scripted engine({1, 1, 0.5, 0.5, 0.5, 0.25});
  QZGaussianRNG draw(0, 1);
  Scripted broken({1});
  EXPECT_THROW(draw(broken), std::out_of_range) << "which leaves no second one";
  EXPECT_DOUBLE_EQ(draw(engine), -0.5 * std::sqrt(-2 * std::log(0.25) / 0.25));
  EXPECT_TRUE(engine.IsUsedUp());
  QZGaussianRNG copy = draw;
  copy.SetParams(100, 5);
  EXPECT_EQ(copy(engine), 100);
  EXPECT_EQ(draw(engine), 0);
}

TEST(Distributions, DrawAnewWhatHasNoLogarithm) {
  const std::tuple<const char*, Draw, std::vector<double>, double> cases[] = {
      {"gamma large", QZGammaRNG(2, 3), {0.7, 0, 0.5, 0.5}, 6},
      {"gamma small", QZGammaRNG(0.5, 1), {0, 0.5, 0.5, 0, 0.9, 0.1}, std::pow(-std::log(0.9), 2)},
      {"Gumbel", QZGumbelRNG(0, 1), {0, 1, 0.5}, -std::log(std::log(2))}};
  for (const auto& [name, draw, script, expected] : cases) {
    Scripted engine(script);
    EXPECT_DOUBLE_EQ(draw(engine), expected) << name;
    EXPECT_TRUE(engine.IsUsedUp()) << name;
  }
}

TEST(Gamma, EndsForParametersWithoutMeaning) {
  MtRng<Mt64Traits> engine;
  for (double shape : {0.0, -1.0, -0.5, 1e-320, 1e300, 1e308, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
    QZGammaRNG draw(shape, 1);
    for (int i = 0; i < 100; ++i) draw(engine);
  }
}

// The distance of Kolmogorov and Smirnov exceeds this bound by chance once in a thousand seeds.
void expectLaw(const char* name, std::vector<double> draws, const std::function<double(double)>& cumulative) {
  std::sort(draws.begin(), draws.end());
  const auto n = static_cast<double>(draws.size());
  double distance = 0;
  for (std::size_t i = 0; i < draws.size(); ++i) {
    const double below = cumulative(draws[i]), rank = static_cast<double>(i);
    distance = std::max({distance, std::abs(below - rank / n), std::abs(below - (rank + 1) / n)});
  }
  EXPECT_LT(distance, 1.95 / std::sqrt(n)) << name;
}

double normalBelow(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }
// The incomplete gamma function of a half-integral or integral shape, by its recurrence.
double gammaBelow(double shape, double x) {
  if (shape == 0.5) return std::erf(std::sqrt(x));
  if (shape == 1) return 1 - std::exp(-x);
  return gammaBelow(shape - 1, x) - std::exp((shape - 1) * std::log(x) - x - std::lgamma(shape));
}
double extremeBelow(double shape, double x) { return std::exp(-std::pow(1 + shape * x, -1 / shape)); }

TEST(Distributions, FollowTheirLaws) {
  const std::tuple<const char*, Draw, std::function<double(double)>> laws[] = {
      {"beta 0.5, 0.5", QZBetaRNG(0.5, 0.5), [](double x) { return 2 / pi * std::asin(std::sqrt(x)); }},
      {"gaussian", QZGaussianRNG(10, 2), [](double x) { return normalBelow((x - 10) / 2); }},
      {"extreme -0.4", QZGenExtremeValRNG(0, 1, -0.4), [](double x) { return extremeBelow(-0.4, x); }},
      {"chi-square 3", QZChiSquaredRNG(3), [](double x) { return gammaBelow(1.5, x / 2); }},
      {"t 2", QZStudentsTRNG(0, 1, 2), [](double x) { return 0.5 + x / (2 * std::sqrt(2 + x * x)); }},
      {"uniform double", QZUniformDoubleRNG(2, 5), [](double x) { return (x - 2) / 3; }},
      {"F 2, 7", QZSnedecorsFRNG(2, 7), [](double x) { return 1 - std::pow(1 + 2 * x / 7, -3.5); }},
      {"gamma 2.5", QZGammaRNG(2.5, 3), [](double x) { return gammaBelow(2.5, x / 3); }},
      {"extreme 0.3", QZGenExtremeValRNG(0, 1, 0.3), [](double x) { return extremeBelow(0.3, x); }},
      {"gamma 0.5", QZGammaRNG(0.5, 2), [](double x) { return gammaBelow(0.5, x / 2); }},
      {"t 1", QZStudentsTRNG(1, 2, 1), [](double x) { return 0.5 + std::atan((x - 1) / 2) / pi; }},
      {"gamma 12", QZGammaRNG(12, 1), [](double x) { return gammaBelow(12, x); }},
      {"beta 2, 3", QZBetaRNG(2, 3), [](double x) { return x * x * (6 - 8 * x + 3 * x * x); }},
      {"gamma 1", QZGammaRNG(1, 1), [](double x) { return gammaBelow(1, x); }},
      {"Gumbel", QZGumbelRNG(1, 2), [](double x) { return std::exp(-std::exp((1 - x) / 2)); }}};
  for (const auto& [name, draw, cumulative] : laws) {
    MtRng<Mt64Traits> engine(2026);
    std::vector<double> draws(50000);
    for (double& each : draws) each = draw(engine);
    expectLaw(name, draws, cumulative);
  }
}

TEST(Sphere, HasAnyDimensionAndSpreadsPointsEvenly) {
  Counting engine(42);
  QZUniformOnUnitSphereRNG sphere(3);
  std::vector<double> point(7, 9.0);
  sphere.GetRandomPoint(point, engine);
  const std::vector<double> expected = {0.43234133032251465, 0.7934487276449644, -0.35206956525502336,
                                        0.24406374559668634};
  ASSERT_EQ(point.size(), 4U);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(point[i], expected[i]);
  sphere.SetParams(0);
  int above = 0;
  for (int i = 0; i < 1000; ++i) {
    sphere.GetRandomPoint(point, engine);
    ASSERT_EQ(point.size(), 1U);
    ASSERT_DOUBLE_EQ(std::abs(point[0]), 1);
    if (point[0] > 0) ++above;
  }
  EXPECT_NEAR(above, 500, 65);  // four standard errors
  // Each zone of a ball has the area of its height (Archimedes), along each axis.
  std::vector<double> axes[3];
  for (int i = 0; i < 20000; ++i) {
    QZUniformOnUnitSphereRNG(2).GetRandomPoint(point, engine);
    for (std::size_t k = 0; k < 3; ++k) axes[k].push_back(point.at(k));
    ASSERT_NEAR(point[0] * point[0] + point[1] * point[1] + point[2] * point[2], 1, 1e-15);
  }
  for (const auto& heights : axes) expectLaw("height", heights, [](double height) { return (height + 1) / 2; });
}

TEST(RotationMatrix, IsAProperRotationSpreadEvenly) {
  Counting engine(42);
  const QZ3DRotationMatrixRNG rotations;
  std::vector<double> m;
  rotations.GetRotationMatrix(m, engine);
  const std::vector<double> expected = {0.3880318577898681,  0.3019684668271061,   0.8707734047283658,
                                        -0.8033751637178286, -0.35221374579554743, 0.4801393793410632,
                                        0.4516853148614592,  -0.885867101948569,   0.10592381235467349};
  ASSERT_EQ(m.size(), 9U);
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(m[i], expected[i], 4e-16) << i;
  EXPECT_EQ(engine.words, 7);
  std::vector<double> angles;
  for (int i = 0; i < 5000; ++i) {
    rotations.GetRotationMatrix(m, engine);
    ASSERT_NEAR(DistanceFromRotation(m.data()), 0, 1e-12);
    angles.push_back(std::acos((m[0] + m[4] + m[8] - 1) / 2));
  }
  expectLaw("angle", angles, [](double angle) { return (angle - std::sin(angle)) / pi; });
}

TEST(RotationMatrix, DropsAPointAtThePole) {
  // A quarter turn, then a pair on the circle itself, which gives twice 0, then the third coordinate.
  Scripted engine({0.25, 0, 0.5, 0.5, 0.25});
  std::vector<double> m;
  QZ3DRotationMatrixRNG().GetRotationMatrix(m, engine);
  const double expected[9] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(m[i], expected[i], 1e-15) << i;
  EXPECT_TRUE(engine.IsUsedUp());
}

TEST(Shuffle, TakesOneWordForEachIndexButOneAndGivesEachOrderAsOften) {
  Counting engine(42);
  EXPECT_EQ(QZRandomShuffleOfIndices(10, engine), (std::vector<unsigned long>{3, 2, 4, 0, 6, 5, 1, 9, 7, 8}));
  EXPECT_EQ(QZRandomShuffleOfIndices(1, engine), std::vector<unsigned long>{0});
  EXPECT_TRUE(QZRandomShuffleOfIndices(0, engine).empty());
  EXPECT_EQ(engine.words, 9);
  std::map<std::vector<unsigned long>, int> counts;
  for (int i = 0; i < 24000; ++i) ++counts[QZRandomShuffleOfIndices(4, engine)];
  ASSERT_EQ(counts.size(), 24U);
  double chi = 0;
  for (const auto& [order, count] : counts) chi += std::pow(count - 1000, 2) / 1000.0;
  EXPECT_LT(chi, 49.7);  // by chance once in a thousand seeds
}

}  // namespace
