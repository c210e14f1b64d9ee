// W13: stable sort of N pointers by a string key, and of 1e6 ints, with hanoisort. The copy of the unsorted array
// that precedes every sort is in the figure, as it is for the peers.
#include <algorithm>
#include <string>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/system/frame/hanoi.h"

using namespace inputs;
using QZSystem::hanoisort;

static void sortItems(int n) {
  add("W13/pointers-" + std::to_string(n) + "/ours", [n](benchmark::State& st) {
    const auto v = items(n);
    std::vector<const Item*> p, q;
    for (auto& x : v) p.push_back(&x);
    for (std::size_t i = v.size(); i > 1; --i) std::swap(p[i - 1], p[Rng(i).below(i)]);
    const auto byKey = [](const Item* a, const Item* b) { return a->key < b->key; };
    for (auto _ : st) {
      q = p;
      hanoisort(q.data(), q.size(), byKey);
      benchmark::DoNotOptimize(q.data());
    }
    auto want = p;
    std::stable_sort(want.begin(), want.end(), byKey);
    if (q != want) st.SkipWithError("wrong order");
    ops(st, n);
  });
}

int main(int argc, char** argv) {
  for (int n : {100, 10000, 1000000}) sortItems(n);
  add("W13/ints-1000000/ours", [](benchmark::State& st) {
    const auto v = ints_to_sort(1000000);
    std::vector<std::int32_t> q;
    for (auto _ : st) {
      q = v;
      hanoisort(q.data(), q.size(), [](std::int32_t a, std::int32_t b) { return a < b; });
      benchmark::DoNotOptimize(q.data());
    }
    if (!std::is_sorted(q.begin(), q.end())) st.SkipWithError("wrong order");
    ops(st, 1000000);
  });
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
