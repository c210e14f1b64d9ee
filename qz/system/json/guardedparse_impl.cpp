#include "qz/system/json/guardedparse_impl.h"

#include <rapidjson/error/en.h>

#include <algorithm>
#include <cstring>

#include "qz/system/frame/error.h"

namespace QZSystem::JSONImpl {

namespace {

constexpr char kParseError[] = "JSON: parse error offset %d: %s";
constexpr char kTopLevel[] = "JSON: Top level document must be an object";

/// An exponent of this many digits, leading zeros apart, makes any mantissa 0 or infinite, and leaves room in an int
/// for the digits of a fraction to be added to it.
constexpr std::ptrdiff_t kExponentDigits = 8;

/// From this size on a fraction can have so many zeros that a positive exponent overflows too.
constexpr std::size_t kLargeText = 200'000'000;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsSign(char c) { return c == '+' || c == '-'; }

bool IsNumberCharacter(char c) {
  return IsDigit(c) || IsSign(c) || c == '.' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// The digits of an exponent from its first that isn't 0 to its end, for `at` behind the "e" and its sign.
std::string_view ExponentDigits(const char* at, const char* end) {
  const auto isZero = [](char c) { return c == '0'; };
  const char* const first = std::find_if_not(at, end, isZero);
  const char* const last = std::find_if_not(first, end, IsDigit);
  return {first, static_cast<std::size_t>(last - first)};
}

bool IsLong(std::string_view digits) { return static_cast<std::ptrdiff_t>(digits.size()) > kExponentDigits; }

/// The end of the string that begins at the quote `at`, behind its closing quote when it has one.
char* SkipString(char* at, char* end) {
  for (++at; at != end && *at != '"'; ++at) {
    if (*at == '\\' && end - at > 1) ++at;
  }
  return at == end ? end : at + 1;
}

/// The same as a test for `e-` alone, which is all that matters in text of ordinary size, found by the minus.
bool HasLongNegativeExponent(const char* text, const char* end) {
  const char* at = text;
  while (at != end && (at = static_cast<const char*>(std::memchr(at, '-', static_cast<std::size_t>(end - at))))) {
    if (at != text && (at[-1] | 0x20) == 'e' && IsLong(ExponentDigits(at + 1, end))) return true;
    ++at;
  }
  return false;
}

}  // namespace

std::string_view TextStream::LastNumber() const {
  const char* first = current;
  while (first != begin && IsNumberCharacter(first[-1])) --first;
  return {first, static_cast<std::size_t>(current - first)};
}

NumberForm FormOf(std::string_view token) {
  if (!token.empty() && token.front() == '-') token.remove_prefix(1);
  if (token.empty() || IsDigit(token.front())) return NumberForm::Digits;
  return token == "NaN" || token == "Inf" || token == "Infinity" ? NumberForm::Word : NumberForm::Invalid;
}

bool HasLongExponent(const char* text, std::size_t size) {
  return size >= kLargeText || HasLongNegativeExponent(text, text + size);
}

std::string TameExponents(const char* text, std::size_t size) {
  std::string tame(text, size);
  char* const end = tame.data() + tame.size();
  for (char* at = tame.data(); at != end;) {
    if (*at == '"') {
      at = SkipString(at, end);
      continue;
    }
    const bool isExponent = (*at | 0x20) == 'e';
    ++at;
    if (!isExponent) continue;
    if (at != end && IsSign(*at)) ++at;
    const std::string_view digits = ExponentDigits(at, end);
    if (!IsLong(digits)) continue;
    char* const first = at + (digits.data() - at);
    at = first + digits.size();
    std::fill(first, at, '0');
    std::fill(at - kExponentDigits, at, '9');
  }
  return tame;
}

bool Report(const Outcome& outcome) {
  if (outcome.code == rapidjson::kParseErrorNone) return true;
  QZThrow.Warning(kParseError, static_cast<int>(outcome.offset), rapidjson::GetParseError_En(outcome.code));
  return false;
}

bool ReportTopLevel(bool isObject) {
  if (!isObject) QZThrow.Warning(kTopLevel);
  return isObject;
}

}  // namespace QZSystem::JSONImpl
