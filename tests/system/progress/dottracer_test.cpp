#include "qz/system/progress/dottracer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <functional>
#include <string>

#include "qz/platform/memorystream.h"
#include "qz/platform/syscalls_impl.h"

using namespace QZSystem;

namespace {

constexpr float always = 0;
constexpr float never = 1e8F;  // seconds of processor time

// What a tracer with rows of `width` writes while `work` uses it, and what its destructor adds behind a bar.
std::string Written(unsigned int width, const std::function<void(QZDotTracer&)>& work) {
  qzosstream out;
  {
    QZDotTracer tracer(always, out, width);
    work(tracer);
    out << '|';
  }
  return out.str();
}

void Dots(QZDotTracer& tracer, int count) {
  for (int i = 0; i < count; ++i) tracer.Refresh();
}

TEST(DotTracer, ARowIsClosedByTheNextReport) {
  EXPECT_EQ(Written(5,
                    [](QZDotTracer& tracer) {
                      Dots(tracer, 5);
                      tracer.SetProgress(3, 8);
                      Dots(tracer, 4);
                      tracer.SetProgress(60.0);
                    }),
            "..... 37% processed.\n..... 60% processed.\n.|\nDone.\n");
}

TEST(DotTracer, EveryCallPrintsADotWithoutAnInterval) {
  const struct {
    std::function<void(QZDotTracer&)> call;
    const char* percent;
  } cases[] = {
      {[](QZDotTracer& t) { t.Pop(); }, "100"},
      {[](QZDotTracer& t) { t.Refresh(); }, "0"},
      {[](QZDotTracer& t) { EXPECT_FALSE(t.Aborted()); }, "0"},
      {[](QZDotTracer& t) { t.SetProgress(1, 3); }, "33"},
      {[](QZDotTracer& t) { t.SetProgress(5, 0); }, "100"},
      {[](QZDotTracer& t) { t.SetProgress(99.99); }, "99"},
      {[](QZDotTracer& t) { t.SetProgress(-0.5); }, "0"},
      {[](QZDotTracer& t) { t.SetProgress(-7.9); }, "-7"},
      {[](QZDotTracer& t) { t.SetProgress(1e30); }, "1000000000000000019884624838656"},
      {[](QZDotTracer& t) { t.SetProgress(HUGE_VAL); }, "inf"},
      {[](QZDotTracer& t) { t.PrintDot(12); }, "12"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Written(0, each.call), std::string(" ") + each.percent + "% processed.\n.|\nDone.\n");
  }
}

TEST(DotTracer, DoneStandsOnALineOfItsOwnNearTheEndOfARow) {
  const struct {
    unsigned int width;
    int dots;
    const char* written;
  } cases[] = {
      {10, 4, "....|Done.\n"},
      {10, 5, ".....|\nDone.\n"},
      {3, 0, "|\nDone.\n"},
      {6, 0, "|Done.\n"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Written(each.width, [&](QZDotTracer& tracer) { Dots(tracer, each.dots); }), each.written);
  }
}

TEST(DotTracer, ATaskCountsForItsRow) {
  EXPECT_EQ(Written(6,
                    [](QZDotTracer& tracer) {
                      tracer.SetTask("read");
                      Dots(tracer, 3);
                      tracer.Push("more text");
                      tracer.SetProgress(50.0);
                    }),
            "read.. 0% processed.\n.more text 50% processed.\n.|\nDone.\n");
  qzosstream out;
  {
    QZDotTracer tracer("load", always, out, 5);
    Dots(tracer, 2);
  }
  EXPECT_EQ(out.str(), "load. 0% processed.\n.\nDone.\n");
}

TEST(DotTracer, NoDotIsPrintedBeforeItsTime) {
  qzosstream out;
  {
    QZDotTracer tracer(never, out, 50);
    Dots(tracer, 3);
    tracer.SetProgress(50.0);
    tracer.Pop();
  }
  EXPECT_EQ(out.str(), "Done.\n");
}

// A tracer made while the clock fails believes that decades have passed, which counts in seconds of the clock.
TEST(DotTracer, ALongWaitCountsByTheClock) {
  qzosstream out;
  {
    auto broken =
        std::make_unique<SystemCalls::ScheduledFault>(SystemCalls::Call::Clock, 1, SystemCalls::Fault::Fail(EIO), true);
    QZDotTracer tracer(never, out, 50);
    broken.reset();
    Dots(tracer, 3);
  }
  EXPECT_EQ(out.str(), ".Done.\n");
}

}  // namespace
