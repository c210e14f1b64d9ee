#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "qz/dataflow/fieldtypehandler.h"
#include "qz/dataflow/jsonobject.h"
#include "qz/dataflow/names.h"
#include "qz/dataflow/range.h"
#include "qz/dataflow/writebuffer.h"

namespace QZDataFlow {

class QZRecord;

/// The built-in types of field values, in the order of their list; Other is every type besides.
enum class QZFieldKind : unsigned char {
  Int,
  String,
  Float,
  Blob,
  Bool,
  IntVec,
  StringVec,
  FloatVec,
  BlobVec,
  BoolVec,
  Record,
  RecordVec,
  Range,
  JSONObject,
  Link,
  Other
};

/// The kind of a type by its stored name, which is built in when it equals one of theirs exactly.
QZFieldKind QZGetFieldKind(std::string_view typeName);
/// The stored name of a built-in kind, and of Other the empty text.
std::string_view QZGetFieldKindName(QZFieldKind kind);

namespace FieldTypeImpl {

/// What tells a built-in type from the others: its kind as a scalar and as a list.
template <class T>
struct Traits;
template <>
struct Traits<long> {
  static constexpr QZFieldKind kKind = QZFieldKind::Int, kVecKind = QZFieldKind::IntVec;
};
template <>
struct Traits<double> {
  static constexpr QZFieldKind kKind = QZFieldKind::Float, kVecKind = QZFieldKind::FloatVec;
};
template <>
struct Traits<std::string> {
  static constexpr QZFieldKind kKind = QZFieldKind::String, kVecKind = QZFieldKind::StringVec;
};
template <>
struct Traits<bool> {
  static constexpr QZFieldKind kKind = QZFieldKind::Bool, kVecKind = QZFieldKind::BoolVec;
};
template <>
struct Traits<std::vector<unsigned char>> {
  static constexpr QZFieldKind kKind = QZFieldKind::Blob, kVecKind = QZFieldKind::BlobVec;
};
template <>
struct Traits<QZRecord> {
  static constexpr QZFieldKind kKind = QZFieldKind::Record, kVecKind = QZFieldKind::RecordVec;
};
template <>
struct Traits<QZRange> {
  static constexpr QZFieldKind kKind = QZFieldKind::Range;
};
template <>
struct Traits<QZJSONObject> {
  static constexpr QZFieldKind kKind = QZFieldKind::JSONObject;
};
template <>
struct Traits<QZLinkObject> {
  static constexpr QZFieldKind kKind = QZFieldKind::Link;
};

/// Whether values of this kind may be held decoded and turned into bytes later.
constexpr bool HasPtrForm(QZFieldKind kind) {
  return kind == QZFieldKind::Int || kind == QZFieldKind::String || kind == QZFieldKind::Blob ||
         kind == QZFieldKind::Record || kind == QZFieldKind::RecordVec;
}

/// Whether a list of Given is stored as a list of Stored after widening each element.
template <class Stored, class Given>
inline constexpr bool kWidens = (std::is_same_v<Stored, long> &&
                                 (std::is_same_v<Given, int> || std::is_same_v<Given, unsigned int>)) ||
                                (std::is_same_v<Stored, double> && std::is_same_v<Given, float>);

}  // namespace FieldTypeImpl

/// The byte form and the display form of one value of type T.
///
///     std::vector<unsigned char> bytes = QZFieldType<long>::ToBytes(128);  // 80 00
///     long value = 0;
///     if (QZFieldType<long>::FromBytes(value, bytes)) text = QZFieldType<long>::Format(value);
///
/// T is `long`, `double`, `std::string`, `bool`, `std::vector<unsigned char>`, `QZRange`, `QZJSONObject`,
/// `QZLinkObject` or `QZRecord`. The byte form carries no length of its own. Safe from any thread.
template <class T>
class QZFieldType : public QZFieldTypeHandler {
 public:
  static constexpr QZFieldKind Kind = FieldTypeImpl::Traits<T>::kKind;

  /// The byte form of `value`.
  static std::vector<unsigned char> ToBytes(const T& value) {
    std::vector<unsigned char> bytes;
    AppendBytes(bytes, value);
    return bytes;
  }
  /// The same, with no value for no value.
  static std::optional<std::vector<unsigned char>> ToBytes(std::nullopt_t) { return std::nullopt; }
  template <class U, class = std::enable_if_t<std::is_convertible_v<const U&, const T&>>>
  static std::optional<std::vector<unsigned char>> ToBytes(const std::optional<U>& value) {
    if (!value) return std::nullopt;
    return ToBytes(static_cast<const T&>(*value));
  }
  /// Appends the byte form to `out`.
  static void AppendBytes(std::vector<unsigned char>& out, const T& value);

  /// Decodes the byte form. False, with `out` as it was, when there are no bytes, except that a string and a blob of no
  /// bytes are values; for an Int of more than 8 bytes; for a Float of fewer than 8, while of more than 8 the first
  /// count; and for a Range that isn't a list of four. A Range also gives false when it came out neither empty nor
  /// valid. A JSON object whose text is no such document warns and comes out empty, with true.
  static bool FromBytes(T& out, const std::vector<unsigned char>& bytes) {
    return FromBytes(out, bytes.data(), bytes.size());
  }
  static bool FromBytes(T& out, const unsigned char* data, std::size_t size);

  /// The text by which a value is shown.
  static std::string Format(const T& value);

  std::vector<unsigned char> PtrToBytes(const void* value) const override {
    if constexpr (FieldTypeImpl::HasPtrForm(Kind)) return ToBytes(*static_cast<const T*>(value));
    return QZFieldTypeHandler::PtrToBytes(value);
  }
  std::string GetName() const override { return std::string(QZGetFieldKindName(Kind)); }
  bool IsCacheable() const override { return Kind == QZFieldKind::Record; }
  bool IsPOD() const override { return Kind < QZFieldKind::Record; }
};

/// A link has the forms of a JSON object, and a name of its own.
template <>
class QZFieldType<QZLinkObject> : public QZFieldType<QZJSONObject> {
 public:
  static constexpr QZFieldKind Kind = QZFieldKind::Link;

  std::string GetName() const override { return std::string(QZGetFieldKindName(Kind)); }
};

/// The byte form and the display form of a list of T, in which an element may be absent.
///
///     const std::vector<std::optional<long>> ids{1, std::nullopt, 3};
///     std::vector<unsigned char> bytes = QZVectorFieldType<long>::ToBytes(ids);
///
/// T is `long`, `double`, `std::string`, `bool`, `std::vector<unsigned char>` or `QZRecord`. Safe from any thread.
template <class T>
class QZVectorFieldType : public QZFieldTypeHandler {
 public:
  static constexpr QZFieldKind Kind = FieldTypeImpl::Traits<T>::kVecKind;

  /// The byte form of `values`: the count, then each element.
  static std::vector<unsigned char> ToBytes(const std::vector<T>& values) { return BytesOf(values); }
  static std::vector<unsigned char> ToBytes(const std::vector<std::optional<T>>& values) { return BytesOf(values); }
  /// The same of elements that widen: `int` and `unsigned int` to `long`, `float` to `double`.
  template <class U, class = std::enable_if_t<FieldTypeImpl::kWidens<T, U>>>
  static std::vector<unsigned char> ToBytes(const std::vector<U>& values) {
    return ToBytes(std::vector<T>(values.begin(), values.end()));
  }
  /// Append the byte form to `out`.
  static void AppendBytes(std::vector<unsigned char>& out, const std::vector<T>& values);
  static void AppendBytes(std::vector<unsigned char>& out, const std::vector<std::optional<T>>& values);

  /// Decode the byte form and append the elements to `out`. An absent one becomes an empty optional, in a `vector<T>`
  /// the default value. False when there are no bytes, when the count is above the bytes that remain, and when an
  /// element is cut short; the elements before it are in `out`. A count below 1 adds nothing and gives true.
  static bool FromBytes(std::vector<T>& out, const std::vector<unsigned char>& bytes) {
    return FromBytes(out, bytes.data(), bytes.size());
  }
  static bool FromBytes(std::vector<std::optional<T>>& out, const std::vector<unsigned char>& bytes) {
    return FromBytes(out, bytes.data(), bytes.size());
  }
  static bool FromBytes(std::vector<T>& out, const unsigned char* data, std::size_t size);
  static bool FromBytes(std::vector<std::optional<T>>& out, const unsigned char* data, std::size_t size);

  /// The text by which a list is shown: its elements, or for records their number.
  static std::string Format(const std::vector<std::optional<T>>& values);

  /// For records: the elements copied into a new `vector<optional<QZRecord>>`, the form that PtrToBytes expects.
  static std::shared_ptr<void> GetCopyForCache(const std::vector<std::optional<QZRecord>>& values);
  static std::shared_ptr<void> GetCopyForCache(const std::vector<QZRecord>& values);

  std::vector<unsigned char> PtrToBytes(const void* value) const override {
    if constexpr (FieldTypeImpl::HasPtrForm(Kind))
      return ToBytes(*static_cast<const std::vector<std::optional<T>>*>(value));
    return QZFieldTypeHandler::PtrToBytes(value);
  }
  std::string GetName() const override { return std::string(QZGetFieldKindName(Kind)); }
  bool IsPOD() const override { return Kind != QZFieldKind::RecordVec; }

 private:
  template <class Values>
  static std::vector<unsigned char> BytesOf(const Values& values) {
    std::vector<unsigned char> bytes;
    AppendBytes(bytes, values);
    return bytes;
  }
};

/// One handler object for each built-in type, there from the first static initialiser to the end of the process.
namespace Types {

extern const QZFieldType<long>& Int;
extern const QZFieldType<double>& Float;
extern const QZFieldType<std::string>& String;
extern const QZFieldType<bool>& Bool;
extern const QZFieldType<std::vector<unsigned char>>& Blob;
extern const QZFieldType<QZRange>& Range;
extern const QZFieldType<QZJSONObject>& JSONObject;
extern const QZFieldType<QZLinkObject>& Link;
extern const QZFieldType<QZRecord>& Record;
extern const QZVectorFieldType<long>& IntVec;
extern const QZVectorFieldType<double>& FloatVec;
extern const QZVectorFieldType<std::string>& StringVec;
extern const QZVectorFieldType<bool>& BoolVec;
extern const QZVectorFieldType<std::vector<unsigned char>>& BlobVec;
extern const QZVectorFieldType<QZRecord>& RecordVec;

/// The handler of a built-in kind; null for Other.
const QZFieldTypeHandler* GetBuiltIn(QZFieldKind kind);

}  // namespace Types

namespace FieldTypeImpl {

/// The byte forms of plain values: each writes to `out`, which has room for 8 bytes, and returns how many it takes.

inline std::size_t Encode(long value, unsigned char* out) {
  std::memcpy(out, &value, sizeof value);
  return QZWriteBuffer::PayloadSize(value);
}

inline std::size_t Encode(double value, unsigned char* out) {
  std::memcpy(out, &value, sizeof value);
  return sizeof value;
}

// The sense is inverted: true is the byte 0. The elements of a list have it the other way round.
inline std::size_t Encode(bool value, unsigned char* out) {
  *out = value ? 0 : 1;
  return 1;
}

template <class T>
void AppendEncoded(std::vector<unsigned char>& out, T value) {
  const std::size_t before = out.size();
  out.resize(before + 8);
  out.resize(before + Encode(value, out.data() + before));
}

}  // namespace FieldTypeImpl

// The forms that a reader of records meets in each value stand here, so that they inline.

template <>
inline void QZFieldType<long>::AppendBytes(std::vector<unsigned char>& out, const long& value) {
  FieldTypeImpl::AppendEncoded(out, value);
}

template <>
inline bool QZFieldType<long>::FromBytes(long& out, const unsigned char* data, std::size_t size) {
  if (size == 0 || size > sizeof out) return false;
  long value = (data[size - 1] & 0x80u) != 0 ? -1 : 0;
  std::memcpy(&value, data, size);
  out = value;
  return true;
}

template <>
inline void QZFieldType<double>::AppendBytes(std::vector<unsigned char>& out, const double& value) {
  FieldTypeImpl::AppendEncoded(out, value);
}

template <>
inline bool QZFieldType<double>::FromBytes(double& out, const unsigned char* data, std::size_t size) {
  if (size < sizeof out) return false;
  std::memcpy(&out, data, sizeof out);
  return true;
}

template <>
inline void QZFieldType<bool>::AppendBytes(std::vector<unsigned char>& out, const bool& value) {
  FieldTypeImpl::AppendEncoded(out, value);
}

template <>
inline bool QZFieldType<bool>::FromBytes(bool& out, const unsigned char* data, std::size_t size) {
  if (size == 0) return false;
  out = data[0] == 0;
  return true;
}

template <>
inline void QZFieldType<std::string>::AppendBytes(std::vector<unsigned char>& out, const std::string& value) {
  out.insert(out.end(), value.begin(), value.end());
}

template <>
inline bool QZFieldType<std::string>::FromBytes(std::string& out, const unsigned char* data, std::size_t size) {
  out.assign(reinterpret_cast<const char*>(data), size);
  return true;
}

template <>
inline void QZFieldType<std::vector<unsigned char>>::AppendBytes(std::vector<unsigned char>& out,
                                                                 const std::vector<unsigned char>& value) {
  const std::size_t size = value.size();
  out.resize(out.size() + size);
  // From the start of `value` as it is now, which may be `out` itself.
  if (size != 0) std::memcpy(out.data() + (out.size() - size), value.data(), size);
}

template <>
inline bool QZFieldType<std::vector<unsigned char>>::FromBytes(std::vector<unsigned char>& out,
                                                               const unsigned char* data, std::size_t size) {
  out.assign(data, data + size);
  return true;
}

// The others are defined in the sources of their types, those of records with the byte form of a record.

template <>
std::string QZFieldType<long>::Format(const long& value);
template <>
std::string QZFieldType<double>::Format(const double& value);
template <>
std::string QZFieldType<bool>::Format(const bool& value);
template <>
std::string QZFieldType<std::string>::Format(const std::string& value);
template <>
std::string QZFieldType<std::vector<unsigned char>>::Format(const std::vector<unsigned char>& value);
template <>
void QZFieldType<QZRange>::AppendBytes(std::vector<unsigned char>& out, const QZRange& value);
template <>
bool QZFieldType<QZRange>::FromBytes(QZRange& out, const unsigned char* data, std::size_t size);
template <>
std::string QZFieldType<QZRange>::Format(const QZRange& value);
template <>
void QZFieldType<QZJSONObject>::AppendBytes(std::vector<unsigned char>& out, const QZJSONObject& value);
template <>
bool QZFieldType<QZJSONObject>::FromBytes(QZJSONObject& out, const unsigned char* data, std::size_t size);
template <>
std::string QZFieldType<QZJSONObject>::Format(const QZJSONObject& value);
template <>
void QZFieldType<QZRecord>::AppendBytes(std::vector<unsigned char>& out, const QZRecord& value);
template <>
bool QZFieldType<QZRecord>::FromBytes(QZRecord& out, const unsigned char* data, std::size_t size);
template <>
std::string QZFieldType<QZRecord>::Format(const QZRecord& value);
template <>
void QZVectorFieldType<QZRecord>::AppendBytes(std::vector<unsigned char>& out, const std::vector<QZRecord>& values);
template <>
void QZVectorFieldType<QZRecord>::AppendBytes(std::vector<unsigned char>& out,
                                              const std::vector<std::optional<QZRecord>>& values);
template <>
bool QZVectorFieldType<QZRecord>::FromBytes(std::vector<QZRecord>& out, const unsigned char* data, std::size_t size);
template <>
bool QZVectorFieldType<QZRecord>::FromBytes(std::vector<std::optional<QZRecord>>& out, const unsigned char* data,
                                            std::size_t size);
template <>
std::string QZVectorFieldType<QZRecord>::Format(const std::vector<std::optional<QZRecord>>& values);
template <>
std::shared_ptr<void> QZVectorFieldType<QZRecord>::GetCopyForCache(const std::vector<std::optional<QZRecord>>& values);
template <>
std::shared_ptr<void> QZVectorFieldType<QZRecord>::GetCopyForCache(const std::vector<QZRecord>& values);

extern template class QZFieldType<long>;
extern template class QZFieldType<double>;
extern template class QZFieldType<std::string>;
extern template class QZFieldType<bool>;
extern template class QZFieldType<std::vector<unsigned char>>;
extern template class QZFieldType<QZRange>;
extern template class QZFieldType<QZJSONObject>;
extern template class QZFieldType<QZRecord>;
extern template class QZVectorFieldType<long>;
extern template class QZVectorFieldType<double>;
extern template class QZVectorFieldType<std::string>;
extern template class QZVectorFieldType<bool>;
extern template class QZVectorFieldType<std::vector<unsigned char>>;
extern template class QZVectorFieldType<QZRecord>;

}  // namespace QZDataFlow
