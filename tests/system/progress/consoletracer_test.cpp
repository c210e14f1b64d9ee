#include "qz/system/progress/consoletracer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace QZSystem;

namespace {

constexpr double never = 1e9;

std::string Drawn(const std::function<void()>& work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

// The percentages that were drawn, in order.
std::vector<std::string> Percentages(const std::string& drawn) {
  std::vector<std::string> all;
  for (std::size_t at = drawn.find("] "); at != std::string::npos; at = drawn.find("] ", at + 1)) {
    const std::size_t from = drawn.find_first_not_of(' ', at + 2);
    all.push_back(drawn.substr(from, drawn.find('%', from) - from));
  }
  return all;
}

using Texts = std::vector<std::string>;

TEST(ConsoleTracer, DrawsOneLineOverAndOver) {
  QZConsoleProgressTracer tracer("reading", 10);
  EXPECT_EQ(Drawn([&] {
              tracer.PrintProgress(25, 59.9);
              tracer.PrintProgress(100, 3725.4);
            }),
            "\rreading                  [==--------]  25.00%  00:00:59"
            "\rreading                  [==========] 100.00%  01:02:05");
  QZConsoleProgressTracer longName("a task whose name is too long", 4);
  EXPECT_EQ(Drawn([&] { longName.PrintProgress(0, 0); }), "\ra task whose name is too long[----]   0.00%  00:00:00");
}

TEST(ConsoleTracer, TheBarStaysInItsCells) {
  const QZConsoleProgressTracer tracer("", 5);
  const std::pair<double, const char*> cases[] = {
      {19.99, "[-----]  19.99%  "},    {20, "[=----]  20.00%  "},
      {99.999, "[====-] 100.00%  "},   {250, "[=====] 250.00%  "},
      {-250, "[-----] -250.00%  "},    {1e15, "[=====] 1000000000000000.00%  "},
      {HUGE_VAL, "[=====]    inf%  "}, {std::numeric_limits<double>::quiet_NaN(), "[-----]    nan%  "},
  };
  for (const auto& [percent, expected] : cases) {
    std::ostringstream line;
    tracer.PrintBar(line, percent);
    EXPECT_EQ(line.str(), expected);
  }
}

TEST(ConsoleTracer, TheTimeCarriesOnlyWhatIsMore) {
  const QZConsoleProgressTracer tracer;
  const std::pair<double, const char*> cases[] = {
      {0, "00:00:00"},       {0.99, "00:00:00"},   {60, "00:00:60"},      {60.5, "00:01:00"}, {61, "00:01:01"},
      {3600, "00:60:00"},    {3600.5, "01:00:00"}, {3660, "01:00:60"},    {3661, "01:01:01"}, {7200, "02:00:00"},
      {360000, "100:00:00"}, {-5, "-5"},           {std::nan(""), "nan"},
  };
  for (const auto& [seconds, expected] : cases) {
    std::ostringstream line;
    tracer.PrintTime(line, seconds);
    EXPECT_EQ(line.str(), seconds >= 0 ? expected : "00:00:" + std::string(expected));
  }
}

TEST(ConsoleTracer, NumbersLookTheSameInEveryLocale) {
  struct Commas : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\1"; }
  };
  std::ostringstream line;
  line.imbue(std::locale(std::locale::classic(), new Commas));
  QZConsoleProgressTracer tracer("", 2);
  tracer.PrintBar(line, 1234.5);
  tracer.PrintTime(line, 3600.0 * 1000);
  EXPECT_EQ(line.str(), "[==] 1234.50%  1000:00:00");
}

TEST(ConsoleTracer, DrawsWhatIsAStepAhead) {
  QZConsoleProgressTracer tracer("", 10, 2.0, never);
  EXPECT_EQ(Percentages(Drawn([&] {
              for (double percent : {0.0, 1.99, 2.0, 3.9, 50.0, 40.0, 51.9, 52.0, std::nan("")})
                tracer.SetProgress(percent);
            })),
            (Texts{"2.00", "50.00", "52.00"}));
}

TEST(ConsoleTracer, DrawsWhatIsNotBehindAfterItsTime) {
  QZConsoleProgressTracer tracer("", 10, never, 0.0);
  EXPECT_EQ(Percentages(Drawn([&] {
              for (double percent : {0.0, 0.5, 0.5, 50.0, 40.0}) tracer.SetProgress(percent);
            })),
            (Texts{"0.00", "0.50", "0.50", "50.00"}));
}

TEST(ConsoleTracer, CountsAreSharesOfTheirTotal) {
  QZConsoleProgressTracer tracer("", 10, 0.0, never);
  EXPECT_EQ(Percentages(Drawn([&] {
              tracer.SetProgress(1, 3);
              tracer.SetProgress(4000000000U, 4000000000U);
              tracer.SetProgress(3, 2);
            })),
            (Texts{"33.33", "100.00", "150.00"}));
  QZConsoleProgressTracer empty("", 10, 0.0, never);
  EXPECT_EQ(Percentages(Drawn([&] { empty.SetProgress(0, 0); })), Texts{"100.00"});
}

TEST(ConsoleTracer, ATaskBeginsAnewAndItsEndIsDrawnFull) {
  QZConsoleProgressTracer tracer("first", 4, 1.0, never);
  EXPECT_EQ(Drawn([&] {
              tracer.PrintProgress(75, 0);
              tracer.SetTask("second");
              tracer.Refresh();
              tracer.Push("third");
            }),
            "\rfirst                    [===-]  75.00%  00:00:00"
            "\rsecond                   [----]   0.00%  00:00:00"
            "\rthird                    [----]   0.00%  00:00:00");
  const std::string end = Drawn([&] {
    tracer.SetProgress(20);
    tracer.Pop();
  });
  EXPECT_EQ(Percentages(end), (Texts{"20.00", "100.00"}));
  EXPECT_EQ(end.back(), '\n');
  EXPECT_FALSE(tracer.Aborted());
}

TEST(ConsoleTracer, AConstructorDrawsNothing) {
  EXPECT_EQ(Drawn([] { QZConsoleProgressTracer("task").Refresh(); }), "");
}

TEST(ConsoleTracer, ThreadsDrawForwardOnly) {
  QZConsoleProgressTracer tracer("", 10, 0.5, 0.0);
  const Texts drawn = Percentages(Drawn([&] {
    std::vector<std::thread> threads;
    for (unsigned int first = 0; first < 4; ++first) {
      threads.emplace_back([&tracer, first] {
        for (unsigned int i = first; i <= 1000; i += 4) tracer.SetProgress(i, 1000);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }));
  ASSERT_FALSE(drawn.empty());
  EXPECT_EQ(drawn.back(), "100.00");
  for (std::size_t i = 1; i < drawn.size(); ++i) EXPECT_LE(std::stod(drawn[i - 1]), std::stod(drawn[i]));
}

TEST(NullTracer, IsThereForEveryoneAndDoesNothing) {
  EXPECT_EQ(Drawn([] {
              for (QZTracerBase* tracer : {&QZNoTracer, &NullTracer}) {
                tracer->SetTask("task");
                tracer->Push("subtask");
                tracer->SetProgress(1, 2);
                tracer->SetProgress(50.0);
                tracer->Refresh();
                tracer->Pop();
                EXPECT_FALSE(tracer->Aborted());
              }
            }),
            "");
}

const bool usedByAnInitialiser = [] {
  NullTracer.SetTask("before main");
  return QZNoTracer.Aborted();
}();

TEST(NullTracerDeathTest, IsStillThereAtTheEndOfTheProcess) {
  EXPECT_FALSE(usedByAnInitialiser);
  EXPECT_EXIT(
      {
        static struct AtTheEnd {
          ~AtTheEnd() {
            QZTracerBase& tracer = QZNoTracer;
            tracer.SetTask("after main");
            _exit(7);
          }
        } atTheEnd;
        std::exit(0);
      },
      testing::ExitedWithCode(7), "");
}

}  // namespace
