#include "qz/system/data/container.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace QZSystem;

namespace {

TEST(Container, KnowsItsTypeAndThatOfItsBase) {
  const QZContainer object;
  EXPECT_EQ(object.GetDataType(), QZGetDataType<QZContainer>());
  EXPECT_TRUE(object.IsDataType(QZGetDataType<QZContainer>()) && object.IsDataType(QZGetDataType<QZBase>()));
  EXPECT_FALSE(object.IsDataType(QZGetDataType<std::vector<QZContainer>>()) || object.IsDataType(nullptr));
}

TEST(Container, CopiesReachToEveryDepth) {
  QZContainer inner, middle, outer;
  inner.SetData("m", std::string("deep"));
  middle.SetData("inner", inner);
  outer.SetData("list", std::vector<QZContainer>{middle, inner});
  const std::unique_ptr<QZBase> copy(outer.CreateCopy());
  outer.Clear();
  EXPECT_EQ(copy->GetDataType(), QZGetDataType<QZContainer>());
  const auto& list = copy->GetData<std::vector<QZContainer>>("list");
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].GetData<QZContainer>("inner").GetData<std::string>("m"), "deep");
  EXPECT_EQ(list[1].GetData<std::string>("m"), "deep");
}

TEST(Container, ANestedOneIsReplacedInItsPlace) {
  QZContainer first, second, outer;
  first.SetData("old", 1);
  second.SetData("new", 2);
  outer.SetData("x", first);
  const QZContainer* const place = &outer.GetData<QZContainer>("x");
  outer.SetData("x", second);
  EXPECT_EQ(&outer.GetData<QZContainer>("x"), place);
  EXPECT_FALSE(place->HasData("old"));
  EXPECT_EQ(place->GetData<int>("new"), 2);
}

}  // namespace
