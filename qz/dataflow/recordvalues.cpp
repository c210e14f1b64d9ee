// The values of a record: their bytes, the decoded objects kept for some of them, and typed access to both.

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/recordunloading_impl.h"

namespace QZDataFlow {

namespace {

// A block is rewritten when more than this of it, and more than half, is out of use.
constexpr std::size_t kTolerableWaste = 4096;

/// Whether an object can be kept for a field of this kind: a built-in one must know how to turn it to bytes.
bool IsKept(QZFieldKind kind) { return kind == QZFieldKind::Other || FieldTypeImpl::HasPtrForm(kind); }

/// A record that is handed out has the source ID of its bytes, whether it comes from them or from a kept object.
void CopyOut(QZRecord& to, const QZRecord& from) { to = from; }
void CopyOut(std::string& to, const std::string& from) { to = from; }
void CopyOut(std::vector<std::optional<QZRecord>>& to, const std::vector<std::optional<QZRecord>>& from) {
  to.clear();
  to.resize(from.size());
  for (std::size_t i = 0; i < from.size(); ++i) {
    if (from[i]) to[i].emplace() = *from[i];
  }
}

/// Copies out the object kept for the field, if there is one of this kind.
template <typename T>
bool CopyKept(const QZRecordImpl& impl, const QZFieldBase& field, QZFieldKind kind, T& value) {
  const QZRecordImpl::CacheEntry* const kept = impl.CheckCache(field);
  if (kept == nullptr || !kept->value || kept->kind != kind) return false;
  CopyOut(value, *static_cast<const T*>(kept->value.get()));
  return true;
}

}  // namespace

// The bytes.

bool QZRecordImpl::FindStray(unsigned int idx, ByteRange& value) const {
  const auto found = strays.find(idx);
  if (found == strays.end()) return false;
  value = found->second;
  return true;
}

void QZRecordImpl::StoreValue(std::size_t pos, const unsigned char* data, std::size_t size) {
  if (list->SharesIndices()) {
    verbatim = false;
    ByteRange& stray = strays[list->Idx(pos)];
    const ByteRange stored = StoreRange(data, size);
    wasted += stray.size;
    stray = stored;
    return;
  }
  Slot& slot = slots[pos];
  if (slot.IsPresent() && slot.size == size && !slot.IsNullItem()) {
    // The rest of the stored form stays as it is.
    if (size != 0) std::memcpy(block.data() + slot.Range().begin, data, size);
    return;
  }
  verbatim = false;
  MakeRoom(2 * QZWriteBuffer::kMaxIntSize + size);
  if (slot.IsPresent()) wasted += slot.ItemSize();
  const std::size_t begin = block.size();
  block.AppendInt(std::size_t{list->Idx(pos)});
  block.AppendInt(size);
  const bool isNull = slot.IsNull();
  slot = Slot(begin, block.size() - begin, size);
  slot.SetNull(isNull);
  block.Append(data, size);
}

bool QZRecordImpl::EraseValue(std::size_t pos) {
  ByteRange value;
  if (!FindValue(pos, value)) return false;
  verbatim = false;
  wasted += value.size + slots[pos].Head();
  if (list->SharesIndices()) {
    strays.erase(list->Idx(pos));
  } else {
    slots[pos].Erase();
  }
  return true;
}

/// Puts all values under their indices, for a change that values can't follow place by place.
void QZRecordImpl::GatherValues() {
  if (list->SharesIndices()) return;
  for (std::size_t pos = 0; pos < slots.size(); ++pos) {
    if (slots[pos].IsPresent()) strays[list->Idx(pos)] = slots[pos].Range();
    slots[pos].Erase();
  }
}

/// Gives the fields the values that stand under their indices.
void QZRecordImpl::SpreadValues() {
  if (list->SharesIndices() || strays.empty()) return;
  for (std::size_t pos = 0; pos < slots.size(); ++pos) {
    const auto found = strays.find(list->Idx(pos));
    if (found == strays.end()) continue;
    const bool isNull = slots[pos].IsNull();
    slots[pos] = Slot(found->second.begin, 0, found->second.size);
    slots[pos].SetNull(isNull);
    strays.erase(found);
  }
}

/// Makes sure that the block takes `size` more bytes, and doesn't hold much that is out of use.
void QZRecordImpl::MakeRoom(std::size_t size) {
  if (wasted > kTolerableWaste && wasted > block.size() / 2) Compact();
  block.Reserve(size);
}

ByteRange QZRecordImpl::StoreRange(const unsigned char* data, std::size_t size) {
  MakeRoom(size);
  const ByteRange range{block.size(), size};
  block.Append(data, size);
  return range;
}

void QZRecordImpl::Compact() {
  verbatim = false;
  ByteBlock fresh;
  const auto move = [this, &fresh](ByteRange& range) {
    fresh.Append(block.data() + range.begin, range.size);
    range.begin = fresh.size() - range.size;
  };
  // Room for all of it first: then nothing below can fail half-way.
  std::size_t total = 0;
  for (const Slot& slot : slots) total += slot.ItemSize();
  for (const auto& stray : strays) total += stray.second.size;
  for (const auto& child : children) total += child.second.size;
  for (const ByteRange& section : unknownSections) total += section.size;
  fresh.Reserve(total);
  for (Slot& slot : slots) {
    fresh.Append(block.data() + slot.ItemBegin(), slot.ItemSize());
    slot.MoveTo(fresh.size() - slot.ItemSize());
  }
  for (auto& stray : strays) move(stray.second);
  for (auto& child : children) move(child.second);
  for (ByteRange& section : unknownSections) move(section);
  block.Swap(fresh);
  storedSize = 0;
  wasted = 0;
}

bool QZRecordImpl::SetSlice(const QZFieldBase& field, const unsigned char* data, std::size_t size) {
  if (field.readonly) return false;
  if (!field.IsValid()) return true;
  const Target target = FindTarget(field);
  StoreValue(SetFieldEntry(field, target, false), data, size);
  ClearCacheEntry(target.idx);
  return true;
}

bool QZRecordImpl::SetNull(const QZFieldBase& field) {
  if (field.readonly) return false;
  if (!field.IsValid()) return true;
  const Target target = FindTarget(field);
  SetFieldEntry(field, target, true);
  ClearCacheEntry(target.idx);
  return true;
}

bool QZRecordImpl::ClearValue(const QZFieldBase& field) {
  const std::size_t pos = FindField(field);
  if (pos == FieldList::npos) return false;
  const bool wasKept = ClearCacheEntry(list->Idx(pos));
  if (!EraseValue(pos)) return wasKept;
  slots[pos].SetNull(false);
  return true;
}

// The decoded objects.

bool QZRecordImpl::AddToCache(const QZFieldBase& field, std::shared_ptr<void> value) {
  const QZFieldKind kind = QZGetFieldKind(field.GetType());
  if (field.readonly || !field.IsValid() || !IsKept(kind)) return false;
  AddField(field);
  verbatim = false;
  cache[FindTarget(field).idx] = CacheEntry{false, std::move(value), kind};
  return true;
}

void QZRecordImpl::CacheOnRead(const QZFieldBase& field, std::shared_ptr<void> value) {
  const std::size_t pos = FindField(field);
  if (!value || pos == FieldList::npos) return;
  const QZFieldKind kind = QZGetFieldKind(list->At(pos).GetType());
  if (IsKept(kind)) cache[list->Idx(pos)] = CacheEntry{true, std::move(value), kind};
}

const QZRecordImpl::CacheEntry* QZRecordImpl::CheckCache(const QZFieldBase& field) const {
  if (cache.empty()) return nullptr;
  const std::size_t pos = FindField(field);
  if (pos == FieldList::npos) return nullptr;
  const auto found = cache.find(list->Idx(pos));
  return found == cache.end() ? nullptr : &found->second;
}

void QZRecordImpl::MarkCacheDirty(const QZFieldBase& field, bool updateField) {
  const std::size_t pos = FindField(field);
  if (pos == FieldList::npos) return;
  const auto found = cache.find(list->Idx(pos));
  if (found != cache.end()) {
    found->second.clean = false;
    verbatim = false;
  }
  if (updateField && field.IsValid()) SetFieldEntry(field, {FindKey(field), list->Idx(pos)}, false);
}

void QZRecordImpl::UnloadCache(const QZFieldBase& field) {
  const CacheEntry* const kept = CheckCache(field);
  if (kept != nullptr && kept->value && !kept->clean) RecordUnloading::Value(*this, list->Idx(FindField(field)));
}

void QZRecordImpl::UnloadCache() {
  if (!cache.empty()) RecordUnloading::Values(*this);
}

// Typed access.

template <typename T>
bool QZRecord::WriteValue(const QZField<T>& field, const T& value) {
  std::vector<unsigned char>& bytes = impl->Scratch();
  QZFieldType<T>::AppendBytes(bytes, value);
  return impl->SetSlice(field, bytes.data(), bytes.size());
}

template <typename T>
bool QZRecord::WriteValues(const QZVectorField<T>& field, const std::vector<T>& values) {
  std::vector<unsigned char>& bytes = impl->Scratch();
  QZVectorFieldType<T>::AppendBytes(bytes, values);
  return impl->SetSlice(field, bytes.data(), bytes.size());
}

template <typename T>
bool QZRecord::WriteValues(const QZVectorField<T>& field, const std::vector<std::optional<T>>& values) {
  std::vector<unsigned char>& bytes = impl->Scratch();
  QZVectorFieldType<T>::AppendBytes(bytes, values);
  return impl->SetSlice(field, bytes.data(), bytes.size());
}

template <typename T>
bool QZRecord::ReadValue(const QZField<T>& field, T& value) const {
  if constexpr (std::is_same_v<T, std::string>) {
    if (CopyKept(*impl, field, QZFieldKind::String, value)) return true;
  }
  QZByteSlice bytes;
  if (impl->GetSlice(field, bytes) && QZFieldType<T>::FromBytes(value, bytes.data, bytes.size)) return true;
  value = T{};
  return false;
}

template <>
bool QZRecord::ReadValue(const QZField<QZRecord>& field, QZRecord& value) const {
  if (CopyKept(*impl, field, QZFieldKind::Record, value)) return true;
  QZByteSlice bytes;
  auto decoded = std::make_shared<QZRecord>();
  if (!impl->GetSlice(field, bytes) || !QZFieldType<QZRecord>::FromBytes(*decoded, bytes.data, bytes.size)) {
    value.Clear();
    return false;
  }
  CopyOut(value, *decoded);
  impl->CacheOnRead(field, std::move(decoded));
  return true;
}

template <typename T>
bool QZRecord::ReadValues(const QZVectorField<T>& field, std::vector<std::optional<T>>& values) const {
  if constexpr (std::is_same_v<T, QZRecord>) {
    if (CopyKept(*impl, field, QZFieldKind::RecordVec, values)) return true;
  }
  QZByteSlice bytes;
  if (impl->GetSlice(field, bytes) && QZVectorFieldType<T>::FromBytes(values, bytes.data, bytes.size)) return true;
  values.clear();
  return false;
}

template bool QZRecord::WriteValue(const QZField<long>&, const long&);
template bool QZRecord::WriteValue(const QZField<std::string>&, const std::string&);
template bool QZRecord::WriteValue(const QZField<double>&, const double&);
template bool QZRecord::WriteValue(const QZField<std::vector<unsigned char>>&, const std::vector<unsigned char>&);
template bool QZRecord::WriteValue(const QZField<bool>&, const bool&);
template bool QZRecord::WriteValue(const QZField<QZRange>&, const QZRange&);
template bool QZRecord::WriteValue(const QZField<QZJSONObject>&, const QZJSONObject&);
template bool QZRecord::WriteValue(const QZField<QZLinkObject>&, const QZLinkObject&);
template bool QZRecord::WriteValue(const QZField<QZRecord>&, const QZRecord&);

template bool QZRecord::ReadValue(const QZField<long>&, long&) const;
template bool QZRecord::ReadValue(const QZField<std::string>&, std::string&) const;
template bool QZRecord::ReadValue(const QZField<double>&, double&) const;
template bool QZRecord::ReadValue(const QZField<std::vector<unsigned char>>&, std::vector<unsigned char>&) const;
template bool QZRecord::ReadValue(const QZField<bool>&, bool&) const;
template bool QZRecord::ReadValue(const QZField<QZRange>&, QZRange&) const;
template bool QZRecord::ReadValue(const QZField<QZJSONObject>&, QZJSONObject&) const;
template bool QZRecord::ReadValue(const QZField<QZLinkObject>&, QZLinkObject&) const;

template bool QZRecord::WriteValues(const QZVectorField<long>&, const std::vector<long>&);
template bool QZRecord::WriteValues(const QZVectorField<std::string>&, const std::vector<std::string>&);
template bool QZRecord::WriteValues(const QZVectorField<double>&, const std::vector<double>&);
template bool QZRecord::WriteValues(const QZVectorField<std::vector<unsigned char>>&,
                                    const std::vector<std::vector<unsigned char>>&);
template bool QZRecord::WriteValues(const QZVectorField<bool>&, const std::vector<bool>&);
template bool QZRecord::WriteValues(const QZVectorField<QZRecord>&, const std::vector<QZRecord>&);
template bool QZRecord::WriteValues(const QZVectorField<long>&, const std::vector<std::optional<long>>&);
template bool QZRecord::WriteValues(const QZVectorField<std::string>&, const std::vector<std::optional<std::string>>&);
template bool QZRecord::WriteValues(const QZVectorField<double>&, const std::vector<std::optional<double>>&);
template bool QZRecord::WriteValues(const QZVectorField<std::vector<unsigned char>>&,
                                    const std::vector<std::optional<std::vector<unsigned char>>>&);
template bool QZRecord::WriteValues(const QZVectorField<bool>&, const std::vector<std::optional<bool>>&);
template bool QZRecord::WriteValues(const QZVectorField<QZRecord>&, const std::vector<std::optional<QZRecord>>&);

template bool QZRecord::ReadValues(const QZVectorField<long>&, std::vector<std::optional<long>>&) const;
template bool QZRecord::ReadValues(const QZVectorField<std::string>&, std::vector<std::optional<std::string>>&) const;
template bool QZRecord::ReadValues(const QZVectorField<double>&, std::vector<std::optional<double>>&) const;
template bool QZRecord::ReadValues(const QZVectorField<std::vector<unsigned char>>&,
                                   std::vector<std::optional<std::vector<unsigned char>>>&) const;
template bool QZRecord::ReadValues(const QZVectorField<bool>&, std::vector<std::optional<bool>>&) const;
template bool QZRecord::ReadValues(const QZVectorField<QZRecord>&, std::vector<std::optional<QZRecord>>&) const;

}  // namespace QZDataFlow
