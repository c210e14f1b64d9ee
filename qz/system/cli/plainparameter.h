#pragma once

#include <string>

#include "qz/system/cli/typedparameter.h"

namespace QZSystem {

/// The kinds of parameter that hold plain values.
///
///     QZIntParameter count("-count", 10);
///     QZStringParameter format("-format", "txt");
///     format.AddLegalValue("t*");    // a pattern, compared without regard to case
///     format.IsLegalString("TEXT");  // true
///
/// A constructor with a default makes it by SetDefault. Each kind names itself by StaticClassID() and ClassID(), and
/// is copied by CreateCopy, whose result the caller deletes.
/// Const operations may run in parallel; a change needs exclusive access.
class QZFloatParameter : public QZPODParameter<float> {
 public:
  QZFloatParameter() = default;
  explicit QZFloatParameter(const std::string& newName) : QZPODParameter(newName) {}
  QZFloatParameter(const std::string& newName, float value);

  /// "float"
  static std::string StaticClassID();
  std::string ClassID() const override;
  [[nodiscard]] QZFloatParameter* CreateCopy() const override;
  [[nodiscard]] QZIterBase<const float>* GetValues() const override;
  [[nodiscard]] QZIterBase<const float>* GetDefaults() const override;
  const void* FactoryTypeID() const override;
};

/// A setting that is a double. See QZFloatParameter.
class QZDoubleParameter : public QZPODParameter<double> {
 public:
  QZDoubleParameter() = default;
  explicit QZDoubleParameter(const std::string& newName) : QZPODParameter(newName) {}
  QZDoubleParameter(const std::string& newName, double value);

  /// "double"
  static std::string StaticClassID();
  std::string ClassID() const override;
  [[nodiscard]] QZDoubleParameter* CreateCopy() const override;
  [[nodiscard]] QZIterBase<const double>* GetValues() const override;
  [[nodiscard]] QZIterBase<const double>* GetDefaults() const override;
  const void* FactoryTypeID() const override;
};

/// A setting that is an int. See QZFloatParameter.
class QZIntParameter : public QZPODParameter<int> {
 public:
  QZIntParameter() = default;
  explicit QZIntParameter(const std::string& newName) : QZPODParameter(newName) {}
  QZIntParameter(const std::string& newName, int value);

  /// "int"
  static std::string StaticClassID();
  std::string ClassID() const override;
  [[nodiscard]] QZIntParameter* CreateCopy() const override;
  [[nodiscard]] QZIterBase<const int>* GetValues() const override;
  [[nodiscard]] QZIterBase<const int>* GetDefaults() const override;
  const void* FactoryTypeID() const override;
};

/// A setting that is an unsigned int. See QZFloatParameter.
class QZUIntParameter : public QZPODParameter<unsigned int> {
 public:
  QZUIntParameter() = default;
  explicit QZUIntParameter(const std::string& newName) : QZPODParameter(newName) {}
  QZUIntParameter(const std::string& newName, unsigned int value);

  /// "unsigned"
  static std::string StaticClassID();
  std::string ClassID() const override;
  [[nodiscard]] QZUIntParameter* CreateCopy() const override;
  [[nodiscard]] QZIterBase<const unsigned int>* GetValues() const override;
  [[nodiscard]] QZIterBase<const unsigned int>* GetDefaults() const override;
  const void* FactoryTypeID() const override;
};

/// A setting that is on or off, in the words of QZStringToNumber. It has no limits: adding one gives false, and every
/// bool is legal. See QZFloatParameter.
class QZBoolParameter : public QZPODParameter<bool> {
 public:
  QZBoolParameter() = default;
  explicit QZBoolParameter(const std::string& newName) : QZPODParameter(newName) {}
  QZBoolParameter(const std::string& newName, bool value);

  /// "bool"
  static std::string StaticClassID();
  bool AddLegalValue(const std::string& value) override;
  bool AddIllegalValue(const std::string& value) override;
  bool AddLegalRange(const std::string& from, const std::string& to) override;
  bool AddIllegalRange(const std::string& from, const std::string& to) override;
  std::string ClassID() const override;
  [[nodiscard]] QZBoolParameter* CreateCopy() const override;
  [[nodiscard]] QZIterBase<const bool>* GetValues() const override;
  [[nodiscard]] QZIterBase<const bool>* GetDefaults() const override;
  const void* FactoryTypeID() const override;
};

/// A setting that is a text. Legal and illegal values are patterns, compared without regard to case; ranges are refused
/// (false). See QZFloatParameter.
class QZStringParameter : public QZPODParameter<std::string> {
 public:
  QZStringParameter() = default;
  explicit QZStringParameter(const std::string& newName) : QZPODParameter(newName) {}
  QZStringParameter(const std::string& newName, const std::string& value);

  /// "string"
  static std::string StaticClassID();
  bool AddLegalRange(const std::string& from, const std::string& to) override;
  bool AddIllegalRange(const std::string& from, const std::string& to) override;
  std::string ClassID() const override;
  [[nodiscard]] QZStringParameter* CreateCopy() const override;
  [[nodiscard]] QZIterBase<const std::string>* GetValues() const override;
  [[nodiscard]] QZIterBase<const std::string>* GetDefaults() const override;
  const void* FactoryTypeID() const override;
};

}  // namespace QZSystem
