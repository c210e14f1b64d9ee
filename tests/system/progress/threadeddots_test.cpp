#include "qz/system/progress/threadeddots.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qz/platform/machine.h"
#include "qz/platform/syscalls_impl.h"
#include "qz/system/progress/boundedbuffer.h"
#include "tests/platform/childstatus.h"
#include "tests/system/cli/messages.h"

// Some processes here end with threads that run on.
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() { return "report_thread_leaks=0"; }

using namespace QZSystem;
namespace SystemCalls = QZPlatform::SystemCalls;
using testing::ExitedWithCode;

namespace {

// A thread sanitizer doesn't take new threads in the child of a process with several.
#ifdef __SANITIZE_THREAD__
constexpr bool noThreadsInChildren = true;
#else
constexpr bool noThreadsInChildren = false;
#endif

std::string Printed(const std::function<void()>& work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

void RunThreads(int count, const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int each = 0; each < count; ++each) threads.emplace_back(work, each);
  for (std::thread& thread : threads) thread.join();
}

// A pipe whose reading end nobody reads, full, in the place of standard error.
class StuckStandardError {
 public:
  StuckStandardError() : saved(dup(STDERR_FILENO)) {
    EXPECT_EQ(pipe(ends), 0);
    dup2(ends[1], STDERR_FILENO);
    const std::string bytes(65536, 'x');
    EXPECT_EQ(write(STDERR_FILENO, bytes.data(), bytes.size()), 65536);
  }
  ~StuckStandardError() {
    dup2(saved, STDERR_FILENO);
    for (const int each : {ends[0], ends[1], saved}) close(each);
  }
  // A byte that is written; 0 if none comes in a minute.
  char NextByte() const {
    pollfd waiting = {ends[0], POLLIN, 0};
    char byte = 0;
    return poll(&waiting, 1, 60000) == 1 && read(ends[0], &byte, 1) == 1 ? byte : '\0';
  }
  void Drain() const {
    std::string bytes(65536, '\0');
    EXPECT_EQ(read(ends[0], bytes.data(), bytes.size()), 65536);
  }

 private:
  int saved;
  int ends[2] = {};
};

}  // namespace

TEST(ThreadedDots, PrintsAsTheDotsOfOneThread) {
  EXPECT_EQ(Printed([] {
              QZThreadedDots dots(1000, 100, "items");
              for (int i = 0; i < 2500; ++i) dots.Update(1);
              dots.Total();
              dots.Total();
            }),
            ".......... 1000 items processed.\n.......... 2000 items processed.\n.....\nTotal: 2500 items processed.\n"
            "\nTotal: 2500 items processed.\n");
  EXPECT_EQ(Printed([] {
              QZThreadedDots dots(4, 1, "items");
              dots.Update(6);
            }),
            ".... 4 items processed.\n..");
  EXPECT_EQ(Printed([] {
              QZThreadedDots dots(4294967295, 4294967295, "items");
              for (int i = 0; i < 3; ++i) dots.Update(4294967294);
              dots.Update(7);
              dots.Total();
            }),
            ". 4294967295 items processed.\n. 4294967294 items processed.\n. 4294967293 items processed.\n"
            "\nTotal: 1 items processed.\n");
}

// Sixteen threads count a million times; and less often where each count is a dot, which all goes through the queue.
TEST(ThreadedDots, ManyThreadsLoseNoUpdate) {
  const struct {
    unsigned int bigstep, smallstep;
    int updates;
  } cases[] = {{0, 0, 62500}, {1000000, 1000, 62500}, {4000000000, 1, 200}};
  for (const auto& each : cases) {
    std::atomic<unsigned int> sent{0};
    const std::string printed = Printed([&] {
      QZThreadedDots dots(each.bigstep, each.smallstep, "items");
      RunThreads(16, [&](int thread) {
        unsigned int mine = 0;
        for (int i = 0; i < each.updates; ++i) {
          const unsigned int step = 1 + static_cast<unsigned int>(i + thread) % 3;
          dots.Update(step);
          mine += step;
        }
        sent += mine;
      });
      dots.Total();
    });
    const std::string total = "\nTotal: " + std::to_string(sent) + " items processed.\n";
    ASSERT_GT(printed.size(), total.size() - 1);
    EXPECT_EQ(printed.substr(printed.size() - total.size()), total);
    const std::string shown = printed.substr(0, printed.size() - total.size());
    const auto dots = static_cast<unsigned long>(std::count(shown.begin(), shown.end(), '.'));
    const unsigned long lines = static_cast<unsigned long>(std::count(shown.begin(), shown.end(), '\n'));
    EXPECT_EQ(dots - lines, each.smallstep == 0 ? 0 : sent / each.smallstep) << each.smallstep;
  }
}

TEST(ThreadedDots, TellsWhatItCannotCount) {
  Messages messages;
  QZThreadedDots dots(0, 0, "items");
  dots.Update(0);
  EXPECT_EQ(messages.Take(), "Warning: Invalid step size of 0 for QZThreadedDots::Update\n");
  const std::string total = Printed([&] { dots.Total(); });
  dots.Update(1);
  dots.Update(0);
  const std::string late = "Warning: Attempting to Update a QZThreadedDots after Total already called.\n";
  EXPECT_EQ(messages.Take(), late + late);
  EXPECT_EQ(total, "\nTotal: 0 items processed.\n");

  const SystemCalls::ScheduledFault noThread(SystemCalls::Call::Thread, 1, SystemCalls::Fault::Fail(EAGAIN));
  QZThreadedDots none(0, 0, "items");
  for (int i = 0; i < 1000; ++i) none.Update(1);
  const std::string failed = messages.Take();
  EXPECT_EQ(failed.substr(0, 46), "Warning: Failed to Update a QZThreadedDots\nWar");
  EXPECT_EQ(Printed([&] { none.Total(); }), total);
}

TEST(ThreadedDots, AnUpdateBesideTheTotalCountsOrFails) {
  for (int round = 0; round < 50; ++round) {
    Messages messages;
    std::atomic<unsigned int> sent{0};
    const std::string total = Printed([&] {
      QZThreadedDots dots(0, 0, "items");
      std::atomic<bool> stop{false};
      std::thread worker([&] {
        while (!stop) {
          dots.Update(1);
          ++sent;
        }
      });
      while (sent < 100) std::this_thread::yield();
      dots.Total();
      stop = true;
      worker.join();
    });
    unsigned int failed = 0;
    const std::string text = messages.Take();
    for (std::size_t at = text.find("Warning: "); at != std::string::npos; at = text.find("Warning: ", at + 1))
      ++failed;
    EXPECT_EQ(total, "\nTotal: " + std::to_string(sent - failed) + " items processed.\n");
  }
}

// A terminal that takes nothing: as many updates as the queue holds are accepted, with the one or two that the thread
// has in its hands, and the next one waits until the terminal goes on.
TEST(ThreadedDots, CallersWaitOnlyForAFullQueue) {
  const unsigned int room = 2 * QZGetNumProcessors();
  std::atomic<unsigned int> accepted{0};
  StuckStandardError terminal;
  QZThreadedDots dots(4000000000, 1, "items");
  std::thread worker([&] {
    for (unsigned int i = 0; i < room + 10; ++i, ++accepted) dots.Update(1);
  });
  while (accepted < room) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_LE(accepted, room + 2);
  terminal.Drain();
  worker.join();
  EXPECT_EQ(accepted, room + 10);
}

TEST(ThreadedDots, ADotDoesNotWaitForTheNext) {
  const StuckStandardError terminal;
  terminal.Drain();
  QZThreadedDots dots(1000, 100, "items");
  for (int i = 0; i < 150; ++i) dots.Update(1);
  EXPECT_EQ(terminal.NextByte(), '.');
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
      ExitedWithCode(3), "50 items processed");
  EXPECT_EXIT(
      {
        static const std::unique_ptr<QZThreadedDots> atExit = std::make_unique<QZThreadedDots>(1000, 10, "items");
        for (int i = 0; i < 1000; ++i) atExit->Update(1);
        std::exit(3);
      },
      ExitedWithCode(3), "^\\.{100} 1000 items processed.\n$");
}

TEST(ThreadedDots, AChildEndsCleanlyAndItsParentGoesOn) {
  EXPECT_EQ(Printed([] {
              auto dots = std::make_unique<QZThreadedDots>(0, 0, "items");
              std::atomic<bool> stop{false};
              unsigned int sent = 0;
              std::thread worker([&] {
                for (; !stop; ++sent) dots->Update(1);
              });
              for (int round = 0; round < 20; ++round) {
                ASSERT_EQ(StatusOfChild([&] {
                            Messages messages;
                            dots->Update(1);
                            const bool told = messages.Take().find("after Total already called") != std::string::npos;
                            dots.reset();
                            if (!told) return 1;
                            if (noThreadsInChildren) return 0;
                            // Fresh ones have a thread of their own, and none in a child of the child.
                            QZThreadedDots fresh(0, 0, "items");
                            fresh.Update(1);
                            return StatusOfChild([&] {
                              fresh.~QZThreadedDots();
                              return 0;
                            });
                          }),
                          0);
              }
              stop = true;
              worker.join();
              dots->Update(1000000000 - sent);
              dots->Total();
            }),
            "\nTotal: 1000000000 items processed.\n");
}

TEST(BoundedBuffer, IsARing) {
  QZBoundedBuffer<int> ring(3);
  int in = 0, out = 0;
  for (const int count : {1, 3, 2, 3, 3}) {
    for (int i = 0; i < count; ++i) ring.Put(++in);
    EXPECT_EQ(ring.GetSize(), static_cast<std::size_t>(count));
    EXPECT_EQ(ring.IsFull(), count == 3);
    for (int i = 0; i < count; ++i) EXPECT_EQ(ring.Get(), ++out);
    EXPECT_TRUE(ring.IsEmpty());
  }
}
