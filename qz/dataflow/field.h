#pragma once

#include <string>
#include <vector>

#include "qz/dataflow/metadata.h"
#include "qz/dataflow/names.h"

namespace QZDataFlow {

class QZJSONObject;
class QZLinkObject;
class QZRange;
class QZRecord;
class QZRecordImpl;

/// The description of a field: its name, the type of its value, and what its metadata says about it. A record holds
/// one for each of its fields, and every operation of a record takes one to say which field it means.
///
///     for (const QZFieldBase& field : record.GetFields()) qzout << field.GetName() << ' ' << field.GetTypeName() <<
///     qzendl; record.DeleteField(record.GetFields().front());
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZFieldBase {
 public:
  /// An invalid field, without a type. It stands for "every field" where an operation restricts itself to one; nothing
  /// is ever stored for it.
  QZFieldBase() = default;
  /// A field without a type, and so invalid: the typed classes below give it one.
  explicit QZFieldBase(std::string fieldName, QZFieldMeta fieldMeta = {}, bool isReadonly = false,
                       bool isNullable = false);
  QZFieldBase(const QZFieldBase&) = default;
  QZFieldBase(QZFieldBase&&) = default;
  QZFieldBase& operator=(const QZFieldBase&) = default;
  QZFieldBase& operator=(QZFieldBase&&) = default;
  virtual ~QZFieldBase() = default;

  /// Whether the field has a type.
  bool IsValid() const { return !type.empty(); }
  const std::string& GetName() const { return name; }
  void SetName(const std::string& fieldName) { name = fieldName; }

  /// The name under which the type is stored, "Int" or "wrapper:Int".
  std::string GetTypeName() const;
  /// The two halves of that name: the type of the value, and the wrapper, which is usually empty.
  const std::string& GetType() const { return type; }
  const std::string& GetWrapper() const { return wrapper; }

  /// Whether a value may be missing. It is stored with a record; nothing enforces it.
  bool IsNullable() const { return nullable; }
  /// Whether a record refuses values given under this description. It isn't stored with a record.
  bool IsReadonly() const { return readonly; }

  QZFieldMeta GetMeta() const { return meta; }
  /// The metadata without a copy; it lives as long as the field, and changes with it.
  const QZFieldMeta& PeekMeta() const { return meta; }
  void SetMeta(const QZFieldMeta& fieldMeta) { meta = fieldMeta; }

 protected:
  /// Makes a record look for the first of its fields, in order of name, that has the same type and at least this
  /// metadata, and take the name only when there is none: such a field finds a value by what it is.
  void SetMatchByMeta(bool match) { matchByMeta = match; }

 private:
  friend class QZRecordImpl;
  template <class T>
  friend class QZField;
  template <class T>
  friend class QZVectorField;

  std::string type;
  std::string wrapper;
  bool matchByMeta = false;
  std::string name;
  bool nullable = false;
  bool readonly = false;
  QZFieldMeta meta;
};

/// A field whose value is a T, one of `long` ("Int"), `std::string` ("String"), `double` ("Float"),
/// `std::vector<unsigned char>` ("Blob"), `bool` ("Bool"), `QZRange`, `QZJSONObject`, `QZLinkObject` ("Link") and
/// `QZRecord`. Make it once, and use it with every record.
///
///     const QZField<double> mass("mass");
///     if (record.GetValue(mass) > 100.0) record.SetValue(QZField<std::string>("class"), "heavy");
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZField : public QZFieldBase {
 public:
  explicit QZField(const std::string& fieldName, QZFieldMeta fieldMeta = {}, bool isReadonly = false,
                   bool isNullable = false);
  ~QZField() override = default;
  QZField(const QZField&) = default;
  QZField(QZField&&) = default;
  QZField& operator=(const QZField&) = default;
  QZField& operator=(QZField&&) = default;
};

/// A field whose value is a vector of T, one of `long` ("IntVec"), `std::string` ("StringVec"), `double` ("FloatVec"),
/// `std::vector<unsigned char>` ("BlobVec"), `bool` ("BoolVec") and `QZRecord` ("RecordVec"). An element may be absent.
///
///     const QZVectorField<double> position("position");
///     record.SetValue(position, std::vector<float>{0.5f, 1.5f, 0.0f});
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZVectorField : public QZFieldBase {
 public:
  explicit QZVectorField(const std::string& fieldName, QZFieldMeta fieldMeta = {}, bool isReadonly = false,
                         bool isNullable = false);
  ~QZVectorField() override = default;
  QZVectorField(const QZVectorField&) = default;
  QZVectorField(QZVectorField&&) = default;
  QZVectorField& operator=(const QZVectorField&) = default;
  QZVectorField& operator=(QZVectorField&&) = default;
};

extern template class QZField<long>;
extern template class QZField<std::string>;
extern template class QZField<double>;
extern template class QZField<std::vector<unsigned char>>;
extern template class QZField<bool>;
extern template class QZField<QZRange>;
extern template class QZField<QZJSONObject>;
extern template class QZField<QZLinkObject>;
extern template class QZField<QZRecord>;
extern template class QZVectorField<long>;
extern template class QZVectorField<std::string>;
extern template class QZVectorField<double>;
extern template class QZVectorField<std::vector<unsigned char>>;
extern template class QZVectorField<bool>;
extern template class QZVectorField<QZRecord>;

}  // namespace QZDataFlow
