#pragma once

#include <algorithm>
#include <cmath>

/// One-liners on numbers.
///
///     if (QZInBitField(flags, HasCharges)) ReadCharges();
///     if (QZFloatCompare(sum, 1.0, 1e-9)) return true;
///     const double y = QZLinearInterpolation(2.5, 2.0, 3.0, 10.0, 20.0);  // 15
///
/// Safe from any thread.
namespace QZSystem {

/// Whether `a` and `b` have a bit in common.
[[nodiscard]] constexpr bool QZInBitField(unsigned int a, unsigned int b) { return (a & b) != 0; }

/// Whether at most one bit of `value` is set; for 0, which isn't a power, the answer is `zeroCounts`.
[[nodiscard]] constexpr bool QZBitIsPowerOf2(unsigned int value, bool zeroCounts) {
  return (value & (value - 1)) == 0 && (value != 0 || zeroCounts);
}

/// Whether `a` and `b` differ by at most `tolerance`, or by at most `tolerance` times the larger of their magnitudes.
/// False if any of the three is a not-a-number.
[[nodiscard]] inline bool QZFloatCompare(double a, double b, double tolerance) {
  const double difference = std::abs(a - b);
  return difference <= tolerance || difference <= tolerance * std::max(std::abs(a), std::abs(b));
}
[[nodiscard]] inline bool QZFloatCompare(float a, float b, float tolerance) {
  const float difference = std::abs(a - b);
  return difference <= tolerance || difference <= tolerance * std::max(std::abs(a), std::abs(b));
}

/// The value at `x` of the line through (`x0`, `y0`) and (`x1`, `y1`), also outside the two. Where `x0` equals `x1` it
/// is an infinity or a not-a-number.
[[nodiscard]] inline double QZLinearInterpolation(const double& x, const double& x0, const double& x1, const double& y0,
                                                  const double& y1) {
  return (x - x0) * (y1 - y0) / (x1 - x0) + y0;
}

/// The value at (`x`, `y`) of the bilinear surface through four corners. The corner values stand diagonal first:
/// `v11` at (`x1`, `y1`), `v22` at (`x2`, `y2`), then `v12` at (`x1`, `y2`) and `v21` at (`x2`, `y1`).
[[nodiscard]] inline double QZ2DLinearInterpolation(const double& x1, const double& y1, const double& x2,
                                                    const double& y2, const double& v11, const double& v22,
                                                    const double& v12, const double& v21, const double& x,
                                                    const double& y) {
  const double atY1 = QZLinearInterpolation(x, x1, x2, v11, v21);
  const double atY2 = QZLinearInterpolation(x, x1, x2, v12, v22);
  return QZLinearInterpolation(y, y1, y2, atY1, atY2);
}

}  // namespace QZSystem
