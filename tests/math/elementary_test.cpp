#include "qz/math/elementary_impl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "qz/math/rand.h"

using namespace QZMath;
using namespace QZMath::Elementary;

namespace {

using Function = double (*)(double);
using Reference = long double (*)(long double);

double sine(double x) { return SineAndCosine(x).sine; }
double cosine(double x) { return SineAndCosine(x).cosine; }
double powerOfSevenTenths(double x) { return Power(x, 0.7); }
double powerOfThirty(double x) { return Power(x, 30.3); }

// The greatest error in units of the last place of the result, against 64 bits of mantissa.
double greatestError(Function function, Reference reference, double low, double high, bool byOctaves) {
  MtRng<Mt64Traits> engine(1);
  double greatest = 0;
  for (int i = 0; i < 200000; ++i) {
    const double u = low + (high - low) * engine.getUnitDouble();
    const double x = byOctaves ? std::exp2(u) : u;
    const long double exact = reference(static_cast<long double>(x));
    const int exponent = std::max(std::ilogb(static_cast<double>(exact)), -1022);
    const long double error = std::abs(static_cast<long double>(function(x)) - exact);
    greatest = std::max(greatest, static_cast<double>(std::ldexp(error, 52 - exponent)));
  }
  return greatest;
}

TEST(Elementary, IsAsAccurateAsItSays) {
  struct Case {
    const char* name;
    Function function;
    Reference reference;
    double low;
    double high;
    bool byOctaves;
    double most;
  };
  const Reference log = [](long double x) { return std::log(x); };
  const Reference exp = [](long double x) { return std::exp(x); };
  const Reference sin = [](long double x) { return std::sin(x); };
  const Reference cos = [](long double x) { return std::cos(x); };
  const Reference acos = [](long double x) { return std::acos(x); };
  const Case cases[] = {
      {"log of all numbers", Log, log, -1074, 1023, true, 0.52},
      {"log next to 1", Log, log, 0.98, 1.02, false, 0.52},
      {"log at the tables' seams", Log, log, 0.5, 2, false, 0.52},
      {"exp", Exp, exp, -708, 709, false, 0.52},
      {"exp next to 0", Exp, exp, -0.01, 0.01, false, 0.52},
      {"exp of subnormal results", Exp, exp, -745, -708, false, 0.8},
      {"exp of the greatest results", Exp, exp, 709, 709.78, false, 0.52},
      {"sine", sine, sin, -40, 40, false, 0.8},
      {"sine of many turns", sine, sin, -1e5, 1e5, false, 0.8},
      {"cosine", cosine, cos, -40, 40, false, 0.8},
      {"arc cosine", ArcCosine, acos, -1, 1, false, 1.2},
      {"arc cosine next to 1", ArcCosine, acos, 0.9999, 1, false, 1.2},
      {"x^0.7", powerOfSevenTenths, [](long double x) { return std::pow(x, static_cast<long double>(0.7)); }, -1074,
       1023, true, 0.52},
      {"x^30.3", powerOfThirty, [](long double x) { return std::pow(x, static_cast<long double>(30.3)); }, -33, 33,
       true, 0.52},
  };
  for (const Case& each : cases) {
    EXPECT_LT(greatestError(each.function, each.reference, each.low, each.high, each.byOctaves), each.most)
        << each.name;
  }
}

TEST(Elementary, RoughLogIsNear) {
  MtRng<Mt64Traits> engine(2);
  for (int i = 0; i < 100000; ++i) {
    const double x = std::exp2(-1000 + 2000 * engine.getUnitDouble());
    ASSERT_NEAR(RoughLog(x), std::log(x), 2e-7) << x;
  }
}

TEST(Elementary, KnowsTheEnds) {
  const double infinity = HUGE_VAL;
  const double least = 0x1p-1074;
  struct Case {
    const char* name;
    double result;
    double expected;
  };
  const Case cases[] = {{"exp 0", Exp(0), 1},
                        {"exp -0", Exp(-0.0), 1},
                        {"exp of much", Exp(709.79), infinity},
                        {"exp of infinity", Exp(infinity), infinity},
                        {"exp of little", Exp(-745.2), 0},
                        {"exp of the least", Exp(-744.5), least},
                        {"exp of minus infinity", Exp(-infinity), 0},
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
                        {"arc cosine of 1", ArcCosine(1), 0},
                        {"arc cosine of -1", ArcCosine(-1), 3.141592653589793},
                        {"arc cosine of 0", ArcCosine(0), 1.5707963267948966}};
  for (const Case& each : cases) EXPECT_EQ(each.result, each.expected) << each.name;
  for (double nan : {Exp(std::nan("")), Log(std::nan("")), Log(-1), Power(-2, 0.5), Power(std::nan(""), 2)}) {
    EXPECT_TRUE(std::isnan(nan));
  }
}

}  // namespace
