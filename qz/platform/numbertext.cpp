#include "qz/platform/numbertext.h"

#include <locale.h>

#include <cstdio>

#include "qz/platform/numbertext_impl.h"

namespace QZPlatform {

using namespace NumberText;

QZNumberPrefix QZReadNumber(std::string_view text, bool& value) {
  struct Word {
    std::string_view text;
    bool value;
  };
  constexpr Word words[] = {{"0", false}, {"1", true},    {"y", true},  {"yes", true},    {"n", false}, {"no", false},
                            {"t", true},  {"true", true}, {"f", false}, {"false", false}, {"on", true}, {"off", false}};
  QZNumberPrefix found;
  for (const Word& word : words) {
    // Most words are another one from their first letter on; the bit that tells upper from lower case is set in it.
    if (!text.empty() && (text.front() | 0x20) != word.text.front()) continue;
    const std::size_t common = commonLength(text, word.text);
    if (common == word.text.size() && common > found.length) {
      value = word.value;
      found.length = common;
    }
    if (common == text.size() && common < word.text.size()) found.open = true;
  }
  return found;
}

bool QZReadPlainInteger(std::string_view text, std::int64_t& value) {
  if (text.empty()) return false;
  const char* p = text.data();
  const bool negative = *p == '-';
  const std::size_t sign = negative || *p == '+' ? 1 : 0;
  std::size_t count = text.size() - sign;
  if (count - 1 > 8) return false;
  p += sign;
  // All is done without a branch for the number of digits, which no processor foresees.
  const std::size_t nine = (count + 7) >> 4;  // 1 for nine digits, else 0
  const std::uint64_t ninth = nine * decimalDigit(*p);
  p += nine;
  count -= nine;
  const std::uint64_t word = lastDigits(digitWord(p, count), static_cast<unsigned>(count));
  if (nonDigits(word) != 0 || ninth > 9) return false;
  const std::uint64_t magnitude = ninth * powersOfTen[8] + packDigits(word);
  value = static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
  return true;
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
