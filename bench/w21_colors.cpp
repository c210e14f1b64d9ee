// W21: the colour of ten million values in a gradient of 16 stops. There is no peer: what is asked for is below 20 ns.
#include <random>
#include <vector>

#include "bench.h"
#include "qz/system/util/colorgradient.h"

using namespace QZSystem;

BM("W21/color-at-16-stops/ours") {
  constexpr std::size_t kValues = 10'000'000;
  QZLinearColorGradient gradient;
  for (unsigned int i = 0; i < 16; ++i) gradient.AddStop(QZColorStop(i, QZColor(16 * i, 255 - 16 * i, 128)));
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> uniform(-0.5, 15.5);
  std::vector<double> values(kValues);
  for (double& value : values) value = uniform(random);
  for (auto _ : st) {
    unsigned int sum = 0;
    for (double value : values) sum += gradient.GetColorAt(value).GetR();
    benchmark::DoNotOptimize(sum);
  }
  ops(st, kValues);
}

BENCHMARK_MAIN();
