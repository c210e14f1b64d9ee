#include "qz/system/util/uuid.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "qz/platform/syscalls_impl.h"
#include "qz/system/util/uuid_impl.h"
#include "tests/platform/childstatus.h"

using namespace QZSystem;

namespace {

bool IsHex(const std::string& text, std::size_t digits) {
  return text.size() == digits && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// What `draw` gives in a child process.
template <class Draw>
std::string DrawnByChild(Draw draw) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  EXPECT_EQ(StatusOfChild([&] {
              const std::string text = draw();
              return write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1;
            }),
            0);
  std::string text(32, '?');
  EXPECT_EQ(read(ends[0], text.data(), text.size()), 32);
  close(ends[0]);
  close(ends[1]);
  return text;
}

}  // namespace

TEST(UUID, AWordOfThePublishedStreamBecomesDigits) {
  QZMath::MtRng<QZMath::Mt64Traits> engine;
  EXPECT_EQ(NextWord(engine), 14514284786278117030U);
  EXPECT_EQ(NextWord(engine), 4620546740167642908U);
  EXPECT_EQ(HexOfWord(0xFEDCBA9876543210), "fedcba9876543210");
  EXPECT_EQ(HexOfWord(0xA), "000000000000000a");
}

TEST(UUID, TheSeedIsASumOfSignedBytes) {
  const struct {
    std::array<signed char, 4> bytes;
    long seed;
  } cases[] = {
      {{1, 2, 3, 4}, 0x04030201},      {{-1, 0, 0, 0}, -1}, {{-128, 1, 0, 0}, 128}, {{0, 0, 0, -128}, -2147483648L},
      {{-1, -1, -1, -1}, -0x01010101},
  };
  for (const auto& each : cases) EXPECT_EQ(static_cast<long>(SeedOfBytes(each.bytes)), each.seed) << each.seed;
}

TEST(UUID, AllThreadsDrawDifferentIdentifiers) {
  std::vector<std::vector<std::string>> drawn(4);
  std::vector<std::thread> threads;
  for (auto& mine : drawn) {
    threads.emplace_back([&mine] {
      for (int i = 0; i < 5000; ++i) mine.push_back(QZGetUUID16());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> all;
  for (const auto& each : drawn) all.insert(each.begin(), each.end());
  EXPECT_EQ(all.size(), 20000U);
  EXPECT_TRUE(std::all_of(all.begin(), all.end(), [](const std::string& each) { return IsHex(each, 16); }));
  EXPECT_TRUE(IsHex(QZGetUUID32(), 32));
}

TEST(UUID, AChildDrawsOthersThanItsParentAndItsSiblings) {
  QZGetUUIDGenerator();
  std::set<std::string> drawn;
  for (int i = 0; i < 5; ++i) drawn.insert(DrawnByChild(&QZGetUUID32));
  drawn.insert(QZGetUUID32());
  EXPECT_EQ(drawn.size(), 6U);
}

// In children that have to seed anew while the system's random bytes are missing, or cut short.
TEST(UUID, WithoutTheRandomFileTheSeedStillVaries) {
  QZGetUUIDGenerator();
  for (const SystemCalls::Call call : {SystemCalls::Call::Open, SystemCalls::Call::Read}) {
    const SystemCalls::ScheduledFault fault(call, 1, SystemCalls::Fault::Fail(EMFILE), true);
    const std::string one = DrawnByChild(&QZGetUUID32), two = DrawnByChild(&QZGetUUID32);
    EXPECT_TRUE(IsHex(one, 32) && IsHex(two, 32));
    EXPECT_NE(one, two);
  }
}
