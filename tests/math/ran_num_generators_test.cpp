#include "qz/math/ran_num_generators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <functional>
#include <map>
#include <utility>
#include <vector>

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

struct Golden {
  const char* name;
  Draw draw;
  std::array<double, 3> first;
  double hundredth;
  int words;  // that a hundred draws consume
};

// The values come from a second implementation, in another language, on its mathematical library.
TEST(Distributions, DrawTheSameNumbersForASeed) {
  const Golden cases[] = {
      {"uniform int", QZUniformIntRNG(-2, 3), {-2, 2, -1}, 2, 100},
      {"uniform double",
       QZUniformDoubleRNG(2, 5),
       {4.2654665988636165, 3.9170941815640923, 4.25643560224408},
       2.371553832153663,
       100},
      {"gaussian",
       QZGaussianRNG(10, 2),
       {11.40997653284172, 12.587640846545874, 8.851810386559478},
       10.660681019075602,
       120},
      {"gamma large",
       QZGammaRNG(2.5, 3),
       {9.979014285692383, 2.9790468983940848, 2.4167693965185437},
       2.8885404229913254,
       224},
      {"gamma of shape 1",
       QZGammaRNG(1, 1),
       {1.7703240198053811, 0.15777280751700298, 0.5946107246386756},
       0.016415939590768064,
       262},
      {"gamma small",
       QZGammaRNG(0.5, 2),
       {0.15773271562093835, 0.16225157245998548, 0.02069998431031875},
       0.2179683994269358,
       288},
      {"Student's t",
       QZStudentsTRNG(1, 2, 5),
       {3.2371950309150055, 5.55844819151247, -3.2633571985875918},
       -0.5398528461715477,
       360},
      {"chi-square",
       QZChiSquaredRNG(3),
       {4.492840952639874, 0.8129135307336881, 2.0772065952008565},
       4.548044530615701,
       242},
      {"Snedecor's F",
       QZSnedecorsFRNG(4, 7),
       {2.955393617716621, 0.33439308915878824, 0.7435356025078569},
       1.2062570250186728,
       462},
      {"beta", QZBetaRNG(2, 3), {0.6792048545662149, 0.1853296949843757, 0.33059365125096013}, 0.4031054505721587, 466},
      {"Gumbel",
       QZGumbelRNG(1, 2),
       {3.540000532295338, 2.6068095741765056, 3.511754412417879},
       -0.4730586469732212,
       100},
      {"extreme value",
       QZGenExtremeValRNG(1, 2, 0.3),
       {4.09165148187758, 2.8169887568163587, 4.050393752770559},
       -0.32166857289168194,
       100},
      {"extreme value, shape below 0",
       QZGenExtremeValRNG(0, 1, -0.4),
       {0.9957557307351774, 0.6870981073579376, 0.9872338696569779},
       -0.8565124085742415,
       100},
  };
  for (const Golden& each : cases) {
    Counting engine(42);
    for (double expected : each.first) EXPECT_DOUBLE_EQ(each.draw(engine), expected) << each.name;
    for (int i = 3; i < 99; ++i) each.draw(engine);
    EXPECT_DOUBLE_EQ(each.draw(engine), each.hundredth) << each.name;
    EXPECT_EQ(engine.words, each.words) << each.name;
  }
}

TEST(Distributions, SetParamsIsAsGoodAsANewOne) {
  const auto expectSame = [](const char* name, Draw changed, Draw fresh) {
    Counting first(5);
    Counting second(5);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(changed(first), fresh(second)) << name << ' ' << i;
  };
  const auto changed = [](auto distribution, auto... parameters) {
    distribution.SetParams(parameters...);
    return distribution;
  };
  expectSame("uniform int", changed(QZUniformIntRNG(0, 1), 3, 9), QZUniformIntRNG(3, 9));
  expectSame("uniform double", changed(QZUniformDoubleRNG(0, 1), 3, 9), QZUniformDoubleRNG(3, 9));
  expectSame("gaussian", changed(QZGaussianRNG(0, 1), 3, 9), QZGaussianRNG(3, 9));
  expectSame("gamma up", changed(QZGammaRNG(0.5, 1), 3, 9), QZGammaRNG(3, 9));
  expectSame("gamma down", changed(QZGammaRNG(3, 1), 0.5, 9), QZGammaRNG(0.5, 9));
  expectSame("Student's t", changed(QZStudentsTRNG(0, 1, 1), 3, 9, 2), QZStudentsTRNG(3, 9, 2));
  expectSame("chi-square", changed(QZChiSquaredRNG(7), 1), QZChiSquaredRNG(1));
  expectSame("Snedecor's F", changed(QZSnedecorsFRNG(1, 1), 3, 9), QZSnedecorsFRNG(3, 9));
  expectSame("beta", changed(QZBetaRNG(1, 1), 3, 9), QZBetaRNG(3, 9));
  expectSame("Gumbel", changed(QZGumbelRNG(0, 1), 3, 9), QZGumbelRNG(3, 9));
  expectSame("extreme value", changed(QZGenExtremeValRNG(0, 1, 1), 3, 9, 0), QZGumbelRNG(3, 9));
}

TEST(UniformInt, MeetsBothBoundsOfAnyRange) {
  struct Case {
    int low;
    int high;
    double word;
    int expected;
  };
  const Case cases[] = {{3, 3, 2147483647, 3},
                        {-1, 1, 2, 1},
                        {INT_MIN, INT_MAX, 0, INT_MIN},
                        {INT_MIN, INT_MAX, 2147483647, -1},
                        {INT_MIN, -1, 2147483647, -1},
                        {INT_MIN, -2, 2147483647, INT_MIN},
                        {0, INT_MAX, 2147483647, INT_MAX},
                        {-5, INT_MAX, 2147483647, INT_MAX - 5},
                        {7, 3, 5, 7}};
  for (const Case& each : cases) {
    Scripted engine({each.word});
    QZUniformIntRNG draw(each.low, each.high);
    EXPECT_EQ(draw(engine), each.expected) << each.low << " to " << each.high;
    EXPECT_TRUE(engine.IsUsedUp()) << each.low << " to " << each.high;
  }
}

TEST(Gaussian, KeepsTheSecondOfAPair) {
  // u = v = 1 is outside the circle, u = v = 0 its center; the pair that counts is u = 0, v = -0.5.
  Scripted engine({1, 1, 0.5, 0.5, 0.5, 0.25});
  QZGaussianRNG draw(0, 1);
  const double standard = -0.5 * std::sqrt(-2 * std::log(0.25) / 0.25);
  EXPECT_DOUBLE_EQ(draw(engine), standard);
  EXPECT_TRUE(engine.IsUsedUp());
  QZGaussianRNG copy = draw;
  copy.SetParams(100, 5);
  EXPECT_EQ(copy(engine), 100);
  EXPECT_EQ(draw(engine), 0);
}

TEST(Gamma, DrawsAPairAnewThatHasNoLogarithm) {
  Scripted large({0.7, 0, 0.5, 0.5});
  EXPECT_DOUBLE_EQ(QZGammaRNG(2, 3)(large), 6);
  EXPECT_TRUE(large.IsUsedUp());
  Scripted small({0, 0.5, 0.5, 0, 0.9, 0.1});
  EXPECT_DOUBLE_EQ(QZGammaRNG(0.5, 1)(small), std::pow(-std::log(0.9), 2));
  EXPECT_TRUE(small.IsUsedUp());
}

TEST(Gamma, EndsForParametersWithoutMeaning) {
  MtRng<Mt64Traits> engine;
  const double infinity = HUGE_VAL;
  for (double shape : {0.0, -1.0, -0.5, 1e-320, 1e300, 1e308, infinity, -infinity, std::nan("")}) {
    QZGammaRNG draw(shape, 1);
    for (int i = 0; i < 100; ++i) draw(engine);
  }
}

TEST(Gumbel, DrawsAnewWhatHasNoLogarithm) {
  Scripted engine({0, 1, 0.5});
  EXPECT_DOUBLE_EQ(QZGumbelRNG(0, 1)(engine), -std::log(std::log(2)));
}

struct Law {
  const char* name;
  Draw draw;
  std::function<double(double)> cumulative;
  double mean;
  double variance;
};

double normalBelow(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }
// The incomplete gamma function of a half-integral or integral shape, by its recurrence.
double gammaBelow(double shape, double x) {
  if (shape == 0.5) return std::erf(std::sqrt(x));
  if (shape == 1) return 1 - std::exp(-x);
  return gammaBelow(shape - 1, x) - std::exp((shape - 1) * std::log(x) - x - std::lgamma(shape));
}
double gumbelBelow(double x) { return std::exp(-std::exp(-x)); }

// 50000 draws at one seed. The distance of Kolmogorov and Smirnov exceeds 1.95 / sqrt(n) by chance once in a thousand
// seeds, each moment its bound, of four standard errors, once in sixteen thousand.
TEST(Distributions, FollowTheirLaws) {
  constexpr double none = -1;  // no such moment, or one that converges too slowly
  const double euler = 0.5772156649015329;
  const Law laws[] = {
      {"uniform double", QZUniformDoubleRNG(2, 5), [](double x) { return (x - 2) / 3; }, 3.5, 0.75},
      {"gaussian", QZGaussianRNG(10, 2), [](double x) { return normalBelow((x - 10) / 2); }, 10, 4},
      {"gamma 2.5", QZGammaRNG(2.5, 3), [](double x) { return gammaBelow(2.5, x / 3); }, 7.5, 22.5},
      {"gamma 1", QZGammaRNG(1, 1), [](double x) { return gammaBelow(1, x); }, 1, 1},
      {"gamma 12", QZGammaRNG(12, 1), [](double x) { return gammaBelow(12, x); }, 12, 12},
      {"gamma 0.5", QZGammaRNG(0.5, 2), [](double x) { return gammaBelow(0.5, x / 2); }, 1, 2},
      {"chi-square 3", QZChiSquaredRNG(3), [](double x) { return gammaBelow(1.5, x / 2); }, 3, 6},
      {"Student's t 1", QZStudentsTRNG(1, 2, 1), [](double x) { return 0.5 + std::atan((x - 1) / 2) / pi; }, none,
       none},
      {"Student's t 2", QZStudentsTRNG(0, 1, 2), [](double x) { return 0.5 + x / (2 * std::sqrt(2 + x * x)); }, none,
       none},
      {"Snedecor's F 2, 7", QZSnedecorsFRNG(2, 7), [](double x) { return 1 - std::pow(1 + 2 * x / 7, -3.5); }, 1.4,
       none},
      {"beta 2, 3", QZBetaRNG(2, 3), [](double x) { return x * x * (6 - 8 * x + 3 * x * x); }, 0.4, 0.04},
      {"beta 0.5, 0.5", QZBetaRNG(0.5, 0.5), [](double x) { return 2 / pi * std::asin(std::sqrt(x)); }, 0.5, 0.125},
      {"Gumbel", QZGumbelRNG(1, 2), [](double x) { return gumbelBelow((x - 1) / 2); }, 1 + 2 * euler, 4 * pi * pi / 6},
      {"extreme value 0.3", QZGenExtremeValRNG(0, 1, 0.3),
       [](double x) { return std::exp(-std::pow(1 + 0.3 * x, -1 / 0.3)); }, (std::tgamma(0.7) - 1) / 0.3, none},
      {"extreme value -0.4", QZGenExtremeValRNG(0, 1, -0.4),
       [](double x) { return std::exp(-std::pow(1 - 0.4 * x, 1 / 0.4)); }, (1 - std::tgamma(1.4)) / 0.4,
       (std::tgamma(1.8) - std::pow(std::tgamma(1.4), 2)) / 0.16},
  };
  for (const Law& law : laws) {
    constexpr std::size_t n = 50000;
    MtRng<Mt64Traits> engine(2026);
    std::vector<double> draws(n);
    for (double& each : draws) each = law.draw(engine);
    std::sort(draws.begin(), draws.end());
    double distance = 0;
    double sum = 0;
    double squares = 0;
    double fourths = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const double below = law.cumulative(draws[i]);
      distance = std::max(
          {distance, std::abs(below - static_cast<double>(i) / n), std::abs(below - static_cast<double>(i + 1) / n)});
      const double difference = draws[i] - law.mean;
      sum += difference;
      squares += difference * difference;
      fourths += std::pow(difference, 4);
    }
    EXPECT_LT(distance, 1.95 / std::sqrt(n)) << law.name;
    if (law.mean == none) continue;
    EXPECT_LT(std::abs(sum / n), 4 * std::sqrt(squares / n / n)) << law.name;
    if (law.variance == none) continue;
    const double error = std::sqrt((fourths / n - std::pow(squares / n, 2)) / n);
    EXPECT_LT(std::abs(squares / n - law.variance), 4 * error) << law.name;
  }
}

TEST(UniformInt, IsEven) {
  MtRng<Mt64Traits> engine(1);
  QZUniformIntRNG die(1, 6);
  std::array<int, 6> counts{};
  for (int i = 0; i < 60000; ++i) ++counts[static_cast<std::size_t>(die(engine) - 1)];
  double chi = 0;
  for (int count : counts) chi += std::pow(count - 10000, 2) / 10000.0;
  EXPECT_LT(chi, 20.5);  // by chance once in a thousand seeds
}

TEST(Sphere, SpreadsPointsEvenly) {
  MtRng<Mt64Traits> engine(11);
  const QZUniformOnUnitSphereRNG ball(2);
  std::vector<double> point(7, 9.0);
  std::array<double, 3> sums{};
  std::vector<double> heights;
  for (int i = 0; i < 20000; ++i) {
    ball.GetRandomPoint(point, engine);
    ASSERT_EQ(point.size(), 3U);
    ASSERT_NEAR(point[0] * point[0] + point[1] * point[1] + point[2] * point[2], 1, 1e-15);
    for (std::size_t k = 0; k < 3; ++k) sums[k] += point[k];
    heights.push_back(point[2]);
  }
  for (double sum : sums) EXPECT_LT(std::abs(sum), 4 * std::sqrt(20000.0 / 3));
  // Each zone of a sphere has the area of its height (Archimedes).
  std::sort(heights.begin(), heights.end());
  for (std::size_t i = 0; i < heights.size(); ++i) {
    ASSERT_NEAR((heights[i] + 1) / 2, static_cast<double>(i) / 20000, 1.95 / std::sqrt(20000.0)) << i;
  }
}

TEST(Sphere, HasAnyDimension) {
  Counting engine(42);
  QZUniformOnUnitSphereRNG sphere(3);
  std::vector<double> point;
  sphere.GetRandomPoint(point, engine);
  const std::vector<double> expected = {0.43234133032251465, 0.7934487276449644, -0.35206956525502336,
                                        0.24406374559668634};
  ASSERT_EQ(point.size(), expected.size());
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
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) {
        const double dot = m[3 * j] * m[3 * k] + m[3 * j + 1] * m[3 * k + 1] + m[3 * j + 2] * m[3 * k + 2];
        ASSERT_NEAR(dot, j == k ? 1 : 0, 1e-12);
      }
    }
    const double determinant =
        m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) + m[2] * (m[3] * m[7] - m[4] * m[6]);
    ASSERT_NEAR(determinant, 1, 1e-12);
    angles.push_back(std::acos((m[0] + m[4] + m[8] - 1) / 2));
  }
  // The angle of an even rotation is below a with the probability (a - sin a) / pi.
  std::sort(angles.begin(), angles.end());
  for (std::size_t i = 0; i < angles.size(); ++i) {
    ASSERT_NEAR((angles[i] - std::sin(angles[i])) / pi, static_cast<double>(i) / 5000, 1.95 / std::sqrt(5000.0)) << i;
  }
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

TEST(Shuffle, TakesOneWordForEachIndexButOne) {
  Counting engine(42);
  EXPECT_EQ(QZRandomShuffleOfIndices(10, engine), (std::vector<unsigned long>{3, 2, 4, 0, 6, 5, 1, 9, 7, 8}));
  EXPECT_EQ(engine.words, 9);
  EXPECT_EQ(QZRandomShuffleOfIndices(1, engine), std::vector<unsigned long>{0});
  EXPECT_TRUE(QZRandomShuffleOfIndices(0, engine).empty());
  EXPECT_EQ(engine.words, 9);
}

TEST(Shuffle, GivesEachOrderAsOften) {
  MtRng<Mt64Traits> engine(8);
  std::map<std::vector<unsigned long>, int> counts;
  for (int i = 0; i < 24000; ++i) ++counts[QZRandomShuffleOfIndices(4, engine)];
  ASSERT_EQ(counts.size(), 24U);
  double chi = 0;
  for (const auto& [order, count] : counts) chi += std::pow(count - 1000, 2) / 1000.0;
  EXPECT_LT(chi, 49.7);  // by chance once in a thousand seeds
}

}  // namespace
