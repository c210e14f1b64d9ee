#include "qz/math/elementary_impl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "qz/math/rand.h"

using namespace QZMath;
using namespace QZMath::Elementary;

namespace {

struct Range {
  const char* name;
  double (*function)(double);
  long double (*reference)(long double);
  double low, high;
  bool byOctaves;
  double most;
};

// The greatest error in units of the last place of the result, against 64 bits of mantissa.
double greatestError(const Range& range) {
  MtRng<Mt64Traits> engine(1);
  double greatest = 0;
  for (int i = 0; i < 200000; ++i) {
    const double u = range.low + (range.high - range.low) * engine.getUnitDouble();
    const double x = range.byOctaves ? std::exp2(u) : u;
    const long double exact = range.reference(static_cast<long double>(x));
    const int exponent = std::max(std::ilogb(static_cast<double>(exact)), -1022);
    const long double error = std::abs(static_cast<long double>(range.function(x)) - exact);
    greatest = std::max(greatest, static_cast<double>(std::ldexp(error, 52 - exponent)));
  }
  return greatest;
}

TEST(Elementary, IsAsAccurateAsItSays) {
  const auto sine = [](double x) { return SineAndCosine(x).sine; };
  const auto cosine = [](double x) { return SineAndCosine(x).cosine; };
  const Range ranges[] = {{"x^0.75", [](double x) { return Power(x, 0.75); },
                           [](long double x) { return std::pow(x, 0.75L); }, -1074, 1023, true, 0.52},
                          {"sine of many turns", sine, std::sin, -1e5, 1e5, false, 0.8},
                          {"x^30.5", [](double x) { return Power(x, 30.5); },
                           [](long double x) { return std::pow(x, 30.5L); }, -33, 33, true, 0.52},
                          {"exp next to 0", Exp, std::exp, -0.01, 0.01, false, 0.52},
                          {"exp of the greatest results", Exp, std::exp, 709, 709.78, false, 0.52},
                          {"log next to 1", Log, std::log, 0.98, 1.02, false, 0.52},
                          {"arc cosine next to 1", ArcCosine, std::acos, 0.9999, 1, false, 1.2},
                          {"arc cosine", ArcCosine, std::acos, -1, 1, false, 1.2},
                          {"exp of subnormal results", Exp, std::exp, -745, -708, false, 0.8},
                          {"cosine", cosine, std::cos, -40, 40, false, 0.8},
                          {"log at the tables' seams", Log, std::log, 0.5, 2, false, 0.52},
                          {"exp", Exp, std::exp, -708, 709, false, 0.52},
                          {"log of all numbers", Log, std::log, -1074, 1023, true, 0.52},
                          {"sine", sine, std::sin, -40, 40, false, 0.8}};
  for (const Range& range : ranges) EXPECT_LT(greatestError(range), range.most) << range.name;
  MtRng<Mt64Traits> engine(2);
  for (int i = 0; i < 100000; ++i) {
    const double x = std::exp2(-1000 + 2000 * engine.getUnitDouble());
    ASSERT_NEAR(RoughLog(x), std::log(x), 2e-7) << x;
  }
}

TEST(Elementary, KnowsTheEnds) {
  const double infinity = HUGE_VAL;
  const double least = 0x1p-1074;
  const std::tuple<const char*, double, double> cases[] = {{"exp 0", Exp(0), 1},
                                                           {"exp -0", Exp(-0.0), 1},
                                                           {"exp of much", Exp(709.79), infinity},
                                                           {"exp of infinity", Exp(infinity), infinity},
                                                           {"exp of little", Exp(-745.2), 0},
                                                           {"exp of the least", Exp(-744.5), least},
                                                           {"exp of -infinity", Exp(-infinity), 0},
                                                           {"log 1", Log(1), 0},
                                                           {"log 0", Log(0), -infinity},
                                                           {"log of infinity", Log(infinity), infinity},
                                                           {"log of the least", Log(least), std::log(least)},
                                                           {"0^0", Power(0, 0), 1},
                                                           {"0^2", Power(0, 2), 0},
                                                           {"1^infinity", Power(1, infinity), 1},
                                                           {"0.5^infinity", Power(0.5, infinity), 0},
                                                           {"2^infinity", Power(2, infinity), infinity},
                                                           {"2^1024", Power(2, 1024), infinity},
                                                           {"2^-1074", Power(2, -1074), least},
                                                           {"4^0.5", Power(4, 0.5), 2},
                                                           {"acos 1", ArcCosine(1), 0},
                                                           {"acos -1", ArcCosine(-1), 3.141592653589793},
                                                           {"acos 0", ArcCosine(0), 1.5707963267948966}};
  for (const auto& [name, result, expected] : cases) EXPECT_EQ(result, expected) << name;
  for (double nan : {Exp(std::nan("")), Log(std::nan("")), Log(-1), Power(-2, 0.5), Power(std::nan(""), 2)}) {
    EXPECT_TRUE(std::isnan(nan));
  }
}

}  // namespace
