#include "qz/system/text/stringnumber.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>
#include <typeinfo>
#include <utility>

#include "tests/platform/commalocale.h"

namespace QZSystem {
namespace {

using namespace std::literals;

// What a read gives: the value, or "no" with the value in brackets where that isn't 0.
template <class T>
std::string read(std::string_view text, int base = 10) {
  T value = 99;
  if (QZStringToNumber(text, value, base)) return std::to_string(value);
  return value == 0 ? "no" : "no (" + std::to_string(value) + ")";
}

// Reads a text with a number that `Range` holds, or doesn't.
template <class T, class Range>
void expectRange(const char* text) {
  const long value = std::stol(text);
  const bool fits = value >= std::numeric_limits<Range>::min() && value <= std::numeric_limits<Range>::max();
  EXPECT_EQ(read<T>(text), fits ? std::to_string(value) : "no") << text << " as " << typeid(T).name();
}

TEST(StringNumber, IntegersHaveTheRangesOf32And16Bits) {
  for (const char* text :
       {"  42\t", "\t +7 ", "-42", "007", "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295",
        "4294967296", "00000000004294967295", "32767", "32768", "-32768", "-32769", "65535", "65536"}) {
    expectRange<long, std::int32_t>(text);
    expectRange<int, std::int32_t>(text);
    expectRange<short, std::int16_t>(text);
    expectRange<unsigned long, std::uint32_t>(text);
    expectRange<unsigned int, std::uint32_t>(text);
    expectRange<unsigned short, std::uint16_t>(text);
  }
  EXPECT_EQ(read<long>("-0") + read<unsigned long>("-0"), "0no");
  for (const std::string_view text : {"4 2"sv, "- 4"sv, "+"sv, "-"sv, ""sv, "   "sv, "+-1"sv, "4x"sv, "\n4"sv, "4\n"sv,
                                      "0x10"sv, "1."sv, "1e3"sv, "4\0"sv, "18446744073709551617"sv}) {
    EXPECT_EQ(read<long>(text) + read<short>(text) + read<unsigned long>(text), "nonono") << text;
  }
}

TEST(StringNumber, DigitsFollowTheBase) {
  const std::tuple<const char*, int, const char*> cases[] = {
      {"-7fffffff", 16, "-2147483647"}, {"zik0zj", 36, "2147483647"}, {"Zz", 36, "1295"}, {"z", 1000, "35"},
      {"7fffffff", 16, "2147483647"},   {"10", 1000, "1000"},         {"fF", 16, "255"},  {"9", 1000, "9"},
      {"-zik0zk", 36, "-2147483648"},   {"zz", 36, "1295"},           {"-101", 2, "-5"},  {"000", 1, "0"},
      {"10", INT_MAX, "2147483647"}};
  for (const auto& [text, base, result] : cases) EXPECT_EQ(read<long>(text, base), result) << text << " in " << base;
  const std::pair<const char*, int> refused[] = {
      {"g", 16},    {"G", 16},        {"12", 2},         {"1", 1},       {"0", 0},       {"1", -10},
      {"0x10", 16}, {"8", 8},         {"\xe0", 999},     {":", 36},      {"@", 36},      {"[", 36},
      {"{", 36},    {"80000000", 16}, {"-80000000", 16}, {"zik0zk", 36}, {"11", INT_MAX}};
  for (const auto& [text, base] : refused) EXPECT_EQ(read<long>(text, base), "no") << text << " in " << base;
  EXPECT_EQ(read<unsigned long>("ffffffff", 16) + read<unsigned short>("ffff", 16), "429496729565535");
  EXPECT_EQ(read<int>("ff", 16), "255");
}

TEST(StringNumber, FloatingPointIsWhatStrtodTakesAndABlankTail) {
  const std::pair<std::string_view, double> cases[] = {
      {"-Infinity", -HUGE_VAL}, {"\n\v\f\r 1.5", 1.5}, {"1.5\0x"sv, 1.5}, {"-.5e+1", -5}, {"\0 1"sv, 0}, {"\t \n", 0},
      {"1.5\t\t \n\n ", 1.5},   {"1.5 \0x"sv, 1.5},    {"1e300", 1e300},  {"0x1.8p1", 3}, {"1.5", 1.5},  {"1.", 1}};
  for (const auto& [text, expected] : cases) {
    double value = 99;
    float narrow = 99;
    EXPECT_TRUE(QZStringToNumber(text, value) && QZStringToNumber(text, narrow)) << text;
    EXPECT_EQ(std::pair(value, narrow), std::pair(expected, static_cast<float>(expected))) << text;
  }
  double value = 99;
  for (const std::string_view text :
       {"1.5\n"sv, "1.5 \r"sv, "1.5 x"sv, "1.5x"sv, "1,5"sv, "1e"sv, ""sv, "\n"sv, " x"sv, "x"sv, "1.5x\0"sv}) {
    EXPECT_FALSE(QZStringToNumber(text, value)) << text;
    EXPECT_EQ(std::exchange(value, 99), 0) << text;
  }
  EXPECT_TRUE(QZStringToNumber("nan(123)", value) && std::isnan(value));
}

TEST(StringNumber, BoolIsOneOfItsWords) {
  for (const char* text : {"1", "yes", "true", "on", "y", "t", "YES", "True", "oN", "T"}) {
    bool value = false;
    EXPECT_TRUE(QZStringToNumber(text, value) && value) << text;
  }
  for (const char* text : {"0", "no", "false", "off", "n", "f", "NO", "False", "oFF", "N"}) {
    bool value = true;
    EXPECT_TRUE(QZStringToNumber(text, value) && !value) << text;
  }
  for (const char* text : {"", " yes", "yes ", "2", "10", "ye", "tru", "yess", "of", "-1"}) {
    bool yes = true, no = false;
    EXPECT_FALSE(QZStringToNumber(text, yes) || !yes || QZStringToNumber(text, no) || no) << text;
  }
}

TEST(StringNumber, IntegersPrintInEveryBase) {
  std::string text = "what was there";
  EXPECT_TRUE(QZNumberToString(std::numeric_limits<long>::min(), text, 2));
  EXPECT_EQ(text, "-1" + std::string(63, '0'));
  EXPECT_TRUE(QZNumberToString(std::numeric_limits<unsigned long>::max(), text, 36));
  EXPECT_EQ(text, "3w5e11264sgsf");
  EXPECT_TRUE(QZNumberToString(-255, text, 16));
  EXPECT_EQ(text + QZNumberToString(4294967295u), "-ff4294967295");
  EXPECT_EQ(QZNumberToString(true) + QZNumberToString(false), "truefalse");
}

TEST(StringNumber, FloatingPointPrintsAsItsFormatSays) {
  const std::string zeros(5000, '0');
  const std::tuple<double, char, int, std::string> cases[] = {
      {1.0, 'f', 5000, "1." + zeros}, {HUGE_VAL, 'F', 6, "INF"}, {1 / 3., 'e', 3, "3.333e-01"}, {1e10, 'g', 4, "1e+10"},
      {1 / 3., 'E', 3, "3.333E-01"},  {1e10, 'G', 4, "1E+10"},   {1e9, 'f', 1, "1000000000.0"}, {-0.0, 'f', 1, "-0.0"},
      {0.1, 'f', 0, "0.100000"},      {2.5, 'f', 2, "2.50"}};
  for (const auto& [value, format, precision, expected] : cases) {
    std::string text, wide;
    EXPECT_TRUE(QZNumberToString(value, text, format, precision));
    EXPECT_TRUE(QZNumberToString(static_cast<long double>(value), wide, format, precision));
    EXPECT_EQ(std::pair(text, wide), std::pair(expected, expected));
  }
  std::string text;
  EXPECT_TRUE(QZNumberToString(0.1L, text, 'f', 25));
  for (const char format : {'a', 'd', 's', '%', '\0', 'H'}) {
    EXPECT_FALSE(QZNumberToString(1.0, text, format, 2) || QZNumberToString(1.0L, text, format, 2)) << format;
    EXPECT_EQ(text, "0.1000000000000000000013553") << "stays";
  }
}

TEST(StringNumber, LocaleHasNoInfluence) {
  const QZPlatform::CommaLocale comma;
  if (!comma.Works()) GTEST_SKIP() << "no locale with a decimal comma";
  std::string text;
  QZNumberToString(1.5L, text, 'f', 2);
  EXPECT_EQ(text, "1.50");
  QZNumberToString(1.5, text, 'f', 2000);
  EXPECT_EQ(text, "1.5" + std::string(1999, '0'));
  double value = 0;
  EXPECT_TRUE(QZStringToNumber("2.25 ", value));
  EXPECT_EQ(value, 2.25);
  EXPECT_FALSE(QZStringToNumber("2,25", value));
}

TEST(StringNumber, TrimKeepsOneDigitBehindThePoint) {
  const std::pair<const char*, const char*> cases[] = {
      {"1.500e-10", "1.5e-10"}, {"1.0e+00", "1.0e+00"}, {"-3.1400", "-3.14"}, {"1.000", "1.0"}, {".00", ".0"},
      {"2.000E-07", "2.0E-07"}, {"1.20.00", "1.20.0"},  {"1.e+5", "1.e+5"},   {"100", "100"},   {"1.", "1."},
      {"1.50E+10", "1.5E+10"},  {"e+1.00", "e+1.00"},   {"1.500", "1.5"},     {"inf", "inf"},   {"", ""}};
  for (const auto& [number, trimmed] : cases) EXPECT_EQ(QZTrimToSigFigs(number), trimmed) << number;
}

TEST(StringNumber, TruncateRoundsHalvesUpward) {
  EXPECT_EQ(QZTruncate(1.25, 10), 1.3);
  EXPECT_EQ(QZTruncate(-1.25, 10), -1.2);
  EXPECT_EQ(QZTruncate(0.126, 8), 0.125);
}

}  // namespace
}  // namespace QZSystem
