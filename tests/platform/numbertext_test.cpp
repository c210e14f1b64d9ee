#include "qz/platform/numbertext.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/platform/commalocale.h"

namespace QZPlatform {
namespace {

[[gnu::format(printf, 3, 4)]] int printed(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length = QZVSNPrintf(buffer, size, format, arguments);
  va_end(arguments);
  return length;
}

template <class Integer>
void expectFullRange() {
  using Limits = std::numeric_limits<Integer>;
  const auto read = [](const std::string& text) {
    Integer value = 7;
    const std::size_t length = QZReadNumber(text, value).length;
    return std::to_string(length) + ":" + std::to_string(value);
  };
  const std::string most = std::to_string(Limits::max());
  const std::string least = std::to_string(Limits::min());
  const std::string aboveMost = most.substr(0, most.size() - 1) + std::to_string(most.back() - '0' + 1);
  const std::string belowLeast = "-" + (Limits::is_signed ? least.substr(1, least.size() - 2) : "") +
                                 std::to_string(Limits::is_signed ? least.back() - '0' + 1 : 1);
  EXPECT_EQ(read(most), std::to_string(most.size()) + ":" + most);
  EXPECT_EQ(read("+000" + most), std::to_string(most.size() + 4) + ":" + most);
  EXPECT_EQ(read(least), std::to_string(least.size()) + ":" + least);
  EXPECT_EQ(read(aboveMost), "0:0") << aboveMost;
  EXPECT_EQ(read(belowLeast), "0:0") << belowLeast;
  EXPECT_EQ(read(most + "0"), "0:0");
}

TEST(NumberText, IntegersCoverTheRangeOfTheirType) {
  expectFullRange<short>();
  expectFullRange<unsigned short>();
  expectFullRange<int>();
  expectFullRange<unsigned int>();
  expectFullRange<long>();
  expectFullRange<unsigned long>();
}

TEST(NumberText, IntegerTakesWhatBelongsToItAndTellsWhetherMoreCould) {
  const struct {
    std::string_view text;
    std::size_t length;
    bool open;
    int value;
  } cases[] = {
      {"12", 2, true, 12}, {"12 ", 2, false, 12}, {"-7x", 2, false, -7}, {"+5.", 2, false, 5},
      {"", 0, true, 0},    {"-", 0, true, 0},     {"+", 0, true, 0},     {"--1", 0, false, 0},
      {" 1", 0, false, 0}, {"x", 0, false, 0},    {"0x1", 1, false, 0},  {"-0", 2, true, 0},
  };
  for (const auto& c : cases) {
    int value = 99;
    const QZNumberPrefix found = QZReadNumber(c.text, value);
    EXPECT_EQ(found.length, c.length) << c.text;
    EXPECT_EQ(found.open, c.open) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
  unsigned int value = 99;
  EXPECT_EQ(QZReadNumber(std::string_view("-1"), value).length, 0u);
  EXPECT_EQ(value, 0u);
}

TEST(NumberText, PlainIntegerAgreesWithTheGeneralRoad) {
  std::vector<std::string> texts = {"",          "-",          "+",          "+-1",
                                    "999999999", "-999999999", "1000000000", "12345678901234567890"};
  const std::string bytes("019-+/: \0\xb0\x10", 11);
  for (std::size_t length = 1; length <= 9; ++length) {
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
    const std::string_view view(exact.data(), exact.size());
    std::int64_t plain = -1;
    long general = 0;
    const std::size_t digits = text.size() - (text[0] == '-' || text[0] == '+' ? 1 : 0);
    const bool whole = !text.empty() && QZReadNumber(view, general).length == text.size() && digits <= 9;
    EXPECT_EQ(QZReadPlainInteger(view, plain), whole) << text;
    EXPECT_EQ(plain, whole ? general : -1) << text;
  }
}

TEST(NumberText, BoolTakesTheLongestWord) {
  const struct {
    std::string_view text;
    std::size_t length;
    bool open;
    bool value;
  } cases[] = {
      {"1", 1, false, true},     {"0", 1, false, false}, {"yes", 3, false, true},  {"YeS!", 3, false, true},
      {"ye", 1, true, true},     {"y", 1, true, true},   {"t", 1, true, true},     {"tRUE", 4, false, true},
      {"trust", 1, false, true}, {"on", 2, false, true}, {"No", 2, false, false},  {"n", 1, true, false},
      {"noon", 2, false, false}, {"f", 1, true, false},  {"off", 3, false, false}, {"FALSE", 5, false, false},
      {"fals", 1, true, false},  {"10", 1, false, true},
  };
  for (const auto& c : cases) {
    bool value = !c.value;
    const QZNumberPrefix found = QZReadNumber(c.text, value);
    EXPECT_EQ(found.length, c.length) << c.text;
    EXPECT_EQ(found.open, c.open) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
  for (const std::string_view text : {"", "o", "of", "x", " yes", "2", "\x10", "\x11", "\x19"}) {
    bool value = true;
    EXPECT_EQ(QZReadNumber(text, value).length, 0u) << text;
    EXPECT_TRUE(value) << text;
  }
}

// The sum of what all the operations give, in a form that a comma anywhere would change.
std::string allForms() {
  char room[QZShortestRoom];
  std::string text(QZPrintShortest(0.125, room));
  text += std::string(QZPrintShortest(0.5f, room));
  for (const char format : {'e', 'f', 'g'}) {
    for (const int precision : {2, 30}) {
      std::string one;
      QZPrintNumber(one, 1.5, format, precision);
      text += " " + one;
    }
  }
  char buffer[64];
  printed(buffer, sizeof buffer, " %.2f %.3Lg", 2.25, static_cast<long double>(3.5));
  text += buffer;
  for (const std::string_view number : {"1.5", "1.5e0 ", "0x1.8p0", "1.50000000000000000000000000000001"}) {
    double value = 0;
    const std::size_t length = QZReadNumber(number, value).length;
    text += " " + std::to_string(length) + (value == 1.5 ? "=" : "!");
  }
  return text;
}

const char formsText[] =
    "0.1250.5 1.50e+00 1.500000000000000000000000000000e+00 1.50 1.500000000000000000000000000000 1.5 1.5 2.25 3.5"
    " 3= 5= 7= 34=";

TEST(NumberText, LocaleHasNoInfluence) {
  EXPECT_EQ(allForms(), formsText);
  const CommaLocale comma;
  if (!comma.Works()) GTEST_SKIP() << "no locale with a decimal comma";
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%.1f", 1.5);
  ASSERT_STREQ(buffer, "1,5");
  EXPECT_EQ(allForms(), formsText);
  std::snprintf(buffer, sizeof buffer, "%.1f", 1.5);
  EXPECT_STREQ(buffer, "1,5") << "the thread's locale wasn't put back";
}

TEST(NumberText, AnotherThreadMayChangeTheLocale) {
  const CommaLocale comma;
  if (!comma.Works()) GTEST_SKIP() << "no locale with a decimal comma";
  std::atomic<bool> stop{false};
  std::thread changer([&] {
    for (bool on = false; !stop; on = !on) comma.SetComma(on);
  });
  std::string wrong;
  for (int i = 0; i < 3000 && wrong.empty(); ++i) {
    const std::string text = allForms();
    if (text != formsText) wrong = text;
  }
  stop = true;
  changer.join();
  EXPECT_EQ(wrong, "");
}

TEST(NumberText, PrintReportsTheFullLength) {
  char buffer[4] = "zzz";
  EXPECT_EQ(printed(buffer, sizeof buffer, "%d-%s", 12, "abc"), 6);
  EXPECT_STREQ(buffer, "12-");
  EXPECT_EQ(printed(nullptr, 0, "%5.1f", 1.0), 5);
}

}  // namespace
}  // namespace QZPlatform
