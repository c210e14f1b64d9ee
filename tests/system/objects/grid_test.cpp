#include "qz/system/objects/grid.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <numeric>

#include "tests/system/cli/messages.h"

using namespace QZSystem;

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
const QZGridBase pair(2, 1, 1, 0.0F, 0.0F, 0.0F, 1.0F, "");

using Dim = std::array<unsigned int, 3>;
using Box = std::array<float, 6>;

Dim dimOf(const QZGridAbstractBase& grid) {
  Dim dim{};
  EXPECT_TRUE(grid.GetDim(dim[0], dim[1], dim[2]));
  return dim;
}

Box boxOf(const QZGridBase& grid) {
  return {grid.GetXMin(), grid.GetXMax(), grid.GetYMin(), grid.GetYMax(), grid.GetZMin(), grid.GetZMax()};
}

// Three grids of 2 by 2 by 1 with the values 1 to 12.
QZMultiGrid<float> threeGrids() {
  QZMultiGrid<float> grids(QZGridBase(2, 2, 1, 1.0F, 2.0F, 3.0F, 0.5F, "three"), 3);
  for (unsigned int n = 0; n < 3; ++n)
    std::iota(grids.GetGrid(n).GetValues(), grids.GetGrid(n).GetValues() + 4, 4.0F * static_cast<float>(n) + 1.0F);
  return grids;
}

// The values of all grids, one after the other.
std::vector<float> valuesOf(const QZFixedMultiGrid<float>& grids) {
  std::vector<float> all;
  for (unsigned int n = 0; n < grids.GetNumGrids(); ++n) {
    const QZFixedGrid<float>& grid = grids.GetGrid(n);
    all.insert(all.end(), grid.GetValues(), grid.GetValues() + grid.GetSize());
  }
  return all;
}

}  // namespace

TEST(GridBase, TheBoxFollowsDimensionsCentreAndSpacing) {
  QZGridBase grid;
  EXPECT_EQ(boxOf(grid), (Box{-0.25F, 0.25F, -0.25F, 0.25F, -0.25F, 0.25F}));
  EXPECT_TRUE(grid.SetDim(2, 3, 4));
  EXPECT_EQ(boxOf(grid), (Box{-0.5F, 0.5F, -0.75F, 0.75F, -1.0F, 1.0F}));
  EXPECT_TRUE(grid.SetSpacing(1.0F) && grid.SetMid(10.0F, 20.0F, 30.0F));
  EXPECT_EQ(boxOf(grid), (Box{9.0F, 11.0F, 18.5F, 21.5F, 28.0F, 32.0F}));
  EXPECT_TRUE(grid.SetXDim(4) && grid.SetYDim(5) && grid.SetZDim(6));
  EXPECT_EQ(boxOf(grid), (Box{8.0F, 12.0F, 17.5F, 22.5F, 27.0F, 33.0F}));
  EXPECT_EQ(boxOf(QZGridBase(4, 5, 6, 10.0F, 20.0F, 30.0F, 1.0F, "")), boxOf(grid));
}

TEST(GridBase, DimensionsOfNoGridAreRefused) {
  const struct {
    Dim dim;
    const char* product;
  } cases[] = {
      {{0, 1, 1}, ""},
      {{1, 0, 1}, ""},
      {{1, 1, 0}, ""},
      {{65536, 65536, 2}, "65536 x 65536"},
      {{65536, 65535, 2}, "4294901760 x 2"},
      {{4294967295U, 4294967295U, 4294967295U}, "4294967295 x 4294967295"},
      {{4294967295U, 1, 2}, "4294967295 x 2"},
  };
  Messages messages;
  for (const auto& [dim, product] : cases) {
    SCOPED_TRACE(testing::PrintToString(dim));
    const std::string warning = std::string("Warning: Grid dimensions too large for memory size: ") + product + "\n";
    QZGridBase grid(2, 3, 4, 0.0F, 0.0F, 0.0F, 1.0F, "");
    EXPECT_FALSE(grid.SetDim(dim[0], dim[1], dim[2]));
    EXPECT_EQ(messages.Take(), *product ? warning : "");
    EXPECT_EQ(dimOf(grid), (Dim{2, 3, 4}));
    if (!*product) continue;
    EXPECT_FALSE(grid.SetDim(dim[0], 1, 1) && grid.SetYDim(dim[1]) && grid.SetZDim(dim[2]));
    EXPECT_EQ(messages.Take(), warning);
  }
  QZGridBase largest;
  EXPECT_TRUE(largest.SetDim(65535, 65537, 1));
  EXPECT_FALSE(largest.SetXDim(65537) || largest.SetXDim(0) || largest.SetYDim(0) || largest.SetZDim(0));
}

TEST(GridBase, NumbersThatAreNoneAreRefusedAndTheOthersStay) {
  Messages messages;
  QZGridBase grid;
  for (float bad : {0.0F, -0.0F, -1.0F}) EXPECT_FALSE(grid.SetSpacing(bad)) << bad;
  EXPECT_EQ(messages.Take(), "");
  EXPECT_FALSE(grid.SetSpacing(NaN) || grid.IsSpacingSet());
  EXPECT_FALSE(grid.SetMid(NaN, 2.0F, NaN) || grid.SetYMid(NaN));
  EXPECT_EQ(messages.Take(),
            "Warning: SetSpacing unable to handle NaN: nan\nWarning: SetXMid unable to handle NaN: nan\n"
            "Warning: SetZMid unable to handle NaN: nan\nWarning: SetYMid unable to handle NaN: nan\n");
  EXPECT_EQ(boxOf(grid), (Box{-0.25F, 0.25F, 1.75F, 2.25F, -0.25F, 0.25F}));
  float x, y, z;
  EXPECT_FALSE(grid.GetMid(x, y, z) || grid.IsXMidSet() || grid.IsZMidSet());
  EXPECT_TRUE(grid.SetXMid(0.0F) && grid.SetZMid(0.0F) && grid.SetSpacing(0.5F));
  EXPECT_TRUE(grid.GetMid(x, y, z) && grid.IsSpacingSet());
}

TEST(GridBase, DimensionsThatFindNoMemoryStayAsTheyWere) {
  class Exhausted : public QZGridBase {
    void Realloc() override { throw std::bad_alloc(); }
  } grid;
  EXPECT_THROW(grid.SetDim(2, 3, 4), std::bad_alloc);
  EXPECT_THROW(static_cast<QZGridBase&>(grid) = pair, std::bad_alloc);
  EXPECT_EQ(dimOf(grid), (Dim{1, 1, 1}));
  EXPECT_EQ(boxOf(grid), (Box{-0.5F, 0.5F, -0.5F, 0.5F, -0.5F, 0.5F})) << "the spacing has been set before";
}

TEST(Grid, EachKindKnowsItsOwn) {
  float value = 0.0F;
  const QZFixedRefGrid<float> part(QZGridBase(), &value);
  const std::unique_ptr<QZBase> copy(part.CreateCopy()), base(QZGridBase().CreateCopy());
  EXPECT_EQ(copy->GetDataType(), QZGetDataType<QZFixedRefGrid<float>>());
  EXPECT_TRUE(copy->IsDataType(QZGetDataType<QZFixedGrid<float>>()) && copy->IsDataType(base->GetDataType()));
  EXPECT_FALSE(copy->IsDataType(QZGetDataType<QZMultiGrid<float>>()) || base->IsDataType(copy->GetDataType()));
}

TEST(FixedGrid, ValuesHaveXFastestAndCopiesShareThem) {
  std::vector<float> values(2 * 3 * 4);
  QZFixedGrid<float> grid(QZGridBase(2, 3, 4, 0.0F, 0.0F, 0.0F, 1.0F, ""), values.data());
  grid.SetValue(1, 2, 3, 5.0F);
  EXPECT_EQ(values[1 + 2 * 2 + 3 * 2 * 3], 5.0F);
  values[2] = 6.0F;
  EXPECT_EQ(std::unique_ptr<QZFixedGrid<float>>(grid.CreateCopy())->GetValue(0, 1, 0), 6.0F);
}

TEST(FixedGrid, SetValuesTakesAWholeArrayOrNothing) {
  Messages messages;
  float values[] = {1.0F, 2.0F};
  const float fresh[] = {3.0F, 4.0F, 5.0F};
  const std::string wrong = "Warning: Attempting to set grid data with wrong size array\n";
  QZFixedGrid<float> grid(pair, values);
  EXPECT_FALSE(grid.SetValues(fresh, 1) || grid.SetValues(fresh, 3) || grid.SetValues(nullptr, 2));
  EXPECT_EQ(messages.Take(), wrong + wrong + "Warning: Attempting to set grid data with zero pointer\n");
  EXPECT_EQ(values[0], 1.0F);
  EXPECT_TRUE(grid.SetValues(fresh, 2));
  EXPECT_EQ(values[1], 4.0F);
}

TEST(MultiGrid, ANewNumberKeepsTheValuesThatHaveRoom) {
  QZMultiGrid<float> grids = threeGrids();
  std::vector<float> expected = valuesOf(grids);
  EXPECT_EQ(grids.GetGrid(2).GetValue(1, 0, 0), 10.0F);
  EXPECT_TRUE(grids.SetNumGrids(5));
  expected.resize(20);
  EXPECT_EQ(valuesOf(grids), expected);
  EXPECT_EQ(grids.GetGrid(4).GetTitle(), "three");
  EXPECT_TRUE(grids.SetNumGrids(2));
  expected.resize(8);
  const float* const before = grids.GetGrid(0).GetValues();
  for (unsigned int refused : {0U, 1073741824U, 4294967295U}) EXPECT_FALSE(grids.SetNumGrids(refused)) << refused;
  EXPECT_TRUE(grids.SetNumGrids(2));
  EXPECT_EQ(valuesOf(grids), expected);
  EXPECT_EQ(grids.GetGrid(0).GetValues(), before);
  EXPECT_EQ(grids.GetGrid(1).GetValues(), before + 4) << "in one block";
}

TEST(MultiGrid, AnotherShapeStartsFromZero) {
  using Grids = QZMultiGrid<float>;
  const std::pair<Dim, void (*)(Grids&)> cases[] = {
      {{1, 4, 2}, [](Grids& grids) { EXPECT_TRUE(grids.SetDim(1, 4, 2)); }},
      {{1, 2, 1}, [](Grids& grids) { EXPECT_TRUE(grids.SetXDim(1)); }},
      {{2, 2, 3}, [](Grids& grids) { EXPECT_TRUE(grids.SetZDim(3)); }},
      {{2, 2, 1}, [](Grids& grids) { grids.Clear(); }},
      {{2, 2, 1}, [](Grids& grids) { grids.Realloc(); }},
      {{2, 1, 1}, [](Grids& grids) { static_cast<QZGridBase&>(grids) = pair; }},
  };
  for (const auto& [dim, change] : cases) {
    Grids grids = threeGrids();
    change(grids);
    EXPECT_EQ(dimOf(grids), dim);
    EXPECT_EQ(dimOf(grids.GetGrid(2)), dim);
    EXPECT_EQ(valuesOf(grids), std::vector<float>(3 * grids.GetSize())) << testing::PrintToString(dim);
  }
  Grids grids = threeGrids();
  EXPECT_TRUE(grids.SetDim(2, 2, 1));
  EXPECT_EQ(valuesOf(grids), valuesOf(threeGrids())) << "it is the same shape";
}

TEST(MultiGrid, GridsFollowTheSpacingAtOnceAndTheRestOnReset) {
  QZMultiGrid<float> grids = threeGrids();
  EXPECT_TRUE(grids.SetSpacing(0.75F));
  EXPECT_FALSE(grids.SetSpacing(0.0F));
  EXPECT_EQ(grids.GetGrid(1).GetSpacing(), 0.75F);
  grids.SetMid(7.0F, 8.0F, 9.0F);
  grids.SetTitle("new");
  grids.SetData("level", 7);
  EXPECT_EQ(grids.GetGrid(1).GetXMid(), 1.0F);
  grids.ResetGrids();
  EXPECT_EQ(boxOf(grids.GetGrid(1)), boxOf(grids));
  EXPECT_EQ(grids.GetGrid(1).GetTitle(), "new");
  EXPECT_EQ(grids.GetGrid(1).GetData<int>("level"), 7);
  EXPECT_EQ(valuesOf(grids), valuesOf(threeGrids()));
}

TEST(MultiGrid, ACopyHasAllOfItAndValuesOfItsOwn) {
  QZMultiGrid<float> grids = threeGrids(), assigned(pair, 2), outer;
  grids.SetData("level", 7);
  assigned.SetData("old", 1);
  assigned = grids;
  outer.SetData("inner", grids);
  outer = outer.GetData<QZMultiGrid<float>>("inner");
  const std::unique_ptr<QZMultiGrid<float>> made(grids.CreateCopy());
  EXPECT_EQ(made->GetDataType(), QZGetDataType<QZMultiGrid<float>>());
  grids.GetGrid(0).SetValue(0, 0, 0, 99.0F);
  grids.SetNumGrids(1);
  for (QZMultiGrid<float>* copy : {&assigned, &outer, made.get()}) {
    EXPECT_EQ(valuesOf(*copy), valuesOf(threeGrids()));
    EXPECT_EQ(copy->GetGrid(2).GetTitle(), "three");
    EXPECT_EQ(boxOf(copy->GetGrid(2)), boxOf(grids));
    EXPECT_EQ(copy->GetData<int>("level"), 7);
    EXPECT_FALSE(copy->HasData("old") || copy->HasData("inner"));
    EXPECT_TRUE(copy->IsSpacingSet() && copy->IsXMidSet() && copy->IsYMidSet() && copy->IsZMidSet());
    EXPECT_TRUE(copy->IsDataType(QZGetDataType<QZGridBase>()) && copy->IsDataType(QZGetDataType<QZBase>()));
  }
}
