// W15: erfc of 1e5 values, uniform in -3 .. 6, results stored.
#include <cmath>

#include "bench.h"
#include "inputs.h"
#include "qz/math/stats.h"

int main(int argc, char** argv) {
  add("W15/erfc/ours", [](benchmark::State& st) {
    auto x = inputs::erfc_arguments();
    std::vector<double> y(x.size());
    for (auto _ : st) {
      for (std::size_t i = 0; i < x.size(); ++i) y[i] = QZMath::QZerfc(x[i]);
      benchmark::DoNotOptimize(y.data());
      benchmark::ClobberMemory();
    }
    double worst = 0;  // largest relative difference from long double
    for (std::size_t i = 0; i < x.size(); ++i) {
      long double w = erfcl(static_cast<long double>(x[i]));
      worst = std::max(worst, double(std::abs((y[i] - w) / w)));
    }
    st.counters["relerr"] = worst;
    if (worst > 1e-14) st.SkipWithError("wrong value");
    ops(st, double(x.size()));
  });
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
