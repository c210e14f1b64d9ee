#pragma once

#include <cstdint>
#include <cstring>

#include "qz/dataflow/names.h"

/// What the two buffers share of the byte forms.
namespace QZDataFlow::BufferImpl {

/// "No value" of an integer, a length, a bool, a string or a blob, in the place of the head byte. A head byte above it
/// announces that many bytes.
inline constexpr unsigned char kNone = 0x80;

/// Whether a head byte announces the bytes of an integer behind it, 1 to 8 of them, and so isn't a value or a marker.
constexpr bool IsMeasured(unsigned char head) { return head > kNone && head <= kNone + 8; }

/// "No value" of a float, the bits of a quiet NaN.
inline constexpr std::uint64_t kNoFloat = 0x7FF80E0000000000;

inline std::uint64_t BitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

}  // namespace QZDataFlow::BufferImpl
