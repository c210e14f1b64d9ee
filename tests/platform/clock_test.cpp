#include "qz/platform/clock.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "qz/platform/syscalls_impl.h"

using namespace QZPlatform;
using SystemCalls::Call;
using SystemCalls::Fault;
using SystemCalls::ScheduledFault;

TEST(Clock, TheTimesAreThoseOfTheSystem) {
  std::tm local{};
  timeval wall{};
  const std::time_t before = std::time(nullptr);
  ASSERT_TRUE(QZCurrentTime(&local));
  QZGetTimeOfDay(&wall);
  const std::time_t after = std::time(nullptr);
  local.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&local);
  EXPECT_TRUE(before <= seconds && seconds <= after) << seconds;
  // time() may lag behind by a tick.
  EXPECT_TRUE(before <= wall.tv_sec + 1 && wall.tv_sec <= after + 1) << wall.tv_sec;
}

TEST(Clock, ATimeThatIsntUsableIsTold) {
  for (const Call call : {Call::Clock, Call::LocalTime}) {
    const ScheduledFault fault(call, 1, Fault::Fail(EOVERFLOW));
    std::tm now{};
    now.tm_year = 77;
    EXPECT_FALSE(QZCurrentTime(&now));
    EXPECT_EQ(now.tm_year, 77) << "the result is left alone";
  }
  const ScheduledFault fault(Call::Clock, 1, Fault::Fail(EPERM));
  timeval now{5, 5};
  QZGetTimeOfDay(&now);
  EXPECT_EQ(now.tv_sec, 0);
}
