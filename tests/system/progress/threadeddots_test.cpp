#include "qz/system/progress/threadeddots.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "qz/platform/machine.h"
#include "qz/platform/syscalls_impl.h"
#include "qz/system/progress/boundedbuffer.h"
#include "tests/platform/childstatus.h"
#include "tests/system/cli/messages.h"
#include "tests/system/progress/printed.h"

// Some processes here end with threads that run on.
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() { return "report_thread_leaks=0"; }

using namespace QZSystem;

namespace {

// A thread sanitizer doesn't take new threads in the child of a process with several.
#ifdef __SANITIZE_THREAD__
constexpr bool noThreadsInChildren = true;
#else
constexpr bool noThreadsInChildren = false;
#endif

std::string TotalOf(unsigned int items) { return "\nTotal: " + std::to_string(items) + " items processed.\n"; }

TEST(ThreadedDots, PrintsAsTheDotsOfOneThread) {
  const auto printed = [](unsigned int bigstep, unsigned int smallstep, int count, unsigned int step) {
    return Printed([&] {
      QZThreadedDots dots(bigstep, smallstep, "items");
      for (int i = 0; i < count; ++i) dots.Update(step);
      for (int i = 0; i < 2; ++i) dots.Total();
    });
  };
  EXPECT_EQ(printed(10, 5, 23, 1), ".. 10 items processed.\n.. 20 items processed.\n" + TotalOf(23) + TotalOf(23));
  EXPECT_EQ(
      printed(4294967295, 4294967295, 3, 4294967294),
      ". 4294967295 items processed.\n. 4294967294 items processed.\n" + TotalOf(4294967290) + TotalOf(4294967290));
}

// Where each count is a dot, all go through the queue.
TEST(ThreadedDots, ManyThreadsLoseNoUpdate) {
  for (const auto& [smallstep, updates] : {std::pair{1000U, 62500}, {1U, 200}}) {
    std::atomic<unsigned int> sent{0};
    const std::string printed = Printed([&, step = smallstep, count = updates] {
      QZThreadedDots dots(1000 * step, step, "items");
      std::vector<std::thread> threads;
      for (int thread = 0; thread < 16; ++thread) {
        threads.emplace_back([&, thread] {
          for (int i = 0; i < count; ++i) {
            const unsigned int items = 1 + static_cast<unsigned int>(i + thread) % 3;
            dots.Update(items);
            sent += items;
          }
        });
      }
      for (std::thread& thread : threads) thread.join();
      dots.Total();
    });
    const std::string total = TotalOf(sent);
    ASSERT_EQ(printed.find(total), printed.size() - total.size()) << smallstep;
    // A dot ends each line of a big step and of the total, too; the total has two line ends.
    const auto count = [&printed](char of) { return std::count(printed.begin(), printed.end(), of); };
    EXPECT_EQ(count('.') - count('\n') + 1, sent / smallstep) << smallstep;
  }
}

TEST(ThreadedDots, TellsWhatItCannotCount) {
  Messages messages;
  QZThreadedDots dots(0, 0, "items");
  dots.Update(0);
  EXPECT_EQ(messages.Take(), "Warning: Invalid step size of 0 for QZThreadedDots::Update\n");
  EXPECT_EQ(Printed([&] { dots.Total(); }), TotalOf(0));
  dots.Update(0);
  EXPECT_EQ(messages.Take(), "Warning: Attempting to Update a QZThreadedDots after Total already called.\n");

  const SystemCalls::ScheduledFault noThread(SystemCalls::Call::Thread, 1, SystemCalls::Fault::Fail(EAGAIN));
  QZThreadedDots none(0, 0, "items");
  for (int i = 0; i < 1000; ++i) none.Update(1);
  EXPECT_EQ(messages.Take().find("Warning: Failed to Update a QZThreadedDots\nWar"), 0U);
  EXPECT_EQ(Printed([&] { none.Total(); }), TotalOf(0));
}

TEST(ThreadedDots, AnUpdateBesideTheTotalCountsOrFails) {
  for (int round = 0; round < 50; ++round) {
    Messages messages;
    std::atomic<unsigned int> sent{0};
    const std::string total = Printed([&] {
      QZThreadedDots dots(0, 0, "items");
      std::atomic<bool> stop{false};
      std::thread worker([&] {
        for (; !stop; ++sent) dots.Update(1);
      });
      while (sent < 100) std::this_thread::yield();
      dots.Total();
      stop = true;
      worker.join();
    });
    const std::string failures = messages.Take();  // a line each
    EXPECT_EQ(total, TotalOf(sent - static_cast<unsigned int>(std::count(failures.begin(), failures.end(), '\n'))));
  }
}

// A pipe in the place of standard error, which takes 65536 bytes until somebody reads.
class PipedStandardError {
 public:
  PipedStandardError() : saved(dup(STDERR_FILENO)) {
    EXPECT_EQ(pipe(ends), 0);
    dup2(ends[1], STDERR_FILENO);
  }
  ~PipedStandardError() {
    dup2(saved, STDERR_FILENO);
    for (const int each : {ends[0], ends[1], saved}) close(each);
  }
  void Fill() { EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), 65536); }
  // What is written, once anything is; nothing if that takes a minute.
  std::string Drain() {
    pollfd waiting = {ends[0], POLLIN, 0};
    const bool isThere = poll(&waiting, 1, 60000) == 1;
    return bytes.substr(0, isThere ? static_cast<std::size_t>(read(ends[0], bytes.data(), bytes.size())) : 0);
  }

 private:
  std::string bytes = std::string(65536, 'x');
  int saved;
  int ends[2] = {};
};

// As many updates as the queue holds are accepted, with the one or two that the thread has in its hands, and the next
// one waits until the terminal goes on.
TEST(ThreadedDots, CallersWaitOnlyForAFullQueue) {
  const unsigned int room = 2 * QZGetNumProcessors();
  std::atomic<unsigned int> accepted{0};
  PipedStandardError terminal;
  terminal.Fill();
  QZThreadedDots dots(4000000000, 1, "items");
  std::thread worker([&] {
    for (unsigned int i = 0; i < room + 10; ++i, ++accepted) dots.Update(1);
  });
  while (accepted < room) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_LE(accepted, room + 2);
  terminal.Drain();
  worker.join();
}

TEST(ThreadedDots, ADotDoesNotWaitForTheNext) {
  PipedStandardError terminal;
  QZThreadedDots dots(1000, 100, "items");
  for (int round = 0; round < 3; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the thread waits for more by then
    for (int i = 0; i < 100; ++i) dots.Update(1);
    EXPECT_EQ(terminal.Drain(), ".");
  }
}

// Only one of the dots of a process may print at a time.
TEST(ThreadedDotsDeathTest, TheProcessMayEndWhileTheyRun) {
  EXPECT_EXIT(
      {
        auto* const dots = new QZThreadedDots(50, 1, "items");
        for (int each = 0; each < 4; ++each) {
          std::thread([dots] {
            for (;;) dots->Update(1);
          }).detach();
        }
        for (int i = 0; i < 1000; ++i) dots->Update(1);
        std::exit(3);
      },
      testing::ExitedWithCode(3), "50 items processed");
  EXPECT_EXIT(
      {
        static const std::unique_ptr<QZThreadedDots> atExit = std::make_unique<QZThreadedDots>(1000, 10, "items");
        for (int i = 0; i < 1000; ++i) atExit->Update(1);
        std::exit(3);
      },
      testing::ExitedWithCode(3), "^\\.{100} 1000 items processed.\n$");
}

TEST(ThreadedDots, AChildEndsCleanlyAndItsParentGoesOn) {
  auto dots = std::make_unique<QZThreadedDots>(0, 0, "items");
  std::atomic<bool> stop{false};
  unsigned int sent = 0;
  std::thread worker([&] {
    for (; !stop; ++sent) dots->Update(1);
  });
  for (int round = 0; round < 20; ++round) {
    EXPECT_EQ(StatusOfChild([&] {
                Messages messages;
                dots->Update(1);
                const bool told = messages.Take().find("after Total already called") != std::string::npos;
                dots.reset();
                if (!told || noThreadsInChildren) return told ? 0 : 1;
                // Fresh ones have a thread of their own, and none in a child of the child.
                QZThreadedDots fresh(0, 0, "items");
                fresh.Update(1);
                return StatusOfChild([&] { return fresh.~QZThreadedDots(), 0; });
              }),
              0);
  }
  stop = true;
  worker.join();
  dots->Update(1000000000 - sent);
  EXPECT_EQ(Printed([&] { dots->Total(); }), TotalOf(1000000000));
}

TEST(BoundedBuffer, IsARing) {
  QZBoundedBuffer<int> ring(3);
  int in = 0, out = 0;
  for (const int count : {1, 3, 2, 3, 3}) {
    for (int i = 0; i < count; ++i) ring.Put(++in);
    EXPECT_EQ(ring.IsFull(), count == 3);
    for (int i = 0; i < count; ++i) EXPECT_EQ(ring.Get(), ++out);
    EXPECT_TRUE(ring.IsEmpty());
  }
}

}  // namespace
