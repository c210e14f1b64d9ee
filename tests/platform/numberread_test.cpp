// The reading of floating-point numbers beside strtod in the C locale: same value to the bit, same number of bytes.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "qz/platform/numbertext.h"

namespace QZPlatform {
namespace {

double fromBits(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

std::string describe(double value, std::size_t length) {
  char text[64];
  std::snprintf(text, sizeof text, "%a of %zu bytes", value, length);
  return text;
}

std::string expected(const std::string& text) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  return describe(value, static_cast<std::size_t>(end - text.c_str()));
}

// Reads from a block of exactly the text's size, so that a sanitizer sees a step past its end.
std::string read(const std::string& text) {
  const std::vector<char> exact(text.begin(), text.end());
  double value = 42;
  const std::size_t length = QZReadNumber({exact.data(), exact.size()}, value).length;
  return describe(value, length);
}

template <class... Arguments>
std::string printed(const char* format, Arguments... arguments) {
  std::vector<char> text(1400);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(text.data(), text.size(), format, arguments...);
#pragma GCC diagnostic pop
  return text.data();
}

TEST(NumberRead, AgreesWithStrtodOnPrintedNumbers) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 50000; ++i) {
    const std::uint64_t bits = random();
    const int precision = static_cast<int>(random() % 22);
    const double scaled = std::ldexp(fromBits((bits >> 12) | 0x3ff0000000000000), static_cast<int>(bits % 140) - 70);
    for (const std::string& text : {printed("%.*e", precision, fromBits(bits)), printed("%.*f", precision, scaled),
                                    printed("%.*g", precision, -scaled), printed("%a", fromBits(bits))}) {
      ASSERT_EQ(read(text), expected(text)) << text;
    }
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
    if (!std::isfinite(fromBits(bits + 1))) continue;
    const long double half =
        (static_cast<long double>(fromBits(bits)) + static_cast<long double>(fromBits(bits + 1))) / 2;
    std::string text = printed("%.1100Le", half);
    const std::size_t e = text.find('e');
    std::size_t last = text.find_last_not_of('0', e - 1);
    const std::string exponent = text.substr(e);
    std::vector<std::string> texts = {text, text.substr(0, last + 1) + exponent, printed("%La", half)};
    text.resize(e);
    texts.push_back(text + "1" + exponent);
    texts.push_back(text + std::string(900, '0') + "1" + exponent);
    text[last] = static_cast<char>(text[last] - 1);
    texts.push_back(text + "9" + exponent);
    for (const std::string& each : texts) ASSERT_EQ(read(each), expected(each)) << each;
  }
}

TEST(NumberRead, AgreesWithStrtodWhereItsRoadsMeet) {
  std::vector<std::string> mantissas;
  for (const std::uint64_t center :
       {std::uint64_t{1} << 53, std::uint64_t{1} << 54, std::uint64_t{1} << 63, std::uint64_t{10000000000000000},
        std::uint64_t{1000000000000000000}, std::uint64_t{9999999999999999999u}, UINT64_MAX, std::uint64_t{8}}) {
    for (std::uint64_t n = center - 4; n != center + 5; ++n) mantissas.push_back(std::to_string(n));
  }
  mantissas.insert(mantissas.end(), {"0", "00000000000000000000000000", "18446744073709551616", "99999999999999999999",
                                     "00000000000000000000012345678901234567890", "1234567890123456789012345"});
  for (const std::string& mantissa : mantissas) {
    for (int exponent = -30; exponent <= 30; ++exponent) {
      const std::string text = mantissa + "e" + std::to_string(exponent);
      ASSERT_EQ(read(text), expected(text)) << text;
      const std::size_t point = static_cast<std::size_t>(exponent + 30) % (mantissa.size() + 1);
      const std::string pointed = mantissa.substr(0, point) + "." + mantissa.substr(point);
      ASSERT_EQ(read(pointed), expected(pointed)) << pointed;
    }
  }
}

TEST(NumberRead, AgreesWithStrtodOnQuotientsWithoutRemainder) {
  // Products with a power of ten, written with that power taken off again, leave nothing to round, or a tie.
  std::mt19937_64 random(3);
  std::uint64_t power = 1;
  for (int k = 0; k < 19; ++k, power *= 10) {
    for (int i = 0; i < 2000; ++i) {
      const std::uint64_t mantissa = (random() >> (random() % 20)) / power * power;
      const std::string text = std::to_string(mantissa) + "e-" + std::to_string(k);
      ASSERT_EQ(read(text), expected(text)) << text;
    }
  }
}

TEST(NumberRead, AgreesWithStrtodAtTheEndsOfTheRange) {
  const std::string zeros(2000, '0');
  for (
      const std::string& text : std::vector<std::string>{
          "1.7976931348623157e308",
          "1.7976931348623158e308",
          "1.7976931348623159e308",
          "1e309",
          "-1e309",
          "9e99999",
          "179769313486231580793728971405303415079934132710037826936173778980444968292764750946649017977587207096330286"
          "416692887910946555547851940402630657488671505820681908902000708383676273854845817711531764475730270069855571"
          "366959622842914819860834936475292719074168444365510704342711559699508093042880e0",
          "4.9406564584124654e-324",
          "2.4703282292062328e-324",
          "2.4703282292062327e-324",
          "-1e-400",
          "1e-99999",
          "2.2250738585072011e-308",
          "2.2250738585072014e-308",
          "0e99999999999999999999",
          "1e99999999999999999999",
          "1e-99999999999999999999",
          "0." + zeros + "1e2001",
          "1" + zeros + "e-2000",
          "0." + zeros + "1e2309",
          "1" + zeros + "e-2400",
          "0." + zeros + "00e2000",
          "1" + zeros + zeros + "e-9999999999999999999999",
          "0x1p1024",
          "0x1p-1074",
          "0x1p-1075",
          "0x1.8p-1075",
          "0x0.0000000000000000000000001p100",
          "0x100000000000000000000000000000001p-128",
          "0x1.00000000000008p0",
          "0x1.000000000000080000000000000001p0",
          "0x1.fffffffffffff8p1023",
          "0x1.fffffffffffff7p1023",
          "0x1p99999999999999999999",
          "0x1p-99999999999999999999",
          "0x0p99999999999999999999",
          "0x." + zeros + "1p8004"}) {
    EXPECT_EQ(read(text), expected(text)) << text;
  }
}

TEST(NumberRead, TakesTheWholeGrammarOfStrtod) {
  const char alphabet[] = "0123456789.eE+-xXpPaAfFnNiItTyY( )_\t\v\n1100";
  const char* starts[] = {"",        "0x",       "inf", "nan(", "-", "1e", "0x.", " infini", "9007199254740993",
                          "0x1p-10", "12345.678"};
  std::mt19937_64 random(4);
  for (int i = 0; i < 150000; ++i) {
    std::string text = starts[random() % std::size(starts)];
    for (std::size_t n = random() % 10; n != 0; --n) text += alphabet[random() % (sizeof alphabet - 1)];
    ASSERT_EQ(read(text), expected(text)) << text;
  }
  EXPECT_EQ(read(std::string("1\0002", 3)), describe(1, 1));
  EXPECT_EQ(read(std::string("\0", 1)), describe(0, 0));
  EXPECT_EQ(read("-nan(x"), expected("-nan"));
}

// What is open can become something else; what isn't stays what it is, whatever follows.
TEST(NumberRead, OpenTellsWhetherMoreBytesCouldMatter) {
  const std::vector<std::string> texts = {
      " -12.50e-7 ", "0x1.8p+3z", "infinity ", "nan(ab_1)1",          "1e+x", ".5", "0x.p", "-.e1", "nan(-",
      "infix",       "1.2.3",     "0xg",       "12345678.87654321e5,"};
  for (const std::string& text : texts) {
    for (std::size_t length = 0; length <= text.size(); ++length) {
      const std::string start = text.substr(0, length);
      double value = 0;
      const QZNumberPrefix found = QZReadNumber(start, value);
      bool changes = false;
      for (int c = 1; c < 256; ++c) {
        for (const char* rest : {"", "1", "p1", "nity", "finity", "n", "an", ")", "+1", "ty", "ity", "inity", "y"}) {
          double later = 0;
          const std::string longer = start + static_cast<char>(c) + rest;
          changes = changes || QZReadNumber(longer, later).length != found.length;
        }
      }
      EXPECT_EQ(found.open, changes) << start;
    }
  }
}

TEST(NumberRead, FloatIsTheDoubleNarrowed) {
  for (const char* text : {"0.1", "7.038531e-26", "3.4028235677973366e38", "1e-46", "16777217", "-1e39", "nan"}) {
    float value = 0;
    EXPECT_EQ(QZReadNumber(text, value).length, std::strlen(text));
    const float narrowed = static_cast<float>(std::strtod(text, nullptr));
    EXPECT_EQ(describe(static_cast<double>(value), 0), describe(static_cast<double>(narrowed), 0)) << text;
  }
}

}  // namespace
}  // namespace QZPlatform
