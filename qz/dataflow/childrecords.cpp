// The child records of a field: a list of records in the stored form, each with its key in a field of its own.

#include "qz/dataflow/childrecords_impl.h"

#include <cstring>
#include <utility>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/recordunloading_impl.h"
#include "qz/system/text/stringnumber.h"

namespace QZDataFlow {

namespace {

std::string KeyOf(int n) { return QZNumberToString(n, 10); }

/// Calls `use` with the key of each child in the stored form, and the child without it.
template <class Use>
void ForEachChild(const std::vector<unsigned char>& bytes, Use use) {
  std::vector<std::optional<QZRecord>> children;
  QZVectorFieldType<QZRecord>::FromBytes(children, bytes);
  for (const auto& stored : children) {
    QZRecord child = stored ? *stored : QZRecord();
    std::string key = child.GetValue(ChildKeyField());
    child.DeleteField(ChildKeyField());
    use(std::move(key), std::move(child));
  }
}

}  // namespace

const QZField<std::string>& ChildKeyField() {
  static const auto* const field = new QZField<std::string>("__qz__key");
  return *field;
}

void SetChildKey(QZRecord& child, const std::string& key) {
  if (child.CheckField(ChildKeyField(), false) == QZRecord::OtherType) child.DeleteField(ChildKeyField());
  child.SetValue(ChildKeyField(), key);
}

// The bytes.

bool QZRecordImpl::FindChildBytes(unsigned int idx, QZByteSlice& bytes) const {
  const auto found = children.find(idx);
  if (found == children.end()) return false;
  bytes = {block.data() + found->second.begin, found->second.size};
  return true;
}

void QZRecordImpl::StoreChildBytes(unsigned int idx, const unsigned char* data, std::size_t size) {
  QZByteSlice present;
  const bool known = FindChildBytes(idx, present);
  if (known && present.size == size && (size == 0 || std::memcmp(present.data, data, size) == 0)) return;
  verbatim = false;
  const ByteRange stored = StoreRange(data, size);
  children[idx] = stored;
  if (known) wasted += present.size;
}

bool QZRecordImpl::EraseChildBytes(unsigned int idx) {
  const auto found = children.find(idx);
  if (found == children.end()) return false;
  verbatim = false;
  wasted += found->second.size;
  children.erase(found);
  return true;
}

void QZRecordImpl::AddToChildCache(int idx, const std::string& key, std::shared_ptr<QZRecord> child) {
  childCache[static_cast<unsigned int>(idx)][key] = std::move(child);
}

// What a caller sees.

std::vector<unsigned char> QZRecord::GetChildBytes(const QZFieldBase& field) const {
  UnloadChildCache(field);
  const std::size_t pos = impl->FindField(field);
  QZByteSlice bytes;
  if (pos == FieldList::npos || !impl->FindChildBytes(impl->Fields().Idx(pos), bytes)) return {};
  return std::vector<unsigned char>(bytes.data, bytes.data + bytes.size);
}

bool QZRecord::SetChildBytes(const QZFieldBase& field, const std::vector<unsigned char>& bytes) {
  const std::size_t pos = impl->FindField(field);
  if (pos == FieldList::npos) return false;
  const unsigned int idx = impl->Fields().Idx(pos);
  impl->StoreChildBytes(idx, bytes.data(), bytes.size());
  impl->DecodedChildren().erase(idx);
  return true;
}

bool QZRecord::HasChildRecords(const QZFieldBase& field) const {
  const std::size_t pos = impl->FindField(field);
  if (pos == FieldList::npos) return false;
  const auto decoded = impl->DecodedChildren().find(impl->Fields().Idx(pos));
  if (decoded != impl->DecodedChildren().end()) {
    for (const auto& child : decoded->second) {
      if (child.second && !child.second->IsEmpty()) return true;
    }
  }
  return !GetChildBytes(field).empty();
}

bool QZRecord::HasChildRecord(const QZFieldBase& field, const std::string& key) const {
  const std::size_t pos = impl->FindField(field);
  if (pos == FieldList::npos) return false;
  LoadChildCache(field);
  const auto decoded = impl->DecodedChildren().find(impl->Fields().Idx(pos));
  return decoded != impl->DecodedChildren().end() && decoded->second.count(key) != 0;
}

bool QZRecord::HasChildRecord(const QZFieldBase& field, int n) const { return HasChildRecord(field, KeyOf(n)); }

QZRecord* QZRecord::GetChildRecord(const QZFieldBase& field, const std::string& key) const {
  LoadChildCache(field);
  const std::size_t pos = impl->FindField(field);
  if (pos == FieldList::npos) return nullptr;
  std::shared_ptr<QZRecord>& child = impl->DecodedChildren()[impl->Fields().Idx(pos)][key];
  if (!child) child = std::make_shared<QZRecord>();
  return child.get();
}

QZRecord* QZRecord::GetChildRecord(const QZFieldBase& field, int n) const { return GetChildRecord(field, KeyOf(n)); }

std::map<std::string, QZRecord> QZRecord::GetChildRecords(const QZFieldBase& field) const {
  std::map<std::string, QZRecord> children;
  if (!HasChildRecords(field)) return children;
  ForEachChild(GetChildBytes(field),
               [&children](std::string&& key, QZRecord&& child) { children[std::move(key)] = std::move(child); });
  return children;
}

bool QZRecord::AddChildRecord(const QZFieldBase& field, const std::string& key, const QZRecord& record) {
  if (!HasField(field, false)) return false;
  std::map<std::string, QZRecord> children = GetChildRecords(field);
  children[key] = record;
  return SetChildren(field, children);
}

bool QZRecord::SetChildren(const QZFieldBase& field, std::map<std::string, QZRecord>& children) {
  if (!HasField(field, false)) return false;
  std::vector<QZRecord> list;
  list.reserve(children.size());
  for (auto& [key, child] : children) {
    SetChildKey(child, key);
    list.push_back(child);
  }
  return list.empty() || SetChildBytes(field, QZVectorFieldType<QZRecord>::ToBytes(list));
}

bool QZRecord::DeleteChildRecord(const QZFieldBase& field, const std::string& key) {
  LoadChildCache(field);
  const std::size_t pos = impl->FindField(field);
  if (pos == FieldList::npos) return false;
  const auto decoded = impl->DecodedChildren().find(impl->Fields().Idx(pos));
  return decoded != impl->DecodedChildren().end() && decoded->second.erase(key) != 0;
}

bool QZRecord::DeleteChildRecords(const QZFieldBase& field) {
  const std::size_t pos = impl->FindField(field);
  if (pos == FieldList::npos) return false;
  const unsigned int idx = impl->Fields().Idx(pos);
  impl->EraseChildBytes(idx);
  impl->DecodedChildren().erase(idx);
  return true;
}

void QZRecord::LoadChildCache(const QZFieldBase& field) const {
  const std::size_t pos = impl->FindField(field);
  if (pos == FieldList::npos) return;
  const unsigned int idx = impl->Fields().Idx(pos);
  if (impl->DecodedChildren().count(idx) != 0) return;
  QZRecordImpl::Children children;
  ForEachChild(GetChildBytes(field), [&children](std::string&& key, QZRecord&& child) {
    children[std::move(key)] = std::make_shared<QZRecord>(std::move(child));
  });
  if (!children.empty()) impl->DecodedChildren()[idx] = std::move(children);
}

void QZRecord::UnloadChildCache(QZFieldBase field) const { RecordUnloading::ChildRecords(*this, field); }

}  // namespace QZDataFlow
