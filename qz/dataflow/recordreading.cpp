// Reading the stored form of a record; see recordbytes.cpp for its layout.
//
// Most records of a stream begin like the one before: the same version, the same fields, the same metadata of fields.
// These sections are compared as a whole with those of the list of fields that the record read last. Then only the
// lengths of the values are looked at, and each value becomes a place in the block that the record was copied to.
//
// On the way it shows whether a writer would give the same bytes: the same sections in their order, integers in their
// shortest form, values in the order of the names. `Reading::plain` falls where it wouldn't.

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/fieldlistcache_impl.h"
#include "qz/dataflow/recordsections_impl.h"

namespace QZDataFlow {

struct QZRecordImpl::Reading {
  explicit Reading(QZRecordImpl& record) : impl(record) {}
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
  ~Reading() { ForgetValues(); }

  /// Takes away the values of the record before, which stand in the slots until those of this one do, from a place on.
  void ForgetValues(std::size_t from = 0) {
    if (hasOldValues) std::fill(impl.slots.begin() + static_cast<std::ptrdiff_t>(from), impl.slots.end(), Slot());
    hasOldValues = false;
  }

  QZRecordImpl& impl;
  QZReadBuffer content;
  int section = 0;  // the place in the stored order of the section that was read last
  bool plain = true;
  bool hasOldValues = true;
};

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kVersionPlace = 1, kFieldsPlace = 2, kMetaPlace = 3, kDataPlace = 4, kChildrenPlace = 5,
              kUnknownPlace = 6;

// How these sections begin.
constexpr std::array<unsigned char, 5> kMetaStart{4, 'm', 'e', 't', 'a'};
constexpr std::array<unsigned char, 5> kDataStart{4, 'd', 'a', 't', 'a'};

int PlaceOf(std::string_view section) {
  if (section == "data") return kDataPlace;
  if (section == "meta") return kMetaPlace;
  if (section == "fields") return kFieldsPlace;
  if (section == "version") return kVersionPlace;
  if (section == "children") return kChildrenPlace;
  return kUnknownPlace;
}

QZByteSlice Rest(const QZReadBuffer& in) { return {in.Position(), in.Remaining()}; }

bool StartsWith(QZByteSlice bytes, const Bytes& head) {
  return bytes.size >= head.size() && (head.empty() || std::memcmp(bytes.data, head.data(), head.size()) == 0);
}

/// Moves behind these very bytes, if they come next.
bool TakeExact(QZReadBuffer& in, const Bytes& expected) {
  if (!StartsWith(Rest(in), expected)) return false;
  in = QZReadBuffer(in.Position() + expected.size(), in.Remaining() - expected.size());
  return true;
}

std::size_t IntSize(std::size_t value) { return QZWriteBuffer::IntSize(static_cast<long>(value)); }

/// The size of a wrapper's name and length as a writer puts them.
std::size_t HeadSize(std::string_view name, std::size_t contentSize) { return 1 + name.size() + IntSize(contentSize); }

/// What the standard conversion from text to `int` makes of one part of the version: blanks, a sign and digits, and
/// anything behind them. False where it raises an error.
bool IsVersionNumber(std::string_view text) {
  while (!text.empty() && std::strchr(" \t\n\v\f\r", text.front()) != nullptr && text.front() != '\0')
    text.remove_prefix(1);
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
  const long limit = negative ? 2147483648 : 2147483647;
  long value = 0;
  std::size_t digits = 0;
  for (; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits) {
    value = 10 * value + (text[digits] - '0');
    if (value > limit) return false;
  }
  return digits > 0;
}

/// Reads as many items of a field section as there are. False when a length is wrong.
bool ReadFieldItems(QZReadBuffer& in, std::vector<FieldList::Entry>& entries) {
  try {
    while (in.IsValid()) {
      const std::string name = in.ReadString();
      const unsigned int idx = static_cast<unsigned int>(in.ReadInt());
      const std::string typeName = in.ReadString();
      const bool nullable = in.ReadBool();
      QZFieldBase field = QZRecordImpl::MakeFieldBase(name, typeName, QZFieldMeta(), false, nullable);
      if (field.IsValid()) entries.push_back({std::make_shared<const QZFieldBase>(std::move(field)), idx});
    }
    return true;
  } catch (const std::length_error&) {
    return false;
  }
}

Bytes ReadAttribute(QZReadBuffer& in, unsigned int key) {
  if (QZMetadata::TakesAttribute<std::string>(key)) return in.ReadRawBytes<std::string>();
  if (QZMetadata::TakesAttribute<double>(key)) return in.ReadRawBytes<double>();
  if (QZMetadata::TakesAttribute<int>(key)) return in.ReadRawBytes<long>();
  return Bytes();
}

/// Reads what stands behind the index of a metadata item. Throws std::length_error.
template <class Meta>
Meta ReadMeta(QZReadBuffer& in) {
  std::vector<unsigned int> options;
  for (long left = in.ReadInt(); left > 0 && in.IsValid(); --left)
    options.push_back(static_cast<unsigned int>(in.ReadInt()));
  std::vector<QZMeta::Attribute> attributes;
  for (long left = in.ReadInt(); left > 0 && in.IsValid(); --left) {
    const unsigned int key = static_cast<unsigned int>(in.ReadInt());
    attributes.emplace_back(key, ReadAttribute(in, key));
  }
  Meta meta;
  meta.SetOptions(options);
  meta.SetAttributes(attributes);
  return meta;
}

/// Finds the values of a record that has this opening, the section "data" of up to 32767 bytes and nothing else: what
/// most records are.
inline bool TakeExpectedItems(QZByteSlice content, const Bytes& opening, QZByteSlice& items) {
  constexpr std::size_t kLongestLength = 3;
  if (!StartsWith(content, opening)) return false;
  const unsigned char* at = content.data + opening.size();
  std::size_t left = content.size - opening.size();
  if (left < kDataStart.size() + kLongestLength || !BeginsWith(at, left, kDataStart)) return false;
  at += kDataStart.size();
  left -= kDataStart.size();
  std::size_t size = 0;
  const std::size_t head = DecodeShortLength(at, size);
  items = {at + head, size};
  return head != 0 && size != 0 && size == left - head;
}

/// Whether these bytes are what stands in a section behind its name and length.
bool IsContentOf(QZByteSlice content, const Bytes& section) {
  return section.size() > content.size && content.size != 0 &&
         std::memcmp(section.data() + (section.size() - content.size), content.data, content.size) == 0;
}

/// Whether these bytes are the item that a writer makes of the metadata. Of none it makes no item.
bool IsItemOf(QZByteSlice bytes, unsigned int idx, const QZMeta& meta) {
  if (meta.IsEmpty()) return false;
  QZWriteBuffer item;
  AppendMetaItem(item, idx, meta);
  return item.Get().size() == bytes.size && StartsWith(bytes, item.Get());
}

}  // namespace

bool QZRecordImpl::FromBytes(const unsigned char* data, std::size_t size) {
  QZReadBuffer in(data, size);
  std::string_view name;
  QZReadBuffer content;
  if (!in.Unwrap(name, content)) {
    Clear();
    return false;
  }
  const std::size_t whole = size - in.Remaining();
  spare.Trim(whole);
  spare.Clear();
  spare.Append(data, whole);
  return FromIncoming(whole - content.Remaining());
}

/// Reads items as long as each is that of the next field, with an index and a size of one byte, and returns the place
/// behind them. A size of 0x80 is the null.
inline const unsigned char* QZRecordImpl::ReadShortItems(const unsigned char* at, const unsigned char* end,
                                                         std::size_t& next) {
  const unsigned char* const base = block.data();
  const std::uint16_t* code = list->ShortIndices() + next;  // that behind the last field matches nothing
  Slot* slot = slots.data() + next;
  std::size_t left = static_cast<std::size_t>(end - at);
  while (left > 1 && at[0] == *code) {
    const auto begin = static_cast<std::size_t>(at - base);
    const unsigned int size = at[1];
    std::size_t itemSize = 2;
    if (size < BufferImpl::kNone) {
      itemSize += size;
      if (itemSize > left) break;
      *slot = Slot(begin, 2, size);
    } else {
      if (size != BufferImpl::kNone) break;
      *slot = Slot::NullItem(begin, 2);
    }
    at += itemSize;
    left -= itemSize;
    ++slot;
    ++code;
  }
  next = static_cast<std::size_t>(slot - slots.data());
  return at;
}

bool QZRecordImpl::FromIncoming(std::size_t contentAt) {
  // Nothing may fail between one block and the other.
  if (lastRead && slots.capacity() < lastRead->Size()) slots.reserve(lastRead->Size());
  ClearForReading();
  block.Swap(spare);
  storedSize = block.size();
  const QZByteSlice content{block.data() + contentAt, block.size() - contentAt};
  const bool plainHead = IsRecordHead({block.data(), contentAt}, content.size);
  QZByteSlice items;
  if (lastRead && plainHead && TakeExpectedItems(content, lastRead->Opening(), items) && lastRead->SplitsAsBefore()) {
    UseLastRead();
    const unsigned char* const end = items.data + items.size;
    std::size_t next = 0;
    if (ReadShortItems(items.data, end, next) == end) {
      std::fill(slots.begin() + static_cast<std::ptrdiff_t>(next), slots.end(), Slot());
      verbatim = true;
      return true;
    }
  }
  return ReadContent(content, plainHead);
}

/// Reads any record, section by section.
bool QZRecordImpl::ReadContent(QZByteSlice content, bool plainHead) {
  Reading reading(*this);
  reading.content = QZReadBuffer(content.data, content.size);
  reading.plain = plainHead;
  if (!ReadExpected(reading)) {
    reading.hasOldValues = false;
    slots.clear();
    UseList(nullptr);
  }
  const bool whole = ReadSections(reading);
  verbatim = whole && reading.plain;
  return whole;
}

/// Uses the list that was used last. The slots keep the values of the record before.
void QZRecordImpl::UseLastRead() {
  if (slots.size() != lastRead->Size()) slots.resize(lastRead->Size());
  if (list != lastRead.get()) UseList(lastRead);
}

/// Reads the sections before the values, if they are what they were in the record that was read last.
bool QZRecordImpl::ReadExpected(Reading& reading) {
  const QZReadBuffer before = reading.content;
  if (lastRead && TakeExact(reading.content, lastRead->Opening())) {
    reading.section = lastRead->MetaItems().empty() ? kFieldsPlace : kMetaPlace;
  } else if (!TakeExact(reading.content, VersionSection())) {
    reading.plain = false;
    return false;
  } else {
    reading.section = kVersionPlace;
    if (!lastRead || !TakeExact(reading.content, lastRead->FieldsSection())) return false;
    reading.section = kFieldsPlace;
  }
  if ((reading.section == kMetaPlace || ReadExpectedMeta(reading)) && lastRead->SplitsAsBefore()) {
    UseLastRead();
    return true;
  }
  reading.content = before;
  reading.section = kVersionPlace;
  TakeExact(reading.content, VersionSection());
  return false;
}

/// The same for the metadata of the fields, behind which that of the record may stand.
bool QZRecordImpl::ReadExpectedMeta(Reading& reading) {
  const Bytes& items = lastRead->MetaItems();
  if (items.empty() && !BeginsWith(reading.content.Position(), reading.content.Remaining(), kMetaStart)) return true;
  QZReadBuffer in = reading.content;
  std::string_view name;
  QZReadBuffer section;
  if (!in.Unwrap(name, section) || name != "meta") return false;
  const std::size_t size = section.Remaining();
  if (size == 0) return false;  // a writer leaves it out
  if (reading.content.Remaining() - in.Remaining() != HeadSize(name, size) + size) return false;
  if (!TakeExact(section, items)) return false;
  // Damaged bytes can give a field the index of the record, whose metadata is the field's too.
  if (section.IsValid() && (lastRead->FindIdx(0) != FieldList::npos || !ReadRecordItem(Rest(section)))) return false;
  reading.section = kMetaPlace;
  reading.content = in;
  return true;
}

/// Takes over the metadata of the record if these bytes are its item and nothing else, as a writer puts it.
bool QZRecordImpl::ReadRecordItem(QZByteSlice item) {
  QZReadBuffer in(item.data, item.size);
  if (in.ReadInt() != 0) return false;
  try {
    QZRecordMeta meta = ReadMeta<QZRecordMeta>(in);
    if (in.IsValid() || !IsItemOf(item, 0, meta)) return false;
    recordMeta = std::move(meta);
    return true;
  } catch (const std::length_error&) {
    return false;
  }
}

bool QZRecordImpl::ReadSections(Reading& reading) {
  while (reading.content.IsValid()) {
    const unsigned char* const begin = reading.content.Position();
    std::string_view name;
    QZReadBuffer in;
    if (!reading.content.Unwrap(name, in)) return false;
    const int place = PlaceOf(name);
    const QZByteSlice content = Rest(in);
    const auto size = static_cast<std::size_t>(reading.content.Position() - begin);
    if (place != kUnknownPlace) {
      const bool inOrder = place > reading.section && content.size != 0;
      if (!inOrder || size != HeadSize(name, content.size) + content.size) reading.plain = false;
    }
    reading.section = place;
    bool read = true;
    if (place == kVersionPlace) {
      read = ReadVersion(in, reading);
    } else if (place == kFieldsPlace) {
      read = FieldsFromBytes(in, reading);
    } else if (place == kMetaPlace) {
      read = MetaFromBytes(in, reading);
    } else if (place == kDataPlace) {
      read = DataFromBytes(in, reading);
    } else if (place == kChildrenPlace) {
      read = ChildrenFromBytes(in, reading);
    } else {
      unknownSections.push_back({static_cast<std::size_t>(begin - block.data()), size});
    }
    if (!read) return false;
  }
  return true;
}

bool QZRecordImpl::ReadVersion(QZReadBuffer& in, Reading& reading) {
  reading.plain = false;  // that of this library comes before and isn't read here
  try {
    bool none;
    const std::string_view text = in.ReadText(none);
    if (none) return false;
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos) return true;
    return IsVersionNumber(text.substr(0, dot)) &&
           IsVersionNumber(text.substr(dot + 1, text.find('.', dot + 1) - dot - 1));
  } catch (const std::length_error&) {
    return false;
  }
}

bool QZRecordImpl::FieldsFromBytes(QZReadBuffer& in, Reading& reading) {
  reading.ForgetValues();
  const QZByteSlice content = Rest(in);
  if (list->Size() == 0) {
    if (auto known = FieldListCache::FindFields(content)) {
      slots.reserve(known->Size());
      lastRead = known;
      UseList(std::move(known));
      slots.resize(list->Size());
      SpreadValues();
      return true;
    }
  }
  std::vector<FieldList::Entry> entries;
  const bool whole = ReadFieldItems(in, entries);
  UseFields(std::move(entries), reading);
  if (reading.plain && whole && !list->SharesIndices() && IsContentOf(content, list->FieldsSection())) {
    lastRead = shared;
    FieldListCache::KeepFields(shared);
  } else {
    reading.plain = false;
  }
  return whole;
}

/// Adds fields that were read to those there are.
void QZRecordImpl::UseFields(std::vector<FieldList::Entry>&& entries, Reading& reading) {
  if (entries.empty()) {
    reading.plain = false;
    return;
  }
  auto changed = std::make_shared<FieldList>(*list);
  changed->InsertAll(std::move(entries));
  changed->Freeze();
  // A field that stays is null as before; one that was read isn't.
  std::vector<Slot> fresh(changed->Size());
  for (std::size_t pos = 0; pos < list->Size(); ++pos) {
    const std::size_t now = changed->Find(list->At(pos).GetName());
    if (now != FieldList::npos && changed->FieldAt(now) == list->FieldAt(pos)) fresh[now].SetNull(slots[pos].IsNull());
  }
  GatherValues();
  UseList(std::move(changed));
  slots.swap(fresh);
  SpreadValues();
}

bool QZRecordImpl::MetaFromBytes(QZReadBuffer& in, Reading& reading) {
  std::map<unsigned int, QZFieldMeta> metas;
  const unsigned char* const begin = in.Position();
  const unsigned char* recordItem = nullptr;  // the item with the index 0
  bool whole = true;
  try {
    while (in.IsValid()) {
      if (recordItem != nullptr) reading.plain = false;  // it isn't the last
      const unsigned char* const item = in.Position();
      const unsigned int idx = static_cast<unsigned int>(in.ReadInt());
      if (idx == 0) recordItem = item;
      metas[idx] = ReadMeta<QZFieldMeta>(in);
    }
  } catch (const std::length_error&) {
    whole = false;
  }
  const unsigned char* const end = in.Position();
  const auto found = metas.find(0);
  if (found != metas.end()) {
    recordMeta = QZRecordMeta();
    recordMeta.SetOptions(found->second.GetOptions());
    recordMeta.SetAttributes(found->second.GetAllAttributes());
    if (!IsItemOf({recordItem, static_cast<std::size_t>(end - recordItem)}, 0, recordMeta)) reading.plain = false;
  }
  const unsigned char* const itemsEnd = recordItem == nullptr ? end : recordItem;
  if (!whole || list->FindIdx(0) != FieldList::npos) reading.plain = false;
  UseFieldMeta(metas, {begin, static_cast<std::size_t>(itemsEnd - begin)}, reading);
  return whole;
}

/// Gives the fields the metadata that was read, in `items` as long as that is plain.
void QZRecordImpl::UseFieldMeta(const std::map<unsigned int, QZFieldMeta>& metas, QZByteSlice items, Reading& reading) {
  if (items.size == 0 && reading.plain) return;
  if (reading.plain) {
    if (auto known = FieldListCache::FindMeta(list, items)) {
      lastRead = known;
      UseList(std::move(known));
      return;
    }
  }
  auto changed = std::make_shared<FieldList>(*list);
  for (std::size_t pos = 0; pos < list->Size(); ++pos) {
    const auto found = metas.find(list->Idx(pos));
    if (found == metas.end()) continue;
    auto field = std::make_shared<QZFieldBase>(list->At(pos));
    field->SetMeta(found->second);
    changed->Replace(pos, std::move(field), list->Idx(pos));
  }
  changed->Freeze();
  const Bytes& made = changed->MetaItems();
  reading.plain = reading.plain && items.size == made.size() && StartsWith(items, made);
  const std::shared_ptr<const FieldList> from = shared;
  UseList(std::move(changed));
  if (!reading.plain) return;
  lastRead = shared;
  FieldListCache::KeepMeta(from, shared);
}

bool QZRecordImpl::DataFromBytes(QZReadBuffer& in, Reading& reading) { return ReadItems(Rest(in), reading); }

bool QZRecordImpl::ReadItems(QZByteSlice items, Reading& reading) {
  if (list->SharesIndices()) return ReadSharedItems(items, reading);
  const unsigned char* at = items.data;
  const unsigned char* const end = at + items.size;
  std::size_t next = 0;
  while (true) {
    if (reading.plain) at = ReadShortItems(at, end, next);
    reading.ForgetValues(next);
    if (at == end) return true;
    QZReadBuffer in(at, static_cast<std::size_t>(end - at));
    if (!ReadItem(in, reading, next)) return false;
    at = end - in.Remaining();
  }
}

/// Reads an item of the section "data" of any form, for the field at `next` or another. False when its length is wrong.
bool QZRecordImpl::ReadItem(QZReadBuffer& in, Reading& reading, std::size_t& next) {
  const std::size_t before = in.Remaining();
  const unsigned char* const item = in.Position();
  bool noIdx, none;
  const long number = in.ReadInt(noIdx);
  const unsigned int idx = static_cast<unsigned int>(number);
  const unsigned long size = in.ReadLength(none);
  if (size > in.Remaining()) return false;
  const std::size_t head = before - in.Remaining();
  const bool plain = !noIdx && number == static_cast<long>(idx) && head == IntSize(idx) + (none ? 1 : IntSize(size)) &&
                     (!none || item[head - 1] == BufferImpl::kNone);
  const std::size_t begin = static_cast<std::size_t>(item - block.data());
  in = QZReadBuffer(item + head + size, in.Remaining() - size);

  const bool inTurn = next < slots.size() && list->Idx(next) == idx;
  const std::size_t pos = inTurn ? next : list->FindIdx(idx);
  reading.plain = reading.plain && plain && pos != FieldList::npos && pos >= next;
  if (pos == FieldList::npos) {
    strays[idx] = {begin + head, size};
    return true;
  }
  if (pos >= next) next = pos + 1;
  const bool isNull = none || slots[pos].IsNull();
  if (!plain) {
    slots[pos] = Slot(begin + head, 0, size);
  } else {
    slots[pos] = none ? Slot::NullItem(begin, head) : Slot(begin, head, size);
  }
  slots[pos].SetNull(isNull);
  return true;
}

/// The same for a list in which fields share an index, and with it their value.
bool QZRecordImpl::ReadSharedItems(QZByteSlice items, Reading& reading) {
  reading.plain = false;
  reading.ForgetValues();
  std::set<unsigned int> nulls;
  bool whole = true;
  for (QZReadBuffer in(items.data, items.size); in.IsValid();) {
    const unsigned int idx = static_cast<unsigned int>(in.ReadInt());
    bool none;
    const unsigned long size = in.ReadLength(none);
    whole = size <= in.Remaining();
    if (!whole) break;
    strays[idx] = {static_cast<std::size_t>(in.Position() - block.data()), size};
    in = QZReadBuffer(in.Position() + size, in.Remaining() - size);
    if (none) nulls.insert(idx);
  }
  for (std::size_t pos = 0; pos < slots.size(); ++pos) {
    if (nulls.count(list->Idx(pos)) != 0) slots[pos].SetNull(true);
  }
  return whole;
}

bool QZRecordImpl::ChildrenFromBytes(QZReadBuffer& in, Reading& reading) {
  children.clear();
  ClearChildCache();
  try {
    while (in.IsValid()) {
      const unsigned char* const item = in.Position();
      bool noIdx, none;
      const long number = in.ReadInt(noIdx);
      const unsigned int idx = static_cast<unsigned int>(number);
      const QZByteSlice bytes = in.ReadSlice(none);
      const std::size_t size = IntSize(idx) + IntSize(bytes.size) + bytes.size;
      const bool ascends = children.empty() || children.rbegin()->first < idx;
      if (none || noIdx || number != static_cast<long>(idx) || !ascends ||
          static_cast<std::size_t>(in.Position() - item) != size)
        reading.plain = false;
      children[idx] = none ? ByteRange() : ByteRange{static_cast<std::size_t>(bytes.data - block.data()), bytes.size};
    }
    return true;
  } catch (const std::length_error&) {
    return false;
  }
}

}  // namespace QZDataFlow
