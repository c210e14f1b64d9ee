#include "qz/system/cli/parameter.h"

#include <algorithm>

#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

using StringIter = QZSTLIter<ConstIterGuts<std::vector<std::string>>>;
using RangeIter = QZSTLIter<ConstIterGuts<std::vector<QZParameter::Range>>>;

// The word of a text that has exactly one, into `word`; false, with `word` unchanged, for any other.
bool takeWord(const std::string& text, std::string& word) {
  const auto isWhiteSpace = [](char c) { return c == ' ' || c == '\t' || c == '\n'; };
  const auto first = std::find_if_not(text.begin(), text.end(), isWhiteSpace);
  const auto behind = std::find_if(first, text.end(), isWhiteSpace);
  if (first == behind || std::find_if_not(behind, text.end(), isWhiteSpace) != text.end()) return false;
  word = std::string(first, behind);
  return true;
}

std::string textAt(const std::vector<std::string>& texts, unsigned int i) {
  return i < texts.size() ? texts[i] : std::string();
}

bool matchesAny(const std::string& lowerText, const std::vector<std::string>& patterns) {
  return std::any_of(patterns.begin(), patterns.end(),
                     [&](const std::string& pattern) { return QZStringMatch(lowerText, QZStringLower(pattern)); });
}

}  // namespace

QZParameter::~QZParameter() = default;

QZIterBase<const std::string>* QZParameter::GetPrettyLegalValues() const { return GetLegalValues(); }

std::string QZParameter::GetPrettyDefault(unsigned int i) const { return GetStringDefault(i); }

// The text may be one of the list that it replaces, so it is copied before the list goes.
bool QZParameter::SetStringValue(const std::string& text) {
  if (!IsValidString(text)) return false;
  values = std::vector<std::string>(1, text);
  return true;
}

bool QZParameter::SetStringDefault(const std::string& text) {
  if (!IsValidString(text)) return false;
  defaults = std::vector<std::string>(1, text);
  return true;
}

bool QZParameter::AddStringValue(const std::string& text) {
  if (!IsValidString(text)) return false;
  values.push_back(text);
  return true;
}

bool QZParameter::AddStringDefault(const std::string& text) {
  if (!IsValidString(text)) return false;
  defaults.push_back(text);
  return true;
}

bool QZParameter::ClearValues() {
  values.clear();
  return true;
}

bool QZParameter::ClearDefaults() {
  defaults.clear();
  return true;
}

bool QZParameter::SetStringValues(const std::string&) { return false; }

bool QZParameter::AddLegalValue(const std::string& value) {
  if (!IsValidString(value)) return false;
  legalValues.push_back(value);
  return true;
}

bool QZParameter::AddIllegalValue(const std::string& value) {
  if (!IsValidString(value)) return false;
  illegalValues.push_back(value);
  return true;
}

// The ends of a legal range are not tested, since "inf" and "-inf" convert to no integer.
bool QZParameter::AddLegalRange(const std::string& from, const std::string& to) {
  legalRanges.emplace_back(from, to);
  return true;
}

bool QZParameter::AddIllegalRange(const std::string& from, const std::string& to) {
  if (!IsValidString(from) || !IsValidString(to)) return false;
  illegalRanges.emplace_back(from, to);
  return true;
}

bool QZParameter::IsLegalString(const std::string& text) const {
  const std::string lower = QZStringLower(text);
  if (matchesAny(lower, illegalValues)) return false;
  return legalValues.empty() || matchesAny(lower, legalValues);
}

bool QZParameter::IsSetToString(const std::string& text) const {
  for (unsigned int i = 0; GetHasValue(i); ++i)
    if (GetStringValue(i) == text) return true;
  if (GetHasValue(0)) return false;
  for (unsigned int i = 0; GetHasDefault(i); ++i)
    if (GetStringDefault(i) == text) return true;
  return false;
}

bool QZParameter::Load() { return LoadValue() && LoadDefault(); }

bool QZParameter::IsSet(unsigned int i) const { return GetHasDefault(i) || GetHasValue(i); }

bool QZParameter::SetName(const std::string& newName) { return takeWord(newName, name); }

bool QZParameter::AddAlias(const std::string& alias) {
  std::string word;
  if (!takeWord(alias, word)) return false;
  aliases.push_back(std::move(word));
  return true;
}

bool QZParameter::SetBrief(const std::string& text) {
  brief = text;
  return true;
}

bool QZParameter::SetElement(const std::string& text) {
  element = text;
  return true;
}

bool QZParameter::SetCommand(const std::string& text) {
  command = text;
  return true;
}

bool QZParameter::AddDetail(const std::string& line) {
  detail.push_back(line);
  return true;
}

bool QZParameter::SetRequired(bool on) {
  required = on;
  return true;
}

bool QZParameter::SetKeyless(unsigned int place) {
  keyless = place;
  return true;
}

bool QZParameter::SetVisibility(unsigned int level) {
  visibility = level;
  return true;
}

bool QZParameter::SetOrderPriority(int priority) {
  orderPriority = priority;
  return true;
}

bool QZParameter::SetInput(unsigned int mark) {
  input = mark;
  return true;
}

bool QZParameter::SetOutput(bool on) {
  output = on;
  return true;
}

bool QZParameter::SetIsList(bool on) {
  isList = on;
  return true;
}

std::string QZParameter::GetStringValue(unsigned int i) const { return textAt(values, i); }

std::string QZParameter::GetStringDefault(unsigned int i) const { return textAt(defaults, i); }

QZIterBase<const std::string>* QZParameter::GetStringValues() const { return new StringIter(values); }

QZIterBase<const std::string>* QZParameter::GetStringDefaults() const { return new StringIter(defaults); }

QZIterBase<const std::string>* QZParameter::GetAliases() const { return new StringIter(aliases); }

QZIterBase<const std::string>* QZParameter::GetDetail() const { return new StringIter(detail); }

QZIterBase<const std::string>* QZParameter::GetLegalValues() const { return new StringIter(legalValues); }

QZIterBase<const std::string>* QZParameter::GetIllegalValues() const { return new StringIter(illegalValues); }

QZIterBase<const QZParameter::Range>* QZParameter::GetLegalRanges() const { return new RangeIter(legalRanges); }

QZIterBase<const QZParameter::Range>* QZParameter::GetIllegalRanges() const { return new RangeIter(illegalRanges); }

}  // namespace QZSystem
