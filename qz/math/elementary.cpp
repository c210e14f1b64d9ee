#include <cmath>
#include <cstddef>

#include "qz/math/elementary_impl.h"

// Exp and Log look a nearby value up and correct it by a short series, as Tang has shown (1989, Table-driven
// implementation of the exponential function in IEEE floating-point arithmetic; 1990, the same of the logarithm). What
// is lost in rounding is carried beside the leading term, by Dekker's exact sums and products (1971, A floating-point
// technique for extending the available precision). The series are Taylor's: the tables keep the arguments so small
// that nothing is gained by better ones.
namespace QZMath::Elementary {

namespace {

// A number as an unevaluated sum, about 104 bits: to make the tables, at compile time.
struct Twofold {
  double high;
  double low;
};

constexpr Twofold quickSum(double larger, double smaller) {
  const double sum = larger + smaller;
  return {sum, smaller - (sum - larger)};
}

constexpr Twofold product(double a, double b) {
  constexpr double splitter = 0x1p27 + 1;
  const double aScaled = a * splitter;
  const double aHigh = aScaled - (aScaled - a);
  const double bScaled = b * splitter;
  const double bHigh = bScaled - (bScaled - b);
  const double result = a * b;
  return {result, ((aHigh * bHigh - result) + aHigh * (b - bHigh) + (a - aHigh) * bHigh) + (a - aHigh) * (b - bHigh)};
}

constexpr Twofold sum(const Twofold& a, const Twofold& b) {
  const double high = a.high + b.high;
  const double back = high - a.high;
  const double lost = (a.high - (high - back)) + (b.high - back);
  return quickSum(high, lost + a.low + b.low);
}

constexpr Twofold product(const Twofold& a, const Twofold& b) {
  const Twofold leading = product(a.high, b.high);
  return quickSum(leading.high, leading.low + (a.high * b.low + a.low * b.high));
}

constexpr Twofold quotient(const Twofold& a, double divisor) {
  const double first = a.high / divisor;
  const Twofold back = product(first, divisor);
  return quickSum(first, ((a.high - back.high) - back.low + a.low) / divisor);
}

constexpr std::array<ExpEntry, 128> makeExpTable() {
  constexpr Twofold root{0x1.0163da9fb3335p+0, 0x1.b61299ab8cdb7p-54};  // 2^(1/128)
  std::array<ExpEntry, 128> table{};
  Twofold power{1, 0};
  for (ExpEntry& entry : table) {
    entry = {power.high, power.low / power.high};
    power = product(power, root);
  }
  return table;
}

// ln((k + 1) / k) = 2 artanh(1 / (2k + 1)).
constexpr Twofold logOfStep(unsigned int k) {
  const double divisor = 2.0 * k + 1;
  Twofold term = quotient({2, 0}, divisor);
  Twofold result = term;
  for (unsigned int odd = 3; odd <= 11; odd += 2) {
    term = quotient(term, divisor * divisor);
    result = sum(result, quotient(term, odd));
  }
  return result;
}

// Factors are whole 512ths. The one of an entry is that nearest to the reciprocal of the middle of its interval, but 1
// on both sides of 1.
constexpr unsigned int factorOfEntry(std::size_t i) {
  constexpr std::size_t belowOne = 80;
  if (i == belowOne - 1 || i == belowOne) return 512;
  const double step = static_cast<double>(i) + 0.5 - static_cast<double>(belowOne);
  const double middle = i < belowOne ? 1 + step / 256 : 1 + step / 128;
  return static_cast<unsigned int>(512 / middle + 0.5);
}

constexpr LogEntry logEntry(unsigned int factor, const Twofold& logOfFactor) {
  // Adding 1.5 * 2^10 leaves what stands above 2^-42.
  const double high = (0x1.8p10 - logOfFactor.high) - 0x1.8p10;
  return {factor / 512.0, high, (-logOfFactor.high - high) - logOfFactor.low};
}

// Factors fall from one entry to the next, so that two walks from 1 meet all of them.
constexpr std::array<LogEntry, 128> makeLogTable() {
  std::array<LogEntry, 128> table{};
  Twofold logarithm{0, 0};
  unsigned int factor = 512;
  for (std::size_t i = 80; i-- > 0;) {
    for (; factor < factorOfEntry(i); ++factor) logarithm = sum(logarithm, logOfStep(factor));
    table[i] = logEntry(factor, logarithm);
  }
  logarithm = {0, 0};
  factor = 512;
  for (std::size_t i = 80; i < table.size(); ++i) {
    for (; factor > factorOfEntry(i); --factor) {
      const Twofold step = logOfStep(factor - 1);
      logarithm = sum(logarithm, {-step.high, -step.low});
    }
    table[i] = logEntry(factor, logarithm);
  }
  return table;
}

// e^(x + tail), also where the result isn't a normal number.
double expOfSum(double x, double tail) {
  const ExpReduction reduced = ReduceForExp(x);
  const ExpParts parts = ExpOfParts(reduced.n, reduced.rest + tail);
  return std::ldexp(parts.number + parts.addend, static_cast<int>(reduced.n >> 7));
}

LogParts logOfPositive(double x) {
  return x < std::numeric_limits<double>::min() ? LogPartsOf(x * 0x1p54, -54) : LogPartsOf(x, 0);
}

// sin and cos of a + tail for |a| up to pi/4.
double sineNearZero(double a, double tail) {
  const double square = a * a;
  double series = 0;
  for (int n = 17; n >= 3; n -= 2) series = (1 - series) * (square / (n * (n - 1)));
  // `series` is 1 - sin(a) / a.
  return a - (a * series - tail * (1 - 0.5 * square));
}

double cosineNearZero(double a, double tail) {
  const double square = a * a;
  double series = 0;
  for (int n = 18; n >= 4; n -= 2) series = (1 - series) * (square / (n * (n - 1)));
  // cos(a) is 1 - square / 2 * (1 - series); what 1 - square / 2 loses is taken along.
  const double half = 0.5 * square;
  const double first = 1 - half;
  return first + (((1 - first) - half) + (half * series - a * tail));
}

// arcsin x for |x| up to 1/2 by Newton's series, whose terms halve twice each: beyond 26 they are below 2^-60.
double arcSineNearZero(double x) {
  const double square = x * x;
  double series = 0;
  for (int n = 26; n >= 1; --n) {
    const double odd = 2.0 * n - 1;
    series = (series + 1 / (odd + 2)) * square * (odd / (odd + 1));
  }
  return x + x * series;
}

}  // namespace

// Constant initialisation: both are there before any static initialiser runs.
constexpr std::array<ExpEntry, 128> expTable = makeExpTable();
constexpr std::array<LogEntry, 128> logTable = makeLogTable();

double ExpAtEnds(double x) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  if (x != x) return x;
  if (x >= 710) return infinity;
  if (x <= -746) return 0;
  return expOfSum(x, 0);
}

double LogAtEnds(double x) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  if (x == 0) return -infinity;
  if (x < 0) return std::numeric_limits<double>::quiet_NaN();
  if (!(x < infinity)) return x;
  const LogParts parts = logOfPositive(x);
  return parts.number + parts.rest;
}

double Power(double x, double y) {
  if (y == 0 || x == 1) return 1;
  if (!(x > 0 && x <= std::numeric_limits<double>::max())) return Exp(y * LogAtEnds(x));
  const LogParts parts = logOfPositive(x);
  const Twofold logarithm = quickSum(parts.number, parts.rest);
  const Twofold exponent = product(logarithm.high, y);
  if (!(std::abs(exponent.high) < 750)) return Exp(exponent.high);
  return expOfSum(exponent.high, exponent.low + logarithm.low * y);
}

SineCosine SineAndCosine(double angle) {
  // pi / 2 in three parts. The first two have 33 bits, so that their products with a number of turns are exact (Cody
  // and Waite 1980, Software manual for the elementary functions).
  const double quarters = std::nearbyint(angle * (2 / 3.141592653589793));
  const double coarse = angle - quarters * 0x1.921fb544p+0;
  const double step = quarters * 0x1.0b4611a6p-34;
  const double finer = coarse - step;
  const double lost = ((coarse - finer) - step) - quarters * 0x1.3198a2e037073p-69;
  const Twofold rest = quickSum(finer, lost);
  const double sine = sineNearZero(rest.high, rest.low);
  const double cosine = cosineNearZero(rest.high, rest.low);
  switch (static_cast<std::int64_t>(quarters) & 3) {
    case 0:
      return {sine, cosine};
    case 1:
      return {cosine, -sine};
    case 2:
      return {-sine, -cosine};
    default:
      return {-cosine, sine};
  }
}

double ArcCosine(double x) {
  constexpr double halfPi = 0x1.921fb54442d18p+0;
  constexpr double halfPiRest = 0x1.1a62633145c07p-54;
  if (x > 0.5) return 2 * arcSineNearZero(std::sqrt(0.5 * (1 - x)));
  if (x < -0.5) return 2 * (halfPi - (arcSineNearZero(std::sqrt(0.5 * (1 + x))) - halfPiRest));
  return halfPi - (arcSineNearZero(x) - halfPiRest);
}

}  // namespace QZMath::Elementary
