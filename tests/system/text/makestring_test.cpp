#include "qz/system/text/makestring.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "tests/platform/commalocale.h"
#include "tests/system/cli/messages.h"

namespace {

// Allocations of this many bytes or more fail.
std::size_t failingSize = SIZE_MAX;

}  // namespace

// Not inlined, so that the compiler takes them for the pair that they are.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* block = size < failingSize ? std::malloc(size) : nullptr;
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace QZSystem {
namespace {

TEST(MakeString, PrintsTextsOfEveryLengthWhole) {
  for (const int length : {0, 1, 1022, 1023, 1024, 1025, 8190, 8191, 8192, 8193, 16383, 16384, 100000}) {
    const std::string text(static_cast<std::size_t>(length), 'x');
    EXPECT_EQ(QZMakeString("%s", text.c_str()), text);
    EXPECT_EQ(QZMakeString("%s%d", text.c_str(), 7), text + "7") << "the arguments are read afresh";
  }
  EXPECT_EQ(QZMakeString("a%cb", '\0'), std::string("a\0b", 3));
  std::string (*const print)(const char*, ...) = &QZMakeString;
  EXPECT_EQ(print(nullptr), "");
}

TEST(MakeString, WarnsOfATextThatPrintfRefusesAndOfMemoryThatIsNotThere) {
  Messages messages;
  EXPECT_EQ(QZMakeString("%ls", L"\u20ac"), "");
  EXPECT_EQ(messages.Take(), "Warning: Unable to resize string memory: 2147483647 (2147483647)\n");
  const std::string text(9000, 'x');
  failingSize = 16384;
  const std::string result = QZMakeString("%s", text.c_str());
  failingSize = SIZE_MAX;
  EXPECT_EQ(result, "");
  EXPECT_EQ(messages.Take(), "Warning: Unable to allocate string memory (16384)\n");
}

TEST(MakeString, LocaleHasNoInfluence) {
  const QZPlatform::CommaLocale comma;
  if (!comma.Works()) GTEST_SKIP() << "no locale with a decimal comma";
  EXPECT_EQ(QZMakeString("%.2f %g", 1.5, 0.25), "1.50 0.25");
  char room[4];
  EXPECT_EQ(QZSNPrintf(room, sizeof room, "%.3f", 2.5), 5) << "the full length";
  EXPECT_STREQ(room, "2.5");
}

}  // namespace
}  // namespace QZSystem
