#include "qz/system/data/basedata.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

using namespace QZSystem;

namespace {

std::uint64_t Number(const void* identity) { return reinterpret_cast<std::uintptr_t>(identity); }

TEST(DataType, IsTheHashOfTheName) {
  EXPECT_EQ(Number(QZTypeIdentity("")), 0xCBF29CE484222325U);
  EXPECT_EQ(Number(QZTypeIdentity("a")), 0xAF63DC4C8601EC8CU);
  EXPECT_EQ(QZTypeIdentity("*a"), QZTypeIdentity("a"));
  EXPECT_NE(QZTypeIdentity("**a"), QZTypeIdentity("*a"));
  EXPECT_NE(QZTypeIdentity("\xe4"), QZTypeIdentity("\x64"));
  EXPECT_EQ(Number(QZGetDataType<int>()), 0xAF63E44C8601FA24U) << "the name is i";
}

TEST(DataType, ASingleUnsignedIntCountsAsAnInt) {
  EXPECT_EQ(QZBaseDataT<unsigned int>(1, 2U).GetDataType(), QZBaseDataT<int>(1, 2).GetDataType());
  EXPECT_NE(QZGetDataType<unsigned int>(), QZGetDataType<int>());
  EXPECT_EQ(QZBaseDataT<std::vector<unsigned int>>(1, {}).GetDataType(), QZGetDataType<std::vector<unsigned int>>());
  EXPECT_EQ(QZBaseDataTPtr<unsigned int*>(1, nullptr, 0).GetDataType(), QZGetDataType<unsigned int*>());
}

template <class T>
void CheckCopy(const T& value, const T& other) {
  QZBaseDataT<T> data(77, value);
  const std::unique_ptr<const QZBaseData> copy(data.CreateCopy());
  data.GetData() = other;
  EXPECT_EQ(copy->GetTag(), 77U);
  EXPECT_EQ(copy->GetSize(), 1U);
  EXPECT_EQ(copy->GetDataType(), QZBaseDataT<T>::DataType());
  EXPECT_EQ(static_cast<const QZBaseDataT<T>&>(*copy).GetData(), value);
  EXPECT_EQ(data.GetData(), other);
}

TEST(BaseData, ASingleValueIsCopiedWithItsTag) {
  CheckCopy<bool>(true, false);
  CheckCopy<unsigned int>(0xFFFFFFFFU, 1);
  CheckCopy<std::string>("text", "other");
  CheckCopy<std::vector<bool>>({true, false}, {});
  CheckCopy<std::vector<QZHalfFloat>>({QZHalfFloat{0x3C00}}, {QZHalfFloat{}});
}

TEST(BaseData, AnArrayIsCopiedElementByElement) {
  double source[] = {1.5, -2.5, 3.5};
  const QZBaseDataTPtr<double*> data(5, source, 3);
  const std::unique_ptr<QZBaseDataTPtr<double*>> copy(data.CreateCopy());
  source[0] = data.GetData()[1] = 9;
  ASSERT_EQ(copy->GetSize(), 3U);
  EXPECT_EQ(copy->GetTag(), 5U);
  EXPECT_EQ(copy->GetDataType(), QZGetDataType<double*>());
  EXPECT_EQ(std::vector<double>(copy->GetData(), copy->GetData() + 3), (std::vector<double>{1.5, -2.5, 3.5}));
  const std::unique_ptr<QZBaseDataTPtr<double*>> none(QZBaseDataTPtr<double*>(1, source, 0).CreateCopy());
  EXPECT_TRUE(none->GetData() == nullptr && none->GetSize() == 0);
}

}  // namespace
