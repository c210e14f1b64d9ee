#include "qz/dataflow/metadata.h"

#include <algorithm>

#include "qz/dataflow/buffer.h"

namespace QZDataFlow {

namespace {

/// The bytes may come from anywhere: what can't be read is empty or 0.
std::string StringOf(const std::vector<unsigned char>& bytes) {
  QZReadBuffer in(bytes);
  bool none;
  const unsigned long length = in.ReadLength(none);
  if (none || length > in.Remaining()) return {};
  return std::string(reinterpret_cast<const char*>(in.Position()), length);
}

}  // namespace

bool QZMeta::AppendOption(unsigned int key) {
  if (HasOption(key)) return false;
  if (const unsigned int mask = QZMetadata::QZGetMetaPerFieldMask(key); mask != 0) {
    const auto same = [&](unsigned int option) { return (option & mask) == (key & mask); };
    options.erase(std::remove_if(options.begin(), options.end(), same), options.end());
  }
  options.push_back(key);
  return true;
}

QZMeta& QZMeta::SetOption(unsigned int key) {
  if (AppendOption(key)) std::sort(options.begin(), options.end());
  return *this;
}

QZMeta& QZMeta::SetOptions(const std::vector<unsigned int>& keys) {
  if (&keys == &options) return *this;
  for (const unsigned int key : keys) AppendOption(key);
  std::sort(options.begin(), options.end());
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

bool QZMeta::HasOption(unsigned int key) const {
  return std::find(options.begin(), options.end(), key) != options.end();
}

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

template <>
std::string QZMeta::GetAttribute<std::string>(unsigned int key, unsigned int index) const {
  const auto* bytes = FindValue(key, index);
  return bytes != nullptr && QZMetadata::TakesAttribute<std::string>(key) ? StringOf(*bytes) : std::string();
}

template <>
double QZMeta::GetAttribute<double>(unsigned int key, unsigned int index) const {
  const auto* bytes = FindValue(key, index);
  return bytes != nullptr && QZMetadata::TakesAttribute<double>(key) ? QZReadBuffer(*bytes).ReadFloat() : 0.0;
}

template <>
int QZMeta::GetAttribute<int>(unsigned int key, unsigned int index) const {
  const auto* bytes = FindValue(key, index);
  return bytes != nullptr && QZMetadata::TakesAttribute<int>(key) ? static_cast<int>(QZReadBuffer(*bytes).ReadInt())
                                                                  : 0;
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
  attributes.emplace_back(key, bytes);
  std::sort(attributes.begin(), attributes.end());
}

void QZMeta::SetAttributeBytes(unsigned int key, const std::vector<unsigned char>& bytes) {
  RemoveAttribute(key);
  AddAttributeBytes(key, bytes);
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

std::vector<unsigned int> QZFieldMeta::GetFieldRelations(const std::string& name) const {
  std::vector<unsigned int> keys;
  for (const Attribute& attribute : GetAllAttributes()) {
    if (QZMetadata::IsRelation(attribute.first) && StringOf(attribute.second) == name) keys.push_back(attribute.first);
  }
  return keys;
}

std::vector<std::string> QZFieldMeta::GetRelatedFields() const {
  std::vector<std::string> names;
  for (const Attribute& attribute : GetAllAttributes()) {
    if (QZMetadata::IsRelation(attribute.first)) names.push_back(StringOf(attribute.second));
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
