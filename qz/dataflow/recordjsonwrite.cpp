#include <limits>

#include "qz/dataflow/base85_impl.h"
#include "qz/dataflow/fieldmetajson_impl.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/listelement_impl.h"
#include "qz/dataflow/recordjson.h"
#include "qz/dataflow/recordjson_impl.h"
#include "qz/system/frame/error.h"

namespace QZDataFlow {

namespace {

constexpr char kTooDeep[] = "JSON: record nests too deep to be written";

std::string_view TextOf(QZByteSlice slice) { return {reinterpret_cast<const char*>(slice.data), slice.size}; }

/// The value that the bytes stand for, or the default of its type.
template <class T>
T ValueOf(QZByteSlice bytes) {
  T value{};
  return QZFieldType<T>::FromBytes(value, bytes.data, bytes.size) ? value : T{};
}

void PutBytes(QZJSONTextWriter& out, QZByteSlice bytes) {
  std::string text(Base85::EncodedSize(bytes.size), '\0');
  Base85::Encode(bytes.data, bytes.size, text.data());
  out.String(text);
}

void PutBound(QZJSONTextWriter& out, double bound, bool isUnbounded) {
  if (isUnbounded) {
    out.Null();
  } else {
    out.Double(bound);
  }
  out.Raw(',');
}

/// The two bounds, a number whose sign tells the one side that has a bound, and the inclusivity.
void PutRange(QZJSONTextWriter& out, const QZRange& range) {
  const bool noLow = range.IsUnboundedLow();
  const bool noHigh = range.IsUnboundedHigh();
  out.Open("[");
  PutBound(out, range.low, noLow);
  PutBound(out, range.high, noHigh);
  out.Double(noLow == noHigh ? 0.0 : noLow ? 1.0 : -1.0);
  out.Raw(',');
  out.Double(range.inclusivity);
  out.Close("]");
}

/// Text that is JSON already; none stands for no value.
void PutDocument(QZJSONTextWriter& out, const std::string& text) {
  if (text.empty()) {
    out.Null();
  } else {
    out.Document(text);
  }
}

void PutElement(QZJSONTextWriter& out, long value) { out.Int(value); }
void PutElement(QZJSONTextWriter& out, double value) { out.Double(value); }
void PutElement(QZJSONTextWriter& out, bool value) { out.Bool(value); }

/// The elements of a list, each by `put`; no elements when the bytes don't decode.
template <class Value, class Put>
void PutList(QZJSONTextWriter& out, QZByteSlice bytes, Put put) {
  out.Open("[");
  const auto start = out.Here();
  bool first = true;
  const auto begin = [](std::size_t, std::size_t) {};
  const auto visit = [&](const Value& value, bool none) {
    if (!first) out.Raw(',');
    first = false;
    if (none) {
      out.Null();
    } else {
      put(value);
    }
  };
  if (!ListElement::ForEach<Value>(bytes.data, bytes.size, begin, visit)) out.Rewind(start);
  out.Close("]");
}

template <class Value>
void PutList(QZJSONTextWriter& out, QZByteSlice bytes) {
  PutList<Value>(out, bytes, [&](const Value& value) { PutElement(out, value); });
}

void PutNested(QZJSONTextWriter& out, QZByteSlice bytes, int level) {
  QZRecord record;
  // What could be read of damaged bytes is the value.
  static_cast<void>(QZFieldType<QZRecord>::FromBytes(record, bytes.data, bytes.size));
  WriteRecordJSON(out, record, level);
}

void PutNestedList(QZJSONTextWriter& out, QZByteSlice bytes, int level) {
  std::vector<std::optional<QZRecord>> records;
  if (!QZVectorFieldType<QZRecord>::FromBytes(records, bytes.data, bytes.size)) records.clear();
  out.Open("[");
  bool first = true;
  for (const auto& record : records) {
    if (!first) out.Raw(',');
    first = false;
    if (record) {
      WriteRecordJSON(out, *record, level);
    } else {
      out.Null();
    }
  }
  out.Close("]");
}

/// The value of a built-in type.
void PutBuiltIn(QZJSONTextWriter& out, QZFieldKind kind, QZByteSlice bytes, int level) {
  switch (kind) {
    case QZFieldKind::Int:
      return out.Int(ValueOf<long>(bytes));
    case QZFieldKind::String:
      return out.String(TextOf(bytes));
    case QZFieldKind::Float:
      return out.Double(ValueOf<double>(bytes));
    case QZFieldKind::Blob:
      return PutBytes(out, bytes);
    case QZFieldKind::Bool:
      return out.Bool(ValueOf<bool>(bytes));
    case QZFieldKind::IntVec:
      return PutList<long>(out, bytes);
    case QZFieldKind::StringVec:
      return PutList<QZByteSlice>(out, bytes, [&](QZByteSlice element) { out.String(TextOf(element)); });
    case QZFieldKind::FloatVec:
      return PutList<double>(out, bytes);
    case QZFieldKind::BlobVec:
      return PutList<QZByteSlice>(out, bytes, [&](QZByteSlice element) { PutBytes(out, element); });
    case QZFieldKind::BoolVec:
      return PutList<bool>(out, bytes);
    case QZFieldKind::Record:
      return PutNested(out, bytes, level + 1);
    case QZFieldKind::RecordVec:
      return PutNestedList(out, bytes, level + 1);
    case QZFieldKind::Range:
      return PutRange(out, ValueOf<QZRange>(bytes));
    default:
      return PutDocument(out, ValueOf<QZJSONObject>(bytes).GetText());
  }
}

/// The member "value" of a type that somebody registered; none for a type that nobody did.
void WriteRegisteredValue(QZJSONTextWriter& out, const std::string& type, QZByteSlice bytes) {
  const QZFieldTypeHandler* const handler = QZFieldTypeHandlerRegistry::GetInstance().GetHandler(type);
  if (handler == nullptr) return;
  out.Raw(",\"value\":");
  PutDocument(out, handler->BytesToJSON(std::vector<unsigned char>(bytes.data, bytes.data + bytes.size)));
}

/// The member "value" of the field at `pos`.
void WriteJSONValue(QZJSONTextWriter& out, const QZRecordImpl& impl, std::size_t pos, int level) {
  if (impl.IsNullAt(pos)) {
    out.Raw(",\"value\":null");
    return;
  }
  const std::string& type = impl.Fields().At(pos).GetType();
  const QZFieldKind kind = QZGetFieldKind(type);
  QZByteSlice bytes;
  if (!impl.GetSliceAt(pos, bytes)) bytes = {};
  if (kind == QZFieldKind::Other) {
    WriteRegisteredValue(out, type, bytes);
  } else {
    out.Raw(",\"value\":");
    PutBuiltIn(out, kind, bytes, level);
  }
}

/// The members of a field that don't depend on its value.
void WriteFieldHead(QZJSONTextWriter& out, const QZFieldBase& field, unsigned int idx) {
  out.Raw("\"name\":");
  out.String(field.GetName());
  out.Raw(",\"type\":");
  out.String(field.GetTypeName());
  out.Raw(",\"idx\":");
  out.Unsigned(idx);
  if (!field.PeekMeta().IsEmpty()) {
    out.Raw(",\"meta\":");
    WriteFieldMetaJSON(out, field.PeekMeta());
  }
  if (field.IsNullable()) out.Raw(",\"nullable\":true");
}

/// The member "child" of a field that has child records.
void WriteChildren(QZJSONTextWriter& out, const QZRecord& record, const QZFieldBase& field, int level) {
  out.Open(",\"child\":{");
  bool first = true;
  for (const auto& [key, child] : record.GetChildRecords(field)) {
    if (!first) out.Raw(',');
    first = false;
    out.String(key);
    out.Raw(':');
    WriteRecordJSON(out, child, level);
  }
  out.Close("}");
}

bool HasChildBytes(const QZRecordImpl& impl, unsigned int idx) {
  QZByteSlice bytes;
  return impl.FindChildBytes(idx, bytes) && bytes.size != 0;
}

void WriteFieldJSON(QZJSONTextWriter& out, const QZRecord& record, std::size_t pos, int level) {
  const QZRecordImpl& impl = QZRecordImpl::Of(record);
  const FieldList& fields = impl.Fields();
  out.Open("{");
  WriteFieldHead(out, fields.At(pos), fields.Idx(pos));
  if (HasChildBytes(impl, fields.Idx(pos))) WriteChildren(out, record, fields.At(pos), level + 1);
  WriteJSONValue(out, impl, pos, level);
  out.Close("}");
}

void WriteSourceID(QZJSONTextWriter& out, const QZRecord& record) {
  const std::string id = record.GetSourceID();
  if (id.empty()) return;
  out.Raw(",\"source id\":");
  out.String(id);
}

}  // namespace

// All that is decoded is written back first: what is left are bytes, which nothing changes on the way.
void WriteRecordJSON(QZJSONTextWriter& out, const QZRecord& record, int level) {
  if (level > kMaxRecordDepth) out.SetTooDeep();
  if (out.IsTooDeep()) return;
  record.UnloadChildCache();
  QZRecordImpl::Of(record).UnloadCache();
  out.Open("{\"version\":[");
  out.Raw("1,0");
  out.Close("]");
  WriteSourceID(out, record);
  out.Open(",\"fields\":[");
  bool first = true;
  for (const std::size_t pos : QZRecordImpl::Of(record).Fields().ByIdx()) {
    if (!first) out.Raw(',');
    first = false;
    WriteFieldJSON(out, record, pos, level);
  }
  out.Close("]}");
}

std::string QZRecordToJSON(const QZRecord& record) {
  QZJSONTextWriter out;
  WriteRecordJSON(out, record, 1);
  if (!out.IsTooDeep()) return out.Take();
  QZThrow.Warning(kTooDeep);
  return {};
}

}  // namespace QZDataFlow
