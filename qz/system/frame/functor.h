#pragma once

namespace QZSystem {

/// A function of one argument as an object that can be passed by base and copied without knowing its class. The two
/// flags say that the argument is taken by const reference and that the call doesn't change the object; both are true
/// for every function of the toolkit.
///
///     class IsHidden : public QZUnaryPredicate<QZParameter> {
///      public:
///       bool operator()(const QZParameter& p) const override { return p.GetHidden(); }
///       IsHidden* CreateCopy() const override { return new IsHidden(*this); }
///     };
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class A, class R, bool ConstArgument = true, bool ConstCall = true>
class QZUnaryFunction {
  static_assert(ConstArgument && ConstCall, "functions take const arguments and are const themselves");

 public:
  using argument_type = A;
  using result_type = R;

  virtual ~QZUnaryFunction() = default;

  /// The value of the function at `a`.
  virtual R operator()(const A& a) const = 0;

  /// A new function object that gives the same results; the caller deletes it.
  [[nodiscard]] virtual QZUnaryFunction* CreateCopy() const = 0;

 protected:
  QZUnaryFunction() = default;
  QZUnaryFunction(const QZUnaryFunction&) = default;
  QZUnaryFunction& operator=(const QZUnaryFunction&) = default;
};

/// A function of two arguments; all else as in `QZUnaryFunction`.
///
///     class ByName : public QZBinaryPredicate<QZParameter, QZParameter> {
///      public:
///       bool operator()(const QZParameter& a, const QZParameter& b) const override { return a.GetName() < b.GetName();
///       } ByName* CreateCopy() const override { return new ByName(*this); }
///     };
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class A, class B, class R, bool ConstArguments = true, bool ConstCall = true>
class QZBinaryFunction {
  static_assert(ConstArguments && ConstCall, "functions take const arguments and are const themselves");

 public:
  using first_argument_type = A;
  using second_argument_type = B;
  using result_type = R;

  virtual ~QZBinaryFunction() = default;

  /// The value of the function at `a` and `b`.
  virtual R operator()(const A& a, const B& b) const = 0;

  /// A new function object that gives the same results; the caller deletes it.
  [[nodiscard]] virtual QZBinaryFunction* CreateCopy() const = 0;

 protected:
  QZBinaryFunction() = default;
  QZBinaryFunction(const QZBinaryFunction&) = default;
  QZBinaryFunction& operator=(const QZBinaryFunction&) = default;
};

/// A yes-or-no question about one object: base of the selections. Const operations may run in parallel; a change
/// needs exclusive access.
template <class A>
class QZUnaryPredicate : public QZUnaryFunction<A, bool, true, true> {};

/// A yes-or-no question about two objects: base of the orders, which say whether the first sorts strictly before the
/// second. Const operations may run in parallel; a change needs exclusive access.
template <class A, class B>
class QZBinaryPredicate : public QZBinaryFunction<A, B, bool, true, true> {};

}  // namespace QZSystem
