// W17: counting by threads with QZThreadedDots beside a mutex around QZDots, a million updates by each thread, with a
// dot for every 1000 of them; and 20,000 with a dot for each. And reports to the console tracer that draw nothing. What
// is printed goes to /dev/null.
#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "bench.h"
#include "qz/system/progress/consoletracer.h"
#include "qz/system/progress/dots.h"
#include "qz/system/progress/threadeddots.h"

using namespace QZSystem;

namespace {

// Standard error leads nowhere while it stands.
struct Silence {
  Silence() : saved(dup(STDERR_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
  ~Silence() {
    dup2(saved, STDERR_FILENO);
    close(saved);
  }
  int saved;
};

class LockedDots {
 public:
  LockedDots(unsigned int bigstep, unsigned int smallstep, const char* name)
      : dots(bigstep, smallstep, name, "processed") {}
  void Update(unsigned int step) {
    const std::lock_guard<std::mutex> lock(mutex);
    dots.Update(step);
  }
  void Total() { dots.Total(); }

 private:
  std::mutex mutex;
  QZDots dots;
};

template <class Dots>
void count(const std::string& job, int threads, const std::string& name, unsigned int smallstep, int updates) {
  add("W17/" + job + "-" + std::to_string(threads) + "-threads/" + name,
      [threads, smallstep, updates](benchmark::State& st) {
        const Silence silence;
        for (auto _ : st) {
          Dots dots(50 * smallstep, smallstep, "items");
          auto work = [&] {
            for (int i = 0; i < updates; ++i) dots.Update(1);
          };
          std::vector<std::thread> others;
          for (int i = 1; i < threads; ++i) others.emplace_back(work);
          work();
          for (auto& each : others) each.join();
          dots.Total();
        }
        ops(st, double(updates) * threads);
      });
}

template <class Tracer>
void report(benchmark::State& st, Tracer& tracer) {
  constexpr unsigned int reports = 1000000;
  const Silence silence;
  for (auto _ : st) {
    // As an inner loop does; the figure is below the step that would be drawn.
    for (unsigned int i = 0; i < reports; ++i) tracer.SetProgress(i % 1000, 1000000);
  }
  ops(st, reports);
}

}  // namespace

BM("W17/report-undrawn/ours") {
  QZConsoleProgressTracer tracer("reading", 40, 1.0, 1e9);
  report(st, tracer);
}

// What such a report can't do without: a lock that nobody else wants, and the time of day.
BM("W17/report-undrawn/limit_lock_and_clock") {
  constexpr unsigned int reports = 1000000;
  std::mutex mutex;
  timeval now;
  for (auto _ : st) {
    for (unsigned int i = 0; i < reports; ++i) {
      const std::lock_guard<std::mutex> lock(mutex);
      gettimeofday(&now, nullptr);
      benchmark::DoNotOptimize(now);
    }
  }
  ops(st, reports);
}

int main(int argc, char** argv) {
  for (const int threads : {1, 2, 8}) {
    count<QZThreadedDots>("count", threads, "ours", 1000, 1000000);
    count<LockedDots>("count", threads, "mutex_and_dots", 1000, 1000000);
    count<QZThreadedDots>("count-dot-each", threads, "ours", 1, 20000);
    count<LockedDots>("count-dot-each", threads, "mutex_and_dots", 1, 20000);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
