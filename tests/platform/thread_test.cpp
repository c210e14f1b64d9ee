#include "qz/platform/thread.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <deque>

#include "qz/platform/syscalls_impl.h"

using namespace QZPlatform;

namespace {

// Adds up the numbers that come through a queue, from the argument on; 0 ends it.
class Adder : public QZThread {
 public:
  void* Run(void* argument) override {
    sum = *static_cast<int*>(argument);
    for (int number = Take(); number != 0; number = Take()) sum += number;
    return nullptr;
  }

  void Put(int number) {
    condition.Acquire();
    queue.push_back(number);
    condition.Broadcast();
    condition.Release();
  }

  int sum = 0;

 private:
  int Take() {
    condition.Acquire();
    while (queue.empty()) condition.Wait();
    const int number = queue.front();
    queue.pop_front();
    condition.Release();
    return number;
  }

  QZCondition condition;
  std::deque<int> queue;
};

}  // namespace

TEST(QZThread, RunsBesideItsMakerAndCanBeStartedAgainAfterJoin) {
  Adder adder;
  for (int first : {0, 7}) {
    ASSERT_TRUE(adder.Start(&first));
    EXPECT_FALSE(adder.Start(&first)) << "it wasn't joined yet";
    for (int number = 1000; number >= 0; --number) adder.Put(number);
    adder.Join();
    EXPECT_EQ(adder.sum, first + 500500);
  }
  adder.Join();
}

TEST(QZThread, AThreadThatCantBeMadeShowsInStart) {
  const SystemCalls::ScheduledFault fault(SystemCalls::Call::Thread, 1, SystemCalls::Fault::Fail(EAGAIN));
  Adder adder;
  EXPECT_FALSE(adder.Start());
  adder.Join();
}
