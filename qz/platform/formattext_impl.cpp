#include "qz/platform/formattext_impl.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstring>
#include <limits>
#include <string>

#include "qz/platform/numbertext.h"

namespace QZPlatform {

namespace {

constexpr int LongestPrecision = 99;
constexpr std::size_t LongestInteger = 20;  // with its sign

// Takes text into a buffer as far as it has room, and counts it all.
class Output {
 public:
  Output(char* buffer, std::size_t size) : to(buffer), room(size - 1) {}

  void Append(const char* text, std::size_t length) {
    const std::size_t fits = std::min(length, room);
    std::memcpy(to, text, fits);
    to += fits;
    room -= fits;
    total += length;
  }

  // What stands before the next "%" or the end, where `format` is then. Byte by byte: it is short, and is copied as it
  // is looked at.
  void AppendPlain(const char*& format) {
    const char* const start = format;
    const char* from = start;
    char* behind = to;
    std::size_t left = room;
    for (; left != 0 && *from != '%' && *from != '\0'; --left) *behind++ = *from++;
    to = behind;
    room = left;
    while (*from != '%' && *from != '\0') ++from;  // where the room is used up
    total += static_cast<std::size_t>(from - start);
    format = from;
  }

  // Straight into the buffer where any integer fits.
  template <class Integer>
  void AppendInteger(Integer value) {
    char digits[LongestInteger];
    char* const start = room >= LongestInteger ? to : digits;
    const auto length = static_cast<std::size_t>(std::to_chars(start, start + LongestInteger, value).ptr - start);
    if (start == digits) return Append(digits, length);
    to += length;
    room -= length;
    total += length;
  }

  void AppendReal(double value, char kind, int precision) {
    QZPrintNumber(number, value, kind, precision);
    Append(number.data(), number.size());
  }

  std::size_t Finish() {
    *to = '\0';
    return total;
  }

 private:
  char* to;
  std::size_t room;
  std::size_t total = 0;
  std::string number;
};

// The integers whose size the format tells by "l", "ll" or "z", all of 64 bits. False for another conversion.
bool AppendLong(Output& out, const char*& format, std::va_list arguments) {
  if (*format == 'l' && format[1] == 'l') ++format;
  ++format;
  switch (*format) {
    case 'd':
    case 'i':
      out.AppendInteger(va_arg(arguments, long));
      return true;
    case 'u':
      out.AppendInteger(va_arg(arguments, unsigned long));
      return true;
    default:
      return false;
  }
}

// `format` is at the point, or at the conversion itself.
bool AppendReal(Output& out, const char*& format, std::va_list arguments) {
  int precision = -1;
  if (*format == '.') {
    precision = 0;
    while (*++format >= '0' && *format <= '9' && precision <= LongestPrecision) {
      precision = 10 * precision + (*format - '0');
    }
  }
  if (precision > LongestPrecision || (*format != 'f' && *format != 'e' && *format != 'g')) return false;
  out.AppendReal(va_arg(arguments, double), *format, precision);
  return true;
}

// One conversion, `format` at the first byte behind the "%" and on return at the last one. False for what is left to
// printf.
bool AppendConversion(Output& out, const char*& format, std::va_list arguments) {
  switch (*format) {
    case '%':
      out.Append("%", 1);
      return true;
    case 'c': {
      const char byte = static_cast<char>(va_arg(arguments, int));
      out.Append(&byte, 1);
      return true;
    }
    case 's': {
      const char* const text = va_arg(arguments, const char*);
      if (text == nullptr) return false;
      out.Append(text, std::strlen(text));
      return true;
    }
    case 'd':
    case 'i':
      out.AppendInteger(va_arg(arguments, int));
      return true;
    case 'u':
      out.AppendInteger(va_arg(arguments, unsigned int));
      return true;
    case 'l':
    case 'z':
      return AppendLong(out, format, arguments);
    default:
      return AppendReal(out, format, arguments);
  }
}

// The length of the whole text; more than an int holds for what is left to printf.
std::size_t FormatQuickly(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  constexpr std::size_t Left = std::numeric_limits<std::size_t>::max();
  Output out(buffer, size);
  for (;; ++format) {
    out.AppendPlain(format);
    if (*format == '\0') return out.Finish();
    if (!AppendConversion(out, ++format, arguments)) return Left;
  }
}

}  // namespace

int FormatText(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  assert(size > 0);
  std::va_list again;
  va_copy(again, arguments);
  const std::size_t length = FormatQuickly(buffer, size, format, arguments);
  const int result = length <= static_cast<std::size_t>(std::numeric_limits<int>::max())
                         ? static_cast<int>(length)
                         : QZVSNPrintf(buffer, size, format, again);
  va_end(again);
  return result;
}

}  // namespace QZPlatform
