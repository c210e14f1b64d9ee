#include "qz/platform/clock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "qz/platform/syscalls_impl.h"

using namespace QZPlatform;

TEST(QZCurrentTime, IsTheLocalTime) {
  std::tm now{};
  const std::time_t before = std::time(nullptr);
  ASSERT_TRUE(QZCurrentTime(&now));
  const std::time_t after = std::time(nullptr);
  now.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&now);
  EXPECT_LE(before, seconds);
  EXPECT_LE(seconds, after);
}

TEST(QZCurrentTime, ATimeThatIsntUsableIsToldAndLeavesTheResultAlone) {
  for (const SystemCalls::Call call : {SystemCalls::Call::Clock, SystemCalls::Call::LocalTime}) {
    const SystemCalls::ScheduledFault fault(call, 1, SystemCalls::Fault::Fail(EOVERFLOW));
    std::tm now{};
    now.tm_year = 77;
    EXPECT_FALSE(QZCurrentTime(&now)) << static_cast<int>(call);
    EXPECT_EQ(now.tm_year, 77) << static_cast<int>(call);
  }
}

TEST(QZGetTimeOfDay, IsTheWallClock) {
  timeval now{};
  const std::time_t before = std::time(nullptr);
  QZGetTimeOfDay(&now);
  EXPECT_LE(before, now.tv_sec + 1);  // time() may lag behind by a tick
  EXPECT_LE(now.tv_sec, std::time(nullptr) + 1);
  EXPECT_LT(now.tv_usec, 1000000);

  const SystemCalls::ScheduledFault fault(SystemCalls::Call::Clock, 1, SystemCalls::Fault::Fail(EPERM));
  QZGetTimeOfDay(&now);
  EXPECT_EQ(now.tv_sec, 0);
}
