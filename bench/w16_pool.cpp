// W16: new and delete of the 24-byte iterator over attached data, which lives in a pool. one: create, one virtual call,
// destroy. hundred: 100 alive, destroyed in another order. Per object.
#include <vector>

#include "bench.h"
#include "qz/system/frame/itervector.h"

using Iter = QZSystem::QZIterBase<int>;
using VecIter = QZSystem::QZVectorPtrIter<int>;
static_assert(sizeof(VecIter) == 24, "the object is 24 bytes");

static int data[4] = {1, 2, 3, 4};
static const std::vector<int*> pointers = {data, data + 1, data + 2, data + 3};

int main(int argc, char** argv) {
  add("W16/one/ours", [](benchmark::State& st) {
    for (auto _ : st) {
      for (int i = 0; i < 100; ++i) {
        Iter* t = new VecIter(pointers);
        benchmark::DoNotOptimize(t);
        Iter* next = &++*t;
        benchmark::DoNotOptimize(next);
        delete t;
      }
    }
    ops(st, 100);
  });
  add("W16/hundred/ours", [](benchmark::State& st) {
    Iter* t[100];
    for (auto _ : st) {
      for (int i = 0; i < 100; ++i) t[i] = new VecIter(pointers);
      benchmark::DoNotOptimize(t);
      benchmark::ClobberMemory();
      for (int i = 0; i < 100; ++i) delete t[i * 37 % 100];
    }
    ops(st, 100);
  });
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
