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

using Work = std::function<void(QZDotTracer&)>;

// What a tracer with rows of `width` writes while `work` uses it, and what its
// destructor adds behind a bar.
std::string Written(unsigned int width, const Work& work) {
  qzosstream out;
  {
    QZDotTracer tracer(always, out, width);
    work(tracer);
    out << '|';
  }
  return out.str();
}

const Work fourDots = [](QZDotTracer& tracer) {
  for (int i = 0; i < 4; ++i) tracer.Refresh();
};

TEST(DotTracer, ARowIsClosedByTheNextReportAndBegunByATask) {
  EXPECT_EQ(Written(6,
                    [](QZDotTracer& tracer) {
                      fourDots(tracer);
                      tracer.SetTask("ab");
                      fourDots(tracer);
                      tracer.SetProgress(50.0);
                      tracer.Push("a task");
                      tracer.SetProgress(3, 8);
                    }),
            "....ab.... 50% processed.\n.a task 37% processed.\n.|\nDone.\n");
  qzosstream out;
  fourDots(*std::make_unique<QZDotTracer>("load", always, out, 6));
  EXPECT_EQ(out.str(), "load.. 0% processed.\n..\nDone.\n");
}

TEST(DotTracer, EveryCallPrintsADotWithoutAnInterval) {
  const auto expect = [](const Work& call, const std::string& percent) {
    EXPECT_EQ(Written(0, call), " " + percent + "% processed.\n.|\nDone.\n");
  };
  expect([](QZDotTracer& t) { t.Pop(); }, "100");
  expect([](QZDotTracer& t) { EXPECT_FALSE(t.Aborted()); }, "0");
  expect([](QZDotTracer& t) { t.SetProgress(5, 0); }, "100");
  for (const auto& [percent, text] :
       {std::pair{99.99, "99"}, {-0.5, "0"}, {-7.9, "-7"}, {1e20, "100000000000000000000"}, {HUGE_VAL, "inf"}})
    expect([value = percent](QZDotTracer& t) { t.SetProgress(value); }, text);
}

TEST(DotTracer, DoneStandsOnALineOfItsOwnNearTheEndOfARow) {
  EXPECT_EQ(Written(10, fourDots), "....|Done.\n");
  EXPECT_EQ(Written(9, fourDots), "....|\nDone.\n");
  EXPECT_EQ(Written(3, [](QZDotTracer&) {}), "|\nDone.\n");
}

// A tracer made while the clock fails believes that decades have passed, which counts in seconds of the clock. After
// the first dot they haven't.
TEST(DotTracer, NoDotIsPrintedBeforeItsTime) {
  qzosstream quiet;
  fourDots(*std::make_unique<QZDotTracer>(never, quiet, 50));
  EXPECT_EQ(quiet.str(), "Done.\n");
  using Fault = SystemCalls::ScheduledFault;
  auto broken = std::make_unique<Fault>(SystemCalls::Call::Clock, 1, SystemCalls::Fault::Fail(EIO), true);
  qzosstream out;
  auto tracer = std::make_unique<QZDotTracer>(never, out, 50);
  broken.reset();
  fourDots(*tracer);
  tracer.reset();
  EXPECT_EQ(out.str(), ".Done.\n");
}

}  // namespace
