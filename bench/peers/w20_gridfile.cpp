// W20: the interleave of four grids by a loop from memory to memory, back again, and the plain copy of as many bytes.
#include <cstring>

#include "bench.h"
#include "lattice.h"

using namespace lattice;

static const double kBytes = 4.0 * kGrids * kPoints;

BM("W20/write/loop") {
  const auto block = values(kGrids * kPoints);
  std::vector<float> file(block.size());
  for (auto _ : st) {
    for (unsigned long i = 0; i < kPoints; ++i)
      for (unsigned n = 0; n < kGrids; ++n) file[i * kGrids + n] = block[n * kPoints + i];
    benchmark::ClobberMemory();
  }
  gb(st, kBytes);
}
BM("W20/read/loop") {
  const auto file = values(kGrids * kPoints);
  std::vector<float> block(file.size());
  for (auto _ : st) {
    for (unsigned long i = 0; i < kPoints; ++i)
      for (unsigned n = 0; n < kGrids; ++n) block[n * kPoints + i] = file[i * kGrids + n];
    benchmark::ClobberMemory();
  }
  gb(st, kBytes);
}
static void copy(const char* name) {
  add(name, [](benchmark::State& st) {
    const auto from = values(kGrids * kPoints);
    std::vector<float> to(from.size());
    for (auto _ : st) {
      std::memcpy(to.data(), from.data(), sizeof(float) * from.size());
      benchmark::ClobberMemory();
    }
    gb(st, kBytes);
  });
}

int main(int argc, char** argv) {
  copy("W20/write/limit_memcpy");
  copy("W20/read/limit_memcpy");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
