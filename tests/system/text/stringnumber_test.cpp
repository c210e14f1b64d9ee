#include "qz/system/text/stringnumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "tests/platform/commalocale.h"

namespace QZSystem {
namespace {

// What a read gives: the value, or "no" with the value in brackets where that isn't 0.
template <class T>
std::string read(const std::string& text, int base = 10) {
  T value = 99;
  if (QZStringToNumber(text, value, base)) return std::to_string(value);
  return value == 0 ? "no" : "no (" + std::to_string(value) + ")";
}

TEST(StringNumber, IntegerIsBlanksSignDigitsBlanks) {
  const struct {
    const char* text;
    const char* result;
  } cases[] = {{"  42\t", "42"}, {"\t +7 ", "7"}, {"-42", "-42"}, {"007", "7"},   {"-0", "0"},   {"4 2", "no"},
               {"- 4", "no"},    {"+", "no"},     {"-", "no"},    {"", "no"},     {"   ", "no"}, {"+-1", "no"},
               {"4x", "no"},     {"\n4", "no"},   {"4\n", "no"},  {"0x10", "no"}, {"1.", "no"},  {"1e3", "no"}};
  for (const auto& c : cases) {
    EXPECT_EQ(read<long>(c.text), c.result) << c.text;
    EXPECT_EQ(read<int>(c.text), c.result) << c.text;
    EXPECT_EQ(read<short>(c.text), c.result) << c.text;
    const std::string positive = c.text[0] == '-' ? "no" : c.result;
    EXPECT_EQ(read<unsigned long>(c.text), positive) << c.text;
    EXPECT_EQ(read<unsigned int>(c.text), positive) << c.text;
    EXPECT_EQ(read<unsigned short>(c.text), positive) << c.text;
  }
  EXPECT_EQ(read<long>(std::string("4\0", 2)), "no");
}

TEST(StringNumber, RangesAreThoseOf32And16Bits) {
  const struct {
    const char* text;
    bool signed32, unsigned32, signed16, unsigned16;
  } cases[] = {{"2147483647", true, true, false, false},
               {"2147483648", false, true, false, false},
               {"-2147483648", true, false, false, false},
               {"-2147483649", false, false, false, false},
               {"4294967295", false, true, false, false},
               {"4294967296", false, false, false, false},
               {"00000000004294967295", false, true, false, false},
               {"18446744073709551617", false, false, false, false},
               {"32767", true, true, true, true},
               {"32768", true, true, false, true},
               {"-32768", true, false, true, false},
               {"-32769", true, false, false, false},
               {"65535", true, true, false, true},
               {"65536", true, true, false, false}};
  const auto expect = [](bool fits, const char* text) { return fits ? std::to_string(std::stol(text)) : "no"; };
  for (const auto& c : cases) {
    EXPECT_EQ(read<long>(c.text), expect(c.signed32, c.text)) << c.text;
    EXPECT_EQ(read<int>(c.text), expect(c.signed32, c.text)) << c.text;
    EXPECT_EQ(read<short>(c.text), expect(c.signed16, c.text)) << c.text;
    EXPECT_EQ(read<unsigned long>(c.text), expect(c.unsigned32, c.text)) << c.text;
    EXPECT_EQ(read<unsigned int>(c.text), expect(c.unsigned32, c.text)) << c.text;
    EXPECT_EQ(read<unsigned short>(c.text), expect(c.unsigned16, c.text)) << c.text;
  }
}

TEST(StringNumber, DigitsFollowTheBase) {
  const struct {
    const char* text;
    int base;
    const char* result;
  } cases[] = {{"zz", 36, "1295"},
               {"Zz", 36, "1295"},
               {"ff", 16, "255"},
               {"FF", 16, "255"},
               {"g", 16, "no"},
               {"G", 16, "no"},
               {"12", 2, "no"},
               {"-101", 2, "-5"},
               {"000", 1, "0"},
               {"1", 1, "no"},
               {"0", 0, "no"},
               {"1", -10, "no"},
               {"0x10", 16, "no"},
               {"7fffffff", 16, "2147483647"},
               {"80000000", 16, "no"},
               {"-7fffffff", 16, "-2147483647"},
               {"zik0zj", 36, "2147483647"},
               {"zik0zk", 36, "no"},
               {"-zik0zk", 36, "-2147483648"},
               {"-80000000", 16, "no"},
               {"8", 8, "no"},
               {"-17777777777", 8, "-2147483647"},
               {"10", 1000, "1000"},
               {"9", 1000, "9"},
               {"z", 1000, "35"},
               {"10", 2147483647, "2147483647"},
               {"11", 2147483647, "no"},
               {"\xe0", 1000, "no"},
               {":", 36, "no"},
               {"@", 36, "no"},
               {"[", 36, "no"},
               {"{", 36, "no"}};
  for (const auto& c : cases) EXPECT_EQ(read<long>(c.text, c.base), c.result) << c.text << " in base " << c.base;
  EXPECT_EQ(read<unsigned long>("ffffffff", 16), "4294967295");
  EXPECT_EQ(read<unsigned long>("100000000", 16), "no");
  EXPECT_EQ(read<int>("fF", 16), "255");
  EXPECT_EQ(read<unsigned short>("ffff", 16), "65535");
}

TEST(StringNumber, FloatingPointIsWhatStrtodTakesAndABlankTail) {
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    std::string text;
    bool success;
    double value;
  } cases[] = {{"1.5", true, 1.5},
               {"\n\v\f\r 1.5", true, 1.5},
               {"1.5 \n", true, 1.5},
               {"1.5\t\t \n\n ", true, 1.5},
               {"1.5\n", false, 0},
               {"1.5 \r", false, 0},
               {"1.5 x", false, 0},
               {"1.5x", false, 0},
               {"1,5", false, 0},
               {"1e", false, 0},
               {"-.5e+1", true, -5},
               {"1.", true, 1},
               {"0x1.8p1", true, 3},
               {"1e999", true, inf},
               {"-Infinity", true, -inf},
               {"", false, 0},
               {"   ", true, 0},
               {"\t \n", true, 0},
               {"\n", false, 0},
               {" x", false, 0},
               {"x", false, 0},
               {std::string("1.5\0x", 5), true, 1.5},
               {std::string("1.5 \0x", 6), true, 1.5},
               {std::string("1.5x\0", 5), false, 0},
               {std::string("\0 1", 3), true, 0},
               {std::string(" \0x", 3), true, 0}};
  for (const auto& c : cases) {
    double value = 99;
    EXPECT_EQ(QZStringToNumber(c.text, value), c.success) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
    float narrow = 99;
    EXPECT_EQ(QZStringToNumber(c.text, narrow), c.success) << c.text;
    EXPECT_EQ(narrow, static_cast<float>(c.value)) << c.text;
  }
  double value = 0;
  EXPECT_TRUE(QZStringToNumber("nan(123)", value) && std::isnan(value));
  float narrow = 0;
  EXPECT_TRUE(QZStringToNumber("1e300", narrow) && std::isinf(narrow));
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
    for (const bool before : {false, true}) {
      bool value = before;
      EXPECT_FALSE(QZStringToNumber(text, value)) << text;
      EXPECT_EQ(value, before) << text;
    }
  }
}

TEST(StringNumber, IntegersPrintInEveryBase) {
  std::string text = "what was there";
  EXPECT_TRUE(QZNumberToString(0L, text, 10));
  EXPECT_EQ(text, "0");
  EXPECT_TRUE(QZNumberToString(-255L, text, 16));
  EXPECT_EQ(text, "-ff");
  EXPECT_TRUE(QZNumberToString(std::numeric_limits<long>::min(), text, 2));
  EXPECT_EQ(text, "-1" + std::string(63, '0'));
  EXPECT_TRUE(QZNumberToString(std::numeric_limits<unsigned long>::max(), text, 36));
  EXPECT_EQ(text, "3w5e11264sgsf");
  EXPECT_TRUE(QZNumberToString(-7, text));
  EXPECT_EQ(text, "-7");
  EXPECT_EQ(QZNumberToString(4294967295u), "4294967295");
  EXPECT_EQ(QZNumberToString(35u, 36), "z");
  EXPECT_EQ(QZNumberToString(true) + QZNumberToString(false), "truefalse");
}

TEST(StringNumber, FloatingPointPrintsAsItsFormatSays) {
  const struct {
    double value;
    char format;
    int precision;
    const char* text;
  } cases[] = {{2.5, 'f', 2, "2.50"},
               {1.0 / 3, 'e', 3, "3.333e-01"},
               {1.0 / 3, 'E', 3, "3.333E-01"},
               {1e10, 'g', 4, "1e+10"},
               {1e10, 'G', 4, "1E+10"},
               {0.1, 'f', 0, "0.100000"},
               {0.1, 'e', 0, "1.000000e-01"},
               {0.1, 'g', 0, "0.1"},
               {-0.0, 'f', 1, "-0.0"},
               {1e22, 'f', 1, "10000000000000000000000.0"},
               {HUGE_VAL, 'f', 6, "inf"},
               {HUGE_VAL, 'F', 6, "INF"},
               {-1.5, 'f', 30, "-1.500000000000000000000000000000"}};
  for (const auto& c : cases) {
    std::string text;
    EXPECT_TRUE(QZNumberToString(c.value, text, c.format, c.precision));
    EXPECT_EQ(text, c.text);
    EXPECT_TRUE(QZNumberToString(static_cast<long double>(c.value), text, c.format, c.precision));
    EXPECT_EQ(text, c.text);
  }
  std::string text;
  EXPECT_TRUE(QZNumberToString(0.1L, text, 'f', 25));
  EXPECT_EQ(text, "0.1000000000000000000013553");
  EXPECT_TRUE(QZNumberToString(1.0, text, 'f', 5000));
  EXPECT_EQ(text, "1." + std::string(5000, '0'));
  for (const char format : {'a', 'd', 's', '%', '\0', 'H'}) {
    text = "stays";
    EXPECT_FALSE(QZNumberToString(1.0, text, format, 2)) << format;
    EXPECT_FALSE(QZNumberToString(1.0L, text, format, 2)) << format;
    EXPECT_EQ(text, "stays");
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
  const struct {
    const char* number;
    const char* trimmed;
  } cases[] = {{"1.500", "1.5"},
               {"1.000", "1.0"},
               {"1.50E+10", "1.5E+10"},
               {"100", "100"},
               {"", ""},
               {"0.10", "0.1"},
               {"1.5e-10", "1.5e-10"},
               {"1.500e-10", "1.5e-10"},
               {"1.0e+00", "1.0e+00"},
               {"2.000E-07", "2.0E-07"},
               {"1.", "1."},
               {".", "."},
               {".00", ".0"},
               {"1.e+5", "1.e+5"},
               {"1.20.00", "1.20.0"},
               {"e+1.00", "e+1.00"},
               {"inf", "inf"},
               {"-3.1400", "-3.14"}};
  for (const auto& c : cases) EXPECT_EQ(QZTrimToSigFigs(c.number), c.trimmed) << c.number;
}

TEST(StringNumber, TruncateRoundsHalvesUpward) {
  EXPECT_EQ(QZTruncate(1.25, 10), 1.3);
  EXPECT_EQ(QZTruncate(-1.25, 10), -1.2);
  EXPECT_EQ(QZTruncate(1.24, 10), 1.2);
  EXPECT_EQ(QZTruncate(2.4999, 1), 2.0);
  EXPECT_EQ(QZTruncate(0.126, 8), 0.125);
}

}  // namespace
}  // namespace QZSystem
