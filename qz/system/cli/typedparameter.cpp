#include "qz/system/cli/typedparameter.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "qz/system/cli/parameterbinary_impl.h"
#include "qz/system/frame/error.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr char badIllegalValue[] = "Cannot interpret illegal value %s, of parameter %s";
constexpr char badLegalValue[] = "Cannot interpret legal value %s, of parameter %s";
constexpr char badIllegalRange[] = "Invalid illegal range for parameter %s is (%s to %s)";
constexpr char badLegalRange[] = "Invalid legal range for parameter %s is (%s to %s)";

// The plain conversion of a text; on failure a number is 0 and a bool stays.
template <class T>
bool convert(const std::string& text, T& value) {
  return QZStringToNumber(text, value);
}

template <>
bool convert<std::string>(const std::string& text, std::string& value) {
  value = text;
  return true;
}

bool print(double value, int decimals, std::string& text) { return QZNumberToString(value, text, 'f', decimals); }

bool print(const float& value, std::string& text) { return print(value, 6, text); }

bool print(const double& value, std::string& text) { return print(value, 12, text); }

bool print(const int& value, std::string& text) { return QZNumberToString(long{value}, text, 10); }

bool print(const unsigned int& value, std::string& text) {
  text = QZNumberToString(value, 10);
  return true;
}

bool print(const bool& value, std::string& text) {
  text = QZNumberToString(value);
  return true;
}

bool print(const std::string& value, std::string& text) {
  text = value;
  return true;
}

// One end of a range: a number, or a word that leaves the range open in that direction.
template <class T>
struct RangeEnd {
  enum Kind { number, upward, downward, invalid };

  explicit RangeEnd(const std::string& text) {
    if (text == "inf")
      kind = upward;
    else if (text == "-inf")
      kind = downward;
    else
      kind = convert(text, value) ? number : invalid;
  }
  bool IsWord() const { return kind == upward || kind == downward; }

  Kind kind = invalid;
  T value{};
};

// Whether the value lies in the range, ends included; nothing if the range has no number or an end that can't be read.
template <class T>
std::optional<bool> liesIn(const QZParameter::Range& range, const T& value) {
  RangeEnd<T> a(range.first);
  RangeEnd<T> b(range.second);
  if (a.IsWord()) std::swap(a, b);
  if (a.kind != RangeEnd<T>::number || b.kind == RangeEnd<T>::invalid) return std::nullopt;
  if (b.kind == RangeEnd<T>::upward) return a.value <= value;
  if (b.kind == RangeEnd<T>::downward) return value <= a.value;
  return (a.value <= value && value <= b.value) || (b.value <= value && value <= a.value);
}

// A list that is not filled to its end, because a text doesn't convert or an exception comes, is emptied.
template <class T>
class Filling {
 public:
  explicit Filling(std::deque<T>& target) : list(target) { list.clear(); }
  ~Filling() {
    if (!complete) list.clear();
  }
  Filling(const Filling&) = delete;
  Filling& operator=(const Filling&) = delete;
  void Complete() { complete = true; }

 private:
  std::deque<T>& list;
  bool complete = false;
};

}  // namespace

template <class T>
bool QZTypedParameter<T>::ClearValues() {
  typedValues.clear();
  return QZParameter::ClearValues();
}

template <class T>
bool QZTypedParameter<T>::ClearDefaults() {
  typedDefaults.clear();
  return QZParameter::ClearDefaults();
}

// Filled in place: a deque keeps its storage when it is emptied, and one more would cost as much as all the rest.
template <class T>
bool QZTypedParameter<T>::LoadTexts(const std::vector<std::string>& texts, std::deque<T>& list) {
  Filling<T> filling(list);
  for (const std::string& text : texts) {
    list.emplace_back();
    if (!GetTypedValue(list.back(), text)) return false;
  }
  filling.Complete();
  return true;
}

template <class T>
bool QZTypedParameter<T>::LoadValue() {
  return LoadTexts(this->StringValues(), typedValues);
}

template <class T>
bool QZTypedParameter<T>::LoadDefault() {
  return LoadTexts(this->StringDefaults(), typedDefaults);
}

template <class T>
bool QZTypedParameter<T>::GetHasValue(unsigned int i) const {
  return i < typedValues.size();
}

template <class T>
bool QZTypedParameter<T>::GetHasDefault(unsigned int i) const {
  return i < typedDefaults.size();
}

template <class T>
const void* QZTypedParameter<T>::TypedParameterTypeID() const {
  return QZGetDataType<QZTypedParameter<T>>();
}

template <class T>
bool QZTypedParameter<T>::GetValue(T& value, unsigned int i) const {
  if (i >= typedValues.size()) return false;
  value = typedValues[i];
  return true;
}

template <class T>
bool QZTypedParameter<T>::GetDefault(T& value, unsigned int i) const {
  if (i >= typedDefaults.size()) return false;
  value = typedDefaults[i];
  return true;
}

template <class T>
bool QZTypedParameter<T>::GetSetting(T& value, unsigned int i) const {
  return GetValue(value, i) || GetDefault(value, i);
}

template <class T>
bool QZTypedParameter<T>::AddValue(const T& value) {
  if (!IsLegal(value)) return false;
  typedValues.push_back(value);
  std::string text;
  if (GetString(text, value)) this->AddStringValue(text);
  return true;
}

template <class T>
bool QZTypedParameter<T>::AddDefault(const T& value) {
  if (!IsLegal(value)) return false;
  typedDefaults.push_back(value);
  std::string text;
  if (GetString(text, value)) this->AddStringDefault(text);
  return true;
}

// The value may be one of the list that it replaces, so it is copied before the list goes.
template <class T>
bool QZTypedParameter<T>::SetValue(const T& value) {
  if (!IsLegal(value)) return false;
  const T copy(value);
  ClearValues();
  typedValues.push_back(copy);
  std::string text;
  if (GetString(text, copy)) this->SetStringValue(text);
  return true;
}

template <class T>
bool QZTypedParameter<T>::SetDefault(const T& value) {
  if (!IsLegal(value)) return false;
  const T copy(value);
  ClearDefaults();
  typedDefaults.push_back(copy);
  std::string text;
  if (GetString(text, copy)) this->SetStringDefault(text);
  return true;
}

template <class T>
QZIterBase<const T>* QZTypedParameter<T>::GetSettings() const {
  QZIter<const T> settings(GetValues());
  return settings ? settings.Release() : GetDefaults();
}

template <class T>
bool QZPODParameter<T>::SetStringValues(const std::string& texts) {
  std::vector<std::string> pieces;
  QZStringTokenize(pieces, texts, " ,\t\n", true);
  if (pieces.empty()) return false;
  std::deque<T> converted(pieces.size());
  for (std::size_t i = 0; i < pieces.size(); ++i)
    if (!convert(pieces[i], converted[i])) return false;
  for (const T& value : converted)
    if (!this->IsLegal(value)) return false;
  this->SetValue(converted.front());
  for (std::size_t i = 1; i < converted.size(); ++i) this->AddValue(converted[i]);
  return true;
}

template <class T>
bool QZPODParameter<T>::IsLegalString(const std::string& text) const {
  T value{};
  return convert(text, value) && this->IsLegal(value);
}

template <class T>
bool QZPODParameter<T>::IsSetToString(const std::string& text) const {
  T value{};
  if (!convert(text, value)) return false;
  for (const T& setting : QZIter(this->GetSettings()))
    if (setting == value) return true;
  return false;
}

template <class T>
bool QZPODParameter<T>::IsValidString(const std::string& text) const {
  T value{};
  return convert(text, value);
}

// Whether an illegal value or range holds the value; an illegal range that can't be read holds every value.
template <class T>
bool QZPODParameter<T>::IsBarred(const T& value) const {
  for (const std::string& text : this->IllegalValues()) {
    T entry{};
    if (!convert(text, entry)) QZThrow.Error(badIllegalValue, text.c_str(), this->GetName().c_str());
    if (value == entry) return true;
  }
  for (const QZParameter::Range& range : this->IllegalRanges()) {
    const std::optional<bool> inside = liesIn(range, value);
    if (!inside) QZThrow.Error(badIllegalRange, this->GetName().c_str(), range.first.c_str(), range.second.c_str());
    if (inside.value_or(true)) return true;
  }
  return false;
}

// Whether a legal value or range holds the value; a legal range that can't be read ends the search. Legal values are
// read as the kind itself reads them, so that keywords count.
template <class T>
bool QZPODParameter<T>::IsListed(const T& value) const {
  for (const std::string& text : this->LegalValues()) {
    T entry{};
    if (!this->GetTypedValue(entry, text)) {
      QZThrow.Error(badLegalValue, text.c_str(), this->GetName().c_str());
      entry = T{};
    }
    if (value == entry) return true;
  }
  for (const QZParameter::Range& range : this->LegalRanges()) {
    const std::optional<bool> inside = liesIn(range, value);
    if (!inside) {
      QZThrow.Error(badLegalRange, this->GetName().c_str(), range.first.c_str(), range.second.c_str());
      return false;
    }
    if (*inside) return true;
  }
  return false;
}

template <class T>
bool QZPODParameter<T>::IsLegal(const T& value) const {
  if constexpr (std::is_same_v<T, std::string>) {
    return QZParameter::IsLegalString(value);
  } else {
    if (IsBarred(value)) return false;
    return (this->LegalValues().empty() && this->LegalRanges().empty()) || IsListed(value);
  }
}

template <class T>
bool QZPODParameter<T>::GetTypedValue(T& value, const std::string& text) const {
  return convert(text, value);
}

template <class T>
bool QZPODParameter<T>::GetString(std::string& text, const T& value) const {
  if (!print(value, text)) text.clear();
  return true;
}

template <class T>
unsigned long QZPODParameter<T>::ValueAndDefaultBinarySize() const {
  return ParameterListSize(this->TypedValues()) + ParameterListSize(this->TypedDefaults());
}

template <class T>
unsigned long QZPODParameter<T>::WriteValueAndDefaultBinary(unsigned char* bytes) const {
  const unsigned long used = WriteParameterList(bytes, this->TypedValues());
  return used + WriteParameterList(bytes + used, this->TypedDefaults());
}

template <class T>
unsigned long QZPODParameter<T>::ReadValueAndDefaultBinary(const unsigned char* bytes) {
  ParameterBytes in(bytes, std::numeric_limits<unsigned long>::max());
  ReadParameterLists(in, this->TypedValues(), this->TypedDefaults());
  return in.Used();
}

template <class T>
unsigned long QZPODParameter<T>::ReadValueAndDefaultBinary(const unsigned char* bytes, unsigned long size) {
  ParameterBytes in(bytes, size);
  return ReadParameterLists(in, this->TypedValues(), this->TypedDefaults()) ? in.Used() : 0;
}

template class QZTypedParameter<float>;
template class QZTypedParameter<double>;
template class QZTypedParameter<int>;
template class QZTypedParameter<unsigned int>;
template class QZTypedParameter<bool>;
template class QZTypedParameter<std::string>;
template class QZTypedParameter<qzisstream>;
template class QZPODParameter<float>;
template class QZPODParameter<double>;
template class QZPODParameter<int>;
template class QZPODParameter<unsigned int>;
template class QZPODParameter<bool>;
template class QZPODParameter<std::string>;

}  // namespace QZSystem
