// W6: random draws, one at a time, summed. The engine is seeded once; the distributions are called as users call them,
// through the abstract engine.
#include <cstdint>

#include "bench.h"
#include "qz/math/ran_num_generators.h"

using namespace QZMath;

constexpr int kDraws = 100000;
using Engine = MtRng<Mt64Traits>;

template <class F>
static void draw(const std::string& name, F f) {
  add(name, [f](benchmark::State& st) mutable {
    Engine e(12345);
    for (auto _ : st) {
      decltype(f(e)) s = 0;
      for (int i = 0; i < kDraws; ++i) s += f(e);
      benchmark::DoNotOptimize(s);
    }
    ops(st, kDraws);
  });
}

int main(int argc, char** argv) {
  draw("W6/raw64/ours", [](Engine& e) { return e.getWord(); });
  draw("W6/uniform01/ours", [](Engine& e) { return e.getUnitDouble(); });
  draw("W6/uniform01/ours_QZUniformDoubleRNG", [d = QZUniformDoubleRNG(0, 1)](Engine& e) mutable { return d(e); });
  draw("W6/normal/ours", [d = QZGaussianRNG(0, 1)](Engine& e) mutable { return d(e); });
  draw("W6/gamma2.5/ours", [d = QZGammaRNG(2.5, 1)](Engine& e) mutable { return d(e); });
  draw("W6/int-below-1000/ours", [d = QZUniformIntRNG(0, 999)](Engine& e) mutable { return long(d(e)); });
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
