// W19: trilinear interpolation at a million random places of a grid of 128^3 points; for two threads, half of the
// places each, on one grid.
#include "bench.h"
#include "lattice.h"
#include "qz/system/objects/grid_util.h"

using namespace lattice;
using namespace QZSystem;

static void interpolate(int threads) {
  add("W19/interpolate-" + std::to_string(threads) + "-threads/ours", [threads](benchmark::State& st) {
    auto points = values(kPoints);
    const QZFixedGrid<float> grid(QZGridBase(kSide, kSide, kSide, kMid, kMid, kMid, kSpacing, ""), points.data());
    double sum = 0.0;
    for (auto _ : st) {
      sum = lattice::sum(threads,
                         [&](const Place& p) { return QZFloatGridLinearInterpolate(grid, p.x, p.y, p.z, 1e30f); });
      benchmark::DoNotOptimize(sum);
    }
    if (!(sum > -1e6 && sum < 1e6)) st.SkipWithError("a place is outside");
    st.counters["sum"] = sum;
    ops(st, kPlaces);
  });
}

int main(int argc, char** argv) {
  for (int threads : {1, 2}) interpolate(threads);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
