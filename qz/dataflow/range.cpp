#include "qz/dataflow/range.h"

#include <cmath>

#include "qz/platform/numbertext.h"
#include "qz/system/frame/error.h"
#include "qz/system/text/stringnumber.h"

namespace QZDataFlow {

namespace {

constexpr char kLowIsNaN[] = "Invalid value for constructing an QZRange. Lower bound cannot be NaN";
constexpr char kHighIsNaN[] = "Invalid value for constructing an QZRange. Upper bound cannot be NaN";
constexpr char kVectorLength[] = "Invalid vector for constructing an QZRange. Must have a length of 3.";
constexpr char kVectorLowIsNaN[] = "Invalid vector for constructing an QZRange. Lower bound cannot be NaN";
constexpr char kVectorHighIsNaN[] = "Invalid vector for constructing an QZRange. Upper bound cannot be NaN";
constexpr char kInclusivityText[] = "Invalid QZRange inclusivity-string specified: ";
constexpr char kInclusivity[] = "Invalid QZRange inclusivity specified: ";
constexpr char kLowAboveHigh[] = "Invalid QZRange specified, with low value > high value: (";
constexpr char kWillDefault[] = ") will default initialize";

constexpr const char* kInclusivityNames[] = {"[]", "()", "[)", "(]"};
constexpr unsigned int kInclusivityCount = 4;

constexpr double kLargest = std::numeric_limits<double>::max();

/// Cuts the fraction off. What no inclusivity can be, NaN and large or negative numbers, comes out as the largest one.
unsigned int Truncate(double value) {
  constexpr unsigned int kNone = std::numeric_limits<unsigned int>::max();
  return value > -1.0 && value < kNone ? static_cast<unsigned int>(value) : kNone;
}

std::string Shortest(double value) {
  char room[QZShortestRoom];
  return std::string(QZPrintShortest(value, room));
}

}  // namespace

QZRange::QZRange(const std::optional<double>& lowBound, const std::optional<double>& highBound,
                 unsigned int inclusive) {
  if (lowBound && std::isnan(*lowBound)) {
    QZThrow.Warning(kLowIsNaN);
    return;
  }
  if (highBound && std::isnan(*highBound)) {
    QZThrow.Warning(kHighIsNaN);
    return;
  }
  if (lowBound) low = *lowBound;
  if (highBound) high = *highBound;
  inclusivity = inclusive;
  EnforceInvariant();
}

QZRange::QZRange(const std::vector<double>& bounds) {
  if (bounds.size() != 3) {
    QZThrow.Warning(kVectorLength);
  } else if (std::isnan(bounds[0])) {
    QZThrow.Warning(kVectorLowIsNaN);
  } else if (std::isnan(bounds[1])) {
    QZThrow.Warning(kVectorHighIsNaN);
  } else {
    low = bounds[0];
    high = bounds[1];
    inclusivity = Truncate(bounds[2]);
    EnforceInvariant();
  }
}

unsigned int QZRange::CheckedInclusivity(const std::string& text) {
  for (unsigned int i = 0; i < kInclusivityCount; ++i) {
    if (text == kInclusivityNames[i]) return i;
  }
  QZThrow.Warning(kInclusivityText + text);
  return 0;
}

std::string QZRange::GetInclusivityString() const {
  return kInclusivityNames[inclusivity < kInclusivityCount ? inclusivity : 0];
}

// A NaN that a caller put into a member counts as no lower bound.
bool QZRange::IsUnboundedLow() const { return !(low > -kLargest); }

bool QZRange::IsUnboundedHigh() const { return high >= kLargest; }

bool QZRange::operator==(const QZRange& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return low == other.low && high == other.high && inclusivity == other.inclusivity;
}

std::vector<double> QZRange::GetAsVector() const { return {low, high, static_cast<double>(inclusivity)}; }

void QZRange::EnforceInvariant() {
  if (inclusivity >= kInclusivityCount) {
    QZThrow.Warning(kInclusivity + QZNumberToString(inclusivity));
    inclusivity = 0;
  } else if (IsEmpty()) {
    inclusivity = 0;
  }
  if (low > high) {
    QZThrow.Warning(kLowAboveHigh + Shortest(low) + "," + Shortest(high) + kWillDefault);
    *this = QZRange();
  }
}

}  // namespace QZDataFlow
