// W8: name -> number for 1,000 known names with QZGetTag; each thread does 1e6 look-ups in the same random order. What
// a thread keeps of the names is made anew by every thread that is started, within the figure.
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/system/data/tagmap.h"

using namespace inputs;
using QZSystem::QZGetTag;

static void lookups(int threads) {
  add("W8/lookup-" + std::to_string(threads) + "-threads/ours", [threads](benchmark::State& st) {
    auto& order = lookup_order();
    auto& n = names();
    const long first = QZGetTag(n[0]);
    for (auto& name : n) benchmark::DoNotOptimize(QZGetTag(name));
    std::atomic<long> total{0};
    for (auto _ : st) {
      total = 0;
      auto work = [&] {
        long s = 0;
        for (auto k : order) s += QZGetTag(n[k]) - first;
        total += s;
      };
      std::vector<std::thread> t;
      for (int i = 1; i < threads; ++i) t.emplace_back(work);
      work();
      for (auto& x : t) x.join();
    }
    long want = 0;
    for (auto k : order) want += k;
    if (total != want * threads) st.SkipWithError("wrong sum");
    ops(st, kLookups);
  });
}

int main(int argc, char** argv) {
  for (int threads : {1, 2}) lookups(threads);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
