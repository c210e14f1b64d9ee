#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qz/dataflow/metadatakeys.h"
#include "qz/dataflow/names.h"

namespace QZDataFlow {

class QZFieldBase;

/// What is known about a field or a record besides its values: options, which it has or hasn't, and attributes, which
/// carry a string, a double or an int under a key and may occur more than once.
///
///     QZFieldMeta meta;
///     meta.SetOption(QZMeta::GetValue("Units.Mass.Da")).SetAttribute(0x06020002, 3);
///     for (unsigned int key : meta.GetOptions()) list.push_back(QZMeta::GetName(key));
///
/// The keys are those of QZMetadata. Const operations may run in parallel; a change needs exclusive access.
class QZMeta {
 public:
  using Attribute = std::pair<unsigned int, std::vector<unsigned char>>;

  QZMeta() = default;
  QZMeta(const QZMeta&) = default;
  QZMeta(QZMeta&&) = default;
  QZMeta& operator=(const QZMeta&) = default;
  QZMeta& operator=(QZMeta&&) = default;
  virtual ~QZMeta() = default;

  /// Adds the option unless it is there. A unit takes the place of any other unit. Any key is accepted, also one that
  /// takes values. An override must do the same to this object and return it; the same goes for all operations below.
  virtual QZMeta& SetOption(unsigned int key);
  /// Adds each option as SetOption does, to those that are there.
  virtual QZMeta& SetOptions(const std::vector<unsigned int>& keys);
  virtual QZMeta& RemoveOption(unsigned int key);
  /// Makes `value` the only value of the key. A key that doesn't take this type is left alone, without a message.
  virtual QZMeta& SetAttribute(unsigned int key, const std::string& value);
  virtual QZMeta& SetAttribute(unsigned int key, const double& value);
  virtual QZMeta& SetAttribute(unsigned int key, const int& value);
  /// Adds `value` to those of the key, also when it is among them. A key that doesn't take this type is left alone.
  virtual QZMeta& AddAttribute(unsigned int key, const std::string& value);
  virtual QZMeta& AddAttribute(unsigned int key, const double& value);
  virtual QZMeta& AddAttribute(unsigned int key, const int& value);
  /// Removes all values of the key, or each that equals `value`.
  virtual QZMeta& RemoveAttribute(unsigned int key);
  virtual QZMeta& RemoveAttribute(unsigned int key, const std::string& value);
  virtual QZMeta& RemoveAttribute(unsigned int key, const double& value);
  virtual QZMeta& RemoveAttribute(unsigned int key, const int& value);

  void Clear();
  /// Whether there is neither an option nor an attribute.
  bool IsEmpty() const { return options.empty() && attributes.empty(); }

  bool HasOption(unsigned int key) const;
  /// The options in ascending order, without duplicates; valid until the next change.
  const std::vector<unsigned int>& GetOptions() const { return options; }

  /// Whether the key has a value, or this value.
  bool HasAttribute(unsigned int key) const;
  bool HasAttribute(unsigned int key, const std::string& value) const;
  bool HasAttribute(unsigned int key, const double& value) const;
  bool HasAttribute(unsigned int key, const int& value) const;
  bool HasAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes) const;

  /// The value at the place `index`, from 0, among those of the key, T being `std::string`, `double` or `int`. The
  /// empty string or 0 for no such place and for a key that takes another type.
  template <class T>
  T GetAttribute(unsigned int key, unsigned int index = 0) const = delete;
  std::string GetStrAttribute(unsigned int key, unsigned int index = 0) const;
  double GetFloatAttribute(unsigned int key, unsigned int index = 0) const;
  int GetIntAttribute(unsigned int key, unsigned int index = 0) const;
  /// The encoded values of the key, in stored order.
  std::vector<std::vector<unsigned char>> GetAttributeBytes(unsigned int key) const;
  /// The pairs of the key, in stored order; the key 0 gives all pairs.
  std::vector<Attribute> GetAttributes(unsigned int key = 0) const;
  /// All pairs without a copy; valid until the next change.
  const std::vector<Attribute>& GetAllAttributes() const { return attributes; }

  /// Change encoded values, whatever type the key takes: add one, make it the only one, remove each that equals it.
  void AddAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes);
  void SetAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes);
  void RemoveAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes);
  /// Replaces all pairs by `pairs`, in the order given.
  void SetAttributes(const std::vector<Attribute>& pairs);
  /// Adds the other's options as SetOption does. Each key of the other's attributes loses its values here; of several
  /// values that it has there, the last survives.
  void Merge(const QZMeta& other);
  /// Whether each option and each pair of this object is in `other` too.
  bool IsSubsetOf(const QZMeta& other) const;

  /// The name of a key that a field can have, such as "Display.Values.Precision", or empty.
  static std::string GetName(unsigned int key);
  /// The key of such a name, or 0. A "::" counts as a dot.
  static unsigned int GetValue(const std::string& name);
  /// The encoded form of a value.
  static std::vector<unsigned char> AttributeToBytes(const std::string& value);
  static std::vector<unsigned char> AttributeToBytes(const double& value);
  static std::vector<unsigned char> AttributeToBytes(const int& value);
  /// The value of an encoded form, T being `std::string`, `double` or `int`; the empty string or 0 for bytes that have
  /// no such value.
  template <class T>
  static T AttributeFromBytes(const std::vector<unsigned char>& bytes) = delete;

 private:
  const std::vector<unsigned char>* FindValue(unsigned int key, unsigned int index) const;
  void Insert(Attribute pair);
  template <class T>
  T GetTyped(unsigned int key, unsigned int index) const;
  template <class T>
  void SetTyped(unsigned int key, const T& value);
  template <class T>
  void AddTyped(unsigned int key, const T& value);

  std::vector<unsigned int> options;
  std::vector<Attribute> attributes;
};

template <>
std::string QZMeta::GetAttribute<std::string>(unsigned int key, unsigned int index) const;
template <>
double QZMeta::GetAttribute<double>(unsigned int key, unsigned int index) const;
template <>
int QZMeta::GetAttribute<int>(unsigned int key, unsigned int index) const;

template <>
std::string QZMeta::AttributeFromBytes<std::string>(const std::vector<unsigned char>& bytes);
template <>
double QZMeta::AttributeFromBytes<double>(const std::vector<unsigned char>& bytes);
template <>
int QZMeta::AttributeFromBytes<int>(const std::vector<unsigned char>& bytes);

/// The metadata of one field.
///
///     QZFieldMeta meta;
///     meta.SetOption(QZMeta::GetValue("Hints.Chem.SMILES"));
///     QZField<std::string> smiles("smiles", meta);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZFieldMeta : public QZMeta {
 public:
  QZFieldMeta& SetOption(unsigned int key) override {
    QZMeta::SetOption(key);
    return *this;
  }
  QZFieldMeta& SetOptions(const std::vector<unsigned int>& keys) override {
    QZMeta::SetOptions(keys);
    return *this;
  }
  QZFieldMeta& RemoveOption(unsigned int key) override {
    QZMeta::RemoveOption(key);
    return *this;
  }
  QZFieldMeta& SetAttribute(unsigned int key, const std::string& value) override {
    QZMeta::SetAttribute(key, value);
    return *this;
  }
  QZFieldMeta& SetAttribute(unsigned int key, const double& value) override {
    QZMeta::SetAttribute(key, value);
    return *this;
  }
  QZFieldMeta& SetAttribute(unsigned int key, const int& value) override {
    QZMeta::SetAttribute(key, value);
    return *this;
  }
  QZFieldMeta& AddAttribute(unsigned int key, const std::string& value) override {
    QZMeta::AddAttribute(key, value);
    return *this;
  }
  QZFieldMeta& AddAttribute(unsigned int key, const double& value) override {
    QZMeta::AddAttribute(key, value);
    return *this;
  }
  QZFieldMeta& AddAttribute(unsigned int key, const int& value) override {
    QZMeta::AddAttribute(key, value);
    return *this;
  }
  QZFieldMeta& RemoveAttribute(unsigned int key) override {
    QZMeta::RemoveAttribute(key);
    return *this;
  }
  QZFieldMeta& RemoveAttribute(unsigned int key, const std::string& value) override {
    QZMeta::RemoveAttribute(key, value);
    return *this;
  }
  QZFieldMeta& RemoveAttribute(unsigned int key, const double& value) override {
    QZMeta::RemoveAttribute(key, value);
    return *this;
  }
  QZFieldMeta& RemoveAttribute(unsigned int key, const int& value) override {
    QZMeta::RemoveAttribute(key, value);
    return *this;
  }

  /// Notes, under a key such as "Relations.ErrorsFor", the name of another field. A key that isn't of a relation, or
  /// doesn't take a string, changes nothing.
  QZFieldMeta& AddRelation(unsigned int key, const QZFieldBase& field);
  /// The keys under which the field `name` is noted, one for each time, in stored order.
  std::vector<unsigned int> GetFieldRelations(const std::string& name) const;
  /// The names noted under any such key, sorted, each once.
  std::vector<std::string> GetRelatedFields() const;

  static std::string GetName(unsigned int key);
};

/// The metadata of a record as a whole, such as the source ID under "Flags.ID".
///
///     QZRecordMeta meta = record.GetRecordMeta();
///     record.SetRecordMeta(meta.SetAttribute(0x01000002, "second run"));
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZRecordMeta : public QZMeta {
 public:
  QZRecordMeta& SetOption(unsigned int key) override {
    QZMeta::SetOption(key);
    return *this;
  }
  QZRecordMeta& SetOptions(const std::vector<unsigned int>& keys) override {
    QZMeta::SetOptions(keys);
    return *this;
  }
  QZRecordMeta& RemoveOption(unsigned int key) override {
    QZMeta::RemoveOption(key);
    return *this;
  }
  QZRecordMeta& SetAttribute(unsigned int key, const std::string& value) override {
    QZMeta::SetAttribute(key, value);
    return *this;
  }
  QZRecordMeta& SetAttribute(unsigned int key, const double& value) override {
    QZMeta::SetAttribute(key, value);
    return *this;
  }
  QZRecordMeta& SetAttribute(unsigned int key, const int& value) override {
    QZMeta::SetAttribute(key, value);
    return *this;
  }
  QZRecordMeta& AddAttribute(unsigned int key, const std::string& value) override {
    QZMeta::AddAttribute(key, value);
    return *this;
  }
  QZRecordMeta& AddAttribute(unsigned int key, const double& value) override {
    QZMeta::AddAttribute(key, value);
    return *this;
  }
  QZRecordMeta& AddAttribute(unsigned int key, const int& value) override {
    QZMeta::AddAttribute(key, value);
    return *this;
  }
  QZRecordMeta& RemoveAttribute(unsigned int key) override {
    QZMeta::RemoveAttribute(key);
    return *this;
  }
  QZRecordMeta& RemoveAttribute(unsigned int key, const std::string& value) override {
    QZMeta::RemoveAttribute(key, value);
    return *this;
  }
  QZRecordMeta& RemoveAttribute(unsigned int key, const double& value) override {
    QZMeta::RemoveAttribute(key, value);
    return *this;
  }
  QZRecordMeta& RemoveAttribute(unsigned int key, const int& value) override {
    QZMeta::RemoveAttribute(key, value);
    return *this;
  }

  /// The name of a key that a record can have, "Flags.ID", "Flags.Annotation" or "Flags.IsSchema", or empty.
  static std::string GetName(unsigned int key);
};

}  // namespace QZDataFlow
