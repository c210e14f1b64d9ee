// The stored form of a record.
//
// All integers, strings, blobs and bools are the primitives of QZWriteBuffer. A wrapper is a name as a string, the
// length of the content as an integer, and the content. A record is one wrapper named "record.v1" around wrappers, the
// sections, in this order. An empty section is left out.
//
//   "version"    a string, "1.0"
//   "fields"     for each field, in order of name: name (string), index (integer), type name (string), nullable (bool)
//   "meta"       for each field that has any, in order of name, and then, with the index 0, for the record: index, the
//                number of options, each option (integers), the number of attributes, and each attribute: its key (an
//                integer), directly followed by the bytes of its value, whose form the key tells
//   "data"       for each field with a value or a null, in order of name: index, and the value as a blob, or for a null
//                the "no value" marker of a blob
//   "children"   for each index with child records, ascending: index, and a blob, the form of a list of records
//   other names  as they were read
//
// Nothing is aligned, and nothing says where a record ends but the length at its start.

#include "qz/dataflow/recordbytes.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/recordsections_impl.h"

namespace QZDataFlow {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::string_view kMetaName = "meta";
constexpr std::string_view kDataName = "data";
constexpr std::string_view kChildrenName = "children";

std::size_t IntSize(std::size_t value) { return QZWriteBuffer::IntSize(static_cast<long>(value)); }

// The most bytes of the names and lengths before the values, with a good deal to spare.
constexpr std::size_t kMostHeads = 128;

/// Puts bytes before those that it put last.
class FrontWriter {
 public:
  explicit FrontWriter(unsigned char* behind) : at(behind) {}

  unsigned char* Position() const { return at; }
  void Put(const void* bytes, std::size_t size) {
    at -= size;
    std::memcpy(at, bytes, size);
  }
  void Put(const Bytes& bytes) {
    if (!bytes.empty()) Put(bytes.data(), bytes.size());
  }
  /// Puts the name of a wrapper, which is shorter than 128 bytes, and the length of its content.
  void PutHead(std::string_view name, std::size_t contentSize) {
    unsigned char length[QZWriteBuffer::kMaxIntSize];
    Put(length, QZWriteBuffer::EncodeInt(static_cast<long>(contentSize), length));
    Put(name.data(), name.size());
    *--at = static_cast<unsigned char>(name.size());
  }

 private:
  unsigned char* at;
};

/// Begins a wrapper behind what is there.
void AppendHead(ByteBlock& out, std::string_view name, std::size_t contentSize) {
  unsigned char* const at = out.Extend(1 + name.size());
  at[0] = static_cast<unsigned char>(name.size());
  std::memcpy(at + 1, name.data(), name.size());
  out.AppendInt(contentSize);
}

}  // namespace

// Each length stands before what it measures, and takes more bytes the larger it is. So the content of a section is
// written first, behind as much room as could be needed, and then what stands before it, from the back to the front.
QZByteSlice QZRecordImpl::Encode(bool withSourceID) {
  if (verbatim && (withSourceID || !HasSourceID())) return {block.data(), storedSize};
  FreezeList();
  const Bytes recordItem = RecordMetaItem(withSourceID);
  const std::size_t room = kMostHeads + list->Opening().size() + recordItem.size();
  spare.Clear();
  spare.Extend(room);
  AppendData(spare);
  const std::size_t dataSize = spare.size() - room;
  if (const std::size_t size = ChildrenSize(); size != 0) {
    AppendHead(spare, kChildrenName, size);
    AppendChildren(spare);
  }
  for (const ByteRange& section : unknownSections) spare.Append(block.data() + section.begin, section.size);

  FrontWriter front(spare.data() + room);
  if (dataSize != 0) front.PutHead(kDataName, dataSize);
  if (recordItem.empty()) {
    front.Put(list->Opening());
  } else {
    front.Put(recordItem);
    front.Put(list->MetaItems());
    front.PutHead(kMetaName, recordItem.size() + list->MetaItems().size());
    front.Put(list->FieldsSection());
    front.Put(VersionSection());
  }
  const unsigned char* const end = spare.data() + spare.size();
  front.PutHead(kRecordName, static_cast<std::size_t>(end - front.Position()));
  return {front.Position(), static_cast<std::size_t>(end - front.Position())};
}

/// The metadata item of the record itself; nothing if there is no metadata.
Bytes QZRecordImpl::RecordMetaItem(bool withSourceID) const {
  if (recordMeta.IsEmpty()) return Bytes();
  QZRecordMeta meta = recordMeta;
  if (!withSourceID) meta.RemoveAttribute(kRecordSourceID);
  QZWriteBuffer item;
  if (!meta.IsEmpty()) AppendMetaItem(item, 0, meta);
  return item.Get();
}

/// Items that stand in the block as they are to be written, one after the other, go out in one piece.
void QZRecordImpl::AppendData(ByteBlock& out) const {
  std::size_t begin = 0;
  std::size_t end = 0;
  for (const Slot& slot : slots) {
    if (slot.IsReady()) {
      if (slot.ItemBegin() != end) {
        out.Append(block.data() + begin, end - begin);
        begin = slot.ItemBegin();
        end = begin;
      }
      end += slot.ItemSize();
    } else if (slot.IsNull() || slot.IsPresent() || !strays.empty()) {
      out.Append(block.data() + begin, end - begin);
      begin = end;
      AppendOther(out, slot, list->Idx(static_cast<std::size_t>(&slot - slots.data())));
    }
  }
  out.Append(block.data() + begin, end - begin);
}

void QZRecordImpl::AppendOther(ByteBlock& out, const Slot& slot, unsigned int idx) const {
  ByteRange value;
  if (slot.IsNull()) {
    out.AppendInt(std::size_t{idx});
    *out.Extend(1) = BufferImpl::kNone;
  } else if (FindValue(slot, idx, value)) {
    out.AppendInt(std::size_t{idx});
    out.AppendInt(value.size);
    out.Append(block.data() + value.begin, value.size);
  }
}

std::size_t QZRecordImpl::ChildrenSize() const {
  std::size_t size = 0;
  for (const auto& [idx, bytes] : children) size += IntSize(idx) + IntSize(bytes.size) + bytes.size;
  return size;
}

void QZRecordImpl::AppendChildren(ByteBlock& out) const {
  for (const auto& [idx, bytes] : children) {
    out.AppendInt(std::size_t{idx});
    out.AppendInt(bytes.size);
    out.Append(block.data() + bytes.begin, bytes.size);
  }
}

std::vector<unsigned char> QZRecordToBytes(const QZRecord& record) { return record.ToBytes(); }

bool QZRecordFromBytes(QZRecord& record, const std::vector<unsigned char>& bytes) {
  return !bytes.empty() && record.FromBytes(bytes);
}

// The field types whose values are records.

template <>
void QZFieldType<QZRecord>::AppendBytes(Bytes& out, const QZRecord& value) {
  const Bytes bytes = value.ToBytes();
  out.insert(out.end(), bytes.begin(), bytes.end());
}

template <>
bool QZFieldType<QZRecord>::FromBytes(QZRecord& out, const unsigned char* data, std::size_t size) {
  return size != 0 && QZRecordImpl::Of(out).FromBytes(data, size);
}

template <>
std::string QZFieldType<QZRecord>::Format(const QZRecord&) {
  return "<QZRecord>";
}

namespace {

void AppendElement(Bytes& out, const QZRecord& record) { QZFieldType<QZRecord>::AppendBytes(out, record); }

void AppendElement(Bytes& out, const std::optional<QZRecord>& record) {
  if (record) {
    AppendElement(out, *record);
  } else {
    out.push_back(BufferImpl::kNone);
  }
}

template <class Element>
void AppendList(Bytes& out, const std::vector<Element>& records) {
  unsigned char count[QZWriteBuffer::kMaxIntSize];
  out.insert(out.end(), count, count + QZWriteBuffer::EncodeInt(static_cast<long>(records.size()), count));
  for (const Element& record : records) AppendElement(out, record);
}

/// A record that is damaged inside stays with what could be read of it: what follows it isn't lost.
void ReadElement(QZRecord& record, QZByteSlice bytes) {
  if (bytes.size != 0) static_cast<void>(QZRecordImpl::Of(record).FromBytes(bytes.data, bytes.size));
}

void AddElement(std::vector<QZRecord>& out, QZByteSlice bytes) { ReadElement(out.emplace_back(), bytes); }

void AddElement(std::vector<std::optional<QZRecord>>& out, QZByteSlice bytes) {
  out.emplace_back();
  if (bytes.size != 0) ReadElement(out.back().emplace(), bytes);
}

/// Whether a length read here as none stands there as a marker, and isn't cut short. A head byte that announces more
/// bytes than an integer has is a marker as well.
bool IsMarker(const QZReadBuffer& in) { return in.IsValid() && !BufferImpl::IsMeasured(*in.Position()); }

/// Takes the next element, without bytes for one that is absent. False for one that is cut short.
bool TakeElement(QZReadBuffer& in, QZByteSlice& bytes) {
  const QZReadBuffer whole = in;
  bool none;
  const unsigned long nameSize = in.ReadLength(none);
  bytes = {};
  if (none) return IsMarker(whole);
  if (nameSize > in.Remaining()) return false;
  in = QZReadBuffer(in.Position() + nameSize, in.Remaining() - nameSize);
  const QZReadBuffer behindName = in;
  const unsigned long size = in.ReadLength(none);
  if (none && !IsMarker(behindName)) return false;
  if (size > in.Remaining()) return false;
  in = QZReadBuffer(in.Position() + size, in.Remaining() - size);
  bytes = {whole.Position(), whole.Remaining() - in.Remaining()};
  return true;
}

template <class Element>
bool ReadList(std::vector<Element>& out, const unsigned char* data, std::size_t size) {
  if (size == 0) return false;
  QZReadBuffer in(data, size);
  bool none;
  const unsigned long count = in.ReadLength(none);
  if (none) return IsMarker(QZReadBuffer(data, size));
  if (count > in.Remaining()) return false;
  QZByteSlice bytes;
  for (unsigned long i = 0; i < count; ++i) {
    if (!TakeElement(in, bytes)) return false;
    AddElement(out, bytes);
  }
  return true;
}

std::shared_ptr<std::vector<std::optional<QZRecord>>> MakeList(std::size_t size) {
  return std::make_shared<std::vector<std::optional<QZRecord>>>(size);
}

}  // namespace

template <>
void QZVectorFieldType<QZRecord>::AppendBytes(Bytes& out, const std::vector<QZRecord>& values) {
  AppendList(out, values);
}

template <>
void QZVectorFieldType<QZRecord>::AppendBytes(Bytes& out, const std::vector<std::optional<QZRecord>>& values) {
  AppendList(out, values);
}

template <>
bool QZVectorFieldType<QZRecord>::FromBytes(std::vector<QZRecord>& out, const unsigned char* data, std::size_t size) {
  return ReadList(out, data, size);
}

template <>
bool QZVectorFieldType<QZRecord>::FromBytes(std::vector<std::optional<QZRecord>>& out, const unsigned char* data,
                                            std::size_t size) {
  return ReadList(out, data, size);
}

template <>
std::string QZVectorFieldType<QZRecord>::Format(const std::vector<std::optional<QZRecord>>& values) {
  return '[' + std::to_string(values.size()) + (values.size() == 1 ? " record]" : " records]");
}

template <>
std::shared_ptr<void> QZVectorFieldType<QZRecord>::GetCopyForCache(const std::vector<std::optional<QZRecord>>& values) {
  auto list = MakeList(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i]) (*list)[i].emplace(*values[i]);
  }
  return list;
}

template <>
std::shared_ptr<void> QZVectorFieldType<QZRecord>::GetCopyForCache(const std::vector<QZRecord>& values) {
  auto list = MakeList(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) (*list)[i].emplace(values[i]);
  return list;
}

}  // namespace QZDataFlow
