#include "qz/system/json/number_impl.h"

#include <rapidjson/internal/dtoa.h>
#include <rapidjson/internal/itoa.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace QZSystem::JSONImpl {

namespace {

constexpr std::uint64_t kScale = 1'000'000;
constexpr double kLargest = 1e9;

char* PutWord(std::string_view word, char* out) {
  std::memcpy(out, word.data(), word.size());
  return out + word.size();
}

/// Whether mantissa * 2^-shift and decimal / 10^6 are `allowed` millionths of 2^-shift apart, or less. They are half a
/// millionth apart, or less: up to a shift of 63 the low 64 bits tell.
template <class Unsigned>
bool IsNear(Unsigned mantissa, Unsigned decimal, int shift, std::uint64_t allowed) {
  const Unsigned distance = mantissa * kScale - (decimal << shift);
  return distance + allowed <= 2 * allowed;
}

/// The decimal m / 10^6 that the double stands for, or 0 when it may be none of these; for magnitudes below kLargest,
/// where it has at most 15 digits.
///
/// With so few digits, different decimals are different doubles. So a decimal within half a unit in the last place
/// of the double reads back as the double, and no other decimal of as many digits or fewer does: without trailing zeros
/// it is the shortest text. The search of rapidjson (Grisu2; Loitsch 2010) finds it unless it lies at the very edge of
/// that interval, where its 64-bit arithmetic isn't sure and it may settle for more digits. Hence the distance must be
/// below 0.48 units, and below 0.24 at a power of two, below which the units are half as large.
std::uint64_t ShortDecimal(double magnitude) {
  constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << 52;
  const std::uint64_t decimal = static_cast<std::uint64_t>(magnitude * static_cast<double>(kScale) + 0.5);
  std::uint64_t bits;
  std::memcpy(&bits, &magnitude, sizeof bits);
  const std::uint64_t fraction = bits & (kHiddenBit - 1);
  const int shift = 1075 - static_cast<int>(bits >> 52);  // magnitude = (hidden bit + fraction) * 2^-shift
  if (decimal == 0) return 0;                             // below half a millionth the shift would leave the 128 bits
  const std::uint64_t allowed = fraction == 0 ? 240'000 : 480'000;
  __extension__ using Wide = unsigned __int128;
  const bool isNear = shift < 64 ? IsNear<std::uint64_t>(kHiddenBit + fraction, decimal, shift, allowed)
                                 : IsNear<Wide>(kHiddenBit + fraction, decimal, shift, allowed);
  return isNear ? decimal : 0;
}

char* PutWhole(std::uint32_t whole, const char* pairs, char* out) {
  if (whole >= 1000) return rapidjson::internal::u32toa(whole, out);
  if (whole >= 100) *out++ = static_cast<char>('0' + whole / 100);
  if (whole >= 10) {
    std::memcpy(out, pairs + 2 * (whole % 100), 2);
    return out + 2;
  }
  *out++ = static_cast<char>('0' + whole);
  return out;
}

/// decimal / 10^6 with at least one digit behind the point, and no zeros after it.
char* PutDecimal(std::uint64_t decimal, char* out) {
  const char* const pairs = rapidjson::internal::GetDigitsLut();
  out = PutWhole(static_cast<std::uint32_t>(decimal / kScale), pairs, out);
  *out++ = '.';
  const auto rest = static_cast<std::uint32_t>(decimal % kScale);
  std::memcpy(out, pairs + 2 * (rest / 10'000), 2);
  std::memcpy(out + 2, pairs + 2 * (rest / 100 % 100), 2);
  std::memcpy(out + 4, pairs + 2 * (rest % 100), 2);
  char* end = out + 6;
  while (end[-1] == '0' && end != out + 1) --end;
  return end;
}

}  // namespace

char* PutDouble(double value, char* out) {
  const double magnitude = std::fabs(value);
  if (magnitude < kLargest) {
    if (const auto whole = static_cast<std::uint32_t>(magnitude); whole == magnitude && whole != 0) {
      if (value < 0) *out++ = '-';
      return PutWord(".0", PutWhole(whole, rapidjson::internal::GetDigitsLut(), out));
    }
    if (const std::uint64_t decimal = ShortDecimal(magnitude); decimal != 0) {
      if (value < 0) *out++ = '-';
      return PutDecimal(decimal, out);
    }
  }
  if (std::isfinite(value)) return rapidjson::internal::dtoa(value, out);
  if (std::isnan(value)) return PutWord("NaN", out);
  return PutWord(value < 0 ? "-Infinity" : "Infinity", out);
}

}  // namespace QZSystem::JSONImpl
