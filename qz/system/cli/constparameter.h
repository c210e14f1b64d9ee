#pragma once

#include <map>
#include <string>
#include <vector>

#include "qz/system/cli/plainparameter.h"

namespace QZSystem {

/// A setting that is an unsigned number and can also be given by keyword, without regard to case.
///
///     QZConstParameter colour("-colour", 1, "red");  // the default is 1, and 1 and red are legal
///     colour.AddLegalEntry(2, "green");
///     colour.SetValue("GREEN");       // the value is 2, its text "2"
///     colour.GetPrettyDefault(0);     // "red"
///
/// What is stored, as text too, is the number. One thread at a time, const operations included: the pretty legal values
/// are kept in a cache.
class QZConstParameter : public QZUIntParameter {
 public:
  /// What GetKeyIndex gives for a word that is no keyword.
  static constexpr unsigned int m_invalidKey = 9999;

  QZConstParameter() = default;
  explicit QZConstParameter(const std::string& newName) : QZUIntParameter(newName) {}
  /// One number with its keyword, which is the default.
  QZConstParameter(const std::string& newName, unsigned int value, const std::string& key);

  /// "const"
  static std::string StaticClassID();

  /// Makes the number legal, and the keyword, in lower case, with it. A keyword that is known already takes the new
  /// number.
  bool AddLegalEntry(unsigned int value, const std::string& key);

  /// The number of the keyword, or m_invalidKey.
  unsigned int GetKeyIndex(const std::string& key) const;

  /// The typed writes, with the number of the keyword; false if GetMask refuses the text.
  bool AddValue(const std::string& key);
  bool AddDefault(const std::string& key);
  bool SetValue(const std::string& key);
  bool SetDefault(const std::string& key);
  using QZUIntParameter::AddDefault;
  using QZUIntParameter::AddValue;
  using QZUIntParameter::SetDefault;
  using QZUIntParameter::SetValue;

  /// The keywords in byte order, or the legal values if there are no keywords. The iterator is valid until the next
  /// call.
  [[nodiscard]] QZIterBase<const std::string>* GetPrettyLegalValues() const override;
  /// The first keyword in byte order that has the number of the i-th default; its text if none has.
  std::string GetPrettyDefault(unsigned int i = 0) const override;

  /// A number or a known keyword becomes legal. Another word becomes the keyword of the first legal number that has
  /// none, so that "1" and then "red" declare red as 1; without such a number, false. A new keyword must be in lower
  /// case: with a capital in it the result is false.
  bool AddLegalValue(const std::string& value) override;

  /// A number that is legal, or what GetMask takes.
  bool IsLegalString(const std::string& text) const override;
  std::string ClassID() const override;
  [[nodiscard]] QZConstParameter* CreateCopy() const override;
  /// A number, or what GetMask takes.
  bool IsValidString(const std::string& text) const override;
  bool GetTypedValue(unsigned int& value, const std::string& text) const override;
  const void* FactoryTypeID() const override;

  /// The number of a keyword; false, with the output unchanged, if it is none.
  virtual bool GetMask(const std::string& key, unsigned int& value) const;

 protected:
  /// The number of a keyword, which is in lower case already; null if it is none.
  const unsigned int* FindKey(const std::string& lowerKey) const;
  /// Keyword to number.
  const std::map<std::string, unsigned int>& KeyTable() const { return keyTable; }

 private:
  std::map<std::string, unsigned int> keyTable;
  mutable std::vector<std::string> prettyLegalValues;
};

/// A setting that is a bit mask, and can also be given by keywords with commas between them.
///
///     QZBitParameter parts("-parts", 1, "head");
///     parts.AddLegalEntry(2, "tail");
///     parts.SetValue("head,tail");  // 3, which is legal from now on
///
/// It is made by its constructors alone: the configuration language has no word for it. One thread at a time, const
/// operations included.
class QZBitParameter : public QZConstParameter {
 public:
  QZBitParameter() = default;
  explicit QZBitParameter(const std::string& newName) : QZConstParameter(newName) {}
  /// One number with its keyword, which is the default.
  QZBitParameter(const std::string& newName, unsigned int value, const std::string& key);

  /// "bit"
  static std::string StaticClassID();

  /// Whether the mask shares a bit with the numbers of the keywords: 0 never does.
  bool IsValidMask(unsigned int mask) const;

  /// A number that IsValidMask takes, or what GetMask takes.
  bool IsLegalString(const std::string& text) const override;
  std::string ClassID() const override;
  [[nodiscard]] QZBitParameter* CreateCopy() const override;

  /// Typed writes. A mask that isn't legal but is valid is made legal by AddLegalValue, so that a combination of
  /// keywords needn't be declared.
  bool AddValue(const unsigned int& value) override;
  bool AddDefault(const unsigned int& value) override;
  bool SetValue(const unsigned int& value) override;
  bool SetDefault(const unsigned int& value) override;
  using QZConstParameter::AddDefault;
  using QZConstParameter::AddValue;
  using QZConstParameter::SetDefault;
  using QZConstParameter::SetValue;
  const void* FactoryTypeID() const override;

  /// The numbers of all keywords in the text, by bitwise or; 0 for a text without words. False at the first word that
  /// is no keyword; the output then holds what was found before.
  bool GetMask(const std::string& text, unsigned int& value) const override;

 private:
  bool Declare(unsigned int mask);
};

}  // namespace QZSystem
