#include "qz/dataflow/metadata.h"

#include <algorithm>
#include <iterator>

#include "qz/dataflow/buffer.h"

namespace QZDataFlow {

namespace {

/// Adds a unit, or another option that may stand only once, unless it is there.
void PutUnit(std::vector<unsigned int>& units, unsigned int key, unsigned int mask) {
  if (std::find(units.begin(), units.end(), key) != units.end()) return;
  const auto isDisplaced = [&](unsigned int unit) { return (unit & mask) == (key & mask); };
  units.erase(std::remove_if(units.begin(), units.end(), isDisplaced), units.end());
  units.push_back(key);
}

}  // namespace

QZMeta& QZMeta::SetOption(unsigned int key) {
  QZMeta::SetOptions({key});
  return *this;
}

// The units, of which two at most remain, are kept apart while the keys are gone through: many options then take no
// more than their sorting.
QZMeta& QZMeta::SetOptions(const std::vector<unsigned int>& keys) {
  const auto isPlain = [](unsigned int key) { return QZMetadata::QZGetMetaPerFieldMask(key) == 0; };
  std::vector<unsigned int> all = options;
  const auto firstUnit = std::partition(all.begin(), all.end(), isPlain);
  std::vector<unsigned int> units(firstUnit, all.end());
  all.erase(firstUnit, all.end());
  for (const unsigned int key : keys) {
    const unsigned int mask = QZMetadata::QZGetMetaPerFieldMask(key);
    if (mask == 0) {
      all.push_back(key);
    } else {
      PutUnit(units, key, mask);
    }
  }
  all.insert(all.end(), units.begin(), units.end());
  std::sort(all.begin(), all.end());
  all.erase(std::unique(all.begin(), all.end()), all.end());
  options.swap(all);
  return *this;
}

QZMeta& QZMeta::RemoveOption(unsigned int key) {
  options.erase(std::remove(options.begin(), options.end(), key), options.end());
  return *this;
}

template <class T>
void QZMeta::SetTyped(unsigned int key, const T& value) {
  if (QZMetadata::TakesAttribute<T>(key)) SetAttributeBytes(key, AttributeToBytes(value));
}

template <class T>
void QZMeta::AddTyped(unsigned int key, const T& value) {
  if (QZMetadata::TakesAttribute<T>(key)) AddAttributeBytes(key, AttributeToBytes(value));
}

QZMeta& QZMeta::SetAttribute(unsigned int key, const std::string& value) {
  SetTyped(key, value);
  return *this;
}

QZMeta& QZMeta::SetAttribute(unsigned int key, const double& value) {
  SetTyped(key, value);
  return *this;
}

QZMeta& QZMeta::SetAttribute(unsigned int key, const int& value) {
  SetTyped(key, value);
  return *this;
}

QZMeta& QZMeta::AddAttribute(unsigned int key, const std::string& value) {
  AddTyped(key, value);
  return *this;
}

QZMeta& QZMeta::AddAttribute(unsigned int key, const double& value) {
  AddTyped(key, value);
  return *this;
}

QZMeta& QZMeta::AddAttribute(unsigned int key, const int& value) {
  AddTyped(key, value);
  return *this;
}

QZMeta& QZMeta::RemoveAttribute(unsigned int key) {
  const auto same = [key](const Attribute& attribute) { return attribute.first == key; };
  attributes.erase(std::remove_if(attributes.begin(), attributes.end(), same), attributes.end());
  return *this;
}

QZMeta& QZMeta::RemoveAttribute(unsigned int key, const std::string& value) {
  RemoveAttributeBytes(key, AttributeToBytes(value));
  return *this;
}

QZMeta& QZMeta::RemoveAttribute(unsigned int key, const double& value) {
  RemoveAttributeBytes(key, AttributeToBytes(value));
  return *this;
}

QZMeta& QZMeta::RemoveAttribute(unsigned int key, const int& value) {
  RemoveAttributeBytes(key, AttributeToBytes(value));
  return *this;
}

void QZMeta::Clear() {
  options.clear();
  attributes.clear();
}

bool QZMeta::HasOption(unsigned int key) const { return std::binary_search(options.begin(), options.end(), key); }

/// The value at the place `index` among those of the key, or null.
const std::vector<unsigned char>* QZMeta::FindValue(unsigned int key, unsigned int index) const {
  for (const Attribute& attribute : attributes) {
    if (attribute.first == key && index-- == 0) return &attribute.second;
  }
  return nullptr;
}

bool QZMeta::HasAttribute(unsigned int key) const { return FindValue(key, 0) != nullptr; }

bool QZMeta::HasAttribute(unsigned int key, const std::string& value) const {
  return HasAttributeBytes(key, AttributeToBytes(value));
}

bool QZMeta::HasAttribute(unsigned int key, const double& value) const {
  return HasAttributeBytes(key, AttributeToBytes(value));
}

bool QZMeta::HasAttribute(unsigned int key, const int& value) const {
  return HasAttributeBytes(key, AttributeToBytes(value));
}

bool QZMeta::HasAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes) const {
  return std::find(attributes.begin(), attributes.end(), Attribute(key, bytes)) != attributes.end();
}

template <class T>
T QZMeta::GetTyped(unsigned int key, unsigned int index) const {
  const auto* bytes = QZMetadata::TakesAttribute<T>(key) ? FindValue(key, index) : nullptr;
  return bytes != nullptr ? AttributeFromBytes<T>(*bytes) : T();
}

template <>
std::string QZMeta::GetAttribute<std::string>(unsigned int key, unsigned int index) const {
  return GetTyped<std::string>(key, index);
}

template <>
double QZMeta::GetAttribute<double>(unsigned int key, unsigned int index) const {
  return GetTyped<double>(key, index);
}

template <>
int QZMeta::GetAttribute<int>(unsigned int key, unsigned int index) const {
  return GetTyped<int>(key, index);
}

std::string QZMeta::GetStrAttribute(unsigned int key, unsigned int index) const {
  return GetAttribute<std::string>(key, index);
}

double QZMeta::GetFloatAttribute(unsigned int key, unsigned int index) const {
  return GetAttribute<double>(key, index);
}

int QZMeta::GetIntAttribute(unsigned int key, unsigned int index) const { return GetAttribute<int>(key, index); }

std::vector<std::vector<unsigned char>> QZMeta::GetAttributeBytes(unsigned int key) const {
  std::vector<std::vector<unsigned char>> values;
  for (const Attribute& attribute : attributes) {
    if (attribute.first == key) values.push_back(attribute.second);
  }
  return values;
}

std::vector<QZMeta::Attribute> QZMeta::GetAttributes(unsigned int key) const {
  if (key == 0) return attributes;
  std::vector<Attribute> pairs;
  for (const Attribute& attribute : attributes) {
    if (attribute.first == key) pairs.push_back(attribute);
  }
  return pairs;
}

void QZMeta::AddAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes) {
  Insert(Attribute(key, bytes));
}

void QZMeta::SetAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes) {
  Attribute pair(key, bytes);  // before the bytes can go with those that are removed
  RemoveAttribute(key);
  Insert(std::move(pair));
}

void QZMeta::Insert(Attribute pair) {
  attributes.push_back(std::move(pair));
  const auto added = std::prev(attributes.end());
  if (std::is_sorted(attributes.begin(), added)) {
    std::rotate(std::upper_bound(attributes.begin(), added, *added), added, attributes.end());
  } else {
    std::sort(attributes.begin(), attributes.end());
  }
}

void QZMeta::RemoveAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes) {
  const Attribute pair(key, bytes);
  attributes.erase(std::remove(attributes.begin(), attributes.end(), pair), attributes.end());
}

void QZMeta::SetAttributes(const std::vector<Attribute>& pairs) { attributes = pairs; }

void QZMeta::Merge(const QZMeta& other) {
  if (&other == this) {
    Merge(QZMeta(other));
    return;
  }
  for (const unsigned int key : other.options) SetOption(key);
  for (const Attribute& attribute : other.attributes) SetAttributeBytes(attribute.first, attribute.second);
}

bool QZMeta::IsSubsetOf(const QZMeta& other) const {
  const auto hasOption = [&](unsigned int key) { return other.HasOption(key); };
  const auto hasPair = [&](const Attribute& pair) { return other.HasAttributeBytes(pair.first, pair.second); };
  return std::all_of(options.begin(), options.end(), hasOption) &&
         std::all_of(attributes.begin(), attributes.end(), hasPair);
}

std::string QZMeta::GetName(unsigned int key) {
  const auto& constants = QZMetadata::GetMetaConstants();
  const auto found = constants.find(key);
  return found == constants.end() ? std::string() : found->second;
}

unsigned int QZMeta::GetValue(const std::string& name) { return QZMetadata::GetMetaConstant(name); }

std::vector<unsigned char> QZMeta::AttributeToBytes(const std::string& value) {
  QZWriteBuffer out;
  out.WriteString(value);
  return out.Get();
}

std::vector<unsigned char> QZMeta::AttributeToBytes(const double& value) {
  QZWriteBuffer out;
  out.WriteFloat(value);
  return out.Get();
}

std::vector<unsigned char> QZMeta::AttributeToBytes(const int& value) {
  QZWriteBuffer out;
  out.WriteInt(value);
  return out.Get();
}

// The bytes may come from anywhere: what can't be read is empty or 0.
template <>
std::string QZMeta::AttributeFromBytes<std::string>(const std::vector<unsigned char>& bytes) {
  QZByteSlice slice;
  bool none;
  if (!QZReadBuffer(bytes).ReadSlice(slice, none)) return {};
  return std::string(reinterpret_cast<const char*>(slice.data), slice.size);
}

template <>
double QZMeta::AttributeFromBytes<double>(const std::vector<unsigned char>& bytes) {
  return QZReadBuffer(bytes).ReadFloat();
}

template <>
int QZMeta::AttributeFromBytes<int>(const std::vector<unsigned char>& bytes) {
  return static_cast<int>(QZReadBuffer(bytes).ReadInt());
}

std::vector<unsigned int> QZFieldMeta::GetFieldRelations(const std::string& name) const {
  std::vector<unsigned int> keys;
  for (const Attribute& attribute : GetAllAttributes()) {
    if (QZMetadata::IsRelation(attribute.first) && AttributeFromBytes<std::string>(attribute.second) == name)
      keys.push_back(attribute.first);
  }
  return keys;
}

std::vector<std::string> QZFieldMeta::GetRelatedFields() const {
  std::vector<std::string> names;
  for (const Attribute& attribute : GetAllAttributes()) {
    if (QZMetadata::IsRelation(attribute.first)) names.push_back(AttributeFromBytes<std::string>(attribute.second));
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

std::string QZFieldMeta::GetName(unsigned int key) { return QZMeta::GetName(key); }

std::string QZRecordMeta::GetName(unsigned int key) {
  switch (key) {
    case 0x01000001:
      return "Flags.ID";
    case 0x01000002:
      return "Flags.Annotation";
    case 0x01000003:
      return "Flags.IsSchema";
    default:
      return {};
  }
}

}  // namespace QZDataFlow
