#include "qz/platform/formattext_impl.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace QZPlatform;

namespace {

// The formats here are no literals, and one text is null, which the C library prints too.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif
#pragma GCC diagnostic ignored "-Wformat-security"

int Format(char* buffer, std::size_t size, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length = FormatText(buffer, size, format, arguments);
  va_end(arguments);
  return length;
}

// printf is the naive form: the same length, and the same text in a buffer of any size.
template <class... Arguments>
void ExpectAsPrintf(const char* format, Arguments... arguments) {
  char printed[3000];
  std::snprintf(printed, sizeof printed, format, arguments...);
  const std::string expected = printed;
  const auto expectIn = [&](std::size_t size) {
    std::vector<char> text(size + 8, '#');
    ASSERT_EQ(Format(text.data(), size, format, arguments...), static_cast<int>(expected.size())) << expected;
    ASSERT_EQ(std::string(text.data()), expected.substr(0, size - 1)) << format;
    ASSERT_EQ(std::string(text.data() + size, 8), "########") << expected;
  };
  for (std::size_t size = 1; size < expected.size() + 3 && size < 60; ++size) expectIn(size);
  expectIn(sizeof printed);
}

}  // namespace

TEST(FormatText, TextsAndIntegersComeOutAsPrintfGivesThem) {
  ExpectAsPrintf("");
  ExpectAsPrintf("no conversion");
  ExpectAsPrintf("100 %% of %s%c%s", "it", '!', "");
  for (const int value : {0, 7, -7, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
    ExpectAsPrintf("%d,%i,%u,%x,%5d,%-5d|,%+d,%05d", value, value, value, value, value, value, value, value);
  for (const long value : {0L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()})
    ExpectAsPrintf("%ld %li %lu %lld %llu %zu %zd %lx", value, value, value, value, value, value, value, value);
  ExpectAsPrintf("%s, %.2s, %5s, %-5s|, %*d", "abc", "abc", "abc", "abc", 4, 7);
  ExpectAsPrintf("%hd %hhu %p %c", 70000, 300, nullptr, 'x');
  const char* const none = nullptr;
  ExpectAsPrintf("%d %s %d", 1, none, 2);
}

TEST(FormatText, RealNumbersComeOutAsPrintfGivesThem) {
  std::mt19937_64 random(1);
  for (int round = 0; round < 3000; ++round) {
    const std::uint64_t bits = random();
    double value = static_cast<double>(static_cast<std::int64_t>(bits)) / 1e12;
    if (round % 2 == 0) std::memcpy(&value, &bits, sizeof value);
    ExpectAsPrintf("%g %e %.3g|%.0e", value, value, value, value);
    ExpectAsPrintf("%.2f", value);
  }
  const double infinity = std::numeric_limits<double>::infinity(), nan = std::nan("");
  for (const double value : {0.0, -0.0, 0.5, 1.5, 2.5, 1e300, 5e-324, infinity, -infinity, nan, -nan})
    ExpectAsPrintf("%f %.f %.1f %.99e %.100f %F %10.3f %a", value, value, value, value, value, value, value, value);
}
