#pragma once

#include <cstdint>
#include <cstring>

/// Tests of floating-point numbers by their bits, so that they hold under -ffast-math too, where a compiler takes a
/// comparison with a not-a-number for impossible.
///
///     const double root = std::sqrt(sum);
///     if (!QZIsNormalNum(root)) return Fallback(sum);
///
/// Safe from any thread.
namespace QZPlatform {

/// True for a not-a-number, quiet or signalling, of either sign.
[[nodiscard]] inline bool QZIsNaN(float value) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return (bits & 0x7FFFFFFFU) > 0x7F800000U;
}

/// True for a not-a-number, quiet or signalling, of either sign.
[[nodiscard]] inline bool QZIsRealNaN(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return (bits & 0x7FFFFFFFFFFFFFFFU) > 0x7FF0000000000000U;
}

/// True for every finite number, zero and subnormal ones included; false for a not-a-number and for the infinities.
[[nodiscard]] inline bool QZIsNormalNum(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return (bits & 0x7FF0000000000000U) != 0x7FF0000000000000U;
}

}  // namespace QZPlatform
