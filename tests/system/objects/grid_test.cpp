#include "qz/system/objects/grid.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <numeric>

#include "tests/system/text/warnings.h"

using namespace QZSystem;

namespace {

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
using Dim = std::array<unsigned int, 3>;

Dim dimOf(const QZGridAbstractBase& grid) {
  Dim dim{};
  EXPECT_TRUE(grid.GetDim(dim[0], dim[1], dim[2]));
  return dim;
}

using Box = std::array<float, 6>;

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

// Values that can't get more memory, as a class that keeps its own may find.
class Exhausted : public QZGridBase {
 public:
  void Realloc() override { throw std::bad_alloc(); }
};

}  // namespace

TEST(GridBase, ANewOneIsAPointAtTheOrigin) {
  const QZGridBase grid;
  EXPECT_EQ(dimOf(grid), (Dim{1, 1, 1}));
  EXPECT_EQ(grid.GetSize(), 1U);
  EXPECT_EQ(grid.GetSpacing(), 0.5F);
  EXPECT_EQ(boxOf(grid), (Box{-0.25F, 0.25F, -0.25F, 0.25F, -0.25F, 0.25F}));
  EXPECT_FALSE(grid.IsSpacingSet() || grid.IsTitleSet() || grid.IsXMidSet() || grid.IsYMidSet() || grid.IsZMidSet());
}

TEST(GridBase, TheBoxFollowsDimensionsCentreAndSpacing) {
  QZGridBase grid;
  EXPECT_TRUE(grid.SetDim(2, 3, 4));
  EXPECT_EQ(boxOf(grid), (Box{-0.5F, 0.5F, -0.75F, 0.75F, -1.0F, 1.0F}));
  EXPECT_EQ(grid.GetSize(), 24U);
  EXPECT_TRUE(grid.SetSpacing(1.0F));
  EXPECT_EQ(boxOf(grid), (Box{-1.0F, 1.0F, -1.5F, 1.5F, -2.0F, 2.0F}));
  EXPECT_TRUE(grid.SetMid(10.0F, 20.0F, 30.0F));
  EXPECT_EQ(boxOf(grid), (Box{9.0F, 11.0F, 18.5F, 21.5F, 28.0F, 32.0F}));
  EXPECT_TRUE(grid.SetXDim(4) && grid.SetYDim(5) && grid.SetZDim(6));
  EXPECT_EQ(boxOf(grid), (Box{8.0F, 12.0F, 17.5F, 22.5F, 27.0F, 33.0F}));
  EXPECT_EQ(grid.GetSize(), 120U);
  EXPECT_EQ(boxOf(QZGridBase(4, 5, 6, 10.0F, 20.0F, 30.0F, 1.0F, "")), boxOf(grid));
}

TEST(GridBase, DimensionsOfNoGridAreRefused) {
  const struct {
    Dim dim;
    const char* message;
  } cases[] = {
      {{0, 1, 1}, ""},
      {{1, 0, 1}, ""},
      {{1, 1, 0}, ""},
      {{65536, 65536, 2}, "Warning: Grid dimensions too large for memory size: 65536 x 65536"},
      {{65536, 65535, 2}, "Warning: Grid dimensions too large for memory size: 4294901760 x 2"},
      {{1, 4294967295U, 2}, "Warning: Grid dimensions too large for memory size: 4294967295 x 2"},
      {{4294967295U, 4294967295U, 4294967295U},
       "Warning: Grid dimensions too large for memory size: 4294967295 x 4294967295"},
  };
  Warnings warnings;
  for (const auto& each : cases) {
    QZGridBase grid(2, 3, 4, 0.0F, 0.0F, 0.0F, 1.0F, "");
    EXPECT_FALSE(grid.SetDim(each.dim[0], each.dim[1], each.dim[2]));
    EXPECT_EQ(dimOf(grid), (Dim{2, 3, 4}));
    EXPECT_EQ(warnings.Take(), each.message + std::string(*each.message ? "\n" : ""))
        << each.dim[0] << ' ' << each.dim[1] << ' ' << each.dim[2];
  }
  QZGridBase grid;
  EXPECT_TRUE(grid.SetDim(65535, 65537, 1));
  EXPECT_EQ(grid.GetSize(), 4294967295U);
  EXPECT_FALSE(grid.SetZDim(2));
  EXPECT_EQ(warnings.Take(), "Warning: Grid dimensions too large for memory size: 4294967295 x 2\n");
  EXPECT_FALSE(grid.SetXDim(65537));
  EXPECT_EQ(warnings.Take(), "Warning: Grid dimensions too large for memory size: 65537 x 65537\n");
  EXPECT_FALSE(grid.SetYDim(0) || grid.SetXDim(0) || grid.SetZDim(0));
  EXPECT_EQ(dimOf(grid), (Dim{65535, 65537, 1}));
  EXPECT_EQ(warnings.Take(), "");
}

TEST(GridBase, SpacingIsAPositiveNumber) {
  Warnings warnings;
  QZGridBase grid;
  for (float bad : {0.0F, -0.0F, -1.0F}) EXPECT_FALSE(grid.SetSpacing(bad)) << bad;
  EXPECT_EQ(warnings.Take(), "");
  EXPECT_FALSE(grid.SetSpacing(NaN));
  EXPECT_EQ(warnings.Take(), "Warning: SetSpacing unable to handle NaN: nan\n");
  EXPECT_EQ(grid.GetSpacing(), 0.5F);
  EXPECT_FALSE(grid.IsSpacingSet());
  EXPECT_TRUE(grid.SetSpacing(0.5F));
  EXPECT_TRUE(grid.IsSpacingSet());
}

TEST(GridBase, ARefusedCoordinateDoesNotStopTheOthers) {
  Warnings warnings;
  QZGridBase grid;
  EXPECT_FALSE(grid.SetMid(NaN, 2.0F, NaN));
  EXPECT_EQ(warnings.Take(),
            "Warning: SetXMid unable to handle NaN: nan\nWarning: SetZMid unable to handle NaN: nan\n");
  EXPECT_FALSE(grid.SetYMid(NaN));
  EXPECT_EQ(warnings.Take(), "Warning: SetYMid unable to handle NaN: nan\n");
  float x = 9.0F, y = 9.0F, z = 9.0F;
  EXPECT_FALSE(grid.GetMid(x, y, z));
  EXPECT_EQ((std::array<float, 3>{x, y, z}), (std::array<float, 3>{0.0F, 2.0F, 0.0F}));
  EXPECT_TRUE(!grid.IsXMidSet() && grid.IsYMidSet() && !grid.IsZMidSet());
  EXPECT_TRUE(grid.SetXMid(1.0F) && grid.SetZMid(3.0F));
  EXPECT_TRUE(grid.GetMid(x, y, z));
  EXPECT_EQ((std::array<float, 3>{x, y, z}), (std::array<float, 3>{1.0F, 2.0F, 3.0F}));
}

TEST(GridBase, ACopyHasTitleGeometryAndData) {
  QZGridBase grid(2, 3, 4, 1.0F, 2.0F, 3.0F, 0.25F, "density");
  grid.SetData("level", 7);
  QZGridBase assigned;
  assigned.SetData("old", 1);
  assigned = grid;
  const std::unique_ptr<QZGridBase> made(grid.CreateCopy());
  for (const QZGridBase* copy : {&assigned, made.get()}) {
    EXPECT_EQ(copy->GetTitle(), "density");
    EXPECT_EQ(dimOf(*copy), (Dim{2, 3, 4}));
    EXPECT_EQ(boxOf(*copy), boxOf(grid));
    EXPECT_TRUE(copy->IsSpacingSet() && copy->IsXMidSet() && copy->IsYMidSet() && copy->IsZMidSet());
    EXPECT_EQ(copy->GetData<int>("level"), 7);
    EXPECT_FALSE(copy->HasData("old"));
  }
  grid.Clear();
  EXPECT_FALSE(grid.IsTitleSet() || grid.HasData("level"));
  EXPECT_EQ(boxOf(grid), boxOf(assigned));
  EXPECT_TRUE(grid.IsSpacingSet());
}

TEST(GridBase, DimensionsThatFindNoMemoryStayAsTheyWere) {
  Exhausted grid;
  grid.SetSpacing(2.0F);
  EXPECT_THROW(grid.SetDim(2, 3, 4), std::bad_alloc);
  EXPECT_THROW(grid.SetYDim(5), std::bad_alloc);
  EXPECT_THROW(static_cast<QZGridBase&>(grid) = QZGridBase(2, 3, 4, 0.0F, 0.0F, 0.0F, 1.0F, ""), std::bad_alloc);
  EXPECT_EQ(dimOf(grid), (Dim{1, 1, 1}));
  EXPECT_EQ(grid.GetSize(), 1U);
  EXPECT_EQ(boxOf(grid), (Box{-0.5F, 0.5F, -0.5F, 0.5F, -0.5F, 0.5F}));
}

TEST(Grid, EachKindKnowsItsOwn) {
  float value = 0.0F;
  const QZFixedRefGrid<float> part(QZGridBase(), &value);
  const QZMultiGrid<float> grids;
  const struct {
    const QZBase& grid;
    std::vector<const void*> own;
  } cases[] = {
      {part, {QZGetDataType<QZFixedRefGrid<float>>(), QZGetDataType<QZFixedGrid<float>>()}},
      {grids, {QZGetDataType<QZMultiGrid<float>>(), QZGetDataType<QZFixedMultiGrid<float>>()}},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(each.grid.GetDataType(), each.own[0]);
    std::vector<const void*> all = each.own;
    for (const void* type : {QZGetDataType<QZGridBase>(), QZGetDataType<QZGridAbstractBase>(), QZGetDataType<QZBase>()})
      all.push_back(type);
    for (const void* type : all) EXPECT_TRUE(each.grid.IsDataType(type));
    for (const void* type : cases[&each == cases].own) EXPECT_FALSE(each.grid.IsDataType(type));
    const std::unique_ptr<QZBase> copy(each.grid.CreateCopy());
    EXPECT_EQ(copy->GetDataType(), each.own[0]);
  }
}

TEST(FixedGrid, ValuesHaveXFastest) {
  std::vector<float> values(2 * 3 * 4);
  QZFixedGrid<float> grid(QZGridBase(2, 3, 4, 0.0F, 0.0F, 0.0F, 1.0F, ""), values.data());
  grid.SetValue(1, 2, 3, 5.0F);
  EXPECT_EQ(values[1 + 2 * 2 + 3 * 2 * 3], 5.0F);
  values[2] = 6.0F;
  EXPECT_EQ(grid.GetValue(0, 1, 0), 6.0F);
  const std::unique_ptr<QZFixedGrid<float>> copy(grid.CreateCopy());
  copy->SetValue(0, 0, 0, 7.0F);
  EXPECT_EQ(values[0], 7.0F);
}

TEST(FixedGrid, SetValuesTakesAWholeArrayOrNothing) {
  Warnings warnings;
  float values[2] = {1.0F, 2.0F};
  const float fresh[2] = {3.0F, 4.0F};
  QZFixedGrid<float> grid(QZGridBase(2, 1, 1, 0.0F, 0.0F, 0.0F, 1.0F, ""), values);
  for (unsigned int count : {0U, 1U, 3U}) {
    EXPECT_FALSE(grid.SetValues(fresh, count));
    EXPECT_EQ(warnings.Take(), "Warning: Attempting to set grid data with wrong size array\n") << count;
  }
  EXPECT_FALSE(grid.SetValues(nullptr, 2));
  EXPECT_EQ(warnings.Take(), "Warning: Attempting to set grid data with zero pointer\n");
  EXPECT_EQ(values[1], 2.0F);
  EXPECT_TRUE(grid.SetValues(fresh, 2));
  EXPECT_EQ(values[1], 4.0F);
}

TEST(MultiGrid, GridsLieOneAfterTheOtherInOneBlock) {
  const QZMultiGrid<float> grids = threeGrids();
  EXPECT_EQ(grids.GetGrid(1).GetValues(), grids.GetGrid(0).GetValues() + 4);
  EXPECT_EQ(grids.GetGrid(2).GetValue(1, 0, 0), 10.0F);
  EXPECT_EQ(grids.GetGrid(2).GetTitle(), "three");
  EXPECT_EQ(grids.GetGrid(2).GetDataType(), QZGetDataType<QZFixedRefGrid<float>>());
  EXPECT_EQ(valuesOf(QZMultiGrid<float>()), std::vector<float>{0.0F});
}

TEST(MultiGrid, ANewNumberKeepsTheValuesThatHaveRoom) {
  QZMultiGrid<float> grids = threeGrids();
  std::vector<float> expected = valuesOf(grids);
  EXPECT_TRUE(grids.SetNumGrids(5));
  expected.resize(20);
  EXPECT_EQ(valuesOf(grids), expected);
  EXPECT_EQ(grids.GetGrid(4).GetTitle(), "three");
  EXPECT_TRUE(grids.SetNumGrids(2));
  expected.resize(8);
  EXPECT_EQ(valuesOf(grids), expected);
  const float* const before = grids.GetGrid(0).GetValues();
  EXPECT_TRUE(grids.SetNumGrids(2));
  EXPECT_EQ(grids.GetGrid(0).GetValues(), before);
  for (unsigned int refused : {0U, 1073741824U, 4294967295U}) EXPECT_FALSE(grids.SetNumGrids(refused)) << refused;
  EXPECT_EQ(valuesOf(grids), expected);
}

TEST(MultiGrid, AnotherShapeStartsFromZero) {
  const struct {
    const char* what;
    bool (*change)(QZMultiGrid<float>&);
    Dim dim;
  } cases[] = {
      {"SetDim", [](QZMultiGrid<float>& grids) { return grids.SetDim(1, 4, 2); }, {1, 4, 2}},
      {"SetXDim", [](QZMultiGrid<float>& grids) { return grids.SetXDim(1); }, {1, 2, 1}},
      {"SetZDim", [](QZMultiGrid<float>& grids) { return grids.SetZDim(3); }, {2, 2, 3}},
      {"Clear", [](QZMultiGrid<float>& grids) { return grids.Clear(), true; }, {2, 2, 1}},
      {"Realloc", [](QZMultiGrid<float>& grids) { return grids.Realloc(), true; }, {2, 2, 1}},
      {"geometry",
       [](QZMultiGrid<float>& grids) {
         static_cast<QZGridBase&>(grids) = QZGridBase(3, 1, 1, 0.0F, 0.0F, 0.0F, 1.0F, "");
         return true;
       },
       {3, 1, 1}},
  };
  for (const auto& each : cases) {
    QZMultiGrid<float> grids = threeGrids();
    EXPECT_TRUE(each.change(grids)) << each.what;
    EXPECT_EQ(dimOf(grids), each.dim) << each.what;
    EXPECT_EQ(dimOf(grids.GetGrid(2)), each.dim) << each.what;
    EXPECT_EQ(valuesOf(grids), std::vector<float>(3 * grids.GetSize())) << each.what;
  }
  QZMultiGrid<float> grids = threeGrids();
  EXPECT_TRUE(grids.SetDim(2, 2, 1));
  EXPECT_EQ(valuesOf(grids), valuesOf(threeGrids()));
}

TEST(MultiGrid, GridsFollowTheSpacingAtOnceAndTheRestOnReset) {
  QZMultiGrid<float> grids = threeGrids();
  EXPECT_TRUE(grids.SetSpacing(0.75F));
  EXPECT_EQ(grids.GetGrid(1).GetSpacing(), 0.75F);
  EXPECT_FALSE(grids.SetSpacing(0.0F));
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

TEST(MultiGrid, TakesTheValuesOfAGridThatIsAttachedToIt) {
  QZMultiGrid<float> inner(QZGridBase(2, 2, 2, 1, 2, 3, 0.5F, "inner"), 2);
  inner.GetGrid(1).SetValue(1, 1, 1, 7);
  inner.SetData("n", 5);
  QZMultiGrid<float> outer;
  outer.SetData("inner", inner);
  outer = outer.GetData<QZMultiGrid<float>>("inner");
  EXPECT_EQ(outer.GetTitle(), std::string("inner"));
  EXPECT_EQ(outer.GetGrid(1).GetValue(1, 1, 1), 7);
  EXPECT_EQ(outer.GetData<int>("n"), 5);
  EXPECT_FALSE(outer.HasData("inner"));
}

TEST(MultiGrid, ACopyHasValuesOfItsOwn) {
  QZMultiGrid<float> grids = threeGrids();
  QZMultiGrid<float> assigned(QZGridBase(9, 9, 9, 0.0F, 0.0F, 0.0F, 1.0F, ""), 2);
  assigned = grids;
  const std::unique_ptr<QZMultiGrid<float>> made(grids.CreateCopy());
  grids.GetGrid(0).SetValue(0, 0, 0, 99.0F);
  grids.SetNumGrids(1);
  for (QZMultiGrid<float>* copy : {&assigned, made.get()}) {
    EXPECT_EQ(valuesOf(*copy), valuesOf(threeGrids()));
    EXPECT_EQ(copy->GetGrid(2).GetTitle(), "three");
    EXPECT_EQ(copy->GetGrid(2).GetXMid(), 1.0F);
  }
}
