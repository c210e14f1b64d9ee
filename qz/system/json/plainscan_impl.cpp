#include "qz/system/json/plainscan_impl.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "qz/platform/numbertext.h"
#include "qz/system/json/guardedparse_impl.h"
#include "qz/system/json/plaintext_impl.h"

namespace QZSystem::JSONImpl {

namespace {

constexpr std::ptrdiff_t kExponentDigits = 2;
constexpr std::ptrdiff_t kIntDigits = 10;
constexpr std::ptrdiff_t kLongDigits = 18;
constexpr std::ptrdiff_t kMostCharacters = 40;  // of a number that is far from being too large

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

const char* SkipDigits(const char* at, const char* end) {
  while (at != end && IsDigit(*at)) ++at;
  return at;
}

/// The digits in front of a fraction or exponent: 0, or no leading zero. `at` itself when there are none.
const char* SkipInteger(const char* at, const char* end) {
  return at != end && *at == '0' ? at + 1 : SkipDigits(at, end);
}

constexpr std::uint64_t kTens[] = {1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000};

/// The number that eight digits make, each a byte less '0', the first in the lowest byte: by pairs of digits, then
/// fours, then all (Muła 2014).
std::uint64_t PackDigits(std::uint64_t word) {
  constexpr std::uint64_t kMask = 0x000000FF000000FF;
  word = word * 10 + (word >> 8);
  return ((word & kMask) * 0x000F424000000064 + (word >> 16 & kMask) * 0x0000271000000001) >> 32;
}

/// Goes past digits, and adds them to the number that those before make. Up to eight are taken at once.
[[gnu::always_inline]] inline const char* AddDigits(const char* at, const char* end, std::uint64_t& number) {
  std::uint64_t sum = number;
  if (end - at >= 8) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    word ^= 0x3030303030303030;
    // Exact up to the first byte that is no digit.
    const std::uint64_t others = ((word + 0x7676767676767676) | word) & 0x8080808080808080;
    const int count = others == 0 ? 8 : __builtin_ctzll(others) / 8;
    if (count == 0) return at;
    sum = sum * kTens[count] + PackDigits(word << (64 - 8 * count));
    at += count;
    if (count < 8) return number = sum, at;
  }
  for (; at != end && IsDigit(*at); ++at) sum = 10 * sum + static_cast<std::uint64_t>(*at - '0');
  number = sum;
  return at;
}

/// Goes past an exponent of at most two digits.
bool SkipExponent(const char*& at, const char* end) {
  const char* first = at + 1;
  if (first != end && (*first == '+' || *first == '-')) ++first;
  at = SkipDigits(first, end);
  return at != first && at - first <= kExponentDigits;
}

// A number of at most 15 digits is the quotient of two doubles that are exact, and so rounded once, to the nearest
// double (Clinger 1990). So is one of 15 characters with a point among them.
constexpr std::ptrdiff_t kExactCharacters = 15;
constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};

/// Takes the one string that a text is.
struct StringHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, StringHandler> {
  explicit StringHandler(std::string& out) : room(out) {}
  bool Default() { return false; }
  bool String(const char* text, rapidjson::SizeType size, bool) {
    room.assign(text, size);
    return true;
  }
  std::string& room;
};

}  // namespace

bool PlainScan::Int(long& value) {
  const bool negative = at != end && *at == '-';
  const char* const first = at + (negative ? 1 : 0);
  const char* const last = SkipInteger(first, end);
  if (last == first || last - first > kIntDigits) return false;
  if (last != end && (*last == '.' || (*last | 0x20) == 'e')) return false;
  long magnitude = 0;
  for (const char* digit = first; digit != last; ++digit) magnitude = 10 * magnitude + (*digit - '0');
  const long signedValue = negative ? -magnitude : magnitude;
  if (signedValue < std::numeric_limits<int>::min() || signedValue > std::numeric_limits<int>::max()) return false;
  value = signedValue;
  at = last;
  return true;
}

/// The sign and the digits that are next; false where there are none.
inline bool PlainScan::TakeDigits(Digits& digits) const {
  digits.isNegative = IsNext('-');
  digits.first = at + (digits.isNegative ? 1 : 0);
  digits.last = AddDigits(digits.first, end, digits.number);
  return digits.last != digits.first;
}

/// The number that begins with these digits.
inline bool PlainScan::Decimal(const Digits& digits, double& value) {
  const char* const first = digits.first;
  const char* last = digits.last;
  std::uint64_t number = digits.number;
  if (*first == '0' && last - first > 1) return false;
  std::ptrdiff_t decimals = 0;
  if (last != end && *last == '.') {
    const char* const fraction = last + 1;
    last = AddDigits(fraction, end, number);
    if (last == fraction) return false;
    decimals = last - fraction;
  }
  const std::ptrdiff_t length = last - first;
  if (last != end && (*last | 0x20) == 'e') {
    if (!SkipExponent(last, end) || length > kMostCharacters) return false;
    QZReadNumber({first, static_cast<std::size_t>(last - first)}, value);
  } else if (length <= kExactCharacters) {
    value = static_cast<double>(number) / kPowers[decimals];
  } else if (length <= kMostCharacters) {
    QZReadNumber({first, static_cast<std::size_t>(last - first)}, value);
  } else {
    return false;
  }
  // The parse entry reads "-0" as the integer 0.
  if (digits.isNegative && (value != 0 || last - first > 1)) value = -value;
  at = last;
  return true;
}

bool PlainScan::Double(double& value) {
  Digits digits;
  return TakeDigits(digits) ? Decimal(digits, value) : Word(value);
}

bool PlainScan::Number(PlainNumber& number) {
  Digits digits;
  if (!TakeDigits(digits)) return Word(number.value);
  const char* const last = digits.last;
  number.isInteger = last == end || (*last != '.' && (*last | 0x20) != 'e');
  if (!number.isInteger) return Decimal(digits, number.value);
  const std::ptrdiff_t length = last - digits.first;
  if (length > kLongDigits || (*digits.first == '0' && length > 1)) return false;
  number.isNegative = digits.isNegative;
  number.magnitude = digits.number;
  at = last;
  return true;
}

/// What may follow the words is for the caller to see.
bool PlainScan::Word(double& value) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (Literal("NaN")) {
    value = std::numeric_limits<double>::quiet_NaN();
  } else if (Literal("Infinity")) {
    value = kInfinity;
  } else if (Literal("-Infinity")) {
    value = -kInfinity;
  } else {
    return false;
  }
  return true;
}

bool PlainScan::Bool(bool& value) {
  value = at != end && *at == 't';
  return Literal(value ? std::string_view("true") : std::string_view("false"));
}

bool PlainScan::String(std::string_view& value, std::string& room) {
  if (at == end || *at != '"') return false;
  const char* const first = at + 1;
  const char* const last = FindSpecial(first, end);
  if (last == end) return false;
  if (*last == '\\') return EscapedString(value, room);
  if (*last != '"') return false;
  value = {first, static_cast<std::size_t>(last - first)};
  at = last + 1;
  return true;
}

/// Has the string that begins here parsed on its own.
bool PlainScan::EscapedString(std::string_view& value, std::string& room) {
  const char* last = at + 1;
  while (last != end && *last != '"') last += *last == '\\' && end - last > 1 ? 2 : 1;
  if (last == end) return false;
  StringHandler handler(room);
  const auto size = static_cast<std::size_t>(last + 1 - at);
  if (GuardedParse(at, size, handler).code != rapidjson::kParseErrorNone) return false;
  value = room;
  at = last + 1;
  return true;
}

bool PlainScan::AtEnd() const { return std::all_of(at, end, &IsSpace); }

}  // namespace QZSystem::JSONImpl
