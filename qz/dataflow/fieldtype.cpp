#include "qz/dataflow/fieldtype.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "qz/dataflow/listelement_impl.h"
#include "qz/system/text/stringnumber.h"
#include "qz/system/text/tokenize.h"

namespace QZDataFlow {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::array<std::string_view, 15> kKindNames{"Int",    "String",    "Float",    "Blob",       "Bool",
                                                      "IntVec", "StringVec", "FloatVec", "BlobVec",    "BoolVec",
                                                      "Record", "RecordVec", "Range",    "JSONObject", "Link"};

// The byte form of a range is text.
constexpr char kNoBound[] = "null";
constexpr char kNoLow[] = "1.0";
constexpr char kNoHigh[] = "-1.0";
constexpr char kSameBounds[] = "0.0";
constexpr int kBoundDecimals = 6;

constexpr int kDisplayDecimals = 12;

/// The value that an element of T is read as, and made into a T.
template <class T>
struct Element {
  using Read = T;
  static T Make(T value) { return value; }
};
template <>
struct Element<std::string> {
  using Read = QZByteSlice;
  static std::string Make(QZByteSlice slice) {
    return std::string(reinterpret_cast<const char*>(slice.data), slice.size);
  }
};
template <>
struct Element<Bytes> {
  using Read = QZByteSlice;
  static Bytes Make(QZByteSlice slice) { return Bytes(slice.data, slice.data + slice.size); }
};

template <class T>
void Keep(std::vector<T>& out, T&& value, bool) {
  out.push_back(std::move(value));
}

template <class T>
void Keep(std::vector<std::optional<T>>& out, T&& value, bool none) {
  if (none) {
    out.emplace_back();
  } else {
    out.emplace_back(std::move(value));
  }
}

template <class T, class Values>
bool TakeList(Values& out, const unsigned char* data, std::size_t size) {
  // Room is made where elements have a fixed size, by the bytes that are there and not by what the count claims.
  const auto makeRoom = [&](std::size_t count, std::size_t remaining) {
    constexpr std::size_t kLeast = std::is_same_v<T, double> ? sizeof(double) : 1;
    if constexpr (std::is_arithmetic_v<T>) out.reserve(out.size() + std::min(count, remaining / kLeast));
  };
  const auto keep = [&](typename Element<T>::Read value, bool none) { Keep(out, Element<T>::Make(value), none); };
  return ListElement::ForEach<typename Element<T>::Read>(data, size, makeRoom, keep);
}

template <class Values>
void PutList(Bytes& out, const Values& values) {
  ListElement::PutCount(out, values.size());
  for (const auto& value : values) ListElement::Put(out, value);
}

/// The elements in their own display form, an absent one as "Null".
template <class T>
std::string FormatList(const std::vector<std::optional<T>>& values) {
  std::string text = "[";
  for (const std::optional<T>& value : values) {
    if (&value != values.data()) text += ", ";
    text += value ? QZFieldType<T>::Format(*value) : "Null";
  }
  return text + "]";
}

std::string BoundText(double bound) {
  std::string text;
  QZNumberToString(bound, text, 'f', kBoundDecimals);
  return text;
}

/// Reads a bound unless its text stands for none.
void ReadBound(std::string_view text, double& bound) {
  if (text != kNoBound) QZStringToNumber(text, bound);
}

/// Holds an object that is never destroyed, so that it serves the last static destructor too.
template <class T>
union Immortal {
  constexpr Immortal() : object() {}
  ~Immortal() {}
  T object;
};

template <class T>
Immortal<T> handler;

}  // namespace

// Records ask this for every value that they turn to JSON: the length leaves few names to compare with.
QZFieldKind QZGetFieldKind(std::string_view typeName) {
  for (std::size_t i = 0; i < kKindNames.size(); ++i) {
    if (typeName.size() == kKindNames[i].size() && typeName == kKindNames[i]) return static_cast<QZFieldKind>(i);
  }
  return QZFieldKind::Other;
}

std::string_view QZGetFieldKindName(QZFieldKind kind) {
  return kind == QZFieldKind::Other ? std::string_view() : kKindNames[static_cast<std::size_t>(kind)];
}

namespace Types {

const QZFieldType<long>& Int = handler<QZFieldType<long>>.object;
const QZFieldType<double>& Float = handler<QZFieldType<double>>.object;
const QZFieldType<std::string>& String = handler<QZFieldType<std::string>>.object;
const QZFieldType<bool>& Bool = handler<QZFieldType<bool>>.object;
const QZFieldType<std::vector<unsigned char>>& Blob = handler<QZFieldType<Bytes>>.object;
const QZFieldType<QZRange>& Range = handler<QZFieldType<QZRange>>.object;
const QZFieldType<QZJSONObject>& JSONObject = handler<QZFieldType<QZJSONObject>>.object;
const QZFieldType<QZLinkObject>& Link = handler<QZFieldType<QZLinkObject>>.object;
const QZFieldType<QZRecord>& Record = handler<QZFieldType<QZRecord>>.object;
const QZVectorFieldType<long>& IntVec = handler<QZVectorFieldType<long>>.object;
const QZVectorFieldType<double>& FloatVec = handler<QZVectorFieldType<double>>.object;
const QZVectorFieldType<std::string>& StringVec = handler<QZVectorFieldType<std::string>>.object;
const QZVectorFieldType<bool>& BoolVec = handler<QZVectorFieldType<bool>>.object;
const QZVectorFieldType<std::vector<unsigned char>>& BlobVec = handler<QZVectorFieldType<Bytes>>.object;
const QZVectorFieldType<QZRecord>& RecordVec = handler<QZVectorFieldType<QZRecord>>.object;

const QZFieldTypeHandler* GetBuiltIn(QZFieldKind kind) {
  const std::array<const QZFieldTypeHandler*, kKindNames.size() + 1> inOrder{
      &Int,     &String,  &Float,  &Blob,      &Bool,  &IntVec,     &StringVec, &FloatVec,
      &BlobVec, &BoolVec, &Record, &RecordVec, &Range, &JSONObject, &Link,      nullptr};
  return inOrder[static_cast<std::size_t>(kind)];
}

}  // namespace Types

template <>
std::string QZFieldType<long>::Format(const long& value) {
  return QZNumberToString(value);
}

template <>
std::string QZFieldType<double>::Format(const double& value) {
  if (std::isnan(value)) return "nan";
  std::string text;
  QZNumberToString(value, text, 'f', kDisplayDecimals);
  return text;
}

template <>
std::string QZFieldType<bool>::Format(const bool& value) {
  return value ? "True" : "False";
}

template <>
std::string QZFieldType<std::string>::Format(const std::string& value) {
  return value;
}

template <>
std::string QZFieldType<Bytes>::Format(const Bytes& value) {
  return "<Blob of length " + QZNumberToString(value.size()) + ">";
}

template <>
void QZFieldType<QZJSONObject>::AppendBytes(Bytes& out, const QZJSONObject& value) {
  const std::string& text = value.GetText();
  out.insert(out.end(), text.begin(), text.end());
}

template <>
bool QZFieldType<QZJSONObject>::FromBytes(QZJSONObject& out, const unsigned char* data, std::size_t size) {
  if (size == 0) return false;
  out = QZJSONObject(std::string(reinterpret_cast<const char*>(data), size));
  return true;
}

template <>
std::string QZFieldType<QZJSONObject>::Format(const QZJSONObject& value) {
  return value.GetText();
}

template <>
void QZFieldType<QZRange>::AppendBytes(Bytes& out, const QZRange& value) {
  const bool noLow = value.IsUnboundedLow();
  const bool noHigh = value.IsUnboundedHigh();
  const std::string low = noLow ? kNoBound : BoundText(value.low);
  const std::string high = noHigh ? kNoBound : BoundText(value.high);
  const char* const direction = noLow == noHigh ? kSameBounds : noLow ? kNoLow : kNoHigh;
  const std::string text = "[" + low + "," + high + "," + direction + "," + BoundText(value.inclusivity) + "]";
  out.insert(out.end(), text.begin(), text.end());
}

template <>
bool QZFieldType<QZRange>::FromBytes(QZRange& out, const unsigned char* data, std::size_t size) {
  if (size < 2) return false;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string_view> tokens;
  QZStringTokenize(tokens, text.substr(1, size - 2), ",");
  if (tokens.size() != 4) return false;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  double low = -kInfinity, high = kInfinity, direction = 0.0, inclusivity = 0.0;
  ReadBound(tokens[0], low);
  ReadBound(tokens[1], high);
  QZStringToNumber(tokens[2], direction);
  QZStringToNumber(tokens[3], inclusivity);
  if (direction < 0) high = kInfinity;
  if (direction > 0) low = -kInfinity;
  out = QZRange(std::vector<double>{low, high, inclusivity});
  return out.IsEmpty() || out.IsValid();
}

template <>
std::string QZFieldType<QZRange>::Format(const QZRange& value) {
  const std::string brackets = value.GetInclusivityString();
  const auto number = [](double bound) { return QZFieldType<double>::Format(bound); };
  if (value.IsEmpty()) return "None";
  if (value.IsUnboundedLow()) return (brackets[1] == ')' ? "<" : "<=") + number(value.high);
  if (value.IsUnboundedHigh()) return (brackets[0] == '(' ? ">" : ">=") + number(value.low);
  if (value.low == value.high) return number(value.low);
  return brackets[0] + number(value.low) + ", " + number(value.high) + brackets[1];
}

template <class T>
void QZVectorFieldType<T>::AppendBytes(Bytes& out, const std::vector<T>& values) {
  PutList(out, values);
}

template <class T>
void QZVectorFieldType<T>::AppendBytes(Bytes& out, const std::vector<std::optional<T>>& values) {
  PutList(out, values);
}

template <class T>
bool QZVectorFieldType<T>::FromBytes(std::vector<T>& out, const unsigned char* data, std::size_t size) {
  return TakeList<T>(out, data, size);
}

template <class T>
bool QZVectorFieldType<T>::FromBytes(std::vector<std::optional<T>>& out, const unsigned char* data, std::size_t size) {
  return TakeList<T>(out, data, size);
}

template <class T>
std::string QZVectorFieldType<T>::Format(const std::vector<std::optional<T>>& values) {
  return FormatList(values);
}

template class QZFieldType<long>;
template class QZFieldType<double>;
template class QZFieldType<std::string>;
template class QZFieldType<bool>;
template class QZFieldType<Bytes>;
template class QZFieldType<QZRange>;
template class QZFieldType<QZJSONObject>;
template class QZFieldType<QZRecord>;
template class QZVectorFieldType<long>;
template class QZVectorFieldType<double>;
template class QZVectorFieldType<std::string>;
template class QZVectorFieldType<bool>;
template class QZVectorFieldType<Bytes>;
template class QZVectorFieldType<QZRecord>;

}  // namespace QZDataFlow
