#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qz/dataflow/field.h"
#include "qz/dataflow/recordvalue_impl.h"

namespace QZDataFlow {

/// A self-describing bag of named, typed values: what a data-flow step reads, adds to and passes on.
///
///     const QZField<double> mass("mass"), weight("weight");
///     QZRecord record;
///     while (QZReadRecord(record, in, "binary")) {
///       record.SetValue(weight, 9.81 * record.GetValue(mass));
///       QZWriteRecord(out, record, "binary");
///     }
///
/// A value is its bytes: it is decoded when it is asked for and not before, so that reading a record costs nothing for
/// the fields that nobody touches, and writing it copies them, known or not. A field with a value may also be null: it
/// has no value then, and says so. A record that was moved from may only be destroyed or assigned to.
///
/// One thread at a time, const operations included: they fill and write back caches. Two records never share what a
/// change could reach, whatever they were copied from, decoded child records apart.
class QZRecord {
 public:
  /// The code of CheckField: what a record knows about a field.
  enum FieldState : int { HasItsValue = 0, NoField = 1, NoValue = 2, IsNull = 3, OtherType = 4, OtherMeta = 5 };

  QZRecord();
  /// A copy is a new record: it has the fields and values, but neither the source ID nor the decoded values kept in
  /// the cache; those are written to the bytes of the copy first. Child records that are decoded at this time are
  /// shared by both until a Flush.
  QZRecord(const QZRecord& other);
  QZRecord(QZRecord&& other) noexcept;
  /// As the copy constructor, but the source ID comes along.
  QZRecord& operator=(const QZRecord& other);
  QZRecord& operator=(QZRecord&& other) noexcept;
  virtual ~QZRecord();

  /// Called with each field whose child records are about to be turned to bytes, when any are decoded. An override may
  /// bring the children of that field up to date; what it does to the children of other fields may be lost. This one
  /// does nothing.
  virtual void FixChildCache(QZFieldBase field) const;

  // The record as a whole.

  void Clear();
  /// Turns all decoded child records and values to bytes and forgets them.
  void Flush();
  /// Whether the record has no fields.
  bool IsEmpty() const;
  QZRecordMeta GetRecordMeta() const;
  void SetRecordMeta(const QZRecordMeta& meta);
  /// Where the record came from: a text kept in the record metadata, empty when there is none.
  std::string GetSourceID() const;
  void SetSourceID(const std::string& id);
  /// The version of the stored form that is written, "1.0".
  static std::string GetVersion();
  /// The stored form of the record. The second form replaces what `out` holds.
  std::vector<unsigned char> ToBytes() const;
  void ToBytes(std::vector<unsigned char>& out) const;
  /// Clears the record and reads the stored form. False when the bytes can't be taken apart; what was read up to there
  /// stays. Throws nothing but std::bad_alloc.
  [[nodiscard]] bool FromBytes(const std::vector<unsigned char>& bytes);

  // Fields. A field given to an operation finds the record's field of its name; the types agree when the record's
  // type name is the same or ends with that of the field given.

  /// Adds a field without a value, or describes the field of that name anew and keeps its value. A field of that name
  /// with another type is deleted first. Always true; an invalid field isn't stored.
  bool AddField(const QZFieldBase& field);
  /// Deletes the field of that name, whatever its type, with its value. False when there was none.
  bool DeleteField(const QZFieldBase& field);
  /// Copies of the fields, in ascending order of index.
  std::vector<QZFieldBase> GetFields() const;
  /// The metadata of the field, empty when there is no such field.
  QZFieldMeta GetFieldMeta(const std::string& name) const;
  /// The number, from 1, under which the stored form keeps the field: the present one, or else the next free one. The
  /// const form gives all ones when the field isn't there or has another type.
  unsigned int GetFieldIdx(const QZFieldBase& field);
  unsigned int GetFieldIdx(const QZFieldBase& field) const;
  /// What the record has for this field, a FieldState. With `strict` the record's field must have at least the metadata
  /// of the field given.
  int CheckField(const QZFieldBase& field, bool strict = false) const;
  /// Whether the record has the field with that type, and with `strict` that metadata.
  bool HasField(const QZFieldBase& field, bool strict = false) const;
  /// Whether the field has a value or is null, which IsNA tells apart.
  bool HasValue(const QZFieldBase& field) const;
  bool IsNA(const std::string& name) const;
  bool IsNA(const QZFieldBase& field) const;

  // Values.

  /// Sets the value, and adds the field if need be. No value makes the field null. False, and nothing changed, for a
  /// readonly field. An invalid field isn't stored.
  bool SetBytes(const QZFieldBase& field, const std::vector<unsigned char>& bytes);
  bool SetBytes(const QZFieldBase& field, const std::optional<std::vector<unsigned char>>& bytes);
  /// The bytes of the value, empty when there is none. The form with `out` appends to it and tells whether there was a
  /// value, which may have no bytes.
  std::vector<unsigned char> GetBytes(const std::string& name) const;
  std::vector<unsigned char> GetBytes(const QZFieldBase& field) const;
  bool GetBytes(std::vector<unsigned char>& out, const QZFieldBase& field) const;
  /// Takes the value away, so that the field has none and isn't null. False when it had none; one that is null because
  /// of that stays null.
  bool ClearValue(const QZFieldBase& field);

  /// Sets the value of a field from a `Given`: the type of the field, one that converts to it, or an std::optional of
  /// these, of which none makes the field null. The result is that of SetBytes.
  template <typename Stored, typename Given = Stored>
  bool SetValue(const QZField<Stored>& field, const Given& value);
  /// Sets the value of a field from a vector of `Given`, or of std::optional<Given>, in which an element may be absent.
  /// No vector makes the field null.
  template <typename Stored, typename Given = std::optional<Stored>>
  bool SetValue(const QZVectorField<Stored>& field, const std::vector<Given>& values);
  template <typename Stored, typename Given>
  bool SetValue(const QZVectorField<Stored>& field, const std::optional<std::vector<Given>>& values);
  template <typename Stored>
  bool SetValue(const QZVectorField<Stored>& field, std::nullopt_t none);

  /// The value as the type of the field, or converted to `Wanted`; the default value (0, an empty text, and so on)
  /// when it is null, there is none, or its bytes don't decode. With an std::optional as `Wanted` those cases give no
  /// value. A record that is decoded is kept, so that the next reading only copies it.
  ///
  ///     record.GetValue(mass)  record.GetValue<float>(mass)  record.GetValue<std::optional<double>>(mass)
  template <typename Wanted = void, typename Stored>
  RecordValue::Scalar<Wanted, Stored> GetValue(const QZField<Stored>& field) const;
  /// The elements as an std::vector<std::optional<Wanted>>, in which absent elements are absent, empty for lack of a
  /// value. A `Wanted` of std::vector<T> gives a plain vector, with default values for absent elements; one of
  /// std::optional<T> gives an std::optional of the vector.
  template <typename Wanted = void, typename Stored>
  RecordValue::Vector<Wanted, Stored> GetValue(const QZVectorField<Stored>& field) const;

  // Decoded values: the record keeps a shared object for a field and turns it to bytes when bytes are needed. The
  // object is a T for a field of type T, for "RecordVec" an std::vector<std::optional<QZRecord>>.

  /// Makes the object the value of the field, which is added if need be. False, and nothing changed, for a readonly or
  /// invalid field, and for a built-in type that has no form for objects: all but "Int", "String", "Blob", "Record" and
  /// "RecordVec".
  bool AddToCache(const QZFieldBase& field, std::shared_ptr<void> value);
  /// Keeps an object that was decoded from the value of the field. It does nothing for a null object and in the cases
  /// that AddToCache refuses, a readonly field apart.
  void CacheOnRead(const QZFieldBase& field, std::shared_ptr<void> value) const;
  /// The object kept for the field, or null. With `onlyDirty` one that agrees with the bytes counts as none.
  std::shared_ptr<void> CheckCache(const QZFieldBase& field, bool onlyDirty = false) const;
  /// To be called after a change to the object: it is the value from now on. With `updateField` the record also takes
  /// over the description of the field, which isn't null any longer.
  void MarkCacheDirty(const QZFieldBase& field, bool updateField = false);
  /// Forgets the object kept for the field of this index. False when there was none.
  bool ClearCacheEntry(int idx);

  // Child records: a set of records under string keys that a field can carry next to its value. A form with an int
  // uses its decimal text as the key. The key "__qz__key" of a child is reserved for its place in the stored form.

  /// The stored form of the children of the field, empty for a field the record lacks.
  std::vector<unsigned char> GetChildBytes(const QZFieldBase& field) const;
  /// Replaces the children of the field. False for a field the record lacks.
  bool SetChildBytes(const QZFieldBase& field, const std::vector<unsigned char>& bytes);
  bool HasChildRecords(const QZFieldBase& field) const;
  bool HasChildRecord(const QZFieldBase& field, const std::string& key) const;
  bool HasChildRecord(const QZFieldBase& field, int n) const;
  /// The child of that key, made when there is none, or null for a field that the record lacks. The caller changes it
  /// in place. The pointer stays good until Flush, Clear, or the deletion or replacement of the child. A child that is
  /// empty isn't stored.
  QZRecord* GetChildRecord(const QZFieldBase& field, const std::string& key) const;
  QZRecord* GetChildRecord(const QZFieldBase& field, int n) const;
  /// Copies of all children of the field.
  std::map<std::string, QZRecord> GetChildRecords(const QZFieldBase& field) const;
  /// Adds a copy of `record`, or replaces the child of that key. False when the record lacks the field. It decodes and
  /// encodes all children of the field.
  bool AddChildRecord(const QZFieldBase& field, const std::string& key, const QZRecord& record);
  /// Replaces all children of the field by copies of these; an empty map changes nothing. The records of the map are
  /// left with the field "__qz__key". False when the record lacks the field.
  bool SetChildren(const QZFieldBase& field, std::map<std::string, QZRecord>& children);
  /// False when there was none.
  bool DeleteChildRecord(const QZFieldBase& field, const std::string& key);
  /// False for a field the record doesn't have.
  bool DeleteChildRecords(const QZFieldBase& field);
  /// Decodes the children of the field, if they aren't decoded.
  void LoadChildCache(const QZFieldBase& field) const;
  /// Turns the decoded children of the field, or of all fields, to bytes, and keeps them decoded as well.
  void UnloadChildCache(QZFieldBase field = QZFieldBase()) const;

 private:
  friend class QZRecordImpl;

  template <typename T>
  bool WriteValue(const QZField<T>& field, const T& value);
  template <typename T>
  bool WriteValues(const QZVectorField<T>& field, const std::vector<T>& values);
  template <typename T>
  bool WriteValues(const QZVectorField<T>& field, const std::vector<std::optional<T>>& values);
  template <typename T>
  bool ReadValue(const QZField<T>& field, T& value) const;
  template <typename T>
  bool ReadValues(const QZVectorField<T>& field, std::vector<std::optional<T>>& values) const;

  std::unique_ptr<QZRecordImpl> impl;
};

template <typename Stored, typename Given>
bool QZRecord::SetValue(const QZField<Stored>& field, const Given& value) {
  if constexpr (std::is_same_v<Given, std::nullopt_t>) {
    return SetBytes(field, std::optional<std::vector<unsigned char>>());
  } else if constexpr (std::is_same_v<Given, Stored>) {
    return WriteValue(field, value);
  } else if constexpr (RecordValue::IsOptional<Given>) {
    return value ? SetValue(field, *value) : SetValue(field, std::nullopt);
  } else {
    return WriteValue(field, static_cast<Stored>(value));
  }
}

template <typename Stored, typename Given>
bool QZRecord::SetValue(const QZVectorField<Stored>& field, const std::vector<Given>& values) {
  if constexpr (std::is_same_v<Given, Stored> || std::is_same_v<Given, std::optional<Stored>>) {
    return WriteValues(field, values);
  } else {
    return WriteValues(field, RecordValue::Convert<RecordValue::Element<Stored, Given>>(values));
  }
}

template <typename Stored, typename Given>
bool QZRecord::SetValue(const QZVectorField<Stored>& field, const std::optional<std::vector<Given>>& values) {
  return values ? SetValue(field, *values) : SetValue(field, std::nullopt);
}

template <typename Stored>
bool QZRecord::SetValue(const QZVectorField<Stored>& field, std::nullopt_t) {
  return SetBytes(field, std::optional<std::vector<unsigned char>>());
}

template <typename Wanted, typename Stored>
RecordValue::Scalar<Wanted, Stored> QZRecord::GetValue(const QZField<Stored>& field) const {
  using Result = RecordValue::Scalar<Wanted, Stored>;
  Stored value{};
  const bool has = ReadValue(field, value);
  if constexpr (std::is_same_v<Result, Stored>) {
    return value;
  } else if constexpr (RecordValue::IsOptional<Result>) {
    return has ? Result(static_cast<typename Result::value_type>(std::move(value))) : Result();
  } else {
    return static_cast<Result>(std::move(value));
  }
}

template <typename Wanted, typename Stored>
RecordValue::Vector<Wanted, Stored> QZRecord::GetValue(const QZVectorField<Stored>& field) const {
  using Result = RecordValue::Vector<Wanted, Stored>;
  std::vector<std::optional<Stored>> values;
  const bool has = ReadValues(field, values);
  if constexpr (RecordValue::IsOptional<Result>) {
    return has ? Result(RecordValue::To<typename Result::value_type>(std::move(values))) : Result();
  } else {
    return RecordValue::To<Result>(std::move(values));
  }
}

}  // namespace QZDataFlow
