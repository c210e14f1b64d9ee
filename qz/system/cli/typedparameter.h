#pragma once

#include <deque>
#include <string>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/system/cli/parameter.h"
#include "qz/system/data/types.h"

namespace QZSystem {

/// A parameter whose values are of type T: beside the texts of QZParameter it keeps the converted values and defaults.
///
///     QZParameter* found = itf.GetParameter("-scale");
///     double scale = 1;
///     if (const auto* p = QZTypedParameter<double>::From(found)) p->GetSetting(scale);
///
/// T is one of float, double, int, unsigned int, bool, std::string and qzisstream.
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZTypedParameter : public QZParameter {
 public:
  QZTypedParameter() = default;
  explicit QZTypedParameter(const std::string& newName) : QZParameter(newName) {}

  /// The parameter as one whose values are of type T; null if they aren't, or if the pointer is null.
  static QZTypedParameter* From(QZParameter* parameter) {
    return IsOne(parameter) ? static_cast<QZTypedParameter*>(parameter) : nullptr;
  }
  static const QZTypedParameter* From(const QZParameter* parameter) {
    return IsOne(parameter) ? static_cast<const QZTypedParameter*>(parameter) : nullptr;
  }

  bool ClearValues() override;
  bool ClearDefaults() override;
  bool LoadValue() override;
  bool LoadDefault() override;
  bool GetHasValue(unsigned int i = 0) const override;
  bool GetHasDefault(unsigned int i = 0) const override;
  const void* TypedParameterTypeID() const override;

  /// The i-th converted value, default, or setting (the value if there is an i-th one, else the default). False, with
  /// the output unchanged, if there is none.
  virtual bool GetValue(T& value, unsigned int i = 0) const;
  virtual bool GetDefault(T& value, unsigned int i = 0) const;
  virtual bool GetSetting(T& value, unsigned int i = 0) const;

  /// Typed writes: Add appends, Set replaces the whole list. The text of the value, where it has one, goes to the list
  /// of texts. False, with nothing changed, if IsLegal refuses the value.
  virtual bool AddValue(const T& value);
  virtual bool AddDefault(const T& value);
  virtual bool SetValue(const T& value);
  virtual bool SetDefault(const T& value);

  /// The converted values, the defaults, and the values if there are any, else the defaults; in the order of addition.
  [[nodiscard]] virtual QZIterBase<const T>* GetValues() const = 0;
  [[nodiscard]] virtual QZIterBase<const T>* GetDefaults() const = 0;
  [[nodiscard]] virtual QZIterBase<const T>* GetSettings() const;

  /// Whether the value keeps within the limits.
  virtual bool IsLegal(const T& value) const = 0;
  /// Converts a text; false if it can't be converted.
  virtual bool GetTypedValue(T& value, const std::string& text) const = 0;
  /// The text of a value; false if it has none.
  virtual bool GetString(std::string& text, const T& value) const = 0;
  /// The identity of the concrete class (QZGetDataType).
  virtual const void* FactoryTypeID() const = 0;

 protected:
  /// The lists for derived kinds, which hand out iterators on them and read them from bytes.
  const std::deque<T>& TypedValues() const { return typedValues; }
  const std::deque<T>& TypedDefaults() const { return typedDefaults; }
  std::deque<T>& TypedValues() { return typedValues; }
  std::deque<T>& TypedDefaults() { return typedDefaults; }

 private:
  static bool IsOne(const QZParameter* parameter) {
    return parameter != nullptr && parameter->TypedParameterTypeID() == QZGetDataType<QZTypedParameter>();
  }
  bool LoadTexts(const std::vector<std::string>& texts, std::deque<T>& list);

  std::deque<T> typedValues;
  std::deque<T> typedDefaults;
};

/// A parameter of a plain type T, one of float, double, int, unsigned int, bool and std::string: it knows the texts,
/// the limits and the binary form of such values.
///
///     QZDoubleParameter scale("-scale");
///     scale.AddLegalRange("0", "inf");
///     scale.SetStringValues("1.5, 2");  // two values, loaded
///     scale.IsLegal(-1.0);              // false
///
/// Texts are read by QZStringToNumber, integers in base 10, and a std::string is its own text; a float is written with
/// 6 decimals, a double with 12.
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZPODParameter : public QZTypedParameter<T> {
 public:
  QZPODParameter() = default;
  explicit QZPODParameter(const std::string& newName) : QZTypedParameter<T>(newName) {}

  /// Splits the text at blanks, commas, tabs and line feeds and takes the pieces as the values, loaded, in place of
  /// the present ones. False, with nothing changed, if there is no piece or one doesn't convert or isn't legal.
  bool SetStringValues(const std::string& texts) override;

  /// Whether the text converts and the value is legal.
  bool IsLegalString(const std::string& text) const override;
  /// Whether the text converts to one of the settings.
  bool IsSetToString(const std::string& text) const override;
  bool IsValidString(const std::string& text) const override;

  /// Illegal values and ranges are asked first, then legal values and ranges; without legal ones the rest is legal.
  /// Floating-point numbers are compared exactly. Limits that can't be read are told as Errors: a value then counts as
  /// 0, a range makes every value that gets to it illegal. A std::string is matched as by QZParameter::IsLegalString.
  bool IsLegal(const T& value) const override;
  bool GetTypedValue(T& value, const std::string& text) const override;
  bool GetString(std::string& text, const T& value) const override;

  unsigned long WriteValueAndDefaultBinary(unsigned char* bytes) const override;
  unsigned long ReadValueAndDefaultBinary(const unsigned char* bytes) override;
  unsigned long ValueAndDefaultBinarySize() const override;
  /// The same read of bytes that come from outside, of which there are `size`: nothing behind them is looked at.
  /// Returns the bytes used, or 0 if they end before what their counts and lengths claim; what was read before stays.
  unsigned long ReadValueAndDefaultBinary(const unsigned char* bytes, unsigned long size);

 private:
  bool IsBarred(const T& value) const;
  bool IsListed(const T& value) const;
};

extern template class QZTypedParameter<float>;
extern template class QZTypedParameter<double>;
extern template class QZTypedParameter<int>;
extern template class QZTypedParameter<unsigned int>;
extern template class QZTypedParameter<bool>;
extern template class QZTypedParameter<std::string>;
extern template class QZTypedParameter<qzisstream>;
extern template class QZPODParameter<float>;
extern template class QZPODParameter<double>;
extern template class QZPODParameter<int>;
extern template class QZPODParameter<unsigned int>;
extern template class QZPODParameter<bool>;
extern template class QZPODParameter<std::string>;

}  // namespace QZSystem
