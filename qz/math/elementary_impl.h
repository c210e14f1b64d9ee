#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

/// Elementary functions that give the same bits on every machine.
///
///     const double height = Elementary::Exp(-x * x);
///
/// The ones of the C library don't: glibc takes fused operations where the processor has them, and the last bit of some
/// results changes with it. A seed is to give the same numbers everywhere, so these are made of plain IEEE operations
/// in a fixed order, which are exactly rounded; they assume rounding to nearest. Greatest error in units of the last
/// place: Exp, Log and Power 0.52, sine and cosine 0.8, ArcCosine 1.2; 0.8 for subnormal results. Safe from any thread.
namespace QZMath::Elementary {

/// 2^(i/128) as the nearest double and the rest, for i from 0 to 127.
struct ExpEntry {
  double power;
  double rest;  // relative to `power`
};
extern const std::array<ExpEntry, 128> expTable;

/// A factor that brings a number close to 1, for each 128th of an octave, and minus its logarithm. `high` is a multiple
/// of 2^-42, so that a sum with a multiple of ln2High is exact.
struct LogEntry {
  double factor;
  double high;
  double low;
};
extern const std::array<LogEntry, 128> logTable;

/// ln 2 as a multiple of 2^-42 and the rest.
constexpr double ln2High = 0x1.62e42fefa38p-1;
constexpr double ln2Low = 0x1.ef35793c7673p-45;

inline std::uint64_t BitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

inline double DoubleOf(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

/// Exp where the result leaves the normal numbers, and of a NaN.
double ExpAtEnds(double x);

/// e^(r) times 2^(n/128) for |r| below 0.0028, split into a number and what is to be added to it, without the whole
/// octaves of n.
struct ExpParts {
  double number;
  double addend;
};
inline ExpParts ExpOfParts(std::int64_t n, double r) {
  const ExpEntry& entry = expTable[static_cast<std::uint64_t>(n) & 127U];
  const double square = r * r;
  const double series =
      (entry.rest + r) + square * (0.5 + r * (1.0 / 6)) + square * square * (1.0 / 24 + r * (1.0 / 120));
  return {entry.power, entry.power * series};
}

/// x in units of ln 2 / 128: the nearest whole number, and what is left of x.
struct ExpReduction {
  std::int64_t n;
  double rest;
};
inline ExpReduction ReduceForExp(double x) {
  // Adding 1.5 * 2^52 rounds to a whole number, which then stands in the low bits.
  constexpr double shift = 0x1.8p52;
  const double shifted = x * (128 * 1.4426950408889634) + shift;
  const double n = shifted - shift;
  // The first product is exact: the constant has 35 bits, n at most 18.
  const double rest = (x - n * 0x1.62e42fefcp-8) + n * 0x1.c610ca86c3899p-44;
  return {static_cast<std::int64_t>(BitsOf(shifted) - BitsOf(shift)), rest};
}

/// e^x. REQUIRES: x is above -708 and below 709, or the result may be anything.
inline double ExpOfModerate(double x) {
  const ExpReduction reduced = ReduceForExp(x);
  const ExpParts parts = ExpOfParts(reduced.n, reduced.rest);
  // Whole octaves go to the exponent.
  return DoubleOf(BitsOf(parts.number + parts.addend) + (static_cast<std::uint64_t>(reduced.n >> 7) << 52));
}

/// e^x. 0 and infinity at the ends, NaN for NaN.
inline double Exp(double x) { return x > -708.0 && x < 709.0 ? ExpOfModerate(x) : ExpAtEnds(x); }

/// A logarithm as a double and what it lacks.
struct LogParts {
  double number;
  double rest;
};

/// REQUIRES: x is finite and above 0. Subnormal numbers are brought up by `octaves` beforehand.
inline LogParts LogPartsOf(double x, int octaves) {
  // The range is split at 0.6875, so that a number next to 1 on either side has no octaves and the factor 1.
  constexpr std::uint64_t start = 0x3FE6000000000000U;
  const std::uint64_t offset = BitsOf(x) - start;
  const LogEntry& entry = logTable[(offset >> 45) & 127U];
  const std::uint64_t mantissa = BitsOf(x) - (offset & 0xFFF0000000000000U);
  const double octave = static_cast<double>((static_cast<std::int64_t>(offset) >> 52) + octaves);

  // In two parts both products with the factor, of 10 bits, are exact.
  const double upper = DoubleOf(mantissa & 0xFFFFFFFF00000000U);
  const double lower = DoubleOf(mantissa) - upper;
  const double near = upper * entry.factor - 1;
  const double below = lower * entry.factor;
  const double r = near + below;

  const double high = octave * ln2High + entry.high;
  const double number = high + r;
  const double lost = (high - number) + r + ((near - r) + below) + (octave * ln2Low + entry.low);
  const double square = r * r;
  const double series =
      (1.0 / 3 - r * (1.0 / 4)) + square * (1.0 / 5 - r * (1.0 / 6)) + square * square * (1.0 / 7 - r * (1.0 / 8));
  return {number, lost + (r * square * series - 0.5 * square)};
}

/// ln x within 2e-7, at a third of the cost: for a comparison that is seldom close.
/// REQUIRES: x is finite, above 0 and not subnormal.
inline double RoughLog(double x) {
  constexpr std::uint64_t start = 0x3FE6000000000000U;
  const std::uint64_t offset = BitsOf(x) - start;
  const LogEntry& entry = logTable[(offset >> 45) & 127U];
  const double mantissa = DoubleOf(BitsOf(x) - (offset & 0xFFF0000000000000U));
  const double octave = static_cast<double>(static_cast<std::int64_t>(offset) >> 52);
  const double r = mantissa * entry.factor - 1;
  return (octave * ln2High + entry.high) + (r - 0.5 * (r * r));
}

/// ln x. REQUIRES: x is a normal number above 0.
inline double LogOfNormal(double x) {
  const LogParts parts = LogPartsOf(x, 0);
  return parts.number + parts.rest;
}

/// Log of what isn't a normal number above 0.
double LogAtEnds(double x);

/// ln x. Minus infinity for 0, NaN for a number below and for NaN.
inline double Log(double x) {
  if (!(x >= std::numeric_limits<double>::min() && x <= std::numeric_limits<double>::max())) return LogAtEnds(x);
  return LogOfNormal(x);
}

/// x^y for x from 0 on; NaN for x below 0, 1 for y = 0.
double Power(double x, double y);

/// Sine and cosine of an angle between -100000 and 100000.
struct SineCosine {
  double sine;
  double cosine;
};
SineCosine SineAndCosine(double angle);

/// The angle from 0 to pi of a cosine from -1 to 1.
double ArcCosine(double x);

}  // namespace QZMath::Elementary
