#include "qz/platform/numbertext.h"

#include <locale.h>
#include <clocale>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace QZPlatform {

namespace {

__extension__ using Wide = unsigned __int128;

// 10^0 to 10^19, all that 64 bits hold.
constexpr auto powersOfTen = [] {
  std::array<std::uint64_t, 20> powers{};
  std::uint64_t power = 1;
  for (auto& p : powers) {
    p = power;
    power *= 10;
  }
  return powers;
}();

// The powers of ten that a double holds exactly.
constexpr double exactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr double infinity = std::numeric_limits<double>::infinity();

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The value of a decimal digit; 10 and above for any other byte.
unsigned decimalDigit(char c) { return static_cast<unsigned>(static_cast<unsigned char>(c)) - '0'; }

// The lower form of a letter. Other bytes come out as no letter.
char lower(char c) { return static_cast<char>(c | 0x20); }

// The bytes of a word in lower case that `text` begins with, letters in either case.
std::size_t commonLength(std::string_view text, std::string_view word) {
  const auto same = [](char c, char w) { return c == w || (w >= 'a' && lower(c) == w); };
  std::size_t n = 0;
  while (n < text.size() && n < word.size() && same(text[n], word[n])) ++n;
  return n;
}

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
  const std::uint64_t rest = mantissa & (half - 1);
  std::uint64_t kept = drop == 64 ? 0 : mantissa >> drop;
  if ((mantissa & half) != 0 && (rest != 0 || more || (kept & 1) != 0)) ++kept;
  // The leading bit of a normal number, and a carry out of the fraction, add 1 to the exponent's field.
  return fromBits(kept + (normal ? static_cast<std::uint64_t>(lead + 1022) << 52 : 0));
}

// mantissa * 10^exponent for a mantissa that isn't 0 and an exponent from -19 to 19: one exact 128-bit product or
// quotient, rounded once.
double scaleExactly(std::uint64_t mantissa, int exponent) {
  if (exponent >= 0) {
    const Wide product = static_cast<Wide>(mantissa) * powersOfTen[static_cast<unsigned>(exponent)];
    const auto high = static_cast<std::uint64_t>(product >> 64);
    const auto low = static_cast<std::uint64_t>(product);
    if (high == 0) return compose(low, 0, false);
    const int shift = __builtin_clzll(high);
    return compose(static_cast<std::uint64_t>((product << shift) >> 64), 64 - shift, (low << shift) != 0);
  }
  // Both made to fill 64 bits, the quotient is from 2^62 to 2^64.
  const std::uint64_t power = powersOfTen[static_cast<unsigned>(-exponent)];
  const int up = __builtin_clzll(mantissa);
  const int down = __builtin_clzll(power);
  const Wide dividend = static_cast<Wide>(mantissa << up) << 63;
  const std::uint64_t divisor = power << down;
  const auto quotient = static_cast<std::uint64_t>(dividend / divisor);
  return compose(quotient, down - up - 63, dividend != static_cast<Wide>(quotient) * divisor);
}

// A decimal number as it stands in the text: digits with at most one point among them, then an exponent.
struct Decimal {
  const char* first = nullptr;  // first digit or point
  const char* last = nullptr;   // behind the last digit or point
  std::int64_t point = 0;       // the value is 0.digits * 10^(point + exponent), digits from `first` on
  std::int64_t exponent = 0;
};

// No double needs more digits than these to tell on which side of a halfway point a text lies.
constexpr std::size_t decidingDigits = 800;

// The value of a decimal whatever its length and exponent: its first digits that count, a 1 for whatever else
// follows, and what exponent that gives, in a text that the standard library reads.
double readLongDecimal(const Decimal& number) {
  std::array<char, decidingDigits + 32> room;
  char* out = room.data();
  std::int64_t scale = number.point + number.exponent;
  bool more = false;
  for (const char* p = number.first; p != number.last; ++p) {
    if (*p == '.') continue;
    if (out == room.data() && *p == '0') {
      --scale;
    } else if (out < room.data() + decidingDigits) {
      *out++ = *p;
    } else {
      more = more || *p != '0';
    }
  }
  if (out == room.data() || scale < -400) return 0;
  if (scale > 400) return infinity;
  if (more) {
    *out++ = '1';
  }
  const std::int64_t exponent = scale - (out - room.data());
  *out++ = 'e';
  out = std::to_chars(out, room.data() + room.size(), exponent).ptr;
  double value = 0;
  const auto read = std::from_chars(room.data(), out, value);
  if (read.ec == std::errc::result_out_of_range) return scale > 0 ? infinity : 0;
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
bool readHex(const char*& p, const char* end, double& value) {
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
bool readWord(const char*& p, const char* end, double& value) {
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

// Reads a number without sign, `p` at its first byte; `p` stays where none is. Returns whether the text ended before
// the number did.
bool readMagnitude(const char*& p, const char* end, double& value) {
  const char* const first = p;
  const char* q = p;
  std::uint64_t mantissa = 0;
  for (; q != end && decimalDigit(*q) <= 9; ++q) mantissa = mantissa * 10 + decimalDigit(*q);
  std::int64_t whole = q - first;
  std::int64_t digits = whole;
  if (q != end && *q == '.') {
    const char* const fraction = ++q;
    for (; q != end && decimalDigit(*q) <= 9; ++q) mantissa = mantissa * 10 + decimalDigit(*q);
    digits += q - fraction;
  }
  if (digits == 0) return q == end || (q == first && readWord(p, end, value));
  if (q != end && lower(*q) == 'x' && q == first + 1 && *first == '0') return readHex(p, end, value);
  p = q;
  std::int64_t exponent = 0;
  const bool open = readExponent(p, end, 'e', exponent);
  const std::int64_t scale = exponent - (digits - whole);
  constexpr std::uint64_t exactMantissa = std::uint64_t{1} << 53;
  if (digits > 19 || scale < -22 || scale > 22) {
    value = readLongDecimal({first, q, whole, exponent});
  } else if (mantissa <= exactMantissa) {
    // Both operands are exact, so the one operation rounds as the text asks (Clinger 1990).
    const auto exact = static_cast<double>(static_cast<std::int64_t>(mantissa));
    value = scale < 0 ? exact / exactPowers[-scale] : exact * exactPowers[scale];
  } else if (scale >= -19 && scale <= 19) {
    value = scaleExactly(mantissa, static_cast<int>(scale));
  } else {
    value = readLongDecimal({first, q, whole, exponent});
  }
  return open;
}

}  // namespace

QZNumberPrefix QZReadNumber(std::string_view text, double& value) {
  const char* const end = text.data() + text.size();
  const char* p = text.data();
  while (p != end && isSpace(*p)) ++p;
  const bool negative = p != end && *p == '-';
  if (p != end && (*p == '-' || *p == '+')) ++p;
  const char* const first = p;
  double magnitude = 0;
  const bool open = readMagnitude(p, end, magnitude);
  value = negative && p != first ? -magnitude : magnitude;
  return {p == first ? 0 : static_cast<std::size_t>(p - text.data()), open};
}

QZNumberPrefix QZReadNumber(std::string_view text, float& value) {
  double wide = 0;
  const QZNumberPrefix found = QZReadNumber(text, wide);
  value = static_cast<float>(wide);
  return found;
}

QZNumberPrefix QZReadNumber(std::string_view text, bool& value) {
  struct Word {
    std::string_view text;
    bool value;
  };
  constexpr Word words[] = {{"0", false}, {"1", true},    {"y", true},  {"yes", true},    {"n", false}, {"no", false},
                            {"t", true},  {"true", true}, {"f", false}, {"false", false}, {"on", true}, {"off", false}};
  QZNumberPrefix found;
  for (const Word& word : words) {
    const std::size_t common = commonLength(text, word.text);
    if (common == word.text.size() && common > found.length) {
      value = word.value;
      found.length = common;
    }
    if (common == text.size() && common < word.text.size()) found.open = true;
  }
  return found;
}

QZNumberPrefix QZReadInteger(std::string_view text, const QZIntegerRange& range, std::uint64_t& value) {
  value = 0;
  std::size_t at = 0;
  const bool negative = range.negative && !text.empty() && text[0] == '-';
  if (negative || (!text.empty() && text[0] == '+')) ++at;
  const auto digitOf = [base = range.base](char c) -> unsigned {
    const int byte = static_cast<signed char>(c);
    if (byte >= '0' && byte <= '9') return byte - '0' < base ? static_cast<unsigned>(byte - '0') : UINT32_MAX;
    if (byte >= 'a' && byte - 'a' < base - 10) return static_cast<unsigned>(byte - 'a') + 10;
    if (byte >= 'A' && byte - 'A' < base - 10) return static_cast<unsigned>(byte - 'A') + 10;
    return UINT32_MAX;
  };
  if (at == text.size()) return {0, true};
  if (range.base < 1 || digitOf(text[at]) == UINT32_MAX) return {};
  const auto base = static_cast<std::uint64_t>(range.base);
  const std::uint64_t cutoff = range.limit / base;
  const std::uint64_t lastDigit = range.limit % base + (negative ? 1 : 0);
  std::uint64_t magnitude = 0;
  for (; at < text.size(); ++at) {
    const unsigned digit = digitOf(text[at]);
    if (digit == UINT32_MAX) break;
    if (magnitude > cutoff || (magnitude == cutoff && digit > lastDigit)) return {};
    magnitude = magnitude * base + digit;
  }
  value = negative ? 0 - magnitude : magnitude;
  return {at, at == text.size()};
}

std::string_view QZPrintShortest(double value, char (&room)[QZShortestRoom]) {
  return {room, static_cast<std::size_t>(std::to_chars(room, room + sizeof room, value).ptr - room)};
}

std::string_view QZPrintShortest(float value, char (&room)[QZShortestRoom]) {
  const std::string_view text(room,
                              static_cast<std::size_t>(std::to_chars(room, room + sizeof room, value).ptr - room));
  return text;
}

namespace {

// The digits of a number from the last to the first, two at a step, ending before `end`; returns the first.
char* printBackwards(std::uint64_t number, char* end) {
  static constexpr auto pairs = [] {
    std::array<char, 200> digits{};
    for (unsigned i = 0; i < 100; ++i) {
      digits[2 * i] = static_cast<char>('0' + i / 10);
      digits[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return digits;
  }();
  while (number >= 100) {
    end -= 2;
    std::memcpy(end, &pairs[2 * (number % 100)], 2);
    number /= 100;
  }
  if (number >= 10) {
    end -= 2;
    std::memcpy(end, &pairs[2 * number], 2);
  } else {
    *--end = static_cast<char>('0' + number);
  }
  return end;
}

// The "f" form of a number below 2^53 with few digits: value * 10^precision is a 53-bit integer times a 64-bit one
// over a power of two, so quotient and remainder in 128 bits are exact, and with them the rounding, ties to even.
// Returns the end of the text, null where the number is too large for this.
char* printScaled(double value, unsigned precision, char* out) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  const auto field = static_cast<int>(bits >> 52 & 0x7ff);
  const int fractionBits = 1075 - (field == 0 ? 1 : field);
  if (fractionBits <= 0) return nullptr;
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
  const Wide product =
      static_cast<Wide>(field == 0 ? fraction : fraction | std::uint64_t{1} << 52) * powersOfTen[precision];
  std::uint64_t scaled = 0;
  if (fractionBits < 127) {
    const Wide quotient = product >> fractionBits;
    if (quotient >> 63 != 0) return nullptr;
    scaled = static_cast<std::uint64_t>(quotient);
    const Wide half = static_cast<Wide>(1) << (fractionBits - 1);
    const Wide rest = product & (half - 1);
    if ((product & half) != 0 && (rest != 0 || (scaled & 1) != 0)) ++scaled;
  }
  if (bits >> 63 != 0) *out++ = '-';
  char digits[40];
  char* const end = digits + sizeof digits;
  char* first = printBackwards(scaled, end);
  while (end - first <= static_cast<int>(precision)) *--first = '0';
  const auto whole = static_cast<std::size_t>(end - first) - precision;
  std::memcpy(out, first, whole);
  out += whole;
  if (precision == 0) return out;
  *out++ = '.';
  std::memcpy(out, first + whole, precision);
  return out + precision;
}

}  // namespace

bool QZPrintNumber(std::string& out, double value, char format, int precision) {
  if (precision > QZPrintPrecision) return false;
  if (precision < 0) precision = 6;
  std::chars_format form = std::chars_format::fixed;
  switch (lower(format)) {
    case 'e':
      form = std::chars_format::scientific;
      break;
    case 'f':
      break;
    case 'g':
      form = std::chars_format::general;
      break;
    default:
      return false;
  }
  char room[QZPrintPrecision + 320];  // 309 digits before the point at the most
  char* end = nullptr;
  if (form == std::chars_format::fixed && precision <= 19)
    end = printScaled(value, static_cast<unsigned>(precision), room);
  if (end == nullptr) end = std::to_chars(room, room + sizeof room, value, form, precision).ptr;
  if (format < 'a') {
    for (char* p = room; p != end; ++p) *p = *p >= 'a' && *p <= 'z' ? static_cast<char>(*p - 'a' + 'A') : *p;
  }
  out.assign(room, end);
  return true;
}

namespace {

// The C locale for the calling thread while this lives.
class CLocaleGuard {
 public:
  CLocaleGuard() : before(uselocale(cLocale())) {}
  ~CLocaleGuard() { uselocale(before); }
  CLocaleGuard(const CLocaleGuard&) = delete;
  CLocaleGuard& operator=(const CLocaleGuard&) = delete;

 private:
  // Never given back, since messages are printed until the last static destructor.
  static locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
  }

  locale_t before;
};

}  // namespace

int QZVSNPrintf(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  const CLocaleGuard guard;
  return std::vsnprintf(buffer, size, format, arguments);
}

}  // namespace QZPlatform
