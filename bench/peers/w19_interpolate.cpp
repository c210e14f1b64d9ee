// W19: the loop that one writes by hand, with nothing checked and all constants taken out of it; in `float` it is less
// exact, and so only a limit.
#include "bench.h"
#include "lattice.h"

using namespace lattice;

template <class Real>
static void interpolate(const std::string& name, int threads) {
  add("W19/interpolate-" + std::to_string(threads) + "-threads/" + name, [threads](benchmark::State& st) {
    const auto grid = values(kPoints);
    const Real scale = 1 / Real(kSpacing), origin = Real(0.5) * (kSide - 1);
    double sum = 0.0;
    for (auto _ : st) {
      sum = lattice::sum(threads, [&](const Place& p) {
        const Real u = (p.x - kMid) * scale + origin, v = (p.y - kMid) * scale + origin, w = (p.z - kMid) * scale + origin;
        const int i = int(u), j = int(v), k = int(w);
        const Real a = u - i, b = v - j, c = w - k;
        const float* q = grid.data() + i + kSide * (j + kSide * k);
        const auto x = [&](const float* r) { return r[0] + (Real(r[1]) - r[0]) * a; };
        const auto y = [&](const float* r) {
          const Real first = x(r);
          return first + (x(r + kSide) - first) * b;
        };
        const Real first = y(q);
        return float(first + (y(q + kSide * kSide) - first) * c);
      });
      benchmark::DoNotOptimize(sum);
    }
    st.counters["sum"] = sum;
    ops(st, kPlaces);
  });
}

int main(int argc, char** argv) {
  for (int threads : {1, 2}) {
    interpolate<double>("loop", threads);
    interpolate<float>("limit_in_float", threads);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
