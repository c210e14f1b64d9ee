#include "qz/dataflow/fieldmetajson_impl.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

#include "qz/dataflow/recordjson.h"

namespace QZDataFlow {

namespace {

constexpr char kOptions[] = "options";
constexpr char kAttributes[] = "attributes";

void WriteOptions(QZJSONTextWriter& out, const std::vector<unsigned int>& options) {
  out.Open("\"options\":[");
  bool first = true;
  for (const unsigned int key : options) {
    if (!first) out.Raw(',');
    first = false;
    out.String(QZFieldMeta::GetName(key));
  }
  out.Close("]");
}

/// The value in the kind that its key takes; nothing for a key that takes none.
void WriteAttributeValue(QZJSONTextWriter& out, const QZMeta::Attribute& attribute) {
  const auto& [key, bytes] = attribute;
  if (QZMetadata::TakesAttribute<std::string>(key)) {
    out.Raw(',');
    out.String(QZMeta::AttributeFromBytes<std::string>(bytes));
  } else if (QZMetadata::TakesAttribute<double>(key)) {
    out.Raw(',');
    out.Double(QZMeta::AttributeFromBytes<double>(bytes));
  } else if (QZMetadata::TakesAttribute<int>(key)) {
    out.Raw(',');
    out.Int(QZMeta::AttributeFromBytes<int>(bytes));
  }
}

void WriteAttributes(QZJSONTextWriter& out, const std::vector<QZMeta::Attribute>& attributes) {
  out.Open("\"attributes\":[");
  bool first = true;
  for (const QZMeta::Attribute& attribute : attributes) {
    const std::string name = QZFieldMeta::GetName(attribute.first);
    if (name.empty()) continue;
    if (!first) out.Raw(',');
    first = false;
    out.Open("[");
    out.String(name);
    WriteAttributeValue(out, attribute);
    out.Close("]");
  }
  out.Close("]");
}

void WarnElement(const char* key) { QZWarnJSONKind(QZJSONKind::String, key); }

std::string TextOf(const rapidjson::Value& string) { return std::string(string.GetString(), string.GetStringLength()); }

void ReadOptions(QZFieldMeta& meta, const rapidjson::Value& names) {
  std::vector<unsigned int> keys;
  for (const rapidjson::Value& name : names.GetArray()) {
    if (!name.IsString()) {
      WarnElement(kOptions);
    } else if (const unsigned int key = QZMeta::GetValue(TextOf(name)); key != 0) {
      keys.push_back(key);
    }
  }
  meta.SetOptions(keys);
}

/// The encoded value of a pair, for a key that takes one. False for a value of another kind.
bool ReadAttributeValue(unsigned int key, const rapidjson::Value& pair, std::vector<unsigned char>& bytes) {
  if (pair.Size() < 2) return false;
  const rapidjson::Value& value = pair[1];
  if (QZMetadata::TakesAttribute<std::string>(key) && value.IsString()) {
    bytes = QZMeta::AttributeToBytes(TextOf(value));
  } else if (QZMetadata::TakesAttribute<double>(key) && value.IsNumber()) {
    bytes = QZMeta::AttributeToBytes(value.GetDouble());
  } else if (QZMetadata::TakesAttribute<int>(key) && value.IsInt()) {
    bytes = QZMeta::AttributeToBytes(value.GetInt());
  } else {
    return false;
  }
  return true;
}

// What it comes to is that the first value of a key is set and the others are added. All are put in at once, since each
// of these operations goes through all attributes.
void ReadAttributes(QZFieldMeta& meta, const rapidjson::Value& pairs) {
  std::vector<QZMeta::Attribute> all;
  std::set<unsigned int> keys;
  for (const rapidjson::Value& pair : pairs.GetArray()) {
    std::vector<unsigned char> bytes;
    if (!pair.IsArray() || pair.Empty() || !pair[0].IsString()) {
      WarnElement(kAttributes);
      continue;
    }
    const unsigned int key = QZMeta::GetValue(TextOf(pair[0]));
    if (key == 0 || QZMetadata::IsOption(key)) continue;
    if (!ReadAttributeValue(key, pair, bytes)) {
      WarnElement(kAttributes);
      continue;
    }
    keys.insert(key);
    all.emplace_back(key, std::move(bytes));
  }
  if (all.empty()) return;
  const auto stays = [&](const QZMeta::Attribute& attribute) { return keys.count(attribute.first) == 0; };
  const auto& present = meta.GetAllAttributes();
  std::copy_if(present.begin(), present.end(), std::back_inserter(all), stays);
  std::sort(all.begin(), all.end());
  meta.SetAttributes(all);
}

}  // namespace

void WriteFieldMetaJSON(QZJSONTextWriter& out, const QZFieldMeta& meta) {
  const bool hasOptions = !meta.GetOptions().empty();
  const bool hasAttributes = !meta.GetAllAttributes().empty();
  out.Open("{");
  if (hasOptions) WriteOptions(out, meta.GetOptions());
  if (hasOptions && hasAttributes) out.Raw(',');
  if (hasAttributes) WriteAttributes(out, meta.GetAllAttributes());
  out.Close("}");
}

void ReadFieldMetaJSON(QZFieldMeta& meta, rapidjson::Value& object) {
  const auto options = GetJSONArrayAttr(object, kOptions);
  if (options.found && !options.error) ReadOptions(meta, *options.value);
  const auto attributes = GetJSONArrayAttr(object, kAttributes);
  if (attributes.found && !attributes.error) ReadAttributes(meta, *attributes.value);
}

std::string QZFieldMetaToJSON(const QZFieldMeta& meta) {
  QZJSONTextWriter out;
  WriteFieldMetaJSON(out, meta);
  return out.Take();
}

bool QZFieldMetaFromJSON(QZFieldMeta& meta, const std::string& text, bool clear) {
  rapidjson::Document document;
  if (!JSONParseHelper(document, text)) return false;
  if (clear) meta.Clear();
  ReadFieldMetaJSON(meta, document);
  return true;
}

}  // namespace QZDataFlow
