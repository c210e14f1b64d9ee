#include "qz/system/util/colorgradient.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "qz/system/frame/error.h"
#include "qz/system/frame/iterempty.h"
#include "qz/system/frame/itervector.h"

namespace QZSystem {

namespace {

constexpr char noStop[] = "%s No color stop has been added!";
constexpr char lastStop[] = "%s Cannot delete last color stop";
constexpr char outOfRange[] = "%s %u index is out of range (0-%u)";
constexpr char deleteStop[] = "QZColorGradientBase::DeleteStop()";

constexpr double leastExponent = 0.1;
constexpr double greatestExponent = 10.0;

bool IsBelow(const QZColorStop& stop, double value) { return stop.value < value; }

/// How far t is on the way from lo to hi, which is above lo.
double Share(double lo, double t, double hi) {
  if (std::isfinite(hi - lo)) return (t - lo) / (hi - lo);
  // An end at an infinity, to which a transform may go, is infinitely far; t is amid two of them.
  if (std::isinf(lo)) return std::isinf(hi) ? 0.5 : 1;
  if (std::isinf(hi)) return 0;
  // The half of everything is within range.
  return (t / 2 - lo / 2) / (hi / 2 - lo / 2);
}

unsigned int Between(unsigned int c, unsigned int d, double share) {
  const double from = c;
  const double to = d;
  return static_cast<unsigned int>(d < c ? to + (from - to) * (1 - share) : from + share * (to - from));
}

}  // namespace

QZColorGradientBase::QZColorGradientBase(const QZColorStop& first, const QZColorStop& second) : stops{first, second} {
  if (!(second.value > first.value)) std::swap(stops[0], stops[1]);
}

double QZColorGradientBase::GetMinValue() const {
  return IsEmpty() ? std::numeric_limits<double>::lowest() : stops.front().value;
}

double QZColorGradientBase::GetMaxValue() const {
  return IsEmpty() ? std::numeric_limits<double>::max() : stops.back().value;
}

const QZColor& QZColorGradientBase::GetMinColor() const { return IsEmpty() ? QZBlack : stops.front().color; }

const QZColor& QZColorGradientBase::GetMaxColor() const { return IsEmpty() ? QZBlack : stops.back().color; }

QZIterBase<QZColorStop>* QZColorGradientBase::GetStops() const {
  if (IsEmpty()) return new QZEmptyIter<QZColorStop>;
  return new QZCacheIter<QZColorStop>(stops);
}

bool QZColorGradientBase::AddStop(const QZColorStop& stop) {
  const auto place = std::lower_bound(stops.begin(), stops.end(), stop.value, IsBelow);
  if (std::isnan(stop.value) || (place != stops.end() && place->value == stop.value)) return false;
  stops.insert(place, QZColorStop(stop));
  return true;
}

bool QZColorGradientBase::DeleteStop(unsigned int index) {
  if (IsEmpty()) {
    QZThrow.Warning(noStop, deleteStop);
  } else if (NumStops() == 1) {
    QZThrow.Warning(lastStop, deleteStop);
  } else if (index >= NumStops()) {
    QZThrow.Warning(outOfRange, deleteStop, index, NumStops() - 1);
  } else {
    stops.erase(stops.begin() + index);
    return true;
  }
  return false;
}

// The pair is found by the values themselves, so that only three transforms are needed. Values so near that the
// transform doesn't tell them apart, or so large that it gives infinities, make stops of one place; the first of them
// counts, as in a walk over all pairs.
QZColor QZColorGradientBase::GetColorAt(double value) const {
  if (IsEmpty()) return QZBlack;
  if (value <= stops.front().value) return stops.front().color;
  if (value >= stops.back().value) return stops.back().color;
  auto second = std::lower_bound(stops.begin(), stops.end(), value, IsBelow);
  if (std::isnan(value) || second == stops.begin() || second == stops.end()) return QZWhite;
  auto first = second - 1;
  double lo = TransformValue(first->value);
  double hi = TransformValue(second->value);
  if (std::isnan(lo) || std::isnan(hi)) return QZWhite;
  const double t = std::clamp(TransformValue(value), lo, hi);
  while (lo == t && first != stops.begin()) {
    second = first--;
    hi = lo;
    lo = TransformValue(first->value);
  }
  if (t == lo) return first->color;
  if (t == hi) return second->color;
  const double share = Share(lo, t, hi);
  const QZColor& c = first->color;
  const QZColor& d = second->color;
  return {Between(c.GetR(), d.GetR(), share), Between(c.GetG(), d.GetG(), share), Between(c.GetB(), d.GetB(), share),
          Between(c.GetA(), d.GetA(), share)};
}

double QZLinearColorGradient::TransformValue(double value) const { return value; }

double QZExponentialColorGradient::TransformValue(double value) const {
  return value < 0 ? 1 - std::exp(-value) : std::exp(value) - 1;
}

double QZLogarithmicColorGradient::TransformValue(double value) const {
  return value < 0 ? -std::log(1 - value) : std::log(value + 1);
}

double QZExponentColorGradient::TransformValue(double value) const {
  if (exponent == 1.0) return value;
  return value < 0 ? -std::pow(-value, exponent) : std::pow(value, exponent);
}

void QZExponentColorGradient::SetExponent(double power) {
  exponent = power >= greatestExponent ? greatestExponent : power > leastExponent ? power : leastExponent;
}

QZIterBase<QZColor>* QZGetColors(const QZColor& first, const QZColor& last, unsigned int count) {
  if (count == 0) return new QZEmptyIter<QZColor>;
  if (count == 1) return QZGetColors({first});
  if (count == 2) return QZGetColors({first, last});
  const QZLinearColorGradient blend(QZColorStop(1.0, first), QZColorStop(count, last));
  std::vector<QZColor> colors;
  colors.reserve(count);
  for (double value = 1; value <= count; ++value) colors.push_back(blend.GetColorAt(value));
  return new QZCacheIter<QZColor>(std::move(colors));
}

}  // namespace QZSystem
