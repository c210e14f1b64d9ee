#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "qz/platform/bufferpool.h"
#include "qz/platform/lock_impl.h"
#include "qz/platform/stream.h"
#include "qz/platform/threadlocal.h"
#include "tests/platform/childstatus.h"

using namespace QZPlatform;

namespace {

// While a thread does the one over and over, the process forks, and each child finds the other true.
template <class Work, class InChild>
void ExpectForksDuring(Work work, InChild inChild) {
  std::atomic<bool> stop{false};
  std::thread thread([&] {
    while (!stop) work();
  });
  int sound = 0;
  for (int round = 0; round < 50 && sound == round; ++round)
    sound += StatusOfChild([&] { return inChild() ? 0 : 1; }) == 0;
  stop = true;
  thread.join();
  EXPECT_EQ(sound, 50);
}

}  // namespace

TEST(ForkSafeMutex, AChildFindsItFreeAndWhatItGuardsWhole) {
  ForkSafeMutex mutex{LockRank::Service};
  int first = 0;
  int second = 0;
  const auto change = [&] {
    const ForkSafeLock lock(mutex);
    ++first;
    std::this_thread::yield();
    ++second;
  };
  ExpectForksDuring(change, [&] {
    const ForkSafeLock lock(mutex);
    return first == second;
  });
}

TEST(ForkSafeMutex, AForkWaitsInTheOrderInWhichThreadsNestTheLocks) {
  // Made in either order: it is the rank that counts.
  ForkSafeMutex inner{LockRank::Platform};
  ForkSafeMutex outer{LockRank::Service};
  ForkSafeMutex middle{LockRank::Report};
  const auto nest = [&] {
    const ForkSafeLock service(outer);
    const ForkSafeLock report(middle);
    const ForkSafeLock platform(inner);
    return true;
  };
  ExpectForksDuring(nest, nest);
}

TEST(ForkSafeMutex, AChildCanUsePerThreadValuesWhileOthersTouchThem) {
  QZThreadLocal<int> values;
  ExpectForksDuring([&] { std::thread([&] { values.Get(); }).join(); },
                    [&] { return QZThreadLocal<int>().Get() == values.Get(); });
}

TEST(ForkSafeMutex, AChildCanTakeBuffersWhileOthersDo) {
  auto& pool = qzstream::GetBufferCache();
  const auto use = [&] { return pool.ReleaseBuffer(pool.GetBuffer()), true; };
  ExpectForksDuring(use, use);
}
