// W7: Tanimoto of one 2048-bit query against 10,000 prints; results stored. And the hexadecimal text of a print, out
// and in.
#include <cmath>
#include <string>
#include <vector>

#include "bench.h"
#include "inputs.h"
#include "qz/system/util/bitcount_impl.h"
#include "qz/system/util/bitvector.h"

using namespace inputs;
using namespace QZSystem;

static QZBitVector vectorOf(const Print& words) {
  QZBitVector vector(kBits);
  for (unsigned long bit = 0; bit < kBits; ++bit) vector.SetBit(bit, (words[bit / 64] >> (bit % 64) & 1) != 0);
  return vector;
}

static double tanimoto(const Print& a, const Print& b) {
  int both = 0, either = 0;
  for (std::size_t i = 0; i < kWords; ++i) {
    both += __builtin_popcountll(a[i] & b[i]);
    either += __builtin_popcountll(a[i] | b[i]);
  }
  return double(both) / either;
}

// With the way of counting that the processor is best at, or with one that is named.
static void oneToMany(benchmark::State& st, const BitCounter* counter) {
  const BitCounter* const best = &BestBitCounter();
  if (counter) chosenBitCounter = counter;
  std::vector<QZBitVector> vectors;
  double want = 0;
  for (auto& print : prints()) {
    vectors.push_back(vectorOf(print));
    want += tanimoto(prints()[0], print);
  }
  std::vector<double> result(kPrints);
  for (auto _ : st) {
    for (std::size_t i = 0; i < kPrints; ++i) result[i] = QZTanimoto(vectors[0], vectors[i + 1]);
    benchmark::DoNotOptimize(result.data());
    benchmark::ClobberMemory();
  }
  for (double each : result) want -= each;
  if (std::abs(want - 1) > 1e-6) st.SkipWithError("wrong sum");
  ops(st, kPrints);
  chosenBitCounter = best;
}

BM("W7/tanimoto/ours") { oneToMany(st, nullptr); }
BM("W7/tanimoto/ours_popcnt") { oneToMany(st, &BitCounters[1]); }
BM("W7/tanimoto/ours_plain") { oneToMany(st, &BitCounters[2]); }

BM("W7/hex-write/ours") {
  const QZBitVector print = vectorOf(prints()[1]);
  std::string text;
  for (auto _ : st) {
    QZMakeHex(text, print, 0);
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
  QZBitVector again;
  if (text.size() != kBits / 4 + 1 || !QZParseHex(again, text) || again != print) st.SkipWithError("wrong text");
  gb(st, double(text.size()));
}
BM("W7/hex-read/ours") {
  const QZBitVector print = vectorOf(prints()[1]);
  std::string text;
  QZMakeHex(text, print, 0);
  QZBitVector again;
  bool good = true;
  for (auto _ : st) {
    good = QZParseHex(again, text) && good;
    benchmark::DoNotOptimize(again);
    benchmark::ClobberMemory();
  }
  if (!good || again != print) st.SkipWithError("wrong bits");
  gb(st, double(text.size()));
}
BENCHMARK_MAIN();
