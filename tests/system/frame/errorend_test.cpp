// The beginning and the end of QZThrow: static initialisers, process exits, static destructors, threads that run on.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/errorimpl.h"
#include "tests/platform/childstatus.h"

// Some processes here end with threads that run on, which a thread sanitizer would report.
extern "C" const char* __tsan_default_options() { return "report_thread_leaks=0"; }

using namespace QZSystem;
using testing::ExitedWithCode;

namespace {

// Made before every other static object of the program and destroyed after all of them.
struct Outermost {
  Outermost() {
    QZThrow.Msg(QZErrorLevel::Quiet, "early");
    countedEarly = QZThrow.Count(QZErrorLevel::Quiet);
  }
  ~Outermost() {
    if (atTheEnd != nullptr) atTheEnd();
  }
  unsigned int countedEarly = 0;
  void (*atTheEnd)() = nullptr;
};

__attribute__((init_priority(101))) Outermost outermost;

void ReportLate() {
  QZThrow.Debug("late debug");
  QZThrow.Info("late info");
  QZThrow.Error("late error");
  QZThrow.Fatal("late fatal");
  QZThrow.Usage("late usage");
}

// An implementation whose destruction shows, and in which a call lasts a while.
class Slow : public QZErrorHandlerImplBase {
 public:
  Slow() = default;
  Slow(const Slow&) = default;
  ~Slow() override { std::fprintf(stderr, "%s ", inside == 0 ? "deleted" : "deleted in use"); }
  void Msg(unsigned int, const std::string&) override {
    ++inside;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    --inside;
  }
  QZErrorHandlerImplBase* CreateCopy() const override { return new Slow(*this); }
  static inline std::atomic<int> inside{0};
};

}  // namespace

TEST(QZThrowStart, WorksBeforeAnyOtherStaticInitialiser) { EXPECT_EQ(outermost.countedEarly, 1U); }

TEST(QZThrowDeathTest, TheLevelDecidesHowTheProcessEnds) {
  EXPECT_EXIT(QZThrow.Fatal("bad %d", 1), ExitedWithCode(1), "^Fatal: bad 1\n$");
  EXPECT_EXIT(QZThrow.Error("bad %d", 2), ExitedWithCode(1), "^Fatal: bad 2\n$");
  EXPECT_EXIT(QZThrow.Msg(QZErrorLevel::Error, std::string("bad")), ExitedWithCode(1), "^Fatal: bad\n$");
  EXPECT_EXIT(QZThrow.Usage("tool IN OUT"), ExitedWithCode(0), "^Usage: tool IN OUT\n$");
  EXPECT_EXIT(
      {
        QZThrow.SetStrict(false);
        QZThrow.Error("bad");
        std::fprintf(stderr, "count %u %u %u", QZThrow.Count(4), QZThrow.Count(5), QZThrow.Count(6));
        QZThrow.Fatal("worse");
      },
      ExitedWithCode(1), "^Warning: bad\ncount 1 0 0Fatal: worse\n$");
}

TEST(QZThrowDeathTest, FatalAndUsageBelowTheThresholdEndTheProcessInSilence) {
  const auto quiet = [] {
    QZThrow.SetLevel(8);
    QZThrow.Warning("dropped");
    QZThrow.Error("dropped");
  };
  EXPECT_EXIT((quiet(), QZThrow.Fatal("dropped")), ExitedWithCode(1), "^$");
  EXPECT_EXIT((quiet(), QZThrow.Usage("dropped")), ExitedWithCode(0), "^$");
}

// With the lock given back; what else is fatal while the process ends is printed and returns.
TEST(QZThrowDeathTest, TheProcessEndsThroughTheNormalExitPath) {
  EXPECT_EXIT(
      {
        std::atexit([] {
          QZThrow.Warning("handler %u", QZThrow.Count(QZErrorLevel::Fatal));
          QZThrow.Usage("again");
          std::fprintf(stderr, "went on");
        });
        QZThrow.Fatal("bad");
      },
      ExitedWithCode(1), "^Fatal: bad\nWarning: handler 1\nUsage: again\nwent on$");
}

TEST(QZThrowDeathTest, ManyThreadsMayFailAtOnce) {
  EXPECT_EXIT(
      {
        QZThrow.SetOutputStream(*new qzosstream);
        std::vector<std::thread> threads;
        for (int each = 0; each < 8; ++each) threads.emplace_back([] { QZThrow.Fatal("bad"); });
        for (std::thread& thread : threads) thread.join();
        std::this_thread::sleep_for(std::chrono::seconds(20));
      },
      ExitedWithCode(1), "^(Fatal: bad\n)*(Fatal: )?$");  // the end may cut the last
}

TEST(QZThrowDeathTest, AfterItsEndItPrintsAndNeverEndsTheProcess) {
  outermost.atTheEnd = &ReportLate;
  EXPECT_EXIT(std::exit(3), ExitedWithCode(3),
              "^late info\nFatal: late error\nFatal: late fatal\nUsage: late usage\n$");
  EXPECT_EXIT(
      {
        QZThrow.SetStrict(false);
        QZThrow.SetLevel(QZErrorLevel::Debug);
        std::exit(3);
      },
      ExitedWithCode(3), "^Debug: late debug\nlate info\nWarning: late error\nFatal: late fatal\nUsage: late usage\n$");
  EXPECT_EXIT(
      {
        QZThrow.SetLevel(QZErrorLevel::Fatal);
        std::thread([] { std::exit(3); }).join();
      },
      ExitedWithCode(3), "^Fatal: late fatal\nUsage: late usage\n$");
  outermost.atTheEnd = nullptr;
}

TEST(QZThrowDeathTest, AnOwnedImplementationGoesAtTheEndOnceNobodyIsInIt) {
  EXPECT_EXIT(
      {
        QZThrow.SetHandlerImpl(new Slow, true);
        std::thread([] {
          QZThrow.Info("in the implementation while the process ends");
          std::this_thread::sleep_for(std::chrono::seconds(20));
        }).detach();
        while (Slow::inside == 0) std::this_thread::yield();
        std::exit(0);
      },
      ExitedWithCode(0), "^deleted $");
}

TEST(QZThrow, AChildCanReportWhileOtherThreadsDo) {
  qzosstream out;
  QZThrow.SetOutputStream(out);
  std::atomic<bool> stop{false};
  std::thread thread([&] {
    while (!stop) QZThrow.Info("parent");
  });
  for (int round = 0; round < 20; ++round) {
    ASSERT_EQ(StatusOfChild([&] {
                QZThrow.Info("child");
                const std::string text = out.str();
                return text.substr(text.rfind('\n', text.size() - 2) + 1) == "child\n" && text.size() % 7 == 6 ? 0 : 1;
              }),
              0);
  }
  stop = true;
  thread.join();
  QZThrow.SetHandlerImpl(nullptr, true);
}
