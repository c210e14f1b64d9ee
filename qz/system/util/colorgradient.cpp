#include "qz/system/util/colorgradient.h"

#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <typeinfo>

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

/// The first of the stops that isn't below the value, or the end. It halves what is left without a branch, which no
/// processor could foresee (Khuong and Morin 2017, Array layouts for comparison-based searching), and of the last few
/// looks at all, since none of these comparisons waits for another. A stop that isn't a number, which a gradient of two
/// may begin with, counts with those below.
const QZColorStop* FirstNotBelow(const std::vector<QZColorStop>& stops, double value) {
  constexpr std::size_t few = 8;
  const QZColorStop* at = stops.data();
  std::size_t left = stops.size();
  while (left > few) {
    const std::size_t half = left / 2;
    const QZColorStop* const next = at + half;
    at = __builtin_expect_with_probability(IsBelow(next[-1], value), true, 0.5) ? next : at;
    left -= half;
  }
  std::size_t below = 0;
  for (std::size_t i = 0; i < left; ++i) below = IsBelow(at[i], value) ? i + 1 : below;
  return at + below;
}

// The channels as four integers.
__m128i ChannelsOf(const QZColor& color) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i bytes = _mm_cvtsi32_si128(static_cast<int>(color.GetPackedColor()));
  return _mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero);
}

// lower + span * fraction, cut towards zero, of the first two channels.
__m128i Place(__m128i lower, __m128i span, __m128d fraction) {
  return _mm_cvttpd_epi32(_mm_add_pd(_mm_cvtepi32_pd(lower), _mm_mul_pd(_mm_cvtepi32_pd(span), fraction)));
}

__m128i UpperHalf(__m128i channels) { return _mm_unpackhi_epi64(channels, channels); }

/// The colour that lies a share of the way from c to d. Channels that fall are counted from d.
QZColor Between(const QZColor& c, const QZColor& d, double share) {
  const __m128i from = ChannelsOf(c);
  const __m128i to = ChannelsOf(d);
  const __m128i falls = _mm_cmplt_epi32(to, from);
  const __m128i difference = _mm_sub_epi32(to, from);
  const __m128i span = _mm_sub_epi32(_mm_xor_si128(difference, falls), falls);
  const __m128i lower = _mm_add_epi32(from, _mm_and_si128(difference, falls));
  const __m128d rising = _mm_set1_pd(share);
  const __m128d change = _mm_xor_pd(rising, _mm_set1_pd(1 - share));
  const auto fraction = [&](__m128i mask) { return _mm_xor_pd(rising, _mm_and_pd(change, _mm_castsi128_pd(mask))); };
  const __m128i places =
      _mm_unpacklo_epi64(Place(lower, span, fraction(_mm_unpacklo_epi32(falls, falls))),
                         Place(UpperHalf(lower), UpperHalf(span), fraction(_mm_unpackhi_epi32(falls, falls))));
  const __m128i words = _mm_packs_epi32(places, places);
  return QZColor(static_cast<unsigned int>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words))));
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
  const QZColorStop* second = FirstNotBelow(stops, value);
  if (std::isnan(value) || second == stops.data() || second == stops.data() + stops.size()) return QZWhite;
  const QZColorStop* first = second - 1;
  // The straight axis, which most gradients have, costs no calls.
  const bool isStraight = &typeid(*this) == &typeid(QZLinearColorGradient);
  const auto placeOf = [&](double number) { return isStraight ? number : TransformValue(number); };
  double lo = placeOf(first->value);
  double hi = placeOf(second->value);
  if (std::isnan(lo) || std::isnan(hi)) return QZWhite;
  double t = placeOf(value);
  t = t < lo ? lo : t > hi ? hi : t;
  while (lo == t && first != stops.data()) {
    second = first--;
    hi = lo;
    lo = placeOf(first->value);
  }
  if (t == lo) return first->color;
  if (t == hi) return second->color;
  return Between(first->color, second->color, Share(lo, t, hi));
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
