#pragma once

#include <cstdint>

namespace QZPlatform {

/// A 16-bit floating-point number that is carried and not computed with: two bytes, zero by default.
///
///     QZHalfFloat one;
///     one.bits = 0x3C00;          // 1.0 in IEEE 754 binary16
///     std::vector<QZHalfFloat> values(100, one);
///
/// Const operations may run in parallel; a change needs exclusive access.
struct QZHalfFloat {
  std::uint16_t bits = 0;  ///< in the byte order of the machine

  /// Compares the bits: a not-a-number equals itself, and the two zeros differ.
  friend bool operator==(QZHalfFloat a, QZHalfFloat b) { return a.bits == b.bits; }
  friend bool operator!=(QZHalfFloat a, QZHalfFloat b) { return a.bits != b.bits; }
};

static_assert(sizeof(QZHalfFloat) == 2 && alignof(QZHalfFloat) == 2, "stored in files as two bytes");

}  // namespace QZPlatform
