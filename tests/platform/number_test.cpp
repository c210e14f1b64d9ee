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
  static_assert(sizeof(Number) == sizeof(Bits));
  Number number;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

}  // namespace

TEST(Number, ClassesOfDoublesByTheirBits) {
  const struct {
    std::uint64_t bits;
    bool isNaN;
    bool isFinite;
  } cases[] = {
      {0x0000000000000000U, false, true},   // 0
      {0x8000000000000000U, false, true},   // -0
      {0x0000000000000001U, false, true},   // smallest subnormal
      {0x800FFFFFFFFFFFFFU, false, true},   // largest subnormal, negative
      {0x0010000000000000U, false, true},   // smallest normal
      {0x3FF0000000000000U, false, true},   // 1
      {0x7FEFFFFFFFFFFFFFU, false, true},   // largest
      {0x7FF0000000000000U, false, false},  // infinity
      {0xFFF0000000000000U, false, false},  // -infinity
      {0x7FF0000000000001U, true, false},   // signalling, smallest payload
      {0x7FF8000000000000U, true, false},   // quiet
      {0xFFFFFFFFFFFFFFFFU, true, false},   // quiet, negative
  };
  for (const auto& each : cases) {
    const auto value = FromBits<double>(each.bits);
    EXPECT_EQ(QZIsRealNaN(value), each.isNaN) << std::hex << each.bits;
    EXPECT_EQ(QZIsNormalNum(value), each.isFinite) << std::hex << each.bits;
  }
}

TEST(Number, ClassesOfFloatsByTheirBits) {
  const struct {
    std::uint32_t bits;
    bool isNaN;
  } cases[] = {
      {0x00000000U, false}, {0x80000001U, false}, {0x7F7FFFFFU, false}, {0x7F800000U, false}, {0xFF800000U, false},
      {0x7F800001U, true},  {0x7FC00000U, true},  {0xFF800001U, true},  {0xFFFFFFFFU, true},
  };
  for (const auto& each : cases) EXPECT_EQ(QZIsNaN(FromBits<float>(each.bits)), each.isNaN) << std::hex << each.bits;
}
