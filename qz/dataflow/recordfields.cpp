// The fields of a record: which of them a caller means, and how they come and go.

#include <cassert>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/fieldlistcache_impl.h"

namespace QZDataFlow {

namespace {

bool SameMeta(const QZMeta& a, const QZMeta& b) {
  return a.GetOptions() == b.GetOptions() && a.GetAllAttributes() == b.GetAllAttributes();
}

/// Whether two fields of one name are described alike.
bool SameDescription(const QZFieldBase& a, const QZFieldBase& b) {
  return a.GetType() == b.GetType() && a.GetWrapper() == b.GetWrapper() && a.IsNullable() == b.IsNullable() &&
         a.IsReadonly() == b.IsReadonly() && SameMeta(a.PeekMeta(), b.PeekMeta());
}

/// The option of `meta` that `option` would displace, as another field of the record can't have it too, or 0.
unsigned int DisplacedOption(const QZMeta& meta, unsigned int option) {
  const unsigned int mask = QZMetadata::QZGetMetaPerRecordMask(option);
  if (mask == 0) return 0;
  for (const unsigned int other : meta.GetOptions()) {
    if ((other & mask) == (option & mask)) return other;
  }
  return 0;
}

/// Whether a new description of the field at `pos` takes options away from other fields.
bool DisplacesOptions(const FieldList& list, const QZFieldBase& field, std::size_t pos) {
  for (const unsigned int option : field.PeekMeta().GetOptions()) {
    for (std::size_t other = 0; other < list.Size(); ++other) {
      if (other != pos && DisplacedOption(list.At(other).PeekMeta(), option) != 0) return true;
    }
  }
  return false;
}

void DisplaceOptions(FieldList& list, const QZFieldBase& field) {
  for (const unsigned int option : field.PeekMeta().GetOptions()) {
    for (std::size_t pos = 0; pos < list.Size(); ++pos) {
      if (DisplacedOption(list.At(pos).PeekMeta(), option) == 0) continue;
      QZFieldMeta meta = list.At(pos).GetMeta();
      while (const unsigned int displaced = DisplacedOption(meta, option)) meta.RemoveOption(displaced);
      auto changed = std::make_shared<QZFieldBase>(list.At(pos));
      changed->SetMeta(meta);
      list.Replace(pos, std::move(changed), list.Idx(pos));
    }
  }
}

}  // namespace

QZFieldBase QZRecordImpl::MakeFieldBase(const std::string& name, const std::string& typeName, const QZFieldMeta& meta,
                                        bool readonly, bool nullable) {
  QZFieldBase field(name, meta, readonly, nullable);
  const TypeNameParts parts = SplitTypeName(typeName);
  field.wrapper = parts.wrapper;
  field.type = parts.type;
  return field;
}

QZFieldBase QZRecordImpl::GetFieldBase(const std::string& name) const {
  const std::size_t pos = list->Find(name);
  return pos == FieldList::npos ? QZFieldBase() : list->At(pos);
}

std::size_t QZRecordImpl::FindByMeta(const QZFieldBase& field) const {
  const std::string typeName = field.GetTypeName();
  for (std::size_t pos = 0; pos < list->Size(); ++pos) {
    const QZFieldBase& entry = list->At(pos);
    if (entry.GetTypeName() == typeName && field.meta.IsSubsetOf(entry.meta)) return pos;
  }
  return list->Find(field.name);
}

QZRecordImpl::Target QZRecordImpl::FindTarget(const QZFieldBase& field) const {
  const std::size_t pos = FindKey(field);
  if (pos != FieldList::npos && TypesAgree(list->At(pos), field)) {
    const unsigned int idx = list->Idx(pos);
    if (idx != 0 && !IsBelow0(idx)) return {pos, idx};
  }
  return {pos, list->NextIdx()};
}

unsigned int QZRecordImpl::IdxToUse(const QZFieldBase& field) const { return FindTarget(field).idx; }

int QZRecordImpl::CheckField(const QZFieldBase& field, bool strict) const {
  const std::size_t pos = FindKey(field);
  if (pos == FieldList::npos) return QZRecord::NoField;
  const QZFieldBase& entry = list->At(pos);
  if (!TypesAgree(entry, field)) return QZRecord::OtherType;
  if ((strict || field.matchByMeta) && !field.meta.IsSubsetOf(entry.meta)) return QZRecord::OtherMeta;
  ByteRange value;
  if (slots[pos].IsNull()) return QZRecord::IsNull;
  if (FindValue(pos, value)) return QZRecord::HasItsValue;
  const auto kept = cache.find(list->Idx(pos));
  if (kept == cache.end()) return QZRecord::NoValue;
  return kept->second.value ? QZRecord::HasItsValue : QZRecord::IsNull;
}

bool QZRecordImpl::HasValue(const QZFieldBase& field) const {
  const std::size_t pos = FindKey(field);
  if (pos == FieldList::npos || !TypesAgree(list->At(pos), field)) return false;
  ByteRange value;
  return slots[pos].IsNull() || FindValue(pos, value) || cache.count(list->Idx(pos)) != 0;
}

bool QZRecordImpl::AddField(const QZFieldBase& field) {
  if (!field.IsValid()) return true;
  if (CheckField(field, false) == QZRecord::OtherType) DeleteField(field);
  SetFieldEntry(field, FindTarget(field), false);
  return true;
}

bool QZRecordImpl::DeleteField(const QZFieldBase& field) {
  const std::size_t pos = FindKey(field);
  if (pos == FieldList::npos || list->At(pos).name.empty()) return false;
  const unsigned int idx = list->Idx(pos);
  RemoveField(pos);
  children.erase(idx);
  ClearCacheEntry(idx);
  return true;
}

std::size_t QZRecordImpl::SetFieldEntry(const QZFieldBase& field, Target target, bool isNull) {
  if (field.matchByMeta) {
    const std::size_t pos = list->FindIdx(target.idx);
    if (pos != FieldList::npos) {
      MergeMeta(pos, field.meta);
      return pos;
    }
  }
  std::size_t pos = target.pos;
  if (pos == FieldList::npos) {
    pos = PutField(pos, field, field.name, target.idx);
  } else if (list->Idx(pos) != target.idx || !SameDescription(list->At(pos), field) ||
             DisplacesOptions(*list, field, pos)) {
    PutField(pos, field, std::string(list->At(pos).name), target.idx);
  }
  if (slots[pos].IsNull() != isNull) verbatim = false;
  slots[pos].SetNull(isNull);
  return pos;
}

/// Describes the field at `pos` anew, or with npos inserts it, and returns its place.
std::size_t QZRecordImpl::PutField(std::size_t pos, const QZFieldBase& field, const std::string& name,
                                   unsigned int idx) {
  verbatim = false;
  const bool insert = pos == FieldList::npos;
  // The values follow the fields one by one unless a field changes its index, or comes to share one.
  const bool moves = list->SharesIndices() || (insert ? idx <= list->NextIdx() - 1 : list->Idx(pos) != idx);
  if (moves) GatherValues();
  slots.reserve(slots.size() + 1);

  const bool derive = own == nullptr && list->Size() < FieldListCache::kMostFields;
  std::shared_ptr<const FieldList> from, known;
  if (derive) known = FieldListCache::FindPut(list, name, idx, field, SameDescription, pos);
  if (known) {
    UseList(std::move(known));
  } else {
    if (derive) from = shared;
    if (insert) pos = list->PlaceFor(name);
    auto put = std::make_shared<QZFieldBase>(field);
    put->name = name;
    put->matchByMeta = false;
    FieldList& changed = OwnList();
    DisplaceOptions(changed, field);
    if (insert) {
      changed.Insert(pos, std::move(put), idx);
    } else {
      changed.Replace(pos, std::move(put), idx);
    }
  }
  if (insert) slots.insert(slots.begin() + static_cast<std::ptrdiff_t>(pos), Slot());
  if (!strays.empty()) SpreadValues();

  if (derive && own != nullptr) {
    FreezeList();
    FieldListCache::KeepPut(from, shared, pos);
  }
  return pos;
}

void QZRecordImpl::RemoveField(std::size_t pos) {
  verbatim = false;
  EraseValue(pos);
  const std::string name = list->At(pos).name;
  const bool derive = own == nullptr && list->Size() <= FieldListCache::kMostFields;
  const std::shared_ptr<const FieldList> from = derive ? shared : nullptr;
  std::shared_ptr<const FieldList> known;
  if (list->Size() > 1 && derive) known = FieldListCache::FindRemoval(list, name);
  if (list->Size() == 1) {
    UseList(nullptr);
  } else if (known) {
    UseList(std::move(known));
  } else {
    OwnList().Remove(pos);
  }
  slots.erase(slots.begin() + static_cast<std::ptrdiff_t>(pos));
  if (!strays.empty()) SpreadValues();

  if (derive && own != nullptr) {
    FreezeList();
    FieldListCache::KeepRemoval(from, shared, name);
  }
}

void QZRecordImpl::MergeMeta(std::size_t pos, const QZFieldMeta& meta) {
  QZFieldMeta merged = list->At(pos).meta;
  merged.Merge(meta);
  if (SameMeta(merged, list->At(pos).meta)) return;
  verbatim = false;
  auto changed = std::make_shared<QZFieldBase>(list->At(pos));
  changed->meta = std::move(merged);
  OwnList().Replace(pos, std::move(changed), list->Idx(pos));
}

void QZRecordImpl::UseList(std::shared_ptr<const FieldList> next) {
  shared = std::move(next);
  list = shared ? shared.get() : FieldList::Empty();
  own = nullptr;
}

FieldList& QZRecordImpl::OwnList() {
  if (own == nullptr) {
    auto copy = std::make_shared<FieldList>(*list);
    own = copy.get();
    shared = std::move(copy);
    list = own;
  }
  return *own;
}

void QZRecordImpl::FreezeList() {
  if (own == nullptr) return;
  own->Freeze();
  own = nullptr;
}

}  // namespace QZDataFlow
