#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

// The functions must hold where a compiler assumes that there is no such thing as a not-a-number.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC optimize("O2", "fast-math")
#endif
#include "qz/platform/number.h"

using namespace QZPlatform;

namespace {

template <class Number, class Bits>
Number FromBits(Bits bits) {
  Number number;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

}  // namespace

TEST(Number, ClassesAreToldByTheBits) {
  const struct {
    std::uint64_t wide;
    std::uint32_t narrow;
    bool isNaN;
    bool isFinite;
  } cases[] = {
      {0x8000000000000000U, 0x80000000U, false, true},   // -0
      {0x800FFFFFFFFFFFFFU, 0x807FFFFFU, false, true},   // largest subnormal, negative
      {0x3FF0000000000000U, 0x3F800000U, false, true},   // 1
      {0x7FEFFFFFFFFFFFFFU, 0x7F7FFFFFU, false, true},   // largest
      {0x7FF0000000000000U, 0x7F800000U, false, false},  // infinity
      {0xFFF0000000000000U, 0xFF800000U, false, false},  // -infinity
      {0x7FF0000000000001U, 0x7F800001U, true, false},   // signalling, smallest payload
      {0x7FF8000000000000U, 0x7FC00000U, true, false},   // quiet
      {0xFFFFFFFFFFFFFFFFU, 0xFFFFFFFFU, true, false},   // quiet, negative
  };
  for (const auto& [wide, narrow, isNaN, isFinite] : cases) {
    EXPECT_EQ(QZIsRealNaN(FromBits<double>(wide)), isNaN) << std::hex << wide;
    EXPECT_EQ(QZIsNormalNum(FromBits<double>(wide)), isFinite) << std::hex << wide;
    EXPECT_EQ(QZIsNaN(FromBits<float>(narrow)), isNaN) << std::hex << narrow;
  }
}
