// Numbers from and to text beside those of the C library: the same value to the bit, the same bytes.
#include "qz/platform/numbertext.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/platform/commalocale.h"

namespace {

using namespace QZPlatform;
using Limits = std::numeric_limits<double>;

template <class Float = double>
Float FromBits(std::uint64_t bits) {
  Float value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// From 1 to below 2, by the upper bits, times a power of two.
double Middling(std::uint64_t bits, int exponent) {
  return std::ldexp(FromBits(bits >> 12 | 0x3ff0000000000000), exponent);
}

template <class... Arguments>
std::string Printed(const char* format, Arguments... arguments) {
  std::vector<char> text(2000);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(text.data(), text.size(), format, arguments...);
#pragma GCC diagnostic pop
  return text.data();
}

testing::AssertionResult PrintsAsPrintf(double value, char format, int precision) {
  const char pattern[] = {'%', '.', '*', format, '\0'};
  const std::string wanted = Printed(pattern, precision, value);
  std::string text = "what was there";
  if (QZPrintNumber(text, value, format, precision) && text == wanted) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "%." << precision << format << " of " << wanted << " gave " << text;
}

// Reads from a block of exactly the text's size, so that a sanitizer sees a step past its end.
testing::AssertionResult ReadsAsStrtod(const std::string& text) {
  const std::vector<char> exact(text.begin(), text.end());
  double value = 42;
  const std::size_t length = QZReadNumber({exact.data(), exact.size()}, value).length;
  char* end = nullptr;
  const double wanted = std::strtod(text.c_str(), &end);
  const bool sameValue = value == wanted || (std::isnan(value) && std::isnan(wanted));
  if (sameValue && std::signbit(value) == std::signbit(wanted) && text.c_str() + length == end)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << text << " gave " << Printed("%a of %zu bytes", value, length);
}

template <class Float>
testing::AssertionResult ShortestReadsBack(Float value) {
  char room[QZShortestRoom];
  const std::string_view text = QZPrintShortest(value, room);
  Float back = 0;
  const bool whole = QZReadNumber(text, back).length == text.size();
  if (whole && (back == value || std::isnan(value))) return testing::AssertionSuccess();
  return testing::AssertionFailure() << text;
}

TEST(NumberPrint, AgreesWithPrintfInEveryForm) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 60000; ++i) {
    const std::uint64_t bits = random();
    const int precision = static_cast<int>(random() % 24);
    ASSERT_TRUE(PrintsAsPrintf(FromBits(bits), "eEfFgG"[random() % 6], precision));
    ASSERT_TRUE(PrintsAsPrintf(Middling(bits, static_cast<int>(bits % 150) - 80), 'f', precision));
  }
}

TEST(NumberPrint, AgreesWithPrintfWhereItsRoadsMeet) {
  std::istringstream texts(
      "0 1e15 1e16 0.5 1.5 9.5 99.5 0.125 0.375 0x1.8p-19 0x1p52 0x1p53 0x1p63 0x1p-1 0x1p-63 0x1p-64 0x1p-74 0x1p-75 "
      "1e-19 5e-20 5e-7 9.9999995 "
      "922337203685.4775807 0x1p-1022 0x1p-1074 1.7976931348623157e308 inf nan");
  for (std::string text; texts >> text;) {
    const double value = std::strtod(text.c_str(), nullptr);
    for (const double near : {value, std::nextafter(value, 0.0), std::nextafter(value, 1e308)}) {
      for (int precision = -1; precision <= 25; ++precision) {
        for (const char format : {'f', 'F', 'e', 'g', 'G'}) {
          ASSERT_TRUE(PrintsAsPrintf(near, format, precision));
          ASSERT_TRUE(PrintsAsPrintf(-near, format, precision));
        }
      }
    }
  }
}

TEST(NumberPrint, TakesPrecisionsUpToItsLargestAndNoOtherFormat) {
  for (const double value : {Limits::max(), -Limits::denorm_min()}) {
    for (const char format : {'f', 'e', 'g'}) EXPECT_TRUE(PrintsAsPrintf(value, format, QZPrintPrecision));
  }
  std::string text = "stays";
  EXPECT_FALSE(QZPrintNumber(text, 1.0, 'f', QZPrintPrecision + 1));
  for (int format = -128; format < 128; ++format) {
    const bool known = format != 0 && std::strchr("eEfFgG", format) != nullptr;
    EXPECT_TRUE(known || !QZPrintNumber(text, 1.0, static_cast<char>(format), 2)) << format;
  }
  EXPECT_EQ(text, "stays");
}

TEST(NumberPrint, ShortestTextReadsBackAndIsShort) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 100000; ++i) {
    ASSERT_TRUE(ShortestReadsBack(FromBits(random())));
    ASSERT_TRUE(ShortestReadsBack(FromBits<float>(random())));
  }
  // The one positive float whose shortest text is nearer to a point halfway between floats than doubles can tell.
  for (const std::uint64_t bits : {0x15ae43fdU, 0x95ae43fdU}) EXPECT_TRUE(ShortestReadsBack(FromBits<float>(bits)));
  const std::pair<double, const char*> cases[] = {{0.1, "0.1"},
                                                  {-0.0, "-0"},
                                                  {1e22, "1e+22"},
                                                  {123456, "123456"},
                                                  {1e-5, "1e-05"},
                                                  {1.0 / 3, "0.3333333333333333"},
                                                  {5e-324, "5e-324"},
                                                  {Limits::infinity(), "inf"},
                                                  {Limits::quiet_NaN(), "nan"}};
  char room[QZShortestRoom];
  for (const auto& [value, text] : cases) EXPECT_EQ(QZPrintShortest(value, room), text);
  EXPECT_EQ(QZPrintShortest(0.1F, room), "0.1");
}

TEST(NumberRead, AgreesWithStrtodOnPrintedNumbers) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 50000; ++i) {
    const std::uint64_t bits = random();
    const int precision = static_cast<int>(random() % 22);
    const double scaled = Middling(bits, static_cast<int>(bits % 140) - 70);
    ASSERT_TRUE(ReadsAsStrtod(Printed("%.*e", precision, FromBits(bits))));
    ASSERT_TRUE(ReadsAsStrtod(Printed("%.*f", precision, scaled)));
    ASSERT_TRUE(ReadsAsStrtod(Printed("%.*g", precision, -scaled)));
    ASSERT_TRUE(ReadsAsStrtod(Printed("%a", FromBits(bits))));
  }
}

TEST(NumberRead, AgreesWithStrtodAtHalfwayPoints) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 4000; ++i) {
    // Normal numbers, subnormal ones, and the neighbours of powers of two.
    std::uint64_t bits = random() & 0x7fffffffffffffff;
    if (i % 4 == 1) bits &= std::uint64_t{0x000fffffffffffff} >> (random() % 52);
    if (i % 4 == 2) bits &= 0x7ff0000000000000;
    if (i % 4 == 3) bits = (0x3ff0000000000000 + ((random() % 120 - 60) << 52)) | (bits & 0x000fffffffffffff);
    if (!std::isfinite(FromBits(bits + 1))) continue;
    const long double half =
        (static_cast<long double>(FromBits(bits)) + static_cast<long double>(FromBits(bits + 1))) / 2;
    const std::string text = Printed("%.1100Le", half);
    const std::size_t e = text.find('e');
    const std::size_t last = text.find_last_not_of('0', e - 1);
    const std::string digits = text.substr(0, e), exponent = text.substr(e);
    std::string below = digits;
    below[last] = static_cast<char>(below[last] - 1);
    for (const std::string& each :
         {text, text.substr(0, last + 1) + exponent, Printed("%La", half), digits + "1" + exponent,
          digits + std::string(900, '0') + "1" + exponent, below + "9" + exponent})
      ASSERT_TRUE(ReadsAsStrtod(each));
  }
}

TEST(NumberRead, AgreesWithStrtodWhereItsRoadsMeet) {
  std::vector<std::string> mantissas = {"0",
                                        std::string(26, '0'),
                                        "18446744073709551616",
                                        "99999999999999999999",
                                        std::string(21, '0') + "12345678901234567890",
                                        "1234567890123456789012345"};
  for (const std::uint64_t center : {1UL << 53, 1UL << 54, 1UL << 63, 10000000000000000UL, 1000000000000000000UL,
                                     9999999999999999999UL, UINT64_MAX, 8UL}) {
    for (std::uint64_t n = center - 4; n != center + 5; ++n) mantissas.push_back(std::to_string(n));
  }
  for (const std::string& mantissa : mantissas) {
    for (int exponent = -30; exponent <= 30; ++exponent) {
      ASSERT_TRUE(ReadsAsStrtod(mantissa + "e" + std::to_string(exponent)));
      const std::size_t point = static_cast<std::size_t>(exponent + 30) % (mantissa.size() + 1);
      ASSERT_TRUE(ReadsAsStrtod(mantissa.substr(0, point) + "." + mantissa.substr(point)));
    }
  }
}

TEST(NumberRead, AgreesWithStrtodAtTheEndsOfTheRange) {
  std::istringstream texts(
      "1.7976931348623157e308 1.7976931348623158e308 1.7976931348623159e308 1e309 -1e309 9e99999 "
      "4.9406564584124654e-324 2.4703282292062328e-324 2.4703282292062327e-324 -1e-400 1e-99999 "
      "2.2250738585072011e-308 2.2250738585072014e-308 0e99999999999999999999 1e99999999999999999999 "
      "1e-99999999999999999999 "
      "0x1p1024 0x1p-1074 0x1p-1075 0x1.8p-1075 0x0.0000000000000000000000001p100 "
      "0x100000000000000000000000000000001p-128 0x1.00000000000008p0 0x1.000000000000080000000000000001p0 "
      "0x1.fffffffffffff8p1023 0x1.fffffffffffff7p1023 0x1p99999999999999999999 0x1p-99999999999999999999 "
      "0x0p99999999999999999999");
  for (std::string text; texts >> text;) EXPECT_TRUE(ReadsAsStrtod(text));
  EXPECT_TRUE(ReadsAsStrtod(Printed("%.0Lfe0", 0x1.fffffffffffff8p1023L)));  // halfway to what is too large
  const std::string zeros(2000, '0');
  for (const std::string& text :
       {"0." + zeros + "1e2001", "1" + zeros + "e-2000", "0." + zeros + "1e2309", "1" + zeros + "e-2400",
        "0." + zeros + "00e2000", "1" + zeros + zeros + "e-9999999999999999999999", "0x." + zeros + "1p8004"})
    EXPECT_TRUE(ReadsAsStrtod(text));
}

TEST(NumberRead, TakesTheWholeGrammarOfStrtod) {
  const char alphabet[] = "0123456789.eE+-xXpPaAfFnNiItTyY( )_\t\v\n1100";
  const char* starts[] = {"",        "0x",       "inf", "nan(", "-", "1e", "0x.", " infini", "9007199254740993",
                          "0x1p-10", "12345.678"};
  std::mt19937_64 random(4);
  for (int i = 0; i < 150000; ++i) {
    std::string text = starts[random() % std::size(starts)];
    for (std::size_t n = random() % 10; n != 0; --n) text += alphabet[random() % (sizeof alphabet - 1)];
    ASSERT_TRUE(ReadsAsStrtod(text));
  }
  for (const std::string& text : {std::string("1\0002", 3), std::string("\0", 1), std::string("-nan(x")})
    EXPECT_TRUE(ReadsAsStrtod(text));
}

// What is open can become something else; what isn't stays what it is, whatever follows.
template <class T>
void ExpectOpenTells(const char* cases) {
  std::istringstream texts(cases);
  for (std::string text; texts >> text;) {
    for (std::size_t length = 0; length <= text.size(); ++length) {
      const std::string start = text.substr(0, length);
      T value{};
      const QZNumberPrefix found = QZReadNumber(start, value);
      bool changes = false;
      for (int c = 1; c < 256; ++c) {
        for (const char* rest : {"", "1", "p1", "nity", "finity", "n", "an", ")", "+1", "ty", "ity", "inity", "y", "e",
                                 "ue", "s", "se", "lse", "alse"})
          changes |= QZReadNumber(start + static_cast<char>(c) + rest, value).length != found.length;
      }
      EXPECT_EQ(found.open, changes) << start;
    }
  }
}

TEST(NumberRead, OpenTellsWhetherMoreBytesCouldMatter) {
  ExpectOpenTells<double>("-12.50e-7; 0x1.8p+3z infinity; nan(ab_1)1 1e+x .5 0x.p -.e1 nan(- infix 1.2.3 0xg 12.2e5,");
  ExpectOpenTells<int>("12; -7x +5. --1 0x1");
  ExpectOpenTells<bool>("10 0 yes; tRUE trust ON noon Of false x \x10 \x11 \x19");
}

TEST(NumberRead, PlainIntegerAgreesWithTheGeneralRoad) {
  std::vector<std::string> texts = {"", "+-1", "1000000000", "12345678901234567890"};
  const std::string bytes("019-+/: \0\xb0\x10", 11);
  for (std::size_t length = 0; length <= 9; ++length) {
    for (std::size_t bad = 0; bad <= length; ++bad) {
      for (const char c : bytes) {
        std::string text = std::string("918273645").substr(0, length);
        if (bad < length) text[bad] = c;
        for (const char* sign : {"", "-", "+"}) texts.push_back(sign + text);
      }
    }
  }
  for (const std::string& text : texts) {
    const std::vector<char> exact(text.begin(), text.end());
    std::int64_t plain = -1;
    long general = 0;
    const std::size_t digits = text.size() - (text[0] == '-' || text[0] == '+' ? 1 : 0);
    const bool whole = !text.empty() && QZReadNumber(text, general).length == text.size() && digits <= 9;
    EXPECT_EQ(QZReadPlainInteger({exact.data(), exact.size()}, plain), whole) << text;
    EXPECT_EQ(plain, whole ? general : -1) << text;
  }
}

[[gnu::format(printf, 3, 4)]] int PrintTo(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length = QZVSNPrintf(buffer, size, format, arguments);
  va_end(arguments);
  return length;
}

// What all the operations give, in a form that a comma anywhere would change.
std::string AllForms() {
  char room[QZShortestRoom], buffer[64];
  std::string text(QZPrintShortest(0.125, room)), one;
  text += QZPrintShortest(0.5F, room);
  for (const int precision : {2, 30}) {
    for (const char format : {'e', 'f', 'g'}) {
      QZPrintNumber(one, 1.5, format, precision);
      text += " " + one;
    }
  }
  PrintTo(buffer, sizeof buffer, " %.2f %.3Lg", 2.25, static_cast<long double>(3.5));
  text += buffer;
  for (const std::string_view number : {"1.5", "1.5e0 ", "0x1.8p0", "1.50000000000000000000000000000001"}) {
    double value = 0;
    const std::size_t length = QZReadNumber(number, value).length;
    text += " " + std::to_string(length) + (value == 1.5 ? "=" : "!");
  }
  return text;
}

TEST(NumberText, NoLocaleHasInfluence) {
  const std::string expected =
      "0.1250.5 1.50e+00 1.50 1.5 1.500000000000000000000000000000e+00 1.500000000000000000000000000000 1.5 2.25 3.5"
      " 3= 5= 7= 34=";
  const CommaLocale comma;
  if (!comma.Works()) GTEST_SKIP() << "no locale with a decimal comma";
  ASSERT_EQ(Printed("%.1f", 1.5), "1,5");
  EXPECT_EQ(AllForms(), expected);
  EXPECT_EQ(Printed("%.1f", 1.5), "1,5") << "the thread's locale wasn't put back";

  std::atomic<bool> stop{false};
  std::thread changer([&] {
    for (bool on = false; !stop; on = !on) comma.SetComma(on);
  });
  std::string text = expected;
  for (int i = 0; i < 3000 && text == expected; ++i) text = AllForms();
  stop = true;
  changer.join();
  EXPECT_EQ(text, expected);
}

}  // namespace
