#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "qz/platform/lock_impl.h"
#include "qz/platform/threadlocal.h"
#include "tests/platform/childstatus.h"

using namespace QZPlatform;

TEST(ForkSafeMutex, AChildFindsItFreeAndWhatItGuardsWhole) {
  ForkSafeMutex mutex{LockRank::Service};
  int first = 0;
  int second = 0;
  std::atomic<bool> halfway{false};
  std::thread thread([&] {
    const ForkSafeLock lock(mutex);
    first = 1;
    halfway = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    second = 1;
  });
  while (!halfway) std::this_thread::yield();
  EXPECT_EQ(StatusOfChild([&] {
              const ForkSafeLock lock(mutex);
              return first == second ? 0 : 1;
            }),
            0);
  thread.join();
}

TEST(ForkSafeMutex, AForkWaitsInTheOrderInWhichThreadsNestTheLocks) {
  // Made in either order: it is the rank that counts.
  ForkSafeMutex inner{LockRank::Platform};
  ForkSafeMutex outer{LockRank::Service};
  ForkSafeMutex middle{LockRank::Report};
  std::atomic<bool> stop{false};
  std::thread thread([&] {
    while (!stop) {
      const ForkSafeLock service(outer);
      const ForkSafeLock report(middle);
      const ForkSafeLock platform(inner);
    }
  });
  for (int round = 0; round < 50; ++round) {
    ASSERT_EQ(StatusOfChild([&] {
                const ForkSafeLock service(outer);
                const ForkSafeLock platform(inner);
                return 0;
              }),
              0);
  }
  stop = true;
  thread.join();
}

TEST(ForkSafeMutex, AChildCanUsePerThreadValuesWhileOthersTouchThem) {
  QZThreadLocal<int> values;
  std::atomic<bool> stop{false};
  std::thread thread([&] {
    while (!stop) std::thread([&] { values.Get(); }).join();
  });
  for (int round = 0; round < 20; ++round) {
    ASSERT_EQ(StatusOfChild([&] { return QZThreadLocal<int>().Get() + values.Get(); }), 0);
  }
  stop = true;
  thread.join();
}
