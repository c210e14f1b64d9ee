// Grids that change their shape, are copied, written and read.
#include <algorithm>
#include <memory>
#include <string>

#include "qz/platform/memorystream.h"
#include "qz/system/objects/qzbgrid.h"
#include "tests/faults/faults.h"

using namespace QZSystem;

namespace {

const std::string longTitle(100, 'x');

QZMultiGrid<float> sample(unsigned int x, unsigned int y, unsigned int z, unsigned int number) {
  QZGridBase geometry(x, y, z, 1.0F, 2.0F, 3.0F, 0.5F, longTitle);
  geometry.SetData("level", 7);
  return QZMultiGrid<float>(geometry, number);
}

// Whatever has failed: there are as many grids as told, all of the shape, with all their values.
void expectSound(QZMultiGrid<float>& grids) {
  for (unsigned int n = 0; n < grids.GetNumGrids(); ++n) {
    QZFixedGrid<float>& grid = grids.GetGrid(n);
    ASSERT_EQ(grid.GetSize(), grids.GetSize());
    ASSERT_EQ(grid.GetXDim(), grids.GetXDim());
    ASSERT_EQ(grid.GetValues(), grids.GetGrid(0).GetValues() + std::size_t{n} * grids.GetSize());
    std::fill_n(grid.GetValues(), grid.GetSize(), static_cast<float>(n));
  }
}

void shapesAreChanged(Attempt& attempt) {
  QZMultiGrid<float> grids = sample(2, 2, 1, 3);
  const bool hasMore = attempt([&] { return grids.SetNumGrids(5); });
  EXPECT_EQ(grids.GetNumGrids(), hasMore ? 5U : 3U);
  expectSound(grids);
  const bool hasDim = attempt([&] { return grids.SetDim(3, 2, 2); });
  EXPECT_EQ(grids.GetSize(), hasDim ? 12U : 4U);
  expectSound(grids);
  attempt([&] { return grids.SetSpacing(0.75F); });
  expectSound(grids);
  const bool hasFewer = attempt([&] { return grids.SetNumGrids(2); });
  if (hasFewer) {
    EXPECT_EQ(grids.GetGrid(1).GetValue(0, 0, 0), 1.0F);
  }
  expectSound(grids);
  attempt([&] { return grids.Clear(), true; });
  expectSound(grids);
}

void gridsAreCopied(Attempt& attempt) {
  QZMultiGrid<float> grids = sample(2, 2, 1, 3);
  const QZMultiGrid<float> other = sample(4, 1, 2, 2);
  std::unique_ptr<QZMultiGrid<float>> copy;
  attempt([&] { return copy.reset(other.CreateCopy()), true; });
  if (copy) expectSound(*copy);
  const bool assigned = attempt([&] { return grids = other, true; });
  EXPECT_EQ(grids.GetSize(), assigned ? 8U : 4U);
  EXPECT_EQ(grids.GetNumGrids(), assigned ? 2U : 3U);
  expectSound(grids);
  attempt([&] { return static_cast<QZGridBase&>(grids) = QZGridBase(1, 1, 7, 0.0F, 0.0F, 0.0F, 1.0F, ""), true; });
  expectSound(grids);
}

void flatFormIsWrittenAndRead(Attempt& attempt) {
  QZMultiGrid<float> grids = sample(5, 2, 3, 4);
  expectSound(grids);
  std::string bytes;
  const bool written = attempt([&] {
    qzosstream out;
    return QZWriteOldStyleGrid(out, grids, 0) && (bytes = out.str(), true);
  });
  if (!written) return;
  QZMultiGrid<float> read = sample(2, 2, 2, 2);
  const bool whole = attempt([&] {
    qzisstream in;
    in.set(bytes.data(), bytes.size(), false);
    return QZReadOldStyleGrid(in, read);
  });
  if (whole) {
    EXPECT_EQ(read.GetGrid(3).GetValue(4, 1, 2), 3.0F);
  }
  expectSound(read);
}

const Road roads[] = {{"ShapesAreChanged", shapesAreChanged},
                      {"GridsAreCopied", gridsAreCopied},
                      {"FlatFormIsWrittenAndRead", flatFormIsWrittenAndRead}};

INSTANTIATE_TEST_SUITE_P(Grids, Roads,
                         testing::Combine(testing::ValuesIn(roads),
                                          testing::Values(Fails::Allocation, Fails::AllocationsFrom)),
                         NameOfCase);

}  // namespace
