// W20: four grids of 128^3 points written as a flat file to memory and read back, into grids that have the shape.
#include <cstring>

#include "bench.h"
#include "lattice.h"
#include "qz/platform/memorystream.h"
#include "qz/system/objects/qzbgrid.h"

using namespace lattice;
using namespace QZSystem;

static const double kBytes = 4.0 * kGrids * kPoints;

namespace {

// A sink of a size that is known beforehand.
class Block : public qzostream {
 public:
  explicit Block(std::vector<unsigned char>& room) : bytes(room) { beginWriting(); }
  unsigned long _qzwrite(const unsigned char* from, unsigned long count) override {
    std::memcpy(bytes.data() + done, from, count);
    done += count;
    return count;
  }

 private:
  std::vector<unsigned char>& bytes;
  unsigned long done = 0;
};

QZMultiGrid<float> sample() {
  QZMultiGrid<float> grids(QZGridBase(kSide, kSide, kSide, kMid, kMid, kMid, kSpacing, ""), kGrids);
  const auto all = values(kGrids * kPoints);
  for (unsigned n = 0; n < kGrids; ++n) grids.GetGrid(n).SetValues(all.data() + n * kPoints, kPoints);
  return grids;
}

std::vector<unsigned char> written(const QZMultiGrid<float>& grids) {
  std::vector<unsigned char> file(49 + 4 * kGrids * kPoints);
  Block out(file);
  QZWriteOldStyleGrid(out, grids, 0);
  out.flush();
  return file;
}

}  // namespace

BM("W20/write/ours") {
  const auto grids = sample();
  auto file = written(grids);
  for (auto _ : st) {
    Block out(file);
    if (!QZWriteOldStyleGrid(out, grids, 0) || !out.flush()) st.SkipWithError("not written");
    benchmark::ClobberMemory();
  }
  gb(st, kBytes);
}
BM("W20/read/ours") {
  auto grids = sample();
  const auto file = written(grids);
  for (auto _ : st) {
    qzisstream in;
    in.set(file.data(), file.size(), false);
    if (!QZReadOldStyleGrid(in, grids)) st.SkipWithError("not read");
    benchmark::ClobberMemory();
  }
  if (written(grids) != file) st.SkipWithError("not the same");
  gb(st, kBytes);
}
BENCHMARK_MAIN();
