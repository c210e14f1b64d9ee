#include "qz/dataflow/recordjsonvalue_impl.h"

#include <cstdint>
#include <limits>

#include "qz/dataflow/base85_impl.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/system/frame/error.h"
#include "qz/system/json/write.h"

namespace QZDataFlow {

namespace {

constexpr char kWrongUserValue[] = "Only objects, arrays of objects, and strings allowed for user field types";

constexpr char kValue[] = "value";

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

bool TakeKind(const Value& element, QZJSONKind kind) {
  if (QZIsJSONKind(element, kind)) return true;
  QZWarnJSONKind(kind, kValue);
  return false;
}

/// Any integer of 64 bits passes, of which the low 32 count.
bool TakeElement(Value& element, long& value) {
  if (!element.IsInt64() && !element.IsUint64()) {
    QZWarnJSONKind(QZJSONKind::Integer, kValue);
    return false;
  }
  const std::uint64_t bits = element.IsUint64() ? element.GetUint64() : static_cast<std::uint64_t>(element.GetInt64());
  value = static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
  return true;
}

bool TakeElement(Value& element, double& value) {
  if (!TakeKind(element, QZJSONKind::Double)) return false;
  value = element.GetDouble();
  return true;
}

bool TakeElement(Value& element, bool& value) {
  if (!TakeKind(element, QZJSONKind::Boolean)) return false;
  value = element.GetBool();
  return true;
}

bool TakeElement(Value& element, std::string& value) {
  if (!TakeKind(element, QZJSONKind::String)) return false;
  value = TextOf(element);
  return true;
}

bool TakeElement(Value& element, Bytes& value) {
  return TakeKind(element, QZJSONKind::String) && Base85::Decode(TextOf(element), value);
}

/// The bytes of a list, in which null is an absent element; none when an element is refused.
template <class T>
OptionalBytes ReadList(Value& field) {
  const auto attr = GetJSONArrayAttr(field, kValue, true);
  if (attr.error) return std::nullopt;
  std::vector<std::optional<T>> values;
  values.reserve(attr.value->Size());
  for (Value& element : attr.value->GetArray()) {
    if (element.IsNull()) {
      values.emplace_back();
    } else if (!TakeElement(element, values.emplace_back(T()).value())) {
      return std::nullopt;
    }
  }
  return QZVectorFieldType<T>::ToBytes(values);
}

/// The bytes of a built-in type that holds no records.
OptionalBytes ReadBuiltIn(Value& field, QZFieldKind kind) {
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
      return ReadList<long>(field);
    case QZFieldKind::StringVec:
      return ReadList<std::string>(field);
    case QZFieldKind::FloatVec:
      return ReadList<double>(field);
    case QZFieldKind::BlobVec:
      return ReadList<Bytes>(field);
    case QZFieldKind::BoolVec:
      return ReadList<bool>(field);
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

}  // namespace

bool ReadJSONValue(Value& field, const std::string& type, OptionalBytes& bytes) {
  const QZFieldKind kind = QZGetFieldKind(type);
  if (kind == QZFieldKind::Other) return ReadRegistered(type, field[kValue], bytes);
  bytes = ReadBuiltIn(field, kind);
  return true;
}

}  // namespace QZDataFlow
