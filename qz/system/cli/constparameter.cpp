#include "qz/system/cli/constparameter.h"

#include <set>

#include "qz/system/text/qzstring.h"
#include "qz/system/util/numeric.h"

namespace QZSystem {

namespace {

using TypedParameter = QZTypedParameter<unsigned int>;

}  // namespace

QZConstParameter::QZConstParameter(const std::string& newName, unsigned int value, const std::string& key)
    : QZUIntParameter(newName) {
  QZConstParameter::AddLegalEntry(value, key);
  QZConstParameter::SetDefault(value);
}

std::string QZConstParameter::StaticClassID() { return "const"; }

bool QZConstParameter::AddLegalEntry(unsigned int value, const std::string& key) {
  const std::string lower = QZStringLower(key);
  if (!QZParameter::AddLegalValue(QZNumberToString(value, 10))) return false;
  keyTable[lower] = value;
  return AddLegalValue(lower);
}

unsigned int QZConstParameter::GetKeyIndex(const std::string& key) const {
  const unsigned int* found = FindKey(QZStringLower(key));
  return found != nullptr ? *found : m_invalidKey;
}

bool QZConstParameter::AddValue(const std::string& key) {
  unsigned int value = 0;
  return GetMask(key, value) && AddValue(value);
}

bool QZConstParameter::AddDefault(const std::string& key) {
  unsigned int value = 0;
  return GetMask(key, value) && AddDefault(value);
}

bool QZConstParameter::SetValue(const std::string& key) {
  unsigned int value = 0;
  return GetMask(key, value) && SetValue(value);
}

bool QZConstParameter::SetDefault(const std::string& key) {
  unsigned int value = 0;
  return GetMask(key, value) && SetDefault(value);
}

QZIterBase<const std::string>* QZConstParameter::GetPrettyLegalValues() const {
  if (keyTable.empty()) return QZParameter::GetPrettyLegalValues();
  prettyLegalValues.clear();
  for (const auto& entry : keyTable) prettyLegalValues.push_back(entry.first);
  return new QZSTLIter<ConstIterGuts<std::vector<std::string>>>(prettyLegalValues);
}

std::string QZConstParameter::GetPrettyDefault(unsigned int i) const {
  unsigned int value = 0;
  if (GetDefault(value, i))
    for (const auto& entry : keyTable)
      if (entry.second == value) return entry.first;
  return QZParameter::GetPrettyDefault(i);
}

// A keyword that is new goes to the first legal number that no keyword has yet.
bool QZConstParameter::AddLegalValue(const std::string& value) {
  if (IsValidString(value)) return QZParameter::AddLegalValue(value);
  std::set<unsigned int> named;
  for (const auto& entry : keyTable) named.insert(entry.second);
  for (const std::string& legal : LegalValues()) {
    unsigned int number = 0;
    if (!QZStringToNumber(legal, number, 10) || named.count(number) != 0) continue;
    keyTable[value] = number;
    return QZParameter::AddLegalValue(value);
  }
  return false;
}

bool QZConstParameter::IsLegalString(const std::string& text) const {
  unsigned int value = 0;
  return (QZStringToNumber(text, value, 10) && IsLegal(value)) || GetMask(text, value);
}

std::string QZConstParameter::ClassID() const { return StaticClassID(); }

QZConstParameter* QZConstParameter::CreateCopy() const { return new QZConstParameter(*this); }

bool QZConstParameter::IsValidString(const std::string& text) const {
  unsigned int value = 0;
  return GetTypedValue(value, text);
}

bool QZConstParameter::GetTypedValue(unsigned int& value, const std::string& text) const {
  return QZStringToNumber(text, value, 10) || GetMask(text, value);
}

const void* QZConstParameter::FactoryTypeID() const { return QZGetDataType<QZConstParameter>(); }

bool QZConstParameter::GetMask(const std::string& key, unsigned int& value) const {
  const unsigned int* found = FindKey(QZStringLower(key));
  if (found == nullptr) return false;
  value = *found;
  return true;
}

const unsigned int* QZConstParameter::FindKey(const std::string& lowerKey) const {
  const auto found = keyTable.find(lowerKey);
  return found != keyTable.end() ? &found->second : nullptr;
}

QZBitParameter::QZBitParameter(const std::string& newName, unsigned int value, const std::string& key)
    : QZConstParameter(newName, value, key) {}

std::string QZBitParameter::StaticClassID() { return "bit"; }

bool QZBitParameter::IsValidMask(unsigned int mask) const {
  unsigned int all = 0;
  for (const auto& entry : KeyTable()) all |= entry.second;
  return QZInBitField(mask, all);
}

bool QZBitParameter::IsLegalString(const std::string& text) const {
  unsigned int value = 0;
  return (QZStringToNumber(text, value, 10) && IsValidMask(value)) || GetMask(text, value);
}

std::string QZBitParameter::ClassID() const { return StaticClassID(); }

QZBitParameter* QZBitParameter::CreateCopy() const { return new QZBitParameter(*this); }

bool QZBitParameter::AddValue(const unsigned int& value) {
  return TypedParameter::AddValue(value) || (Declare(value) && TypedParameter::AddValue(value));
}

bool QZBitParameter::AddDefault(const unsigned int& value) {
  return TypedParameter::AddDefault(value) || (Declare(value) && TypedParameter::AddDefault(value));
}

bool QZBitParameter::SetValue(const unsigned int& value) {
  return TypedParameter::SetValue(value) || (Declare(value) && TypedParameter::SetValue(value));
}

bool QZBitParameter::SetDefault(const unsigned int& value) {
  return TypedParameter::SetDefault(value) || (Declare(value) && TypedParameter::SetDefault(value));
}

// Makes a mask of known bits legal.
bool QZBitParameter::Declare(unsigned int mask) {
  return IsValidMask(mask) && AddLegalValue(QZNumberToString(mask, 10));
}

const void* QZBitParameter::FactoryTypeID() const { return QZGetDataType<QZBitParameter>(); }

bool QZBitParameter::GetMask(const std::string& text, unsigned int& value) const {
  value = 0;
  std::vector<std::string> words;
  QZStringTokenize(words, text, ",", true);
  for (const std::string& word : words) {
    const unsigned int* found = FindKey(QZStringLower(word));
    if (found == nullptr) return false;
    value |= *found;
  }
  return true;
}

}  // namespace QZSystem
