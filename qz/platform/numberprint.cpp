#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "qz/platform/numbertext.h"
#include "qz/platform/numbertext_impl.h"

namespace QZPlatform {

using namespace NumberText;

std::string_view QZPrintShortest(float value, char (&room)[QZShortestRoom]) {
  char* const last = room + sizeof room;
  std::string_view text(room, static_cast<std::size_t>(std::to_chars(room, last, value).ptr - room));
  // The shortest text is near enough to the float, but on its way through a double it can meet a halfway point and
  // come out beside it. Nine digits are never that near.
  float back = 0;
  QZReadNumber(text, back);
  if (back == value || value != value) return text;
  return {room, static_cast<std::size_t>(std::to_chars(room, last, value, std::chars_format::general, 9).ptr - room)};
}

namespace {

// Writes the last digits of a number, `count` of them, in front of `end`, two at a step, and takes them off it.
char* printDigits(char* end, unsigned count, std::uint64_t& number) {
  static constexpr auto pairs = [] {
    std::array<char, 200> digits{};
    for (unsigned i = 0; i < 100; ++i) {
      digits[2 * i] = static_cast<char>('0' + i / 10);
      digits[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return digits;
  }();
  for (; count >= 2; count -= 2) {
    end -= 2;
    std::memcpy(end, &pairs[2 * (number % 100)], 2);
    number /= 100;
  }
  if (count != 0) {
    *--end = static_cast<char>('0' + number % 10);
    number /= 10;
  }
  return end;
}

// The number of decimal digits, 1 for 0.
unsigned digitCount(std::uint64_t number) {
  const unsigned bits = 64 - static_cast<unsigned>(__builtin_clzll(number | 1));
  const unsigned guess = bits * 1233 >> 12;  // bits * log10(2)
  return guess + (number >= powersOfTen[guess] ? 1 : 0) + (number == 0 ? 1 : 0);
}

// |value| * 10^precision as an integer, ties to even, for a number below 2^53 and few digits: a 53-bit integer times a
// 64-bit one over a power of two, so quotient and remainder in 128 bits are exact, and with them the rounding. False
// where the number is too large for this, subnormal or zero.
bool scaleToInteger(std::uint64_t bits, unsigned precision, std::uint64_t& scaled) {
  constexpr std::uint64_t leadingBit = std::uint64_t{1} << 52;
  const auto field = static_cast<unsigned>(bits >> 52 & 0x7ff);
  if (field - 1 >= 1074) return false;
  const unsigned fractionBits = 1075 - field;
  const Wide product = static_cast<Wide>((bits & (leadingBit - 1)) | leadingBit) * powersOfTen[precision];
  scaled = 0;
  if (fractionBits >= 127) return true;  // the product stays below 2^117
  const Wide quotient = product >> fractionBits;
  if (quotient >> 63 != 0) return false;
  const Wide half = static_cast<Wide>(1) << (fractionBits - 1);
  const Wide rest = (product & (half - 1)) | (quotient & 1);
  scaled = static_cast<std::uint64_t>(quotient) + ((product & half) != 0 && rest != 0 ? 1 : 0);
  return true;
}

// The largest precision for which 10^precision fits 64 bits.
constexpr int scaledPrecision = 19;

// The "f" form, written where it stays; false where `scaleToInteger` doesn't serve.
bool printScaled(std::string& out, double value, unsigned precision) {
  const auto bits = load<std::uint64_t>(&value);
  std::uint64_t scaled = 0;
  if (!scaleToInteger(bits, precision, scaled)) return false;
  const auto sign = static_cast<unsigned>(bits >> 63);
  const unsigned count = std::max(digitCount(scaled), precision + 1);
  out.assign(sign + count + (precision != 0 ? 1 : 0), '-');  // the sign, if no digit goes over it
  char* end = out.data() + out.size();
  if (precision != 0) {
    end = printDigits(end, precision, scaled);
    *--end = '.';
  }
  printDigits(end, count - precision, scaled);
  return true;
}

// Every other case.
[[gnu::noinline]] void printLong(std::string& out, double value, std::chars_format form, int precision, bool upper) {
  char room[QZPrintPrecision + 320];  // 309 digits before the point at the most
  char* const end = std::to_chars(room, room + sizeof room, value, form, precision).ptr;
  if (upper) {
    for (char* p = room; p != end; ++p) *p = *p >= 'a' && *p <= 'z' ? static_cast<char>(*p - 'a' + 'A') : *p;
  }
  out.assign(room, end);
}

}  // namespace

bool QZPrintNumber(std::string& out, double value, char format, int precision) {
  if (precision > QZPrintPrecision) return false;
  if (precision < 0) precision = 6;
  if (lower(format) == 'f' && precision <= scaledPrecision &&
      printScaled(out, value, static_cast<unsigned>(precision))) {
    return true;
  }
  const bool upper = format < 'a';
  switch (lower(format)) {
    case 'e':
      printLong(out, value, std::chars_format::scientific, precision, upper);
      return true;
    case 'f':
      printLong(out, value, std::chars_format::fixed, precision, upper);
      return true;
    case 'g':
      printLong(out, value, std::chars_format::general, precision, upper);
      return true;
    default:
      return false;
  }
}

}  // namespace QZPlatform
