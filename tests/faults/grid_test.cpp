// Grids that change their shape, are copied, written and read.
#include <algorithm>
#include <memory>
#include <string>

#include "qz/platform/memorystream.h"
#include "qz/system/objects/qzbgrid.h"
#include "tests/faults/faults.h"

using namespace QZSystem;

namespace {

QZMultiGrid<float> sample(unsigned int x, unsigned int y, unsigned int z, unsigned int number) {
  QZGridBase geometry(x, y, z, 1.0F, 2.0F, 3.0F, 0.5F, std::string(100, 'x'));
  geometry.SetData("level", 7);
  return QZMultiGrid<float>(geometry, number);
}

// Whatever has failed: there are as many grids as told, all of the shape, with all their values.
void expectSound(QZMultiGrid<float>& grids, unsigned int number, unsigned int size) {
  ASSERT_EQ(grids.GetNumGrids(), number);
  ASSERT_EQ(grids.GetSize(), size);
  for (unsigned int n = 0; n < number; ++n) {
    QZFixedGrid<float>& grid = grids.GetGrid(n);
    ASSERT_EQ(grid.GetSize(), size);
    ASSERT_EQ(grid.GetXDim(), grids.GetXDim());
    ASSERT_EQ(grid.GetValues(), grids.GetGrid(0).GetValues() + std::size_t{n} * size);
    std::fill_n(grid.GetValues(), size, static_cast<float>(n));
  }
}

const Road shapesAreChanged("ShapesAreChanged", allocations, [](Attempt& attempt) {
  QZMultiGrid<float> grids = sample(2, 2, 1, 3);
  const unsigned int number = attempt([&] { return grids.SetNumGrids(5); }) ? 5 : 3;
  expectSound(grids, number, 4);
  const unsigned int size = attempt([&] { return grids.SetDim(3, 2, 2); }) ? 12 : 4;
  expectSound(grids, number, size);
  attempt([&] { return grids.SetSpacing(0.75F); });
  expectSound(grids, number, size);
  const unsigned int fewer = attempt([&] { return grids.SetNumGrids(2); }) ? 2 : number;
  EXPECT_EQ(grids.GetGrid(1).GetValue(0, 0, 0), 1.0F);
  expectSound(grids, fewer, size);
  attempt([&] { return grids.Clear(), true; });
  expectSound(grids, grids.GetNumGrids(), grids.GetSize());
});

const Road gridsAreCopied("GridsAreCopied", allocations, [](Attempt& attempt) {
  QZMultiGrid<float> grids = sample(2, 2, 1, 3);
  const QZMultiGrid<float> other = sample(4, 1, 2, 2);
  std::unique_ptr<QZMultiGrid<float>> copy;
  attempt([&] { return copy.reset(other.CreateCopy()), true; });
  if (copy) expectSound(*copy, 2, 8);
  const bool assigned = attempt([&] { return grids = other, true; });
  expectSound(grids, assigned ? 2 : 3, assigned ? 8 : 4);
  attempt([&] { return static_cast<QZGridBase&>(grids) = QZGridBase(1, 1, 7, 0.0F, 0.0F, 0.0F, 1.0F, ""), true; });
  expectSound(grids, grids.GetNumGrids(), grids.GetSize());
});

const Road flatFormIsWrittenAndRead("FlatFormIsWrittenAndRead", allocations, [](Attempt& attempt) {
  QZMultiGrid<float> grids = sample(5, 2, 3, 4), read = sample(2, 2, 2, 2);
  expectSound(grids, 4, 30);
  std::string bytes;
  const bool written = attempt([&] {
    qzosstream out;
    return QZWriteOldStyleGrid(out, grids, 0) && (bytes = out.str(), true);
  });
  const bool whole = written && attempt([&] {
                       qzisstream in;
                       in.set(bytes.data(), bytes.size(), false);
                       return QZReadOldStyleGrid(in, read);
                     });
  EXPECT_TRUE(!whole || read.GetGrid(3).GetValue(4, 1, 2) == 3.0F);
  expectSound(read, read.GetNumGrids(), read.GetSize());
});

}  // namespace
