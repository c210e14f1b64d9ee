#include "qz/system/data/base.h"

#include <cassert>

#include "qz/system/frame/iterempty.h"
#include "qz/system/frame/iterpred.h"
#include "qz/system/frame/itervector.h"

namespace QZSystem {

QZBase::QZBase(const QZBase& other) : impl(other.impl ? std::make_unique<QZBaseImpl>(*other.impl) : nullptr) {}

QZBase::~QZBase() = default;

QZBaseImpl& QZBase::MakeImpl() {
  impl = std::make_unique<QZBaseImpl>();
  return *impl;
}

// The copy is complete before anything goes, since the source may be one of the values that go.
QZBase& QZBase::operator=(const QZBase& other) {
  if (this != &other) QZCopyBaseData(*this, other);
  return *this;
}

QZBase& QZBase::operator+=(const QZBase& other) {
  if (other.impl) Impl().Append(*other.impl);
  return *this;
}

void QZBase::Clear() {
  if (impl) impl->Clear();
}

bool QZBase::IsDataType(const void* type) const { return type == QZGetDataType<QZBase>(); }

bool QZBase::SetBaseData(const QZBaseData* holder) {
  assert(holder);
  Impl().Replace(std::unique_ptr<QZBaseData>(holder->CreateCopy()));
  return true;
}

bool QZBase::AddBaseData(const QZBaseData* holder) {
  assert(holder);
  Impl().Append(std::unique_ptr<QZBaseData>(holder->CreateCopy()));
  return true;
}

bool QZBase::HasData(unsigned int tag) const { return Find(tag) != nullptr; }

bool QZBase::HasData(const char* name) const { return impl && HasData(QZGetTag(name)); }

bool QZBase::DeleteData(unsigned int tag) { return impl && impl->Delete(tag); }

bool QZBase::DeleteData(const char* name) { return impl && DeleteData(QZGetTag(name)); }

QZIterBase<QZBaseData>* QZBase::GetDataIter() const {
  if (!impl) return new QZEmptyIter<QZBaseData>;
  return new QZVectorPtrIter<QZBaseData>(impl->GetData());
}

QZIterBase<QZBaseData>* QZBase::GetDataIter(unsigned int tag) const {
  if (!impl) return new QZEmptyIter<QZBaseData>;
  return new QZPredVectorPtrIter<QZEqualTag>(impl->GetData(), QZEqualTag(tag));
}

void QZCopyBaseData(QZBase& to, const QZBase& from) {
  if (!from.impl) {
    if (to.impl) to.impl->Clear();
    return;
  }
  QZBaseImpl copies(*from.impl);
  to.Impl().Swap(copies);
}

}  // namespace QZSystem
