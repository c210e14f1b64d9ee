#include "qz/system/text/stringnumber.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>
#include <limits>

#include "qz/platform/numbertext.h"
#include "qz/system/frame/names.h"
#include "qz/system/text/makestring.h"

namespace QZSystem {

namespace {

constexpr bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool allBlank(std::string_view text) { return std::all_of(text.begin(), text.end(), isBlank); }

// What may follow a floating-point number: nothing, or a blank and then any blanks and line feeds, up to a NUL.
bool isNumberTail(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  const auto isTail = [](char c) { return isBlank(c) || c == '\n'; };
  return text.empty() || (isBlank(text.front()) && std::all_of(text.begin(), text.end(), isTail));
}

QZIntegerRange signedRange(int base) { return {base, INT32_MAX, true}; }
QZIntegerRange unsignedRange(int base) { return {base, UINT32_MAX, false}; }

// A whole text as an integer in that range; 0 and false else.
template <class Integer>
[[gnu::noinline]] bool readInteger(std::string_view text, const QZIntegerRange& range, Integer& value) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  std::uint64_t bits = 0;
  const QZNumberPrefix found = QZReadInteger(text, range, bits);
  const bool read = found.length != 0 && allBlank(text.substr(found.length));
  value = read ? static_cast<Integer>(bits) : Integer{0};
  return read;
}

// The types that are read as another one, with the range tested.
template <class Wide, class Narrow>
bool readNarrow(std::string_view text, Narrow& value, int base) {
  Wide wide = 0;
  const bool read = QZStringToNumber(text, wide, base) && wide >= std::numeric_limits<Narrow>::min() &&
                    wide <= std::numeric_limits<Narrow>::max();
  value = read ? static_cast<Narrow>(wide) : Narrow{0};
  return read;
}

template <class Integer>
std::string printInteger(Integer value, int base) {
  assert(base >= 2 && base <= 36);
  char room[std::numeric_limits<Integer>::digits + 2];
  return {room, std::to_chars(room, room + sizeof room, value, base).ptr};
}

// Beyond the precision of the quick road; a switch, since only literal formats are checked by the compiler.
std::string printLong(double value, char format, int precision) {
  switch (format) {
    case 'E':
      return QZMakeString("%.*E", precision, value);
    case 'F':
      return QZMakeString("%.*F", precision, value);
    case 'G':
      return QZMakeString("%.*G", precision, value);
    case 'e':
      return QZMakeString("%.*e", precision, value);
    case 'f':
      return QZMakeString("%.*f", precision, value);
    default:
      return QZMakeString("%.*g", precision, value);
  }
}

std::string printLong(long double value, char format, int precision) {
  switch (format) {
    case 'E':
      return QZMakeString("%.*LE", precision, value);
    case 'F':
      return QZMakeString("%.*LF", precision, value);
    case 'G':
      return QZMakeString("%.*LG", precision, value);
    case 'e':
      return QZMakeString("%.*Le", precision, value);
    case 'f':
      return QZMakeString("%.*Lf", precision, value);
    default:
      return QZMakeString("%.*Lg", precision, value);
  }
}

bool isFormat(char format) {
  return format != '\0' && std::string_view("EFGefg").find(format) != std::string_view::npos;
}

// What `printf` makes of no precision.
constexpr int defaultPrecision = 6;

}  // namespace

bool QZStringToNumber(std::string_view text, long& value, int base) {
  return (base == 10 && QZReadPlainInteger(text, value)) || readInteger(text, signedRange(base), value);
}

bool QZStringToNumber(std::string_view text, unsigned long& value, int base) {
  return readInteger(text, unsignedRange(base), value);
}

bool QZStringToNumber(std::string_view text, int& value, int base) { return readNarrow<long>(text, value, base); }

bool QZStringToNumber(std::string_view text, short& value, int base) { return readNarrow<long>(text, value, base); }

bool QZStringToNumber(std::string_view text, unsigned int& value, int base) {
  return readNarrow<unsigned long>(text, value, base);
}

bool QZStringToNumber(std::string_view text, unsigned short& value, int base) {
  return readNarrow<unsigned long>(text, value, base);
}

bool QZStringToNumber(std::string_view text, double& value) {
  const std::size_t length = QZReadNumber(text, value).length;
  if (length == text.size() && length != 0) return true;
  if (!text.empty() && isNumberTail(text.substr(length))) return true;
  value = 0;
  return false;
}

bool QZStringToNumber(std::string_view text, float& value) {
  double wide = 0;
  const bool read = QZStringToNumber(text, wide);
  value = static_cast<float>(wide);
  return read;
}

bool QZStringToNumber(std::string_view text, bool& value) {
  bool word = false;
  if (text.empty() || QZReadNumber(text, word).length != text.size()) return false;
  value = word;
  return true;
}

std::string QZNumberToString(const bool& value) { return value ? "true" : "false"; }

std::string QZNumberToString(unsigned int value, int base) { return printInteger(value, base); }
std::string QZNumberToString(int value, int base) { return printInteger(value, base); }
std::string QZNumberToString(unsigned long value, int base) { return printInteger(value, base); }
std::string QZNumberToString(long value, int base) { return printInteger(value, base); }

bool QZNumberToString(unsigned long value, std::string& out, int base) {
  out = printInteger(value, base);
  return true;
}

bool QZNumberToString(long value, std::string& out, int base) {
  out = printInteger(value, base);
  return true;
}

bool QZNumberToString(unsigned int value, std::string& out, int base) {
  out = printInteger(value, base);
  return true;
}

bool QZNumberToString(int value, std::string& out, int base) {
  out = printInteger(value, base);
  return true;
}

bool QZNumberToString(double value, std::string& out, char format, int precision) {
  if (precision <= 0) precision = defaultPrecision;
  if (QZPrintNumber(out, value, format, precision)) return true;
  if (!isFormat(format)) return false;
  out = printLong(value, format, precision);
  return true;
}

bool QZNumberToString(long double value, std::string& out, char format, int precision) {
  if (!isFormat(format)) return false;
  out = printLong(value, format, precision <= 0 ? defaultPrecision : precision);
  return true;
}

std::string QZTrimToSigFigs(const std::string& number) {
  const std::size_t point = number.rfind('.');
  if (point == std::string::npos) return number;
  std::size_t exponent = number.size();
  for (const char* mark : {"E+", "e+", "E-", "e-"}) {
    const std::size_t at = number.rfind(mark);
    if (at == std::string::npos) continue;
    exponent = at;
    break;
  }
  std::size_t end = exponent;
  while (end > point + 2 && number[end - 1] == '0') --end;
  return number.substr(0, end).append(number, exponent, std::string::npos);
}

double QZTruncate(double value, int factor) { return std::floor(value * factor + 0.5) / factor; }

}  // namespace QZSystem
