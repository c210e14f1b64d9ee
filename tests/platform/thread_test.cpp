#include "qz/platform/thread.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <deque>
#include <thread>

#include "qz/platform/syscalls_impl.h"

using namespace QZPlatform;

namespace {

struct Seen {
  std::thread::id thread;
  int runs = 0;
};

class Recorder : public QZThread {
 public:
  void* Run(void* argument) override {
    auto* const seen = static_cast<Seen*>(argument);
    seen->thread = std::this_thread::get_id();
    ++seen->runs;
    return nullptr;
  }
};

// Moves numbers through a queue; 0 ends it.
class Adder : public QZThread {
 public:
  void* Run(void*) override {
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

TEST(QZThread, RunsOnAThreadOfItsOwnAndCanBeStartedAgainAfterJoin) {
  Recorder recorder;
  Seen seen;
  for (int round = 1; round <= 2; ++round) {
    ASSERT_TRUE(recorder.Start(&seen));
    EXPECT_FALSE(recorder.Start(&seen)) << "it wasn't joined yet";
    recorder.Join();
    EXPECT_EQ(seen.runs, round);
    EXPECT_NE(seen.thread, std::this_thread::get_id());
  }
  recorder.Join();
}

TEST(QZThread, AThreadThatCantBeMadeShowsInStart) {
  Recorder recorder;
  Seen seen;
  {
    const SystemCalls::ScheduledFault fault(SystemCalls::Call::Thread, 1, SystemCalls::Fault::Fail(EAGAIN));
    EXPECT_FALSE(recorder.Start(&seen));
  }
  recorder.Join();
  EXPECT_EQ(seen.runs, 0);
}

TEST(QZCondition, HandsAQueueFromThreadToThread) {
  Adder adder;
  ASSERT_TRUE(adder.Start());
  for (int number = 1; number <= 1000; ++number) adder.Put(number);
  adder.Put(0);
  adder.Join();
  EXPECT_EQ(adder.sum, 500500);
}
