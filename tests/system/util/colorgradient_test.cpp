#include "qz/system/util/colorgradient.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "qz/system/frame/iterowner.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();

const QZColorStop black(0, QZBlack);
const QZColorStop white(100, QZWhite);

std::vector<double> Values(const QZColorGradientBase& gradient) {
  std::vector<double> values;
  for (const QZColorStop& stop : QZIter(gradient.GetStops())) values.push_back(stop.value);
  return values;
}

/// A walk over all pairs of neighbours, as the colour at a value is defined.
QZColor ByWalk(const QZColorGradientBase& gradient, double value) {
  std::vector<QZColorStop> stops;
  for (const QZColorStop& stop : QZIter(gradient.GetStops())) stops.push_back(stop);
  if (value <= stops.front().value) return stops.front().color;
  if (value >= stops.back().value) return stops.back().color;
  const double t = gradient.TransformValue(value);
  for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
    const double lo = gradient.TransformValue(stops[i].value);
    const double hi = gradient.TransformValue(stops[i + 1].value);
    if (!(lo <= t && t <= hi)) continue;
    if (t == lo) return stops[i].color;
    if (t == hi) return stops[i + 1].color;
    const double f = (t - lo) / (hi - lo);
    const auto between = [f](unsigned int c, unsigned int d) {
      const double from = c, to = d;
      return static_cast<unsigned int>(std::floor(to < from ? to + (from - to) * (1 - f) : from + f * (to - from)));
    };
    const QZColor &c = stops[i].color, &d = stops[i + 1].color;
    return {between(c.GetR(), d.GetR()), between(c.GetG(), d.GetG()), between(c.GetB(), d.GetB()),
            between(c.GetA(), d.GetA())};
  }
  return QZWhite;
}

template <class Gradient>
void ExpectAsByWalk(Gradient gradient, const std::vector<double>& stops, const std::vector<double>& values) {
  unsigned int i = 0;
  for (const double stop : stops) {
    i = (i * 97 + 31) % 256;
    gradient.AddStop(QZColorStop(stop, QZColor(i, 255 - i, i * i % 256, i / 2)));
  }
  for (const double value : values) {
    EXPECT_EQ(gradient.GetColorAt(value).GetText(true), ByWalk(gradient, value).GetText(true))
        << value << " with an exponent " << gradient.TransformValue(2);
  }
}

TEST(ColorGradient, ColorIsThatOfAWalkOverAllPairs) {
  std::mt19937 random(5);
  std::vector<double> stops, values;
  for (int i = 0; i < 16; ++i) stops.push_back(0.25 * (static_cast<int>(random() % 200) - 100));
  for (int i = -120; i <= 120; ++i) values.push_back(0.125 * i + 1e-3 * static_cast<double>(random() % 10));
  values.insert(values.end(), stops.begin(), stops.end());
  values.insert(values.end(), {0.0, -0.0, infinity, -infinity, std::nan("")});
  ExpectAsByWalk(QZLinearColorGradient(), stops, values);
  ExpectAsByWalk(QZExponentialColorGradient(), stops, values);
  ExpectAsByWalk(QZLogarithmicColorGradient(), stops, values);
  for (const double exponent : {0.1, 0.5, 1.0, 3.0, 10.0})
    ExpectAsByWalk(QZExponentColorGradient(exponent), stops, values);
  // Stops that the transform doesn't tell apart.
  const std::vector<double> far{1, 800, 900, 1000, 2000}, near{0, 1e-30, 2e-30, 3e-30, 1};
  ExpectAsByWalk(QZExponentialColorGradient(), far, {700, 750, 800, 850, 900, 950, 1000, 1500});
  ExpectAsByWalk(QZExponentialColorGradient(), near, {1e-31, 1e-30, 1.5e-30, 2e-30, 2.5e-30, 0.5});
}

TEST(ColorGradient, ValuesFarApartStayInBounds) {
  const QZColorStop low(-largest, QZBlack), high(largest, QZWhite);
  EXPECT_EQ(QZLinearColorGradient(low, high).GetColorAt(0), QZColor(127, 127, 127));
  EXPECT_EQ(QZLinearColorGradient(low, high).GetColorAt(largest / 2), QZColor(191, 191, 191));
  EXPECT_EQ(QZExponentialColorGradient(low, high).GetColorAt(0), QZColor(127, 127, 127));
  EXPECT_EQ(QZExponentialColorGradient(black, high).GetColorAt(5), QZBlack);
  EXPECT_EQ(QZExponentColorGradient(10, low, high).GetColorAt(-1e300), QZBlack);
  EXPECT_EQ(QZExponentialColorGradient(QZColorStop(-largest, QZRed), black).GetColorAt(-5), QZBlack);
  EXPECT_EQ(QZLinearColorGradient(QZColorStop(-infinity, QZRed), white).GetColorAt(5), QZWhite);
  EXPECT_EQ(QZLinearColorGradient(black, QZColorStop(infinity, QZRed)).GetColorAt(5), QZBlack);
  QZLinearColorGradient odd(QZColorStop(std::nan(""), QZRed), QZColorStop(5, QZBlue));
  EXPECT_EQ(odd.GetColorAt(7), QZWhite);
  QZLinearColorGradient grown(QZColorStop(5, QZBlack), QZColorStop(std::nan(""), QZRed));
  EXPECT_TRUE(grown.AddStop(QZColorStop(9, QZWhite)));
  EXPECT_EQ(grown.GetColorAt(7), QZColor(127, 127, 127));
}

TEST(ColorGradient, TransformsAreOddAndRise) {
  for (const double value : {0.0, 1.0, 2.5}) {
    for (const double sign : {1.0, -1.0}) {
      const double x = sign * value;
      EXPECT_EQ(QZLinearColorGradient().TransformValue(x), x);
      EXPECT_EQ(QZExponentialColorGradient().TransformValue(x), sign * (std::exp(value) - 1)) << value;
      EXPECT_EQ(QZLogarithmicColorGradient().TransformValue(x), sign * std::log(value + 1)) << value;
      EXPECT_EQ(QZExponentColorGradient(3).TransformValue(x), x * x * x) << value;
    }
  }
}

TEST(ColorGradient, ExponentIsLimited) {
  const std::pair<double, double> cases[] = {{0.01, 0.1}, {50, 10},  {10, 10},       {0.1, 0.1},
                                             {2, 2},      {-3, 0.1}, {infinity, 10}, {std::nan(""), 0.1}};
  for (const auto& [given, kept] : cases) {
    EXPECT_EQ(QZExponentColorGradient(given).GetExponent(), kept) << given;
    QZExponentColorGradient gradient(5, black);
    gradient.SetExponent(given);
    EXPECT_EQ(gradient.GetExponent(), kept) << given;
  }
}

TEST(ColorGradient, StopsAreKeptInOrderAndOnce) {
  QZLinearColorGradient gradient;
  EXPECT_TRUE(gradient.IsEmpty());
  EXPECT_EQ(gradient.GetMinValue(), -largest);
  EXPECT_EQ(gradient.GetMaxValue(), largest);
  EXPECT_EQ(&gradient.GetMinColor(), &QZBlack);
  EXPECT_EQ(gradient.GetColorAt(1), QZBlack);
  EXPECT_EQ(Values(gradient), std::vector<double>());
  for (const double value : {5.0, 1.0, 9.0, 3.0}) EXPECT_TRUE(gradient.AddStop(QZColorStop(value, QZRed)));
  EXPECT_FALSE(gradient.AddStop(QZColorStop(3, QZBlue)));
  EXPECT_FALSE(gradient.AddStop(QZColorStop(std::nan(""), QZBlue)));
  EXPECT_EQ(Values(gradient), (std::vector<double>{1, 3, 5, 9}));
  EXPECT_EQ(gradient.GetColorAt(3), QZRed);
  EXPECT_EQ(gradient.GetMaxValue(), 9);
  EXPECT_EQ(Values(QZLinearColorGradient(QZColorStop(2, QZRed), QZColorStop(2, QZBlue))), (std::vector<double>{2, 2}));
  EXPECT_EQ(QZLinearColorGradient(QZColorStop(2, QZRed), QZColorStop(2, QZBlue)).GetMinColor(), QZBlue);
  EXPECT_EQ(QZLinearColorGradient(white, black).GetColorAt(50), QZColor(127, 127, 127));
  const QZLinearColorGradient one(QZColorStop(2, QZGreen));
  for (const double value : {-infinity, 1.0, 2.0, 3.0, infinity}) EXPECT_EQ(one.GetColorAt(value), QZGreen) << value;
}

TEST(ColorGradient, StopsAreDeletedToTheLastButOne) {
  Messages messages;
  QZLogarithmicColorGradient gradient;
  const std::string name = "Warning: QZColorGradientBase::DeleteStop() ";
  EXPECT_FALSE(gradient.DeleteStop(0));
  EXPECT_EQ(messages.Take(), name + "No color stop has been added!\n");
  gradient = QZLogarithmicColorGradient(black, white);
  gradient.AddStop(QZColorStop(50, QZRed));
  EXPECT_FALSE(gradient.DeleteStop(3));
  EXPECT_EQ(messages.Take(), name + "3 index is out of range (0-2)\n");
  EXPECT_TRUE(gradient.DeleteStop(1));
  EXPECT_EQ(Values(gradient), (std::vector<double>{0, 100}));
  EXPECT_TRUE(gradient.DeleteStop(0));
  EXPECT_FALSE(gradient.DeleteStop(5));
  EXPECT_EQ(messages.Take(), name + "Cannot delete last color stop\n");
  EXPECT_EQ(gradient.NumStops(), 1U);
}

TEST(ColorGradient, BlendGoesFromEndToEnd) {
  const auto blend = [](unsigned int count) {
    std::string texts;
    for (const QZColor& color : QZIter(QZGetColors(QZColor(0, 0, 0, 0), QZColor(255, 100, 1), count))) {
      texts += color.GetText(true);
    }
    return texts;
  };
  EXPECT_EQ(blend(0), "");
  EXPECT_EQ(blend(1), "#00000000");
  EXPECT_EQ(blend(2), "#00000000#ff6401ff");
  EXPECT_EQ(blend(3), "#00000000#7f32007f#ff6401ff");
  EXPECT_EQ(blend(6), "#00000000#33140033#66280066#993c0099#cc5000cc#ff6401ff");
}

}  // namespace
}  // namespace QZSystem
