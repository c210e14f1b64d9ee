#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "qz/system/frame/names.h"

namespace QZSystem::JSONImpl {

/// A number of JSON text: an integer by its magnitude, any other as a double.
struct PlainNumber {
  bool isInteger = false;
  bool isNegative = false;
  std::uint64_t magnitude = 0;
  double value = 0;
};

/// Goes along JSON text whose shape is known beforehand, and takes the values on the way as the parse entry would.
///
///     PlainScan scan(line);
///     double mass = 0;
///     if (scan.Literal("{\"mass\":") && scan.Double(mass) && scan.Literal("}") && scan.AtEnd()) return mass;
///     // else let JSONParseHelper see what it is
///
/// It takes the usual forms of values only and gives no messages: after a false, by which it stays where it was or
/// somewhere behind, the text goes to the parse entry, which decides. One thread at a time.
class PlainScan {
 public:
  /// `text` stays the caller's, and the views that are handed out point into it.
  explicit PlainScan(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

  /// Goes past exactly these bytes.
  [[nodiscard]] bool Literal(std::string_view text) {
    if (static_cast<std::size_t>(end - at) < text.size() || std::memcmp(at, text.data(), text.size()) != 0)
      return false;
    at += text.size();
    return true;
  }
  [[nodiscard]] bool Literal(char character) {
    if (!IsNext(character)) return false;
    ++at;
    return true;
  }
  [[nodiscard]] bool Null() { return IsNext('n') && Literal("null"); }
  /// An integer of 32 bits without fraction and exponent.
  [[nodiscard]] bool Int(long& value);
  /// A number of at most 40 characters before an exponent of at most two digits, or NaN, Infinity or -Infinity.
  [[nodiscard]] bool Double(double& value);
  /// An integer of at most 18 digits, or a number with fraction or exponent, as above.
  [[nodiscard]] bool Number(PlainNumber& number);
  [[nodiscard]] bool Bool(bool& value);
  /// A string. The view points into the text, or into `room` when the string has escapes.
  [[nodiscard]] bool String(std::string_view& value, std::string& room);
  /// The next byte, or NUL at the end.
  char Peek() const { return at == end ? '\0' : *at; }
  /// Goes past white space.
  void SkipSpace() {
    while (at != end && IsSpace(*at)) ++at;
  }
  /// Whether nothing but white space is left.
  bool AtEnd() const;

 private:
  static bool IsSpace(char character) {
    return character == ' ' || character == '\n' || character == '\r' || character == '\t';
  }
  bool IsNext(char character) const { return at != end && *at == character; }
  /// The digits that a number begins with, and the integer that they make.
  struct Digits {
    bool isNegative = false;
    const char* first = nullptr;
    const char* last = nullptr;
    std::uint64_t number = 0;
  };
  bool TakeDigits(Digits& digits) const;
  bool Decimal(const Digits& digits, double& value);
  bool Word(double& value);
  bool EscapedString(std::string_view& value, std::string& room);

  const char* at;
  const char* end;
};

}  // namespace QZSystem::JSONImpl
