#include "qz/dataflow/base85_impl.h"
#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/listelement_impl.h"
#include "qz/dataflow/recordjson.h"
#include "qz/dataflow/recordjson_impl.h"
#include "qz/dataflow/recordjsonheads_impl.h"
#include "qz/system/frame/error.h"

namespace QZDataFlow {

namespace {

constexpr char kTooDeep[] = "JSON: record nests too deep to be written";

std::string_view TextOf(QZByteSlice slice) { return {reinterpret_cast<const char*>(slice.data), slice.size}; }

/// The value that the bytes stand for, or the default of its type.
template <class T>
T ValueOf(QZByteSlice bytes) {
  T value{};
  if (!QZFieldType<T>::FromBytes(value, bytes.data, bytes.size)) value = T{};
  return value;
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

/// A record inside the one that is written, and its place in the text.
struct Hole {
  QZJSONTextWriter::Mark at;
  QZRecord record;
};
using Holes = std::vector<Hole>;

void PutNested(QZJSONTextWriter& out, QZByteSlice bytes, Holes& holes) {
  holes.push_back({out.Here(), ValueOf<QZRecord>(bytes)});
}

void PutNestedList(QZJSONTextWriter& out, QZByteSlice bytes, Holes& holes) {
  std::vector<std::optional<QZRecord>> records;
  if (!QZVectorFieldType<QZRecord>::FromBytes(records, bytes.data, bytes.size)) records.clear();
  out.Open("[");
  bool first = true;
  for (auto& record : records) {
    if (!first) out.Raw(',');
    first = false;
    if (record) {
      holes.push_back({out.Here(), std::move(*record)});
    } else {
      out.Null();
    }
  }
  out.Close("]");
}

/// The value of a built-in type.
void PutBuiltIn(QZJSONTextWriter& out, QZFieldKind kind, QZByteSlice bytes, Holes& holes) {
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
      return PutNested(out, bytes, holes);
    case QZFieldKind::RecordVec:
      return PutNestedList(out, bytes, holes);
    case QZFieldKind::Range:
      return PutRange(out, ValueOf<QZRange>(bytes));
    default:
      return PutDocument(out, ValueOf<QZJSONObject>(bytes).GetText());
  }
}

/// The member "value" of a type that isn't built in: what its handler makes of it, or none without a handler.
void PutRegistered(QZJSONTextWriter& out, const QZRecordImpl& impl, std::size_t pos, QZByteSlice bytes) {
  if (impl.IsNullAt(pos)) return out.Raw(",\"value\":null");
  const std::string& type = impl.Fields().At(pos).GetType();
  const QZFieldTypeHandler* const handler = QZFieldTypeHandlerRegistry::GetInstance().GetHandler(type);
  if (handler == nullptr) return;
  out.Raw(",\"value\":");
  PutDocument(out, handler->BytesToJSON(std::vector<unsigned char>(bytes.data, bytes.data + bytes.size)));
}

/// The value of the field at `pos`, which is of that kind; behind the key for a built-in type.
void WriteJSONValue(QZJSONTextWriter& out, const QZRecordImpl& impl, std::size_t pos, QZFieldKind kind, Holes& holes) {
  QZByteSlice bytes;
  if (!impl.GetSliceAt(pos, bytes)) bytes = {};
  if (kind == QZFieldKind::Other) {
    PutRegistered(out, impl, pos, bytes);
  } else if (impl.IsNullAt(pos)) {
    out.Null();
  } else {
    PutBuiltIn(out, kind, bytes, holes);
  }
}

/// The member "child" of a field that has child records.
void WriteChildren(QZJSONTextWriter& out, const QZRecord& record, const QZFieldBase& field, Holes& holes) {
  out.Open(",\"child\":{");
  bool first = true;
  for (auto& [key, child] : record.GetChildRecords(field)) {
    if (!first) out.Raw(',');
    first = false;
    out.String(key);
    out.Raw(':');
    holes.push_back({out.Here(), std::move(child)});
  }
  out.Close("}");
}

bool HasChildBytes(const QZRecordImpl& impl, unsigned int idx) {
  QZByteSlice bytes;
  return impl.FindChildBytes(idx, bytes) && bytes.size != 0;
}

/// All fields, in the order of their indices.
void WriteFields(QZJSONTextWriter& out, const QZRecord& record, Holes& holes) {
  const QZRecordImpl& impl = QZRecordImpl::Of(record);
  const FieldList& fields = impl.Fields();
  bool first = true;
  for (const std::size_t pos : fields.ByIdx()) {
    const QZFieldKind kind = QZGetFieldKind(fields.At(pos).GetType());
    out.Open(first ? "{" : ",{");
    first = false;
    WriteFieldHead(out, fields.At(pos), fields.Idx(pos));
    if (HasChildBytes(impl, fields.Idx(pos))) WriteChildren(out, record, fields.At(pos), holes);
    if (kind != QZFieldKind::Other) out.Raw(",\"value\":");
    WriteJSONValue(out, impl, pos, kind, holes);
    out.Close("}");
  }
}

/// The same for the outermost record, which is far from the limit of brackets.
void WriteFields(QZJSONTextWriter& out, const QZRecord& record, const FieldHeads& heads, Holes& holes) {
  const QZRecordImpl& impl = QZRecordImpl::Of(record);
  const FieldList& fields = impl.Fields();
  for (const FieldHead& head : heads) {
    if (HasChildBytes(impl, fields.Idx(head.pos))) {
      out.Open(std::string_view(head.text).substr(0, head.headSize));
      WriteChildren(out, record, fields.At(head.pos), holes);
      out.Raw(std::string_view(head.text).substr(head.headSize));
    } else {
      out.Open(head.text);
    }
    WriteJSONValue(out, impl, head.pos, head.kind, holes);
    out.Close("}");
  }
}

void WriteSourceID(QZJSONTextWriter& out, const QZRecord& record) {
  if (QZRecordImpl::Of(record).RecordMeta().IsEmpty()) return;
  const std::string id = record.GetSourceID();
  if (id.empty()) return;
  out.Raw(",\"source id\":");
  out.String(id);
}

/// The document of a record but for the records inside it. All that is decoded is written back first: what is left are
/// bytes, which nothing changes on the way.
void WriteWithHoles(QZJSONTextWriter& out, const QZRecord& record, bool isOutermost, Holes& holes) {
  record.UnloadChildCache();
  QZRecordImpl::Of(record).UnloadCache();
  out.Open("{\"version\":[", 2);
  out.Close("1,0]");
  WriteSourceID(out, record);
  out.Open(",\"fields\":[");
  const auto heads = isOutermost ? FindFieldHeads(QZRecordImpl::Of(record).Fields()) : nullptr;
  if (heads != nullptr) {
    WriteFields(out, record, *heads, holes);
  } else {
    WriteFields(out, record, holes);
  }
  out.Close("]}", 2);
}

/// A record whose own text is written, but for records inside it.
struct Level {
  std::string text;  // from its start on, which is taken back
  std::size_t start;
  QZJSONTextWriter::Mark end;
  Holes holes;
  std::size_t next = 0;  // hole
  std::size_t done = 0;  // of the text
};

/// Writes the text of a record, and begins a level if there are records inside it.
void WriteText(QZJSONTextWriter& out, const QZRecord& record, bool isOutermost, std::vector<Level>& levels) {
  Holes holes;
  const auto start = out.Here();
  WriteWithHoles(out, record, isOutermost, holes);
  if (holes.empty()) return;
  const auto end = out.Here();
  levels.push_back({out.TakeFrom(start), start.size, end, std::move(holes)});
}

/// Puts the text up to the next hole, and takes the record that belongs there.
QZRecord GoToHole(QZJSONTextWriter& out, Level& level) {
  Hole& hole = level.holes[level.next++];
  const std::size_t at = hole.at.size - level.start;
  out.Restore(std::string_view(level.text).substr(level.done, at - level.done), hole.at);
  level.done = at;
  return std::move(hole.record);
}

}  // namespace

// The way down is kept in a list and not on the stack. A record goes before those inside it are written: each holds a
// copy of all that is deeper, so that one as deep as they may be would else take its size a few hundred times.
bool WriteRecordJSON(QZJSONTextWriter& out, const QZRecord& record) {
  std::vector<Level> levels;
  WriteText(out, record, true, levels);
  while (!levels.empty() && !out.IsTooDeep()) {
    Level& level = levels.back();
    if (level.next == level.holes.size()) {
      out.Restore(std::string_view(level.text).substr(level.done), level.end);
      levels.pop_back();
    } else if (levels.size() == kMaxRecordDepth) {
      out.SetTooDeep();
    } else {
      const QZRecord inner = GoToHole(out, level);
      WriteText(out, inner, false, levels);
    }
  }
  if (out.IsTooDeep()) QZThrow.Warning(kTooDeep);
  return !out.IsTooDeep();
}

std::string QZRecordToJSON(const QZRecord& record) {
  QZJSONTextWriter out;
  return WriteRecordJSON(out, record) ? out.Take() : std::string();
}

}  // namespace QZDataFlow
