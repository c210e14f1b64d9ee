// Floating-point numbers from text. The digits are gathered in a 64-bit integer, eight at a time, while the grammar is
// followed. Most numbers then need one exact operation on doubles; those with up to 19 digits and a moderate exponent,
// one 128-bit product; the few that are left are put in order and given to the standard library. All roads round once,
// to the nearest, and so agree.

#include <charconv>
#include <limits>

#include "qz/platform/numbertext.h"
#include "qz/platform/numbertext_impl.h"

namespace QZPlatform {

using namespace NumberText;

namespace {

// 5^0 to 5^27, all that 64 bits hold, each shifted up to fill them, and its reciprocal in 128 bits.
constexpr int fives = 27;

struct Five {
  std::uint64_t power = 0;  // 5^q = power * 2^-shift
  int shift = 0;
  std::uint64_t reciprocalHigh = 0;  // 1 / power = (reciprocal + less than 1) * 2^-191
  std::uint64_t reciprocalLow = 0;
};

constexpr auto powersOfFive = [] {
  std::array<Five, fives + 1> powers{};
  std::uint64_t power = 1;
  for (Five& five : powers) {
    five.shift = __builtin_clzll(power);
    five.power = power << five.shift;
    const Wide top = (static_cast<Wide>(1) << 127) - 1;  // 2^127 = top + 1, and 5^0 alone divides it
    five.reciprocalHigh = static_cast<std::uint64_t>(top / five.power);
    const Wide rest = top % five.power + 1;
    five.reciprocalLow = static_cast<std::uint64_t>((rest << 64) / five.power);
    power *= 5;
  }
  return powers;
}();

// The powers of ten that a double holds exactly.
constexpr double exactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr double infinity = std::numeric_limits<double>::infinity();

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

double fromBits(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// The double nearest to mantissa * 2^exponent, ties to even, for a mantissa that isn't 0. `more` says that the true
// mantissa is a fraction of 1 above the given one. One rounding only, also where the result is subnormal.
double compose(std::uint64_t mantissa, std::int64_t exponent, bool more) {
  const int shift = __builtin_clzll(mantissa);
  mantissa <<= shift;
  const std::int64_t lead = exponent - shift + 63;  // 2^lead <= value
  if (lead > 1023) return infinity;
  const bool normal = lead >= -1022;
  const std::int64_t drop = normal ? 11 : 11 - 1022 - lead;  // bits that the format has no place for
  if (drop > 64) return 0;
  const std::uint64_t half = std::uint64_t{1} << (drop - 1);
  std::uint64_t kept = drop == 64 ? 0 : mantissa >> drop;
  const std::uint64_t rest = (mantissa & (half - 1)) | (kept & 1) | (more ? 1 : 0);
  kept += (mantissa & half) != 0 && rest != 0 ? 1 : 0;
  // The leading bit of a normal number, and a carry out of the fraction, add 1 to the exponent's field.
  return fromBits(kept + (normal ? static_cast<std::uint64_t>(lead + 1022) << 52 : 0));
}

// mantissa * 10^exponent for a mantissa that isn't 0 and an exponent from -27 to 27, or false where this can't tell.
//
// Upward, the product with a power of five is exact in 128 bits and rounded once. Downward the mantissa is multiplied
// by the reciprocal of the power, cut to 128 bits. What was cut adds less than the mantissa, so less than 2^64, to the
// 192 bits of the product: it can change the upper 64 only by a carry through 64 bits of ones. A quotient without a
// remainder comes out as such ones, and no other is a tie. (After Eisel and Lemire, "Number parsing at a gigabyte per
// second", 2021.)
[[gnu::always_inline]] inline bool scale(std::uint64_t mantissa, int exponent, double& value) {
  const int up = __builtin_clzll(mantissa);
  mantissa <<= up;
  const Five& five = powersOfFive[static_cast<unsigned>(exponent < 0 ? -exponent : exponent)];
  if (exponent >= 0) {
    const Wide product = static_cast<Wide>(mantissa) * five.power;
    value = compose(static_cast<std::uint64_t>(product >> 64), exponent - up - five.shift + 64,
                    static_cast<std::uint64_t>(product) != 0);
    return true;
  }
  const Wide low = static_cast<Wide>(mantissa) * five.reciprocalLow;
  const Wide product = static_cast<Wide>(mantissa) * five.reciprocalHigh + static_cast<std::uint64_t>(low >> 64);
  if (static_cast<std::uint64_t>(product) == UINT64_MAX) return false;
  value = compose(static_cast<std::uint64_t>(product >> 64), exponent - up + five.shift - 63, true);
  return true;
}

// A decimal number as it stands in the text, without sign and exponent: digits with at most one point.
struct Decimal {
  const char* first = nullptr;  // first digit or point
  const char* last = nullptr;   // behind the last digit or point
  std::int64_t digits = 0;
  std::int64_t fraction = 0;   // those of them that stand behind the point
  std::uint64_t mantissa = 0;  // all of them as one number, wrapped where they are too many
};

// More significant digits than these may not fit the mantissa.
constexpr std::int64_t mantissaDigits = 19;

// Integers up to here are doubles.
constexpr std::uint64_t exactMantissa = std::uint64_t{1} << 53;

// Adds the digits from `p` on to a number, which wraps where they are too many; returns their end. Takes up to eight at
// a time while `ahead` bytes are there, 8 or more.
inline const char* takeDigits(const char* p, const char* end, std::ptrdiff_t ahead, std::uint64_t& number) {
  while (end - p >= ahead) {
    const std::uint64_t word = digitWord(p, 8);
    const unsigned count = countDigits(word);
    if (count == 0) return p;
    number = number * powersOfTen[count] + packDigits(lastDigits(word, count));
    p += count;
    if (count < 8) return p;
  }
  for (; p != end && decimalDigit(*p) <= 9; ++p) number = number * 10 + decimalDigit(*p);
  return p;
}

// Whether the digits fit the mantissa, zeros in front not counted.
bool fitsMantissa(const Decimal& number) {
  std::int64_t digits = number.digits;
  for (const char* p = number.first; digits > mantissaDigits && (*p == '0' || *p == '.'); ++p) {
    digits -= *p == '0' ? 1 : 0;
  }
  return digits <= mantissaDigits;
}

// No double needs more digits than these to tell on which side of a halfway point a text lies.
constexpr std::size_t decidingDigits = 800;

// The value of a decimal whatever its length and exponent: its first digits that count, a 1 for whatever else
// follows, and what exponent that gives, in a text that the standard library reads.
[[gnu::noinline]] double readLongDecimal(const Decimal& number, std::int64_t exponent) {
  std::array<char, decidingDigits + 32> room;
  char* out = room.data();
  std::int64_t scale10 = number.digits - number.fraction + exponent;  // the value is 0.digits * 10^scale10
  bool more = false;
  for (const char* p = number.first; p != number.last; ++p) {
    if (*p == '.') continue;
    if (out == room.data() && *p == '0') {
      --scale10;
    } else if (out < room.data() + decidingDigits) {
      *out++ = *p;
    } else {
      more = more || *p != '0';
    }
  }
  if (out == room.data() || scale10 < -400) return 0;
  if (scale10 > 400) return infinity;
  if (more) *out++ = '1';
  const std::int64_t power = scale10 - (out - room.data());
  *out++ = 'e';
  out = std::to_chars(out, room.data() + room.size(), power).ptr;
  double value = 0;
  const auto read = std::from_chars(room.data(), out, value);
  if (read.ec == std::errc::result_out_of_range) return scale10 > 0 ? infinity : 0;
  return value;
}

// Reads the exponent behind a mantissa, a sign and decimal digits, if there is one; `p` then moves behind it. Returns
// whether the text ended before it was clear where the exponent does.
bool readExponent(const char*& p, const char* end, char letter, std::int64_t& exponent) {
  if (p == end) return true;
  if (lower(*p) != letter) return false;
  const char* q = p + 1;
  const bool negative = q != end && *q == '-';
  if (q != end && (*q == '-' || *q == '+')) ++q;
  if (q == end) return true;
  if (decimalDigit(*q) > 9) return false;
  constexpr std::int64_t enough = std::int64_t{1} << 59;  // outweighs the digits of any text
  for (; q != end && decimalDigit(*q) <= 9; ++q) {
    if (exponent < enough) exponent = exponent * 10 + decimalDigit(*q);
  }
  if (negative) exponent = -exponent;
  p = q;
  return q == end;
}

unsigned hexDigit(char c) {
  if (decimalDigit(c) <= 9) return decimalDigit(c);
  const char letter = lower(c);
  return letter >= 'a' && letter <= 'f' ? static_cast<unsigned>(letter - 'a') + 10 : 16;
}

// Reads a hexadecimal number, `p` at its "0x"; without a digit behind the "x" it is the 0 alone.
[[gnu::noinline]] bool readHex(const char*& p, const char* end, double& value) {
  const char* q = p + 2;
  std::uint64_t mantissa = 0;
  std::int64_t exponent = 0;
  bool digits = false;
  bool point = false;
  bool more = false;
  for (; q != end; ++q) {
    if (*q == '.' && !point) {
      point = true;
      continue;
    }
    const unsigned digit = hexDigit(*q);
    if (digit > 15) break;
    digits = true;
    if (mantissa >> 60 == 0) {
      mantissa = mantissa * 16 + digit;
      if (point) exponent -= 4;
    } else {
      more = more || digit != 0;
      if (!point) exponent += 4;
    }
  }
  value = 0;
  if (!digits) {
    ++p;
    return q == end;
  }
  p = q;
  std::int64_t power = 0;
  const bool open = readExponent(p, end, 'p', power);
  if (mantissa != 0) value = compose(mantissa, exponent + power, more);
  return open;
}

// Reads "inf", "infinity", "nan" or "nan(...)"; `p` stays where none is.
[[gnu::noinline]] bool readWord(const char*& p, const char* end, double& value) {
  const std::string_view text(p, static_cast<std::size_t>(end - p));
  constexpr std::string_view infinityWord = "infinity";
  const std::size_t inf = commonLength(text, infinityWord);
  if (inf >= 3) {
    value = infinity;
    p += inf == infinityWord.size() ? inf : 3;
    return inf == text.size() && inf < infinityWord.size();
  }
  const std::size_t nan = commonLength(text, "nan");
  if (nan < 3) return inf == text.size() || nan == text.size();
  value = std::numeric_limits<double>::quiet_NaN();
  p += 3;
  if (p == end) return true;
  if (*p != '(') return false;
  const auto isInner = [](char c) { return decimalDigit(c) <= 9 || c == '_' || (lower(c) >= 'a' && lower(c) <= 'z'); };
  const char* q = p + 1;
  while (q != end && isInner(*q)) ++q;
  if (q == end) return true;
  if (*q == ')') p = q + 1;
  return false;
}

// The value of a decimal with its exponent.
inline double valueOf(const Decimal& number, std::int64_t exponent) {
  const std::int64_t power = exponent - number.fraction;
  double value = 0;
  if (power >= -fives && power <= fives && fitsMantissa(number)) {
    if (number.mantissa <= exactMantissa && power >= -22 && power <= 22) {
      // Both operands are exact, so the one operation rounds as the text asks (Clinger 1990).
      const auto exact = static_cast<double>(static_cast<std::int64_t>(number.mantissa));
      return power < 0 ? exact / exactPowers[-power] : exact * exactPowers[power];
    }
    if (number.mantissa != 0 && scale(number.mantissa, static_cast<int>(power), value)) return value;
  }
  return readLongDecimal(number, exponent);
}

double withSign(double magnitude, bool negative) {
  return fromBits(load<std::uint64_t>(&magnitude) | static_cast<std::uint64_t>(negative) << 63);
}

// What isn't a plain decimal to the end of the text.
[[gnu::noinline]] QZNumberPrefix readOther(std::string_view text, const Decimal& number, bool negative, double& value) {
  const char* const end = text.data() + text.size();
  const char* p = number.last;
  double magnitude = 0;
  bool open = false;
  if (number.digits == 0) {
    open = p == end;
    if (p == number.first) open = readWord(p, end, magnitude) || open;
    if (p == number.last) {
      value = 0;
      return {0, open};
    }
  } else if (p != end && lower(*p) == 'x' && p == number.first + 1 && *number.first == '0') {
    p = number.first;
    open = readHex(p, end, magnitude);
  } else {
    std::int64_t exponent = 0;
    open = readExponent(p, end, 'e', exponent);
    magnitude = valueOf(number, exponent);
  }
  value = withSign(magnitude, negative);
  return {static_cast<std::size_t>(p - text.data()), open};
}

}  // namespace

QZNumberPrefix QZReadNumber(std::string_view text, double& value) {
  const char* const end = text.data() + text.size();
  const char* p = text.data();
  while (p != end && isSpace(*p)) ++p;
  const char sign = p != end ? *p : '\0';
  const bool negative = sign == '-';
  p += static_cast<int>(negative) | static_cast<int>(sign == '+');
  const char* const first = p;
  std::uint64_t mantissa = 0;
  p = takeDigits(p, end, 16, mantissa);
  std::int64_t digits = p - first;
  std::int64_t fraction = 0;
  if (p != end && *p == '.') {
    const char* const behindPoint = ++p;
    p = takeDigits(p, end, 8, mantissa);
    fraction = p - behindPoint;
    digits += fraction;
  }
  const Decimal number{first, p, digits, fraction, mantissa};
  if (p != end || digits == 0) return readOther(text, number, negative, value);
  value = withSign(valueOf(number, 0), negative);
  return {text.size(), true};
}

QZNumberPrefix QZReadNumber(std::string_view text, float& value) {
  double wide = 0;
  const QZNumberPrefix found = QZReadNumber(text, wide);
  value = static_cast<float>(wide);
  return found;
}

}  // namespace QZPlatform
