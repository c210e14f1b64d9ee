#pragma once

#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

/// Numbers from and to text, the same bytes in every locale, also while another thread calls `setlocale`.
///
///     double value = 0;
///     const QZNumberPrefix found = QZReadNumber("1.5e3 rest", value);  // value 1500, found.length 5
///     char room[QZShortestRoom];
///     const std::string_view text = QZPrintShortest(value, room);      // "1500"
///     std::string fixed;
///     QZPrintNumber(fixed, value, 'f', 2);                             // "1500.00"
///
/// Every other unit that reads or prints a number calls this one, which alone knows how to stay clear of the
/// locale. Safe from any thread.
namespace QZPlatform {

/// What a read found at the start of its text.
struct QZNumberPrefix {
  /// The bytes that the number takes, leading white space included where the type skips it; 0 where none begins.
  std::size_t length = 0;
  /// The text ended before the number did: more bytes behind it could make it longer, or make one of nothing. A
  /// reader of a stream then looks further ahead and asks again.
  bool open = false;
};

/// Reads the longest number at the start of `text` in the grammar of `strtod` in the C locale: white space (9 to
/// 13 and 32), a sign, then a decimal number with optional point and exponent, a hexadecimal one behind "0x" with
/// optional point and binary exponent, "inf" or "infinity", "nan" or "nan(letters, digits, underscores)", letters
/// in either case. The result is the nearest double, ties to even; what is too large gives an infinity and what is
/// too small a subnormal number or zero, both with their sign and both counted as read. A NUL has no meaning. With
/// no number there, `value` is 0 and the length 0. Nothing past the end of `text` is looked at.
QZNumberPrefix QZReadNumber(std::string_view text, double& value);

/// The same for a float: the double that is read, narrowed, so that both types agree on every text.
QZNumberPrefix QZReadNumber(std::string_view text, float& value);

/// Reads one of the bool words: "1", "yes", "true", "on", "y", "t" for true, "0", "no", "false", "off", "n", "f" for
/// false, letters in either case, the longest that fits. No white space is skipped. With no word there, `value`
/// stays as it was and the length is 0.
QZNumberPrefix QZReadNumber(std::string_view text, bool& value);

/// The bounds of an integer that is read digit by digit.
struct QZIntegerRange {
  int base = 10;                     ///< 0 and below: no byte is a digit; there is no upper bound
  std::uint64_t limit = UINT64_MAX;  ///< largest value
  bool negative = false;             ///< a minus sign is taken, and with it values down to -limit - 1
};

/// Reads a sign ("+", and "-" where the range has negative values) and the digits behind it as far as they go; no
/// white space and no prefix is skipped. Digits from 10 upward are the bytes that follow "a", or "A". `value` is
/// the number, a negative one in two's complement. No digit, or a value outside the range, gives 0 and the length
/// 0. In a base that divides limit + 1 the value -limit - 1 counts as outside.
QZNumberPrefix QZReadInteger(std::string_view text, const QZIntegerRange& range, std::uint64_t& value);

/// The quick road for a text that is a plain integer and nothing else: a sign or none and one to nine decimal digits.
/// False, with `value` as it was, for any other text, also one that holds an integer.
[[nodiscard]] bool QZReadPlainInteger(std::string_view text, std::int64_t& value);

/// Reads an integer in base 10 over the full range of its type, with an optional sign; "-" only for signed types.
/// No white space is skipped. No digit, or a value outside the range, gives 0 and the length 0.
template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
QZNumberPrefix QZReadNumber(std::string_view text, Integer& value) {
  QZIntegerRange range;
  range.limit = static_cast<std::uint64_t>(std::numeric_limits<Integer>::max());
  range.negative = std::is_signed_v<Integer>;
  std::uint64_t bits = 0;
  const QZNumberPrefix found = QZReadInteger(text, range, bits);
  value = static_cast<Integer>(bits);
  return found;
}

/// Room for the shortest text of any number.
inline constexpr std::size_t QZShortestRoom = 32;

/// Writes the shortest text that `QZReadNumber` reads back as the same value, in plain or in exponent form, whichever
/// is shorter: "0.1", "1e+22", "-0", "inf", "nan". The view is into `room`. It isn't terminated.
inline std::string_view QZPrintShortest(double value, char (&room)[QZShortestRoom]) {
  return {room, static_cast<std::size_t>(std::to_chars(room, room + QZShortestRoom, value).ptr - room)};
}
std::string_view QZPrintShortest(float value, char (&room)[QZShortestRoom]);

/// The largest precision of `QZPrintNumber`: beyond it every digit of every double is a zero.
inline constexpr int QZPrintPrecision = 1100;

/// Replaces `out` by the text that `printf` gives for the format byte "e", "f", "g", "E", "F" or "G" with that
/// precision in the C locale, exactly rounded, halves to even. A precision below 0 means 6. False, with `out` as it
/// was, for another format byte or a precision above `QZPrintPrecision`.
bool QZPrintNumber(std::string& out, double value, char format, int precision);

/// `vsnprintf` in the C locale, with the same arguments and result. The calling thread's locale is the C locale
/// during the call and afterwards what it was before.
[[gnu::format(printf, 3, 0)]] int QZVSNPrintf(char* buffer, std::size_t size, const char* format,
                                              std::va_list arguments);

}  // namespace QZPlatform
