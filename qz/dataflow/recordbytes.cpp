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

/// The size of a section with that much content, which isn't there without any.
std::size_t SectionSize(std::string_view name, std::size_t contentSize) {
  return contentSize == 0 ? 0 : 1 + name.size() + IntSize(contentSize) + contentSize;
}

/// Begins a wrapper. The name is shorter than 128 bytes.
void AppendHead(ByteBlock& out, std::string_view name, std::size_t contentSize) {
  unsigned char* const at = out.Extend(1 + name.size());
  at[0] = static_cast<unsigned char>(name.size());
  std::memcpy(at + 1, name.data(), name.size());
  out.AppendInt(contentSize);
}

void Append(ByteBlock& out, const Bytes& bytes) { out.Append(bytes.data(), bytes.size()); }

}  // namespace

QZByteSlice QZRecordImpl::Encode() {
  if (verbatim) return {block.data(), storedSize};
  spare.Clear();
  AppendTo(spare, true);
  return {spare.data(), spare.size()};
}

void QZRecordImpl::AppendTo(ByteBlock& out, bool withSourceID) {
  if (verbatim && (withSourceID || !HasSourceID())) {
    out.Append(block.data(), storedSize);
    return;
  }
  FreezeList();
  const Bytes& fieldItems = list->MetaItems();
  const Bytes recordItem = RecordMetaItem(withSourceID);
  const std::size_t metaSize = fieldItems.size() + recordItem.size();
  const std::size_t dataSize = DataSize();
  const std::size_t childrenSize = ChildrenSize();
  std::size_t size = recordItem.empty()
                         ? list->Opening().size()
                         : VersionSection().size() + list->FieldsSection().size() + SectionSize(kMetaName, metaSize);
  size += SectionSize(kDataName, dataSize) + SectionSize(kChildrenName, childrenSize);
  for (const ByteRange& section : unknownSections) size += section.size;

  out.Reserve(SectionSize(kRecordName, size));
  AppendHead(out, kRecordName, size);
  if (recordItem.empty()) {
    Append(out, list->Opening());
  } else {
    Append(out, VersionSection());
    Append(out, list->FieldsSection());
    AppendHead(out, kMetaName, metaSize);
    Append(out, fieldItems);
    Append(out, recordItem);
  }
  if (dataSize != 0) {
    AppendHead(out, kDataName, dataSize);
    AppendData(out);
  }
  if (childrenSize != 0) {
    AppendHead(out, kChildrenName, childrenSize);
    AppendChildren(out);
  }
  for (const ByteRange& section : unknownSections) out.Append(block.data() + section.begin, section.size);
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

std::size_t QZRecordImpl::DataSize() const {
  std::size_t size = 0;
  const unsigned int* idx = list->Indices();
  for (const Slot& slot : slots) {
    if (slot.IsItem()) {
      size += slot.Head() + slot.size;
    } else if (slot.IsNull()) {
      size += IntSize(*idx) + 1;
    } else {
      ByteRange value;
      if (FindValue(slot, *idx, value)) size += IntSize(*idx) + IntSize(value.size) + value.size;
    }
    ++idx;
  }
  return size;
}

/// Items that stand in the block as they are to be written, one after the other, go out in one piece.
void QZRecordImpl::AppendData(ByteBlock& out) const {
  ByteRange run;
  const auto end = [this, &out, &run] {
    out.Append(block.data() + run.begin, run.size);
    run.size = 0;
  };
  const unsigned int* idx = list->Indices();
  for (const Slot& slot : slots) {
    const unsigned int number = *idx++;
    if (slot.IsItem()) {
      const std::size_t begin = slot.Begin() - slot.Head();
      if (run.begin + run.size != begin) {
        end();
        run.begin = begin;
      }
      run.size += slot.Head() + slot.size;
      continue;
    }
    ByteRange value;
    if (!slot.IsNull() && !FindValue(slot, number, value)) continue;
    end();
    out.AppendInt(std::size_t{number});
    if (slot.IsNull()) {
      *out.Extend(1) = BufferImpl::kNone;
    } else {
      out.AppendInt(value.size);
      out.Append(block.data() + value.begin, value.size);
    }
  }
  end();
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
