#include "qz/dataflow/recordjsonframe_impl.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/listelement_impl.h"
#include "qz/dataflow/recordjsonheads_impl.h"
#include "qz/dataflow/recordsections_impl.h"
#include "qz/dataflow/threadowned_impl.h"
#include "qz/system/json/plainscan_impl.h"

namespace QZDataFlow {

namespace {

using JSONImpl::PlainScan;
using Bytes = std::vector<unsigned char>;

constexpr std::size_t kLargestDocument = 65536;
constexpr std::size_t kLargestRoom = std::size_t{1} << 20;

// Documents that never look alike aren't worth remembering: after so many in a row, only one in many is.
constexpr unsigned int kPatience = 16, kRarely = 64;

std::string_view TextOf(QZByteSlice bytes) { return {reinterpret_cast<const char*>(bytes.data), bytes.size}; }
QZByteSlice SliceOf(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

/// Where the bytes of a value stand while a document is read: in its text, in `unescaped`, or, for null data, in
/// `values` from `begin` on.
struct Taken {
  const unsigned char* data;
  std::size_t begin;
  std::size_t size;
  bool isNull;
};

/// Room that keeps its memory from one document to the next.
struct Room {
  std::vector<Taken> taken;
  ByteBlock values;
  ByteBlock elements;
  std::vector<std::string> unescaped;  // one for each value

  void Clear(std::size_t count) {
    taken.resize(count);
    unescaped.resize(count);
    if (values.Capacity() + elements.Capacity() > kLargestRoom) values = elements = ByteBlock();
    values.Clear();
  }
};

// Each takes a plain value.

bool TakePlain(PlainScan& scan, long& value) { return scan.Int(value); }
bool TakePlain(PlainScan& scan, double& value) { return scan.Double(value); }
bool TakePlain(PlainScan& scan, bool& value) { return scan.Bool(value); }

template <class T>
bool TakeEncoded(PlainScan& scan, ByteBlock& out) {
  T value;
  unsigned char form[8];
  if (!TakePlain(scan, value)) return false;
  out.Append(form, FieldTypeImpl::Encode(value, form));
  return true;
}

template <class T>
bool TakeElement(PlainScan& scan, ByteBlock& out) {
  if constexpr (std::is_same_v<T, std::string>) {
    std::string_view value;
    std::string unescaped;
    if (!scan.String(value, unescaped)) return false;
    ListElement::Put(out, value);
  } else {
    T value;
    if (!TakePlain(scan, value)) return false;
    ListElement::Put(out, value);
  }
  return true;
}

template <class T>
bool TakeList(PlainScan& scan, Room& room) {
  if (!scan.Literal('[')) return false;
  room.elements.Clear();
  std::size_t count = 0;
  while (!scan.Literal(']')) {
    if (count > 0 && !scan.Literal(',')) return false;
    ++count;
    if (scan.Null()) {
      ListElement::PutNone<T>(room.elements);
    } else if (!TakeElement<T>(scan, room.elements)) {
      return false;
    }
  }
  ListElement::PutCount(room.values, count);
  room.values.Append(room.elements.data(), room.elements.size());
  return true;
}

/// Takes a value that isn't a string into `values`.
bool TakeByKind(PlainScan& scan, QZFieldKind kind, Room& room) {
  switch (kind) {
    case QZFieldKind::Int:
      return TakeEncoded<long>(scan, room.values);
    case QZFieldKind::Float:
      return TakeEncoded<double>(scan, room.values);
    case QZFieldKind::Bool:
      return TakeEncoded<bool>(scan, room.values);
    case QZFieldKind::IntVec:
      return TakeList<long>(scan, room);
    case QZFieldKind::FloatVec:
      return TakeList<double>(scan, room);
    case QZFieldKind::BoolVec:
      return TakeList<bool>(scan, room);
    case QZFieldKind::StringVec:
      return TakeList<std::string>(scan, room);
    default:
      return false;
  }
}

bool TakeValue(PlainScan& scan, QZFieldKind kind, Room& room, std::size_t i) {
  Taken& taken = room.taken[i];
  taken = {nullptr, room.values.size(), 0, scan.Null()};
  if (taken.isNull) return true;
  if (kind != QZFieldKind::String) {
    if (!TakeByKind(scan, kind, room)) return false;
    taken.size = room.values.size() - taken.begin;
    return true;
  }
  std::string_view text;
  if (!scan.String(text, room.unescaped[i])) return false;
  taken.data = SliceOf(text).data;
  taken.size = text.size();
  return true;
}

constexpr std::string_view kRecord = "record.v1", kData = "data";

std::size_t IntSize(std::size_t value) { return QZWriteBuffer::IntSize(static_cast<long>(value)); }

/// The size of the name and the length of a wrapper.
std::size_t HeadSize(std::string_view name, std::size_t contentSize) { return 1 + name.size() + IntSize(contentSize); }

/// What is the same in documents that look alike.
class Frame {
 public:
  Frame() = default;
  /// The frame of a document that was read into a record that held nothing; empty when there is none.
  Frame(const QZRecordImpl& impl, const rapidjson::Value& document);

  bool IsEmpty() const { return tail.empty(); }
  /// Takes the values of a document. False when it isn't of this frame.
  bool Take(std::string_view text, Room& room) const;
  /// Gives them to a record that holds nothing.
  void Store(QZRecordImpl& impl, const Room& room) const;

 private:
  struct Slot {
    std::string before;  // the text between the value before and this one
    QZFieldKind kind;
  };

  bool MakeSlots(const FieldList& fields, const rapidjson::Value& documentFields);
  static void SetSourceID(QZRecordImpl& impl, const Taken& id);

  bool hasSourceID = false;
  std::string start;                // the text up to the source ID
  std::vector<Slot> slots;          // in the order of the document; the index of a field is its place and 1
  std::vector<std::size_t> stored;  // the places in the order of the stored form
  std::string tail;
  Bytes sections;  // those of the stored form that come before the values
};

Frame::Frame(const QZRecordImpl& impl, const rapidjson::Value& document) {
  const auto id = document.FindMember("source id");
  const auto fields = document.FindMember("fields");
  hasSourceID = id != document.MemberEnd();
  start = hasSourceID ? R"({"version":[1,0],"source id":)" : "";
  if (fields == document.MemberEnd() || !MakeSlots(impl.Fields(), fields->value)) return;
  for (const Bytes* section : {&VersionSection(), &impl.Fields().FieldsSection(), &impl.Fields().MetaSection()}) {
    sections.insert(sections.end(), section->begin(), section->end());
  }
  tail = "}]}";
}

/// False when the record isn't of the fields of the document, one for one and in their order, or the text around them
/// can't be foretold. What the text is made of here needn't be what the document has: whoever asks tries it.
bool Frame::MakeSlots(const FieldList& fields, const rapidjson::Value& documentFields) {
  const std::size_t count = fields.Size();
  if (count == 0 || documentFields.Size() != count || fields.SharesIndices()) return false;
  slots.resize(count);
  for (std::size_t pos = 0; pos < count; ++pos) {
    const std::size_t i = fields.Idx(pos) - 1;
    if (i >= count) return false;
    const QZFieldBase& field = fields.At(pos);
    if (!field.GetWrapper().empty()) return false;  // a handler registered later may claim the whole name
    const auto idx = documentFields[static_cast<rapidjson::SizeType>(i)].FindMember("idx");
    QZJSONTextWriter out;
    if (i > 0) {
      out.Raw("},{");
    } else {
      out.Raw(hasSourceID ? R"(,"fields":[{)" : R"({"version":[1,0],"fields":[{)");
    }
    WriteFieldHead(out, field, idx->value.GetUint());
    out.Raw(",\"value\":");
    slots[i] = {out.Take(), QZGetFieldKind(field.GetType())};
    stored.push_back(i);
  }
  return true;
}

bool Frame::Take(std::string_view text, Room& room) const {
  PlainScan scan(text);
  room.Clear(slots.size() + 1);
  if (hasSourceID && (!scan.Literal(start) || !TakeValue(scan, QZFieldKind::String, room, slots.size()))) return false;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (!scan.Literal(slots[i].before) || !TakeValue(scan, slots[i].kind, room, i)) return false;
  }
  return scan.Literal(tail) && scan.AtEnd() && !(hasSourceID && room.taken.back().isNull);
}

unsigned char* PutInt(unsigned char* out, std::size_t value) {
  return out + QZWriteBuffer::EncodeInt(static_cast<long>(value), out);
}

unsigned char* PutBytes(unsigned char* out, const void* data, std::size_t size) {
  if (size != 0) std::memcpy(out, data, size);
  return out + size;
}

unsigned char* PutHead(unsigned char* out, std::string_view name, std::size_t contentSize) {
  out = PutInt(out, name.size());
  return PutInt(PutBytes(out, name.data(), name.size()), contentSize);
}

void Frame::Store(QZRecordImpl& impl, const Room& room) const {
  std::size_t dataSize = 0;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const Taken& taken = room.taken[i];
    dataSize += IntSize(i + 1) + (taken.isNull ? 1 : IntSize(taken.size) + taken.size);
  }
  const std::size_t contentSize = sections.size() + HeadSize(kData, dataSize) + dataSize;
  ByteBlock& block = impl.Incoming();
  block.Clear();
  // An integer is written with its unused bytes behind it, for which there must be room.
  unsigned char* const begin = block.Extend(HeadSize(kRecord, contentSize) + contentSize + sizeof(long));
  unsigned char* out = PutHead(begin, kRecord, contentSize);
  const auto contentAt = static_cast<std::size_t>(out - begin);
  out = PutBytes(out, sections.data(), sections.size());
  out = PutHead(out, kData, dataSize);
  for (const std::size_t i : stored) {
    const Taken& taken = room.taken[i];
    out = PutInt(out, i + 1);
    if (taken.isNull) {
      *out++ = BufferImpl::kNone;
    } else {
      out = PutInt(out, taken.size);
      out = PutBytes(out, taken.data != nullptr ? taken.data : room.values.data() + taken.begin, taken.size);
    }
  }
  block.Truncate(static_cast<std::size_t>(out - begin));
  impl.FromIncoming(contentAt);
  if (hasSourceID) SetSourceID(impl, room.taken.back());
}

/// The record has no other metadata.
void Frame::SetSourceID(QZRecordImpl& impl, const Taken& id) {
  QZRecordMeta meta;
  meta.SetAttribute(kRecordSourceID, std::string(TextOf({id.data, id.size})));
  impl.SetRecordMeta(meta);
}

struct Memory {
  std::array<Frame, 4> frames;  // the latest first
  unsigned int parsed = 0;      // documents since the last that looked like one before
  Room room;

  bool IsWorthIt() { return ++parsed <= kPatience || parsed % kRarely == 0; }
};

}  // namespace

bool ReadLikeBefore(QZRecordImpl& impl, std::string_view text) {
  Memory* const memory = GetThreadOwned<Memory>();
  if (memory == nullptr) return false;
  for (auto frame = memory->frames.begin(); frame != memory->frames.end() && !frame->IsEmpty(); ++frame) {
    if (!frame->Take(text, memory->room)) continue;
    frame->Store(impl, memory->room);
    memory->parsed = 0;
    std::rotate(memory->frames.begin(), frame, frame + 1);
    return true;
  }
  return false;
}

void RememberDocument(QZRecordImpl& impl, const rapidjson::Value& document, std::string_view text) {
  Memory* const memory = GetThreadOwned<Memory>();
  if (memory == nullptr || text.size() > kLargestDocument || !memory->IsWorthIt()) return;
  impl.Encode();  // which freezes the list
  if (!impl.Fields().IsFrozen()) return;
  Frame frame(impl, document);
  if (frame.IsEmpty() || !frame.Take(text, memory->room)) return;
  memory->frames.back() = std::move(frame);
  std::rotate(memory->frames.begin(), memory->frames.end() - 1, memory->frames.end());
}

}  // namespace QZDataFlow
