// The printing of floating-point numbers beside snprintf in the C locale.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "qz/platform/numbertext.h"

namespace QZPlatform {
namespace {

template <class Float, class Bits>
Float fromBits(Bits bits) {
  Float value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

std::string expected(double value, char format, int precision) {
  const char pattern[] = {'%', '.', '*', format, '\0'};
  std::vector<char> text(2000);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(text.data(), text.size(), pattern, precision, value);
#pragma GCC diagnostic pop
  return text.data();
}

testing::AssertionResult printsAsPrintf(double value, char format, int precision) {
  std::string text = "what was there";
  const std::string wanted = expected(value, format, precision);
  if (!QZPrintNumber(text, value, format, precision)) return testing::AssertionFailure() << "refused";
  if (text == wanted) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "%." << precision << format << " of " << wanted << " gave " << text;
}

TEST(NumberPrint, AgreesWithPrintfInEveryForm) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 60000; ++i) {
    const std::uint64_t bits = random();
    const double any = fromBits<double>(bits);
    const double middling =
        std::ldexp(1.0 + static_cast<double>(bits >> 12) * 0x1p-52, static_cast<int>(bits % 150) - 80);
    const char format = "eEfFgG"[random() % 6];
    const int precision = static_cast<int>(random() % 24);
    ASSERT_TRUE(printsAsPrintf(any, format, precision));
    ASSERT_TRUE(printsAsPrintf(middling, 'f', precision));
  }
}

TEST(NumberPrint, RoundsTiesToEven) {
  for (int numerator = -1500; numerator <= 1500; ++numerator) {
    for (const int shift : {1, 2, 3, 5, 8, 11, 20}) {
      for (int precision = 0; precision <= shift; ++precision) {
        ASSERT_TRUE(printsAsPrintf(std::ldexp(static_cast<double>(numerator), -shift), 'f', precision));
      }
    }
  }
}

TEST(NumberPrint, AgreesWithPrintfWhereItsRoadsMeet) {
  std::vector<double> values = {0.0,
                                1e15,
                                1e16,
                                0.5,
                                9.5,
                                99.5,
                                0x1p52,
                                0x1p53,
                                0x1p63,
                                0x1p-1,
                                0x1p-63,
                                0x1p-64,
                                0x1p-74,
                                0x1p-75,
                                1e-19,
                                5e-20,
                                5e-7,
                                9.9999995,
                                922337203685.4775807,
                                std::numeric_limits<double>::min(),
                                std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::max(),
                                std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()};
  for (const double value : values) {
    for (const double near : {value, std::nextafter(value, 0.0), std::nextafter(value, 1e308)}) {
      for (int precision = -1; precision <= 25; ++precision) {
        for (const char format : {'f', 'F', 'e', 'g', 'G'}) {
          ASSERT_TRUE(printsAsPrintf(near, format, precision));
          ASSERT_TRUE(printsAsPrintf(-near, format, precision));
        }
      }
    }
  }
}

TEST(NumberPrint, TakesPrecisionsUpToItsLargest) {
  for (const double value : {std::numeric_limits<double>::max(), -std::numeric_limits<double>::denorm_min()}) {
    for (const char format : {'f', 'e', 'g'}) EXPECT_TRUE(printsAsPrintf(value, format, QZPrintPrecision));
  }
  std::string text = "stays";
  EXPECT_FALSE(QZPrintNumber(text, 1.0, 'f', QZPrintPrecision + 1));
  for (int format = -128; format < 128; ++format) {
    const char byte = static_cast<char>(format);
    const bool known = byte != '\0' && std::strchr("eEfFgG", byte) != nullptr;
    std::string out = text;
    EXPECT_EQ(QZPrintNumber(out, 1.0, byte, 2), known) << format;
    EXPECT_EQ(out == text, !known) << format;
  }
}

TEST(NumberPrint, ShortestTextReadsBackAndIsShort) {
  std::mt19937_64 random(2);
  char room[QZShortestRoom];
  for (int i = 0; i < 100000; ++i) {
    const double value = fromBits<double>(random());
    double back = 0;
    const std::string_view text = QZPrintShortest(value, room);
    ASSERT_EQ(QZReadNumber(text, back).length, text.size()) << text;
    ASSERT_TRUE(back == value || std::isnan(value)) << text;
    const float narrow = fromBits<float>(static_cast<std::uint32_t>(random()));
    float narrowBack = 0;
    const std::string_view narrowText = QZPrintShortest(narrow, room);
    ASSERT_EQ(QZReadNumber(narrowText, narrowBack).length, narrowText.size()) << narrowText;
    ASSERT_TRUE(narrowBack == narrow || std::isnan(narrow)) << narrowText;
  }
  const struct {
    double value;
    const char* text;
  } cases[] = {{0.1, "0.1"},
               {-0.0, "-0"},
               {1e22, "1e+22"},
               {123456, "123456"},
               {1e-5, "1e-05"},
               {0.5, "0.5"},
               {1.0 / 3, "0.3333333333333333"},
               {5e-324, "5e-324"},
               {std::numeric_limits<double>::infinity(), "inf"},
               {std::numeric_limits<double>::quiet_NaN(), "nan"}};
  for (const auto& c : cases) EXPECT_EQ(QZPrintShortest(c.value, room), c.text);
  EXPECT_EQ(QZPrintShortest(0.1f, room), "0.1");
}

// The one positive float whose shortest text is nearer to a point halfway between floats than doubles can tell.
TEST(NumberPrint, ShortestFloatReadsBackThroughADouble) {
  const float value = fromBits<float>(std::uint32_t{0x15ae43fd});
  char room[QZShortestRoom];
  for (const float each : {value, -value}) {
    float back = 0;
    QZReadNumber(QZPrintShortest(each, room), back);
    EXPECT_EQ(back, each);
  }
}

}  // namespace
}  // namespace QZPlatform
