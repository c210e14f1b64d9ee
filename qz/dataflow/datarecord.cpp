#include "qz/dataflow/datarecord.h"

#include <cassert>
#include <utility>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/recordsections_impl.h"
#include "qz/dataflow/recordunloading_impl.h"

namespace QZDataFlow {

namespace {

std::vector<unsigned char> ToVector(QZByteSlice bytes) {
  return std::vector<unsigned char>(bytes.data, bytes.data + bytes.size);
}

}  // namespace

QZRecord::QZRecord() : impl(std::make_unique<QZRecordImpl>()) {}

QZRecord::QZRecord(const QZRecord& other) : impl(std::make_unique<QZRecordImpl>(*other.impl, false)) {}

QZRecord::QZRecord(QZRecord&& other) noexcept = default;

QZRecord& QZRecord::operator=(const QZRecord& other) {
  if (this == &other) {
    impl->UnloadCache();
    impl->ClearCache();
    return *this;
  }
  // The other one may be a child of this one, and die with what is replaced.
  auto copy = std::make_unique<QZRecordImpl>(*other.impl, true);
  impl.swap(copy);
  return *this;
}

QZRecord& QZRecord::operator=(QZRecord&& other) noexcept {
  std::unique_ptr<QZRecordImpl> taken = std::move(other.impl);
  impl.swap(taken);
  return *this;
}

QZRecord::~QZRecord() = default;

void QZRecord::FixChildCache(QZFieldBase) const {}

void QZRecord::Clear() { impl->Clear(); }

void QZRecord::Flush() {
  RecordUnloading::All(*this);
  impl->ClearCache();
  impl->ClearChildCache();
}

bool QZRecord::IsEmpty() const { return impl->Fields().Size() == 0; }

QZRecordMeta QZRecord::GetRecordMeta() const { return impl->RecordMeta(); }

void QZRecord::SetRecordMeta(const QZRecordMeta& meta) { impl->SetRecordMeta(meta); }

std::string QZRecord::GetSourceID() const { return impl->RecordMeta().GetStrAttribute(kRecordSourceID); }

void QZRecord::SetSourceID(const std::string& id) {
  QZRecordMeta meta = impl->RecordMeta();
  impl->SetRecordMeta(meta.SetAttribute(kRecordSourceID, id));
}

std::string QZRecord::GetVersion() { return std::string(kRecordVersion); }

std::vector<unsigned char> QZRecord::ToBytes() const {
  RecordUnloading::All(*this);
  return ToVector(impl->Encode());
}

void QZRecord::ToBytes(std::vector<unsigned char>& out) const {
  RecordUnloading::All(*this);
  const QZByteSlice bytes = impl->Encode();
  out.assign(bytes.data, bytes.data + bytes.size);
}

bool QZRecord::FromBytes(const std::vector<unsigned char>& bytes) {
  return impl->FromBytes(bytes.data(), bytes.size());
}

bool QZRecord::AddField(const QZFieldBase& field) { return impl->AddField(field); }

bool QZRecord::DeleteField(const QZFieldBase& field) { return impl->DeleteField(field); }

std::vector<QZFieldBase> QZRecord::GetFields() const {
  const FieldList& list = impl->Fields();
  std::vector<QZFieldBase> fields;
  fields.reserve(list.Size());
  for (const std::uint32_t pos : list.ByIdx()) fields.push_back(list.At(pos));
  return fields;
}

QZFieldMeta QZRecord::GetFieldMeta(const std::string& name) const {
  const std::size_t pos = impl->Fields().Find(name);
  return pos == FieldList::npos ? QZFieldMeta() : impl->Fields().At(pos).GetMeta();
}

unsigned int QZRecord::GetFieldIdx(const QZFieldBase& field) { return impl->IdxToUse(field); }

unsigned int QZRecord::GetFieldIdx(const QZFieldBase& field) const {
  const std::size_t pos = impl->FindKey(field);
  const FieldList& list = impl->Fields();
  return pos != FieldList::npos && QZRecordImpl::TypesAgree(list.At(pos), field) ? list.Idx(pos) : ~0u;
}

int QZRecord::CheckField(const QZFieldBase& field, bool strict) const { return impl->CheckField(field, strict); }

bool QZRecord::HasField(const QZFieldBase& field, bool strict) const {
  const int state = CheckField(field, strict);
  return state != NoField && state != OtherType && !(strict && state == OtherMeta);
}

bool QZRecord::HasValue(const QZFieldBase& field) const { return impl->HasValue(field); }

bool QZRecord::IsNA(const std::string& name) const {
  const std::size_t pos = impl->Fields().Find(name);
  return pos != FieldList::npos && impl->IsNullAt(pos);
}

bool QZRecord::IsNA(const QZFieldBase& field) const {
  const std::size_t pos = impl->FindKey(field);
  return pos != FieldList::npos && impl->IsNullAt(pos);
}

bool QZRecord::SetBytes(const QZFieldBase& field, const std::vector<unsigned char>& bytes) {
  return impl->SetSlice(field, bytes.data(), bytes.size());
}

bool QZRecord::SetBytes(const QZFieldBase& field, const std::optional<std::vector<unsigned char>>& bytes) {
  return bytes ? SetBytes(field, *bytes) : impl->SetNull(field);
}

std::vector<unsigned char> QZRecord::GetBytes(const std::string& name) const {
  const std::size_t pos = impl->Fields().Find(name);
  return pos == FieldList::npos ? std::vector<unsigned char>() : GetBytes(impl->Fields().At(pos));
}

std::vector<unsigned char> QZRecord::GetBytes(const QZFieldBase& field) const {
  QZByteSlice bytes;
  return impl->GetSlice(field, bytes) ? ToVector(bytes) : std::vector<unsigned char>();
}

bool QZRecord::GetBytes(std::vector<unsigned char>& out, const QZFieldBase& field) const {
  QZByteSlice bytes;
  if (!impl->GetSlice(field, bytes)) return false;
  out.insert(out.end(), bytes.data, bytes.data + bytes.size);
  return true;
}

bool QZRecord::ClearValue(const QZFieldBase& field) { return impl->ClearValue(field); }

bool QZRecord::AddToCache(const QZFieldBase& field, std::shared_ptr<void> value) {
  return impl->AddToCache(field, std::move(value));
}

void QZRecord::CacheOnRead(const QZFieldBase& field, std::shared_ptr<void> value) const {
  impl->CacheOnRead(field, std::move(value));
}

std::shared_ptr<void> QZRecord::CheckCache(const QZFieldBase& field, bool onlyDirty) const {
  const QZRecordImpl::CacheEntry* const entry = impl->CheckCache(field);
  return entry == nullptr || (onlyDirty && entry->clean) ? nullptr : entry->value;
}

void QZRecord::MarkCacheDirty(const QZFieldBase& field, bool updateField) { impl->MarkCacheDirty(field, updateField); }

bool QZRecord::ClearCacheEntry(int idx) { return impl->ClearCacheEntry(static_cast<unsigned int>(idx)); }

}  // namespace QZDataFlow
