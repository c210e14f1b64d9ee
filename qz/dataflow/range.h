#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "qz/dataflow/names.h"

namespace QZDataFlow {

/// An interval of doubles, each side of which may be without a bound.
///
///     const QZRange range(0.5, std::nullopt, QZRange::CheckedInclusivity("(]"));
///     if (range.IsValid() && !range.IsUnboundedLow()) from = range.low;
///
/// The constructors and EnforceInvariant leave a range whose inclusivity is at most 3, whose `low` isn't above `high`,
/// without NaN, and without inclusivity where there is no bound. What breaks that gives a warning and the default
/// range. Const operations may run in parallel; a change needs exclusive access.
class QZRange {
 public:
  /// Minus infinity for no lower bound.
  double low = -std::numeric_limits<double>::infinity();
  /// Plus infinity for no upper bound.
  double high = std::numeric_limits<double>::infinity();
  /// 0 for "[]", 1 for "()", 2 for "[)", 3 for "(]".
  unsigned int inclusivity = 0;

  /// No bounds.
  QZRange() = default;
  /// No value stands for no bound. A NaN gives the warning "Invalid value for constructing an QZRange. Lower bound
  /// cannot be NaN", or "Upper", and the default range.
  QZRange(const std::optional<double>& lowBound, const std::optional<double>& highBound, unsigned int inclusive = 0);
  /// From low, high and inclusivity, as GetAsVector gives them; the last is truncated. Another length gives the warning
  /// "Invalid vector for constructing an QZRange. Must have a length of 3.", a NaN "Invalid vector for constructing an
  /// QZRange. Lower bound cannot be NaN", or "Upper", and the default range.
  explicit QZRange(const std::vector<double>& bounds);

  /// The number for "[]", "()", "[)" or "(]". For any other text 0, after the warning "Invalid QZRange
  /// inclusivity-string specified: " with the text.
  static unsigned int CheckedInclusivity(const std::string& text);
  /// The two characters of the inclusivity; "[]" for a number above 3.
  std::string GetInclusivityString() const;

  bool IsUnboundedLow() const;
  bool IsUnboundedHigh() const;
  /// Whether the range says nothing: no bound on either side.
  bool IsEmpty() const { return IsUnboundedLow() && IsUnboundedHigh(); }
  /// Whether there is a bound, and high is at least low.
  bool IsValid() const { return !IsEmpty() && high >= low; }
  /// Two empty ranges are equal; others when all three members match.
  bool operator==(const QZRange& other) const;
  bool operator!=(const QZRange& other) const { return !(*this == other); }
  /// Low, high and the inclusivity.
  std::vector<double> GetAsVector() const;

  /// Mends what a change of the members may have broken. An inclusivity above 3 becomes 0 after the warning "Invalid
  /// QZRange inclusivity specified: " with the number. A low above high gives "Invalid QZRange specified, with low
  /// value > high value: (low,high) will default initialize" with the numbers, and the default range.
  void EnforceInvariant();
};

}  // namespace QZDataFlow
