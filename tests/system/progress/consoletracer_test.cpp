#include "qz/system/progress/consoletracer.h"

#include <cmath>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/system/progress/printed.h"

using namespace QZSystem;

namespace {

constexpr double never = 1e9;

// The percentages that are drawn, in order, with a blank behind each.
std::string Percentages(const std::function<void()>& work) {
  const std::string drawn = Printed(work);
  std::string all;
  for (std::size_t at = drawn.find("] "); at != std::string::npos; at = drawn.find("] ", at + 1)) {
    const std::size_t from = drawn.find_first_not_of(' ', at + 2);
    all += drawn.substr(from, drawn.find('%', from) - from) + " ";
  }
  return all;
}

TEST(ConsoleTracer, DrawsOneLineOverAndOverAndEndsItFull) {
  QZConsoleProgressTracer tracer("reading", 10, 1.0, never);
  EXPECT_EQ(Printed([&] {
              tracer.Refresh();
              tracer.PrintProgress(25, 59.9);
              tracer.PrintProgress(75, 3725.4);
              tracer.SetTask("second");
              tracer.Push("a task whose name is too long");
            }),
            "\rreading                  [==--------]  25.00%  00:00:59"
            "\rreading                  [=======---]  75.00%  01:02:05"
            "\rsecond                   [----------]   0.00%  00:00:00"
            "\ra task whose name is too long[----------]   0.00%  00:00:00");
  const std::string end = Printed([&] { tracer.Pop(); });
  EXPECT_EQ(end.find("[==========] 100.00%  00:00:"), 30U) << end;
  EXPECT_EQ(end.back(), '\n');
  EXPECT_FALSE(tracer.Aborted());
}

TEST(ConsoleTracer, TheBarStaysInItsCellsAndTheTimeCarriesWhatIsMoreInEveryLocale) {
  struct Commas : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\1"; }
  };
  const QZConsoleProgressTracer tracer("", 5);
  const auto expect = [&](auto print, double figure, const char* expected) {
    std::ostringstream line;
    line.imbue(std::locale(std::locale::classic(), new Commas));
    (tracer.*print)(line, figure);
    EXPECT_EQ(line.str(), expected);
  };
  const std::pair<double, const char*> bars[] = {
      {19.99, "[-----]  19.99%  "},    {20, "[=----]  20.00%  "},          {99.999, "[====-] 100.00%  "},
      {1234.5, "[=====] 1234.50%  "},  {-250, "[-----] -250.00%  "},       {1e15, "[=====] 1000000000000000.00%  "},
      {HUGE_VAL, "[=====]    inf%  "}, {std::nan(""), "[-----]    nan%  "}};
  for (const auto& [percent, bar] : bars) expect(&QZConsoleProgressTracer::PrintBar, percent, bar);
  const std::pair<double, const char*> times[] = {
      {0.99, "00:00:00"}, {60, "00:00:60"},   {60.5, "00:01:00"},    {3600, "00:60:00"}, {3600.5, "01:00:00"},
      {3660, "01:00:60"}, {3661, "01:01:01"}, {3.6e6, "1000:00:00"}, {-5, "00:00:-5"},   {std::nan(""), "00:00:nan"}};
  for (const auto& [seconds, time] : times) expect(&QZConsoleProgressTracer::PrintTime, seconds, time);
}

TEST(ConsoleTracer, DrawsWhatIsAStepAheadOrAfterItsTimeNotBehind) {
  const auto drawn = [](double progressStep, double timeStep, const std::vector<double>& reports) {
    QZConsoleProgressTracer tracer("", 10, progressStep, timeStep);
    return Percentages([&] {
      for (const double percent : reports) tracer.SetProgress(percent);
      tracer.SetProgress(2, 3);
      tracer.SetProgress(0, 0);
    });
  };
  EXPECT_EQ(drawn(2, never, {0, 1.99, 2, 3.9, 50, 40, 51.9, 52, std::nan("")}), "2.00 50.00 52.00 66.67 100.00 ");
  EXPECT_EQ(drawn(never, 0, {0, 0.5, 0.5, 50, 40}), "0.00 0.50 0.50 50.00 66.67 100.00 ");
}

TEST(ConsoleTracer, ThreadsDrawForwardOnly) {
  QZConsoleProgressTracer tracer("", 10, 0.5, 0.0);
  std::istringstream drawn(Percentages([&] {
    std::vector<std::thread> threads;
    for (unsigned int first = 0; first < 4; ++first) {
      threads.emplace_back([&tracer, first] {
        for (unsigned int i = first; i <= 1000; i += 4) tracer.SetProgress(i, 1000);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }));
  double last = 0;
  for (double next = 0; drawn >> next; last = next) EXPECT_LE(last, next);
  EXPECT_EQ(last, 100);
}

// Whether any operation of the tracers has an effect that can be seen.
bool DoSomething() {
  for (QZTracerBase* tracer : {&QZNoTracer, &NullTracer}) {
    tracer->SetTask("task");
    tracer->Push("subtask");
    tracer->SetProgress(1, 2);
    tracer->SetProgress(50.0);
    tracer->Refresh();
    tracer->Pop();
  }
  return QZNoTracer.Aborted();
}

const bool didSomething = DoSomething();

TEST(NullTracerDeathTest, DoesNothingFromTheFirstInitialiserToTheEndOfTheProcess) {
  const auto end = [] {
    static struct AtTheEnd {
      ~AtTheEnd() { _exit(DoSomething() ? 1 : 7); }
    } atTheEnd;
    std::exit(0);
  };
  EXPECT_FALSE(didSomething);
  EXPECT_EXIT(end(), testing::ExitedWithCode(7), "^$");
}

}  // namespace
