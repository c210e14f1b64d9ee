#pragma once

#include <string>
#include <string_view>

/// Numbers to and from the text forms that parameters, configurations and records share.
///
///     long atoms = 0;
///     if (!QZStringToNumber(" 42 ", atoms)) return false;  // blanks around the number are passed over
///     std::string text;
///     QZNumberToString(2.5, text, 'f', 2);                 // "2.50"
///     QZNumberToString(atoms * 6, text, 16);               // "fc"
///
/// The locale has no influence on any of them. A read takes the whole text or fails. Safe from any thread.
namespace QZSystem {

/// Integers: blanks (32 and 9), one sign, at least one digit of the base, blanks. False and 0 for anything else, for
/// a "-" before an unsigned type, and outside the range. The range is that of 32 bits for `long` and `int`
/// (-2147483648 to 2147483647) and for the unsigned two (0 to 4294967295), and of 16 bits for the short ones.
///
/// A digit is a byte from "0" upward, and in a base above 10 also from "a" or "A" upward. There is no prefix such as
/// "0x" and no upper bound on the base; a base below 1 refuses every text. -2147483648 is refused in the bases that
/// are powers of two.
bool QZStringToNumber(std::string_view text, long& value, int base = 10);
bool QZStringToNumber(std::string_view text, int& value, int base = 10);
bool QZStringToNumber(std::string_view text, short& value, int base = 10);
bool QZStringToNumber(std::string_view text, unsigned long& value, int base = 10);
bool QZStringToNumber(std::string_view text, unsigned int& value, int base = 10);
bool QZStringToNumber(std::string_view text, unsigned short& value, int base = 10);

/// Floating point: all that `strtod` takes in the C locale, "inf", "nan" and hexadecimal floats with it; behind it
/// the end, or a blank and then any blanks and line feeds. A NUL ends the text. A text of blanks only is 0.0. False
/// and 0.0 for the empty text and anything else. The `float` is the double, narrowed, without a test of its range.
bool QZStringToNumber(std::string_view text, double& value);
bool QZStringToNumber(std::string_view text, float& value);

/// Bool: "1", "yes", "true", "on", "y", "t" are true, "0", "no", "false", "off", "n", "f" are false, in either case
/// and without blanks. False, with `value` as it was, for anything else.
bool QZStringToNumber(std::string_view text, bool& value);

/// "true" or "false".
[[nodiscard]] std::string QZNumberToString(const bool& value);

/// Digits in lower case with "-" before a negative number, in every base; no prefix, no padding.
/// REQUIRES: a base from 2 to 36.
[[nodiscard]] std::string QZNumberToString(unsigned int value, int base = 10);
[[nodiscard]] std::string QZNumberToString(int value, int base = 10);
[[nodiscard]] std::string QZNumberToString(unsigned long value, int base = 10);
[[nodiscard]] std::string QZNumberToString(long value, int base = 10);

/// The same text in place of what `out` held. Always true.
/// REQUIRES: a base from 2 to 36.
bool QZNumberToString(unsigned long value, std::string& out, int base = 10);
bool QZNumberToString(long value, std::string& out, int base = 10);
bool QZNumberToString(unsigned int value, std::string& out, int base = 10);
bool QZNumberToString(int value, std::string& out, int base = 10);

/// Replaces `out` by what `printf` gives for the format byte "e", "f", "g", "E", "F" or "G" with that precision; a
/// precision of 0 or below stands for 6 digits. False, with `out` as it was, for another format byte. A text beyond
/// 2 GiB is reported as by `QZMakeString` and gives "".
bool QZNumberToString(double value, std::string& out, char format = 'f', int precision = 6);
bool QZNumberToString(long double value, std::string& out, char format = 'f', int precision = 6);

/// Takes zeros off the end of the fraction of a number in text, one digit always staying behind the point; an
/// exponent stays. "1.500" gives "1.5", "1.000" gives "1.0", "1.50E+10" gives "1.5E+10", "100" stays.
[[nodiscard]] std::string QZTrimToSigFigs(const std::string& number);

/// `value` rounded to a multiple of 1/`factor`, halves upward: floor(value * factor + 0.5) / factor.
[[nodiscard]] double QZTruncate(double value, int factor);

}  // namespace QZSystem
