// Grids in the flat form. Whatever came is written and read again to the same bytes; a pipe, which doesn't know its
// size, gives what a block of memory gives.
#include <algorithm>
#include <cstring>

#include "fuzz/fuzzing.h"
#include "qz/system/objects/qzbgrid.h"

using namespace QZSystem;

namespace {

constexpr std::size_t HeaderSize = 49;
constexpr unsigned int mostPoints = 4096;

// Gives its bytes in blocks of a few, and knows no size.
class Pipe : public qzistream {
 public:
  Pipe(const std::uint8_t* data, std::size_t size, std::size_t blockSize)
      : bytes(data, data + size), left(size), step(blockSize) {
    resetBuffer(0, false);
  }
  unsigned long _qzsize() override { return ~0UL; }
  bool _qzfill() override {
    offset += static_cast<unsigned long>(end - start);
    const std::size_t count = std::min(step, left);
    start = current = bytes.data() + (bytes.size() - left);
    end = start + count;
    left -= count;
    atEnd = count == 0;
    return count != 0;
  }

 private:
  std::vector<unsigned char> bytes;
  std::size_t left, step;
};

std::string written(const QZMultiGrid<float>& grids) {
  qzosstream out;
  Require(QZWriteOldStyleGrid(out, grids, 0));
  return out.str();
}

// Grids that aren't new, so that what doesn't come has something to keep.
QZMultiGrid<float> before() {
  QZMultiGrid<float> grids(QZGridBase(2, 1, 2, 0.5F, 1.0F, 2.0F, 0.25F, "kept"), 2);
  for (unsigned int n = 0; n < 2; ++n) std::fill_n(grids.GetGrid(n).GetValues(), 4, static_cast<float>(n));
  return grids;
}

// Making a hundred thousand grids of a point again and again is slow, and finds nothing that a hundred don't.
bool hasManyGrids(const std::uint8_t* data, std::size_t size) {
  std::uint32_t number = 0;
  if (size >= 12) std::memcpy(&number, data + 8, sizeof number);
  return number > 200 && number < 2000000;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  if (hasManyGrids(data, size)) return 0;
  BytesStream in(data, size);
  QZMultiGrid<float> grids = before();
  const bool whole = QZReadOldStyleGrid(in, grids);
  // A header may claim a mebibyte of values that aren't there, and gets it. Zeroes needn't be written.
  if (grids.GetSize() > mostPoints) return 0;
  const std::string bytes = written(grids);
  Require(bytes.size() == HeaderSize + 4UL * grids.GetSize() * grids.GetNumGrids());
  if (whole) Require(bytes.size() == in.tell());

  BytesStream again(bytes);
  QZMultiGrid<float> second;
  Require(QZReadOldStyleGrid(again, second));
  Require(written(second) == bytes);

  Pipe pipe(data, size, 1 + size % 61);
  QZMultiGrid<float> piped = before();
  Require(QZReadOldStyleGrid(pipe, piped) == whole);
  // A pipe is asked for the values that the header tells; whether it may hold more it can't say.
  if (whole) Require(written(piped) == bytes);
  return 0;
}
