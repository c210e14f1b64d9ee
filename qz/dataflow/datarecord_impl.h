#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qz/dataflow/byteblock_impl.h"
#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/fieldlist_impl.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/readbuffer.h"

namespace QZDataFlow {

/// The attribute of a record that holds its source ID.
inline constexpr unsigned int kRecordSourceID = 0x01000001;

/// What a record holds.
///
/// In meaning these are maps: values, child records and decoded objects by field index, fields by name. Inside, the
/// fields are a FieldList that many records share, and every byte stands in one block: a record that is read is copied
/// there whole, and each value is a place in it, found by running once over the lengths. A value that is set goes to
/// the end of the block. As long as the block holds what would be written, writing is one copy.
///
/// Operations that only fill or write back caches are const in QZRecord and not here.
class QZRecordImpl {
 public:
  /// A decoded object kept for a field.
  struct CacheEntry {
    bool clean = false;  // the bytes agree with the object
    std::shared_ptr<void> value;
    QZFieldKind kind = QZFieldKind::Other;
  };
  using Cache = std::map<unsigned int, CacheEntry>;
  using Children = std::map<std::string, std::shared_ptr<QZRecord>>;
  using ChildCache = std::map<unsigned int, Children>;

  QZRecordImpl() = default;
  /// A copy without decoded values, which it has as bytes. The list of fields is frozen, and shared by both.
  QZRecordImpl(QZRecordImpl& other, bool withSourceID);
  QZRecordImpl(const QZRecordImpl&) = delete;
  QZRecordImpl& operator=(const QZRecordImpl&) = delete;
  ~QZRecordImpl();

  static QZRecordImpl& Of(const QZRecord& record) { return *record.impl; }
  /// Null for a record that was moved from.
  static QZRecordImpl* Peek(const QZRecord& record) { return record.impl.get(); }
  /// Gives `taker` all that is kept decoded.
  template <class Taker>
  void HandOver(Taker& taker);

  // Fields.

  /// A field from a stored type name, which is split into wrapper and type.
  static QZFieldBase MakeFieldBase(const std::string& name, const std::string& typeName, const QZFieldMeta& meta,
                                   bool readonly, bool nullable);
  /// A copy of the field of that name, or an invalid field.
  QZFieldBase GetFieldBase(const std::string& name) const;
  const FieldList& Fields() const { return *list; }
  /// The place in Fields() of the field that `field` means, whatever its type, or npos.
  std::size_t FindKey(const QZFieldBase& field) const {
    return field.matchByMeta ? FindByMeta(field) : list->Find(field.name);
  }
  /// The same if the types agree and the index counts as one.
  std::size_t FindField(const QZFieldBase& field) const {
    const std::size_t pos = FindKey(field);
    const bool found = pos != FieldList::npos && TypesAgree(list->At(pos), field) && !IsBelow0(list->Idx(pos));
    return found ? pos : FieldList::npos;
  }
  static bool TypesAgree(const QZFieldBase& entry, const QZFieldBase& field) {
    const std::size_t size = field.type.size();
    return entry.type.size() >= size &&
           SameText(entry.type.data() + (entry.type.size() - size), field.type.data(), size);
  }
  /// The index of the field, or the next free one.
  unsigned int IdxToUse(const QZFieldBase& field) const;
  int CheckField(const QZFieldBase& field, bool strict) const;
  bool HasValue(const QZFieldBase& field) const;
  bool AddField(const QZFieldBase& field);
  bool DeleteField(const QZFieldBase& field);

  // Values. `pos` is a place in Fields().

  bool IsNullAt(std::size_t pos) const { return slots[pos].IsNull(); }
  /// The bytes of the value, which live until the next change; false for none and for null. The first form writes back
  /// a decoded value before.
  bool GetSlice(const QZFieldBase& field, QZByteSlice& bytes) {
    if (!cache.empty()) UnloadCache(field);
    const std::size_t pos = FindField(field);
    return pos != FieldList::npos && GetSliceAt(pos, bytes);
  }
  bool GetSliceAt(std::size_t pos, QZByteSlice& bytes) const {
    const Slot& slot = slots.data()[pos];
    ByteRange value;
    if (slot.IsNull() || !FindValue(slot, list->Idx(pos), value)) return false;
    bytes = {block.data() + value.begin, value.size};
    return true;
  }
  /// SetBytes from bytes outside the record, and with no value.
  bool SetSlice(const QZFieldBase& field, const unsigned char* data, std::size_t size);
  bool SetNull(const QZFieldBase& field);
  bool ClearValue(const QZFieldBase& field);

  bool AddToCache(const QZFieldBase& field, std::shared_ptr<void> value);
  void CacheOnRead(const QZFieldBase& field, std::shared_ptr<void> value);
  const CacheEntry* CheckCache(const QZFieldBase& field) const;
  void MarkCacheDirty(const QZFieldBase& field, bool updateField);
  bool ClearCacheEntry(unsigned int idx) { return !cache.empty() && cache.erase(idx) != 0; }
  /// Writes back the decoded value of one field, or of all.
  void UnloadCache(const QZFieldBase& field);
  void UnloadCache();
  void ClearCache();
  /// Bytes to encode a value in, which keep their memory.
  std::vector<unsigned char>& Scratch() {
    constexpr std::size_t kLarge = std::size_t{1} << 20;
    if (scratch.capacity() > kLarge) scratch = std::vector<unsigned char>();
    scratch.clear();
    return scratch;
  }

  // Child records.

  /// Keeps a decoded child, which takes the place of one of that key.
  void AddToChildCache(int idx, const std::string& key, std::shared_ptr<QZRecord> child);
  void ClearChildCache();
  bool FindChildBytes(unsigned int idx, QZByteSlice& bytes) const;
  void StoreChildBytes(unsigned int idx, const unsigned char* data, std::size_t size);
  bool EraseChildBytes(unsigned int idx);
  ChildCache& DecodedChildren() { return childCache; }
  /// Whether anything is kept decoded, be it up to date or not.
  bool HasDecoded() const { return !cache.empty() || !childCache.empty(); }

  // The record as a whole.

  void Clear();
  void SetRecordMeta(const QZRecordMeta& meta);
  const QZRecordMeta& RecordMeta() const { return recordMeta; }

  /// Clears the record and reads the stored form. The second form reads what `Incoming` holds, which it takes over; it
  /// begins with a wrapper whose content begins at `contentAt`.
  bool FromBytes(const unsigned char* data, std::size_t size);
  bool FromIncoming(std::size_t contentAt);
  /// A block to read the next record into. The record stays as it is until FromIncoming.
  ByteBlock& Incoming() { return spare; }
  /// The stored form, once everything decoded is written back; it lives until the next change or call.
  QZByteSlice Encode(bool withSourceID = true);

 private:
  friend class RecordUnloading;

  /// The place of one value, parallel to the fields. While two fields share an index, which only damaged bytes bring
  /// about, all values stand under their indices in `strays`, and only the null counts here.
  class Slot {
   public:
    Slot() = default;
    /// A value behind the head of its item in the stored form, which begins at `begin`; or with a head of no bytes,
    /// anywhere.
    Slot(std::size_t begin, std::size_t head, std::size_t valueSize)
        : size(valueSize), place(begin << kBeginShift | head << kHeadShift | kPresent | (head != 0 ? kReady : 0)) {}
    /// The item of a null, which counts as a value without bytes.
    static Slot NullItem(std::size_t begin, std::size_t head) {
      Slot slot(begin, head, 0);
      slot.place |= kNull | kNullItem;
      return slot;
    }

    std::size_t ItemBegin() const { return place >> kBeginShift; }
    std::size_t ItemSize() const { return Head() + size; }
    std::size_t Head() const { return place >> kHeadShift & kHeadMask; }
    ByteRange Range() const { return {ItemBegin() + Head(), size}; }
    bool IsPresent() const { return (place & kPresent) != 0; }
    bool IsNullItem() const { return (place & kNullItem) != 0; }
    /// The item is there, and is what is to be written.
    bool IsReady() const { return (place & kReady) != 0; }
    bool IsNull() const { return (place & kNull) != 0; }
    void SetNull(bool isNull) {
      place = isNull ? place | kNull : place & ~kNull;
      place = Head() != 0 && isNull == IsNullItem() ? place | kReady : place & ~kReady;
    }
    /// Without a value, but null as before.
    void Erase() {
      place &= kNull;
      size = 0;
    }
    void MoveTo(std::size_t begin) { place = begin << kBeginShift | (place & ((std::uint64_t{1} << kBeginShift) - 1)); }

    std::uint64_t size = 0;

   private:
    static constexpr std::uint64_t kPresent = 1, kNull = 2, kNullItem = 4, kReady = 8;
    static constexpr std::uint64_t kHeadMask = 0xFF;
    static constexpr int kHeadShift = 8, kBeginShift = 16;

    std::uint64_t place = 0;
  };
  struct Reading;

  // Fields. A target says where a field is or would be: its place, or npos, and the index to use.
  struct Target {
    std::size_t pos;
    unsigned int idx;
  };
  /// An index is a positive number; one that isn't comes from damaged bytes only.
  static bool IsBelow0(unsigned int idx) { return static_cast<int>(idx) < 0; }
  std::size_t FindByMeta(const QZFieldBase& field) const;
  Target FindTarget(const QZFieldBase& field) const;
  std::size_t SetFieldEntry(const QZFieldBase& field, Target target, bool isNull);
  std::size_t PutField(std::size_t pos, const QZFieldBase& field, const std::string& name, unsigned int idx);
  void RemoveField(std::size_t pos);
  void MergeMeta(std::size_t pos, const QZFieldMeta& meta);
  void UseList(std::shared_ptr<const FieldList> next);
  FieldList& OwnList();
  void FreezeList();

  // Values.
  bool FindValue(const Slot& slot, unsigned int idx, ByteRange& value) const {
    if (list->SharesIndices()) return FindStray(idx, value);
    value = slot.Range();
    return slot.IsPresent();
  }
  bool FindStray(unsigned int idx, ByteRange& value) const;
  bool FindValue(std::size_t pos, ByteRange& value) const { return FindValue(slots[pos], list->Idx(pos), value); }
  void StoreValue(std::size_t pos, const unsigned char* data, std::size_t size);
  bool EraseValue(std::size_t pos);
  void GatherValues();
  void SpreadValues();
  void MakeRoom(std::size_t size);
  ByteRange StoreRange(const unsigned char* data, std::size_t size);
  void Compact();

  // Reading.
  bool ReadSections(Reading& reading);
  bool ReadVersion(QZReadBuffer& in, Reading& reading);
  /// Clears all but the fields and the places of their values.
  void ClearForReading() {
    if (HasDecoded() || HasMore()) ClearMore();
    block.Clear();
    storedSize = 0;
    verbatim = false;
    wasted = 0;
  }
  /// Whether there is something besides fields, their bytes and what is decoded.
  bool HasMore() const {
    return !strays.empty() || !recordMeta.IsEmpty() || !children.empty() || !unknownSections.empty();
  }
  void ClearMore();
  bool ReadContent(QZByteSlice content, bool plainHead);
  bool ReadExpected(Reading& reading);
  bool ReadExpectedMeta(Reading& reading);
  void UseLastRead();
  bool ReadRecordItem(QZByteSlice item);
  bool FieldsFromBytes(QZReadBuffer& in, Reading& reading);
  void UseFields(std::vector<FieldList::Entry>&& entries, Reading& reading);
  bool MetaFromBytes(QZReadBuffer& in, Reading& reading);
  void UseFieldMeta(const std::map<unsigned int, QZFieldMeta>& metas, QZByteSlice items, Reading& reading);
  bool DataFromBytes(QZReadBuffer& in, Reading& reading);
  bool ReadItems(QZByteSlice items, Reading& reading);
  const unsigned char* ReadShortItems(const unsigned char* at, const unsigned char* end, std::size_t& next);
  bool ReadItem(QZReadBuffer& in, Reading& reading, std::size_t& next);
  bool ReadSharedItems(QZByteSlice items, Reading& reading);
  bool ChildrenFromBytes(QZReadBuffer& in, Reading& reading);

  // Writing.
  std::vector<unsigned char> RecordMetaItem(bool withSourceID) const;
  bool HasSourceID() const { return !recordMeta.IsEmpty() && recordMeta.HasAttribute(kRecordSourceID); }
  void AppendData(ByteBlock& out) const;
  void AppendOther(ByteBlock& out, const Slot& slot, unsigned int idx) const;
  std::size_t ChildrenSize() const;
  void AppendChildren(ByteBlock& out) const;

  // The list in use: the empty one, one in `shared`, or `own`, which is in `shared` too and belongs to this record
  // alone until it is frozen.
  const FieldList* list = FieldList::Empty();
  std::shared_ptr<const FieldList> shared;
  FieldList* own = nullptr;
  std::shared_ptr<const FieldList>
      lastRead;  // what the bytes that were read last had; the next ones likely have it too

  ByteBlock block;
  std::size_t storedSize = 0;  // the first bytes of the block that are the stored form, as it was read
  bool verbatim = false;       // ... and as it would be written
  std::size_t wasted = 0;      // bytes of the block that nothing refers to any longer
  std::vector<Slot> slots;
  std::map<unsigned int, ByteRange> strays;  // values of indices that no field has
  QZRecordMeta recordMeta;
  std::map<unsigned int, ByteRange> children;
  ChildCache childCache;
  Cache cache;
  std::vector<ByteRange> unknownSections;

  ByteBlock spare;                     // the record that is being read, or what is being written
  std::vector<unsigned char> scratch;  // a value that is being encoded
  std::uint64_t unloadingRun = 0;      // the latest run of RecordUnloading that came by
};

}  // namespace QZDataFlow
