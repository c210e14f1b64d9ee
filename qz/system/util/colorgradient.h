#pragma once

#include <vector>

#include "qz/system/frame/iterbase.h"
#include "qz/system/util/color.h"

namespace QZSystem {

/// A colour at a place on the number axis.
struct QZColorStop {
  QZColorStop(double stopValue, const QZColor& stopColor) : value(stopValue), color(stopColor) {}

  double value;
  QZColor color;
};

/// A mapping of numbers to colours: between two stops the colour goes over from the one to the other, all four channels
/// each for itself. The derived classes differ in how they bend the axis in between.
///
///     QZLogarithmicColorGradient heat(QZColorStop(0, QZBlue), QZColorStop(1e6, QZRed));
///     heat.AddStop(QZColorStop(1000, QZYellow));
///     atom.SetColor(heat.GetColorAt(atom.GetCharge()));
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZColorGradientBase {
 public:
  virtual ~QZColorGradientBase() = default;

  /// The place of a value on the bent axis. An override must be odd and rise, so that the stops keep their order.
  [[nodiscard]] virtual double TransformValue(double value) const = 0;

  [[nodiscard]] unsigned int NumStops() const { return static_cast<unsigned int>(stops.size()); }
  [[nodiscard]] bool IsEmpty() const { return stops.empty(); }

  /// The values of the first and the last stop; without any the least and the greatest finite number.
  [[nodiscard]] double GetMinValue() const;
  [[nodiscard]] double GetMaxValue() const;
  /// Their colours; without any QZBlack. The references are good until a stop is added or deleted.
  [[nodiscard]] const QZColor& GetMinColor() const;
  [[nodiscard]] const QZColor& GetMaxColor() const;
  /// A copy of the stops, by rising value. The caller deletes the iterator.
  [[nodiscard]] QZIterBase<QZColorStop>* GetStops() const;

  /// Puts a stop in its place. False, with nothing changed, if there is one of the same value, or for NaN.
  bool AddStop(const QZColorStop& stop);

  /// Deletes the stop at an index from 0. False after a Warning: "%s No color stop has been added!", "%s Cannot delete
  /// last color stop", or "%s %d index is out of range (0-%d)", where %s is "QZColorGradientBase::DeleteStop()".
  bool DeleteStop(unsigned int index);

  /// The colour at a value: that of the first stop at and below it, of the last at and above it, and exactly that of a
  /// stop on its value. In between channels are rounded down. Black without stops, white for NaN. Cost: logarithmic in
  /// the number of stops, and three transforms.
  [[nodiscard]] QZColor GetColorAt(double value) const;

 protected:
  QZColorGradientBase() = default;
  explicit QZColorGradientBase(const QZColorStop& stop) : stops{stop} {}
  /// In order of value. Two stops of one value are both kept, the second before the first.
  QZColorGradientBase(const QZColorStop& first, const QZColorStop& second);
  QZColorGradientBase(const QZColorGradientBase&) = default;
  QZColorGradientBase& operator=(const QZColorGradientBase&) = default;

 private:
  std::vector<QZColorStop> stops;
};

/// The axis as it is.
class QZLinearColorGradient : public QZColorGradientBase {
 public:
  QZLinearColorGradient() = default;
  explicit QZLinearColorGradient(const QZColorStop& stop) : QZColorGradientBase(stop) {}
  QZLinearColorGradient(const QZColorStop& first, const QZColorStop& second) : QZColorGradientBase(first, second) {}

  [[nodiscard]] double TransformValue(double value) const override;
};

/// exp(x) - 1, mirrored for negative values: colours change late.
class QZExponentialColorGradient : public QZColorGradientBase {
 public:
  QZExponentialColorGradient() = default;
  explicit QZExponentialColorGradient(const QZColorStop& stop) : QZColorGradientBase(stop) {}
  QZExponentialColorGradient(const QZColorStop& first, const QZColorStop& second)
      : QZColorGradientBase(first, second) {}

  [[nodiscard]] double TransformValue(double value) const override;
};

/// ln(x + 1), mirrored for negative values: colours change early.
class QZLogarithmicColorGradient : public QZColorGradientBase {
 public:
  QZLogarithmicColorGradient() = default;
  explicit QZLogarithmicColorGradient(const QZColorStop& stop) : QZColorGradientBase(stop) {}
  QZLogarithmicColorGradient(const QZColorStop& first, const QZColorStop& second)
      : QZColorGradientBase(first, second) {}

  [[nodiscard]] double TransformValue(double value) const override;
};

/// A power of x, mirrored for negative values: above 1 colours change late, below 1 early. The exponent is limited to
/// 0.1 to 10.
class QZExponentColorGradient : public QZColorGradientBase {
 public:
  explicit QZExponentColorGradient(double power) { SetExponent(power); }
  QZExponentColorGradient(double power, const QZColorStop& stop) : QZColorGradientBase(stop) { SetExponent(power); }
  QZExponentColorGradient(double power, const QZColorStop& first, const QZColorStop& second)
      : QZColorGradientBase(first, second) {
    SetExponent(power);
  }

  [[nodiscard]] double TransformValue(double value) const override;

  /// Values outside are limited; NaN counts as 0.1.
  void SetExponent(double power);
  [[nodiscard]] double GetExponent() const { return exponent; }

 private:
  double exponent = 1.0;
};

/// A blend from one colour to another in so many steps, both ends included; one alone is the first. The caller deletes
/// the iterator.
[[nodiscard]] QZIterBase<QZColor>* QZGetColors(const QZColor& first, const QZColor& last, unsigned int count);

}  // namespace QZSystem
