#include <memory>
#include <optional>
#include <utility>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/fieldmetajson_impl.h"
#include "qz/dataflow/recordjson.h"
#include "qz/dataflow/recordjson_impl.h"
#include "qz/dataflow/recordjsonframe_impl.h"
#include "qz/dataflow/recordjsonvalue_impl.h"
#include "qz/system/frame/error.h"
#include "qz/system/json/parse.h"

// A document is gone through without recursion: the way down to the record that is being read is a list of levels. A
// level with a field whose value or children are records waits for each of them.

namespace QZDataFlow {

namespace {

constexpr char kTooDeep[] = "JSON: record nests too deep to be read";

constexpr char kValue[] = "value";
constexpr char kChild[] = "child";

using Value = rapidjson::Value;
using OptionalBytes = std::optional<std::vector<unsigned char>>;

std::string TextOf(const Value& string) { return std::string(string.GetString(), string.GetStringLength()); }

/// A field with records in it, and how far these are read.
struct Pending {
  QZFieldBase field;
  QZFieldKind kind = QZFieldKind::Other;  // Record or RecordVec while the value isn't set
  Value* value = nullptr;                 // a record, or a list of them
  rapidjson::SizeType next = 0;           // of that list, then of the children
  std::vector<std::optional<QZRecord>> records;
  Value* children = nullptr;

  bool IsValueOpen() const { return kind != QZFieldKind::Other; }
};

/// A record that is being read.
struct Level {
  explicit Level(QZRecord& callers) : record(&callers) {}
  explicit Level(const std::shared_ptr<QZRecord>& inner) : record(inner.get()), own(inner) {}

  QZRecord* record;
  std::shared_ptr<QZRecord> own;  // the same record unless it is the caller's
  Value* fields = nullptr;
  rapidjson::SizeType next = 0;
  std::optional<Pending> pending;
};

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

class RecordReader {
 public:
  /// Reads the document into the record. False at what makes QZRecordFromJSON false.
  bool Read(QZRecord& record, Value& document) {
    if (!Begin(Level(record), document)) return false;
    while (!levels.empty()) {
      if (!Step()) return false;
    }
    return true;
  }

 private:
  bool Begin(Level level, Value& document);
  bool Step();
  void ReadFieldJSON(Level& level, Value& object);
  void BeginValue(Level& level, Value& object, Pending pending);
  void Continue(Level& level);
  void ContinueChildren(Level& level);
  void BeginNested(Value& document);
  void End();
  void Deliver(Level& outer, std::shared_ptr<QZRecord> record);
  static void FinishValue(Level& level);
  static void RefuseValue(Level& level);
  bool IsDeepest() const;

  std::vector<Level> levels;
};

/// Reads what stands before the fields, and begins a level if there is such an array.
bool RecordReader::Begin(Level level, Value& document) {
  const auto version = GetJSONArrayAttr(document, "version", true);
  if (version.error || version.value->Size() != 2) return false;
  const auto id = GetJSONStringAttr(document, "source id");
  if (id.error) return false;
  if (id.found) level.record->SetSourceID(id.value);
  const auto fields = GetJSONArrayAttr(document, "fields");
  if (fields.error) return false;
  if (!fields.found) return true;
  level.fields = fields.value;
  levels.push_back(std::move(level));
  return true;
}

/// Goes on with the innermost record. False at a field of the outermost that isn't an object; an inner record ends
/// there.
bool RecordReader::Step() {
  Level& level = levels.back();
  if (level.pending) {
    Continue(level);
  } else if (level.next == level.fields->Size()) {
    End();
  } else if (Value& object = (*level.fields)[level.next++]; object.IsObject()) {
    ReadFieldJSON(level, object);
  } else if (levels.size() == 1) {
    return false;
  } else {
    End();
  }
  return true;
}

void RecordReader::ReadFieldJSON(Level& level, Value& object) {
  Pending pending;
  pending.field = ReadFieldHead(object);
  if (!pending.field.IsValid()) return;
  const auto children = GetJSONObjectAttr(object, kChild);
  if (children.found && !children.error) pending.children = children.value;
  const auto value = object.FindMember(kValue);
  if (value == object.MemberEnd()) {
    level.record->AddField(pending.field);
  } else if (value->value.IsNull()) {
    level.record->SetBytes(pending.field, OptionalBytes());
  } else {
    BeginValue(level, object, std::move(pending));
  }
}

void RecordReader::BeginValue(Level& level, Value& object, Pending pending) {
  const QZFieldKind kind = QZGetFieldKind(pending.field.GetType());
  OptionalBytes bytes;
  if (kind == QZFieldKind::Record || kind == QZFieldKind::RecordVec) {
    const bool isList = kind == QZFieldKind::RecordVec;
    const auto attr = isList ? GetJSONArrayAttr(object, kValue, true) : GetJSONObjectAttr(object, kValue, true);
    if (!attr.error) {
      pending.kind = kind;
      pending.value = attr.value;
    }
  } else if (!ReadJSONValue(object, pending.field.GetType(), bytes)) {
    return;
  }
  if (!pending.IsValueOpen()) level.record->SetBytes(pending.field, bytes);
  if (pending.IsValueOpen() || pending.children != nullptr) level.pending = std::move(pending);
}

/// Goes on with the records of the field that waits for them.
void RecordReader::Continue(Level& level) {
  Pending& pending = *level.pending;
  if (!pending.IsValueOpen()) {
    ContinueChildren(level);
    return;
  }
  const bool isList = pending.kind == QZFieldKind::RecordVec;
  if (pending.next == (isList ? pending.value->Size() : 1)) {
    FinishValue(level);
    return;
  }
  Value& element = isList ? (*pending.value)[pending.next] : *pending.value;
  ++pending.next;
  if (isList && element.IsNull()) {
    pending.records.emplace_back();
  } else if (!element.IsObject()) {
    QZWarnJSONKind(QZJSONKind::Object, kValue);
    RefuseValue(level);
  } else if (IsDeepest()) {
    RefuseValue(level);
  } else {
    BeginNested(element);
  }
}

/// Sets the value, once all of its records are read; its children come next.
void RecordReader::FinishValue(Level& level) {
  Pending& pending = *level.pending;
  if (pending.kind == QZFieldKind::RecordVec) {
    level.record->SetBytes(pending.field, QZVectorFieldType<QZRecord>::ToBytes(pending.records));
  } else {
    level.record->SetBytes(pending.field, QZFieldType<QZRecord>::ToBytes(*pending.records.front()));
  }
  pending.records.clear();
  pending.kind = QZFieldKind::Other;
  pending.next = 0;
}

void RecordReader::RefuseValue(Level& level) {
  Pending& pending = *level.pending;
  level.record->SetBytes(pending.field, OptionalBytes());
  pending.records.clear();
  pending.kind = QZFieldKind::Other;
  pending.next = 0;
}

void RecordReader::ContinueChildren(Level& level) {
  Pending& pending = *level.pending;
  if (pending.children == nullptr || pending.next == pending.children->MemberCount()) {
    level.pending.reset();
    return;
  }
  Value& child = (pending.children->MemberBegin() + static_cast<std::ptrdiff_t>(pending.next++))->value;
  if (!child.IsObject()) {
    QZWarnJSONKind(QZJSONKind::Object, kChild);
  } else if (IsDeepest()) {
    level.pending.reset();
  } else {
    BeginNested(child);
  }
}

/// Whether no record may stand inside the innermost, of which it warns.
bool RecordReader::IsDeepest() const {
  if (levels.size() < kMaxRecordDepth) return false;
  QZThrow.Warning(kTooDeep);
  return true;
}

/// Begins a record inside the innermost. One that can't be begun is as far as it was read.
void RecordReader::BeginNested(Value& document) {
  auto record = std::make_shared<QZRecord>();
  const std::size_t before = levels.size();
  const bool begun = Begin(Level(record), document);
  if (!begun || levels.size() == before) Deliver(levels.back(), std::move(record));
}

/// Ends the innermost record.
void RecordReader::End() {
  std::shared_ptr<QZRecord> record = std::move(levels.back().own);
  levels.pop_back();
  if (!levels.empty()) Deliver(levels.back(), std::move(record));
}

/// Gives the record to the field that waits for it.
void RecordReader::Deliver(Level& outer, std::shared_ptr<QZRecord> record) {
  Pending& pending = *outer.pending;
  if (pending.IsValueOpen()) {
    pending.records.emplace_back(std::move(*record));
    return;
  }
  const Value& key = (pending.children->MemberBegin() + static_cast<std::ptrdiff_t>(pending.next - 1))->name;
  const auto idx = static_cast<int>(outer.record->GetFieldIdx(pending.field));
  QZRecordImpl::Of(*outer.record).AddToChildCache(idx, TextOf(key), std::move(record));
}

/// Whether the record is as a new one.
bool HoldsNothing(QZRecordImpl& impl) {
  static const std::size_t sizeOfNew = QZRecord().ToBytes().size();
  return impl.Fields().Size() == 0 && impl.Encode().size == sizeOfNew;
}

}  // namespace

bool ReadRecordJSON(QZRecord& record, std::string_view text) {
  QZRecordImpl& impl = QZRecordImpl::Of(record);
  const bool isNew = HoldsNothing(impl);
  if (isNew && ReadLikeBefore(impl, text)) return true;
  rapidjson::Document document;
  if (!JSONParseHelper(document, text.data(), text.size()) || !RecordReader().Read(record, document)) return false;
  if (isNew) RememberDocument(impl, document, text);
  return true;
}

bool QZRecordFromJSON(QZRecord& record, const std::string& text) { return ReadRecordJSON(record, text); }

}  // namespace QZDataFlow
