#include <cstdint>
#include <limits>
#include <memory>
#include <optional>

#include "qz/dataflow/base85_impl.h"
#include "qz/dataflow/fieldmetajson_impl.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/recordjson.h"
#include "qz/dataflow/recordjson_impl.h"
#include "qz/system/frame/error.h"
#include "qz/system/json/write.h"

namespace QZDataFlow {

namespace {

constexpr char kTooDeep[] = "JSON: record nests too deep to be read";
constexpr char kWrongUserValue[] = "Only objects, arrays of objects, and strings allowed for user field types";

constexpr char kValue[] = "value";
constexpr char kChild[] = "child";

using Value = rapidjson::Value;
using Bytes = std::vector<unsigned char>;
using OptionalBytes = std::optional<Bytes>;

std::string_view TextOf(const Value& string) { return {string.GetString(), string.GetStringLength()}; }

/// The bytes of a value that `get` reads; none for one of the wrong kind.
template <class T, class Get>
OptionalBytes ReadScalar(Value& field, Get get) {
  const auto attr = get(field, kValue, true);
  if (attr.error) return std::nullopt;
  return QZFieldType<T>::ToBytes(attr.value);
}

OptionalBytes ReadBlob(Value& field) {
  const auto attr = GetJSONStringAttr(field, kValue, true);
  Bytes bytes;
  if (attr.error || !Base85::Decode(attr.value, bytes)) return std::nullopt;
  return bytes;
}

OptionalBytes ReadObjectText(Value& field) {
  const auto attr = GetJSONObjectAttr(field, kValue, true);
  if (attr.error) return std::nullopt;
  const std::string text = QZJSONText(*attr.value);
  return Bytes(text.begin(), text.end());
}

/// Low, high and inclusivity of a list in which null stands for no bound, and the sign of the third number for a side
/// that has none.
std::vector<double> BoundsOf(const Value& list) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::vector<double> bounds;
  for (rapidjson::SizeType i = 0; i < list.Size(); ++i) {
    const Value& element = list[i];
    if (element.IsNull() && i < 2) {
      bounds.push_back(i == 0 ? -kInfinity : kInfinity);
    } else if (element.IsNumber() && i != 2) {
      bounds.push_back(element.GetDouble());
    } else if (element.IsNumber()) {
      if (element.GetDouble() > 0 && !bounds.empty()) bounds[0] = -kInfinity;
      if (element.GetDouble() < 0 && bounds.size() > 1) bounds[1] = kInfinity;
    }
  }
  return bounds;
}

OptionalBytes ReadRange(Value& field) {
  const auto attr = GetJSONArrayAttr(field, kValue, true);
  if (attr.error) return std::nullopt;
  return QZFieldType<QZRange>::ToBytes(QZRange(BoundsOf(*attr.value)));
}

// Each reads an element that isn't null. False, after a warning, for one that is refused.

bool TakeKind(const Value& element, QZJSONKind kind, const char* key = kValue) {
  if (QZIsJSONKind(element, kind)) return true;
  QZWarnJSONKind(kind, key);
  return false;
}

/// Any integer of 64 bits passes, of which the low 32 count.
bool TakeElement(Value& element, long& value, int) {
  if (!element.IsInt64() && !element.IsUint64()) {
    QZWarnJSONKind(QZJSONKind::Integer, kValue);
    return false;
  }
  const std::uint64_t bits = element.IsUint64() ? element.GetUint64() : static_cast<std::uint64_t>(element.GetInt64());
  value = static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
  return true;
}

bool TakeElement(Value& element, double& value, int) {
  if (!TakeKind(element, QZJSONKind::Double)) return false;
  value = element.GetDouble();
  return true;
}

bool TakeElement(Value& element, bool& value, int) {
  if (!TakeKind(element, QZJSONKind::Boolean)) return false;
  value = element.GetBool();
  return true;
}

bool TakeElement(Value& element, std::string& value, int) {
  if (!TakeKind(element, QZJSONKind::String)) return false;
  value = TextOf(element);
  return true;
}

bool TakeElement(Value& element, Bytes& value, int) {
  return TakeKind(element, QZJSONKind::String) && Base85::Decode(TextOf(element), value);
}

bool TakeElement(Value& element, QZRecord& value, int level) {
  if (!TakeKind(element, QZJSONKind::Object)) return false;
  if (level > kMaxRecordDepth) {
    QZThrow.Warning(kTooDeep);
    return false;
  }
  // What could be read of it is the value.
  static_cast<void>(ReadRecordJSON(value, element, level));
  return true;
}

/// The bytes of a list, in which null is an absent element; none when an element is refused.
template <class T>
OptionalBytes ReadList(Value& field, int level) {
  const auto attr = GetJSONArrayAttr(field, kValue, true);
  if (attr.error) return std::nullopt;
  std::vector<std::optional<T>> values;
  values.reserve(attr.value->Size());
  for (Value& element : attr.value->GetArray()) {
    if (element.IsNull()) {
      values.emplace_back();
    } else if (!TakeElement(element, values.emplace_back(T()).value(), level)) {
      return std::nullopt;
    }
  }
  return QZVectorFieldType<T>::ToBytes(values);
}

OptionalBytes ReadNested(Value& field, int level) {
  const auto attr = GetJSONObjectAttr(field, kValue, true);
  QZRecord record;
  if (attr.error || !TakeElement(*attr.value, record, level)) return std::nullopt;
  return QZFieldType<QZRecord>::ToBytes(record);
}

OptionalBytes ReadBuiltIn(Value& field, QZFieldKind kind, int level) {
  switch (kind) {
    case QZFieldKind::Int:
      return ReadScalar<long>(field, GetJSONIntAttr);
    case QZFieldKind::String:
      return ReadScalar<std::string>(field, GetJSONStringAttr);
    case QZFieldKind::Float:
      return ReadScalar<double>(field, GetJSONDoubleAttr);
    case QZFieldKind::Blob:
      return ReadBlob(field);
    case QZFieldKind::Bool:
      return ReadScalar<bool>(field, GetJSONBoolAttr);
    case QZFieldKind::IntVec:
      return ReadList<long>(field, level);
    case QZFieldKind::StringVec:
      return ReadList<std::string>(field, level);
    case QZFieldKind::FloatVec:
      return ReadList<double>(field, level);
    case QZFieldKind::BlobVec:
      return ReadList<Bytes>(field, level);
    case QZFieldKind::BoolVec:
      return ReadList<bool>(field, level);
    case QZFieldKind::Record:
      return ReadNested(field, level + 1);
    case QZFieldKind::RecordVec:
      return ReadList<QZRecord>(field, level + 1);
    case QZFieldKind::Range:
      return ReadRange(field);
    default:
      return ReadObjectText(field);
  }
}

/// The bytes of a value of a type that somebody registered, none for a type that nobody did. False, after a warning,
/// for a value that no such type has.
bool ReadRegistered(const std::string& type, const Value& value, OptionalBytes& bytes) {
  const QZFieldTypeHandler* const handler = QZFieldTypeHandlerRegistry::GetInstance().GetHandler(type);
  if (handler == nullptr) return true;
  if (value.IsObject() || value.IsArray()) {
    bytes = handler->JSONToBytes(QZJSONText(value));
  } else if (value.IsString()) {
    bytes = handler->JSONToBytes(std::string(TextOf(value)));
  } else {
    QZThrow.Warning(kWrongUserValue);
    return false;
  }
  return true;
}

/// Keeps the child records under the index that the field has in its record.
void ReadChildren(QZRecord& record, const QZFieldBase& field, Value& children, int level) {
  if (level > kMaxRecordDepth) {
    QZThrow.Warning(kTooDeep);
    return;
  }
  const auto idx = static_cast<int>(record.GetFieldIdx(field));
  for (auto& member : children.GetObject()) {
    if (!TakeKind(member.value, QZJSONKind::Object, kChild)) continue;
    auto child = std::make_shared<QZRecord>();
    static_cast<void>(ReadRecordJSON(*child, member.value, level));
    QZRecordImpl::Of(record).AddToChildCache(idx, std::string(TextOf(member.name)), std::move(child));
  }
}

/// Makes the field that the members of `object` describe. Invalid, after a warning, when one that is required is
/// missing or of the wrong kind.
QZFieldBase ReadFieldHead(Value& object) {
  const auto name = GetJSONStringAttr(object, "name", true);
  if (name.error) return {};
  const auto type = GetJSONStringAttr(object, "type", true);
  if (type.error) return {};
  if (GetJSONUnsignedAttr(object, "idx", true).error) return {};
  QZFieldMeta fieldMeta;
  const auto meta = GetJSONObjectAttr(object, "meta");
  if (meta.found && !meta.error) ReadFieldMetaJSON(fieldMeta, *meta.value);
  const auto nullable = GetJSONBoolAttr(object, "nullable");
  return QZRecordImpl::MakeFieldBase(name.value, type.value, fieldMeta, false, nullable.value);
}

void ReadFieldJSON(QZRecord& record, Value& object, int level) {
  const QZFieldBase field = ReadFieldHead(object);
  if (!field.IsValid()) return;
  const auto children = GetJSONObjectAttr(object, kChild);
  const auto value = object.FindMember(kValue);
  if (value == object.MemberEnd()) {
    record.AddField(field);
    return;
  }
  if (value->value.IsNull()) {
    record.SetBytes(field, OptionalBytes());
    return;
  }
  OptionalBytes bytes;
  const QZFieldKind kind = QZGetFieldKind(field.GetType());
  if (kind != QZFieldKind::Other) {
    bytes = ReadBuiltIn(object, kind, level);
  } else if (!ReadRegistered(field.GetType(), value->value, bytes)) {
    return;
  }
  record.SetBytes(field, bytes);
  if (children.found && !children.error) ReadChildren(record, field, *children.value, level + 1);
}

}  // namespace

bool ReadRecordJSON(QZRecord& record, Value& document, int level) {
  const auto version = GetJSONArrayAttr(document, "version", true);
  if (version.error || version.value->Size() != 2) return false;
  const auto id = GetJSONStringAttr(document, "source id");
  if (id.error) return false;
  if (id.found) record.SetSourceID(id.value);
  const auto fields = GetJSONArrayAttr(document, "fields");
  if (fields.error) return false;
  if (!fields.found) return true;
  for (Value& field : fields.value->GetArray()) {
    if (!field.IsObject()) return false;
    ReadFieldJSON(record, field, level);
  }
  return true;
}

bool QZRecordFromJSON(QZRecord& record, const std::string& text) {
  rapidjson::Document document;
  return JSONParseHelper(document, text) && ReadRecordJSON(record, document, 1);
}

}  // namespace QZDataFlow
