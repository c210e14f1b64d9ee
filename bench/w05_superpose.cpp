// W5: least-squares superposition of N point pairs: rotation, translation, RMS.
#include <cmath>

#include "bench.h"
#include "inputs.h"
#include "qz/math/qcprms.h"
#include "qz/math/simplerms.h"

using inputs::Points;

int main(int argc, char** argv) {
  for (int n : {20, 100, 1000, 10000}) {
    add("W5/N=" + std::to_string(n) + "/ours", [n](benchmark::State& st) {
      const Points p = inputs::point_pairs(n);
      double rotation[9], translation[3];
      const double expected = QZMath::SimpleRMSBetweenPoints(p.b.data(), p.a.data(), unsigned(n), nullptr);
      const double rms = QZMath::QZQCPRMSBetweenPoints(p.b.data(), p.a.data(), unsigned(n), rotation, translation);
      double sum = 0;
      for (int i = 0; i < 3 * n; ++i) {
        const double *row = rotation + i % 3 * 3, *x = p.a.data() + i / 3 * 3;
        const double d = row[0] * x[0] + row[1] * x[1] + row[2] * x[2] + translation[i % 3] - p.b[i];
        sum += d * d;
      }
      if (std::abs(rms - expected) > 1e-9 || std::abs(std::sqrt(sum / n) - rms) > 1e-6) st.SkipWithError("wrong rms");
      for (auto _ : st) {
        double r = QZMath::QZQCPRMSBetweenPoints(p.b.data(), p.a.data(), unsigned(n), rotation, translation);
        benchmark::DoNotOptimize(r);
        benchmark::DoNotOptimize(rotation);
        benchmark::DoNotOptimize(translation);
        benchmark::ClobberMemory();
      }
      ops(st, 1);
    });
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
