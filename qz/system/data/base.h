#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#include "qz/system/data/baseimpl.h"
#include "qz/system/data/tagmap.h"
#include "qz/system/frame/iterbase.h"

namespace QZSystem {

/// What `GetData<T>` gives: a class by const reference, an array by a pointer to its first element, all else by value.
template <class T>
using QZDataResult = std::conditional_t<QZIsArrayData<T>, const std::remove_pointer_t<T>*,
                                        std::conditional_t<std::is_class_v<T>, const T&, T>>;

/// Base of every object that can carry attached data: typed values under names, without a change to its class.
///
///     molecule.SetData("charge", -1);
///     molecule.SetData("origin", std::string("crystal"));
///     molecule.SetData<float*>("masses", masses, atoms);
///     int charge = molecule.GetData<int>("charge");
///     for (const QZBaseData& value : QZIter(molecule.GetDataIter())) qzout << QZGetTag(value.GetTag()) << qzendl;
///
/// The values keep the order in which they were added; several may have one name. Any type that can be copied can be
/// attached. A name may be given by its tag, which saves the look-up; the forms that take text register it as a tag,
/// queries on an object without data excepted. Finding a value is linear in their number. An object that never had a
/// value costs one null pointer.
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZBase {
 public:
  QZBase() = default;

  /// A copy of every value, in order.
  QZBase(const QZBase& other);
  /// Takes over all values; `other` is left without any.
  QZBase(QZBase&& other) noexcept = default;

  virtual ~QZBase();

  /// Replaces all values by copies of those of `other`, which may itself be attached to this object. Throws
  /// std::bad_alloc, with nothing changed; so do the other operations that copy.
  QZBase& operator=(const QZBase& other);
  QZBase& operator=(QZBase&& other) noexcept = default;

  /// Adds copies of all values of `other` behind the own ones, also where the names are the same. `other` may be this
  /// object, whose values are then doubled, or be attached to it.
  QZBase& operator+=(const QZBase& other);

  /// Deletes all attached data. An override does this and empties what the class adds.
  virtual void Clear();

  /// The identity of the class.
  [[nodiscard]] virtual const void* GetDataType() const = 0;

  /// Whether `type` is the identity of the class or of one of its bases. An override compares with its own identity and
  /// otherwise asks its base; this body answers for `QZBase`.
  [[nodiscard]] virtual bool IsDataType(const void* type) const = 0;

  /// A new object of the same class with a copy of everything; the caller deletes it.
  [[nodiscard]] virtual QZBase* CreateCopy() const = 0;

  /// Set the first value under a name, in its place in the order, or add one behind all others. If the present value is
  /// of another type, they send the Warning "data type mismatch found when using generic data" and return false, with
  /// the value as it was. Of a `char const*` only the pointer is kept: see `QZBaseDataT`.
  template <class T>
  bool SetData(unsigned int tag, T value);
  template <class T>
  bool SetData(const char* name, T value) {
    return SetData<T>(QZGetTag(name), std::move(value));
  }

  /// Add a value behind all others, whether or not the name has one. Always true.
  template <class T>
  bool AddData(unsigned int tag, T value);
  template <class T>
  bool AddData(const char* name, T value) {
    return AddData<T>(QZGetTag(name), std::move(value));
  }

  /// The same for an array, `SetData<float*>("masses", masses, 3)`, of which a copy is kept. Without elements (null) a
  /// new array is of zeroes, and an array that exists loses its elements.
  template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int> = 0>
  bool SetData(unsigned int tag, const std::remove_pointer_t<Pointer>* elements, unsigned int count);
  template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int> = 0>
  bool SetData(const char* name, const std::remove_pointer_t<Pointer>* elements, unsigned int count) {
    return SetData<Pointer>(QZGetTag(name), elements, count);
  }
  template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int> = 0>
  bool AddData(unsigned int tag, const std::remove_pointer_t<Pointer>* elements, unsigned int count);
  template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int> = 0>
  bool AddData(const char* name, const std::remove_pointer_t<Pointer>* elements, unsigned int count) {
    return AddData<Pointer>(QZGetTag(name), elements, count);
  }

  /// The same with the type taken from the elements, `SetData("masses", masses, 3)`.
  template <class T, std::enable_if_t<!std::is_pointer_v<T>, int> = 0>
  bool SetData(unsigned int tag, const T* elements, unsigned int count) {
    return SetData<T*>(tag, elements, count);
  }
  template <class T, std::enable_if_t<!std::is_pointer_v<T>, int> = 0>
  bool SetData(const char* name, const T* elements, unsigned int count) {
    return SetData<T*>(QZGetTag(name), elements, count);
  }
  template <class T, std::enable_if_t<!std::is_pointer_v<T>, int> = 0>
  bool AddData(unsigned int tag, const T* elements, unsigned int count) {
    return AddData<T*>(tag, elements, count);
  }
  template <class T, std::enable_if_t<!std::is_pointer_v<T>, int> = 0>
  bool AddData(const char* name, const T* elements, unsigned int count) {
    return AddData<T*>(QZGetTag(name), elements, count);
  }

  /// The first value under a name. A missing value reads as zero, as false, or as a default-constructed object; so does
  /// one of another type, after the Warning of `SetData`. A reference is good until the value is changed or deleted,
  /// that to a default object to the end of the process.
  template <class T>
  [[nodiscard]] QZDataResult<T> GetData(unsigned int tag) const;
  template <class T>
  [[nodiscard]] QZDataResult<T> GetData(const char* name) const {
    return GetData<T>(impl ? QZGetTag(name) : 0);
  }

  /// The same for an array, `GetData<float*>("masses", &count)`, with the number of its elements. Missing, empty, or of
  /// another type, it is null with a count of 0.
  template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int> = 0>
  [[nodiscard]] QZDataResult<Pointer> GetData(unsigned int tag, unsigned int* count) const;
  template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int> = 0>
  [[nodiscard]] QZDataResult<Pointer> GetData(const char* name, unsigned int* count) const {
    return GetData<Pointer>(impl ? QZGetTag(name) : 0, count);
  }

  /// Puts a copy of the holder in the place of the first value with its tag, of whatever type, or adds it behind all
  /// others. Always true. REQUIRES: `holder` isn't null; it may belong to this object.
  bool SetBaseData(const QZBaseData* holder);

  /// Adds a copy of the holder behind all others. Always true. REQUIRES: as for `SetBaseData`.
  bool AddBaseData(const QZBaseData* holder);

  /// Whether there is a value under a name.
  [[nodiscard]] bool HasData(unsigned int tag) const;
  [[nodiscard]] bool HasData(const char* name) const;

  /// Delete all values under a name; the rest keep their order. Return whether there were any.
  bool DeleteData(unsigned int tag);
  bool DeleteData(const char* name);

  /// A new iterator over all values, or over those under one tag, in order. The caller deletes it. It is good until a
  /// value is added or deleted. The one over all values is from the iterators' pool (threadsafe.h), so it needs no
  /// allocation, and is deleted on the thread that asked for it.
  [[nodiscard]] QZIterBase<QZBaseData>* GetDataIter() const;
  [[nodiscard]] QZIterBase<QZBaseData>* GetDataIter(unsigned int tag) const;

 private:
  friend void QZCopyBaseData(QZBase& to, const QZBase& from);
  friend class QZBaseImpl;

  QZBaseImpl& Impl() { return impl ? *impl : MakeImpl(); }
  QZBaseImpl& MakeImpl();
  [[nodiscard]] QZBaseData* Find(unsigned int tag) const { return impl ? impl->FindData(tag) : nullptr; }

  std::unique_ptr<QZBaseImpl> impl;
};

/// Replaces the attached data of `to`, and nothing else of it, by copies of those of `from`. REQUIRES: two objects;
/// `from` may be attached to `to`.
void QZCopyBaseData(QZBase& to, const QZBase& from);

inline const std::vector<QZBaseData*>* QZBaseImpl::DataOf(const QZBase& object) {
  return object.impl ? &object.impl->data : nullptr;
}

template <class T>
bool QZBase::SetData(unsigned int tag, T value) {
  static_assert(!QZIsArrayData<T>, "an array is attached with the number of its elements");
  QZBaseImpl& values = Impl();
  QZBaseData* const present = values.FindData(tag);
  if (!present) {
    values.Append(std::make_unique<QZBaseDataT<T>>(tag, std::move(value)));
    return true;
  }
  QZHolderOf<T>* const holder = QZBaseImpl::As<T>(present);
  if (!holder) return QZBaseImpl::CheckTypeWarning();
  if constexpr (std::is_same_v<T, unsigned int>) {
    holder->GetData() = static_cast<int>(value);
  } else {
    holder->GetData() = std::move(value);
  }
  return true;
}

template <class T>
bool QZBase::AddData(unsigned int tag, T value) {
  static_assert(!QZIsArrayData<T>, "an array is attached with the number of its elements");
  Impl().Append(std::make_unique<QZBaseDataT<T>>(tag, std::move(value)));
  return true;
}

template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int>>
bool QZBase::SetData(unsigned int tag, const std::remove_pointer_t<Pointer>* elements, unsigned int count) {
  QZBaseData* const present = Find(tag);
  if (!present) return AddData<Pointer>(tag, elements, count);
  QZHolderOf<Pointer>* const holder = QZBaseImpl::As<Pointer>(present);
  if (!holder) return QZBaseImpl::CheckTypeWarning();
  holder->Assign(elements, count);
  return true;
}

template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int>>
bool QZBase::AddData(unsigned int tag, const std::remove_pointer_t<Pointer>* elements, unsigned int count) {
  Impl().Append(std::make_unique<QZBaseDataTPtr<Pointer>>(tag, elements, count));
  return true;
}

template <class T>
QZDataResult<T> QZBase::GetData(unsigned int tag) const {
  QZBaseData* const present = Find(tag);
  const QZHolderOf<T>* const holder = QZBaseImpl::As<T>(present);
  if (present && !holder) QZBaseImpl::CheckTypeWarning();
  if constexpr (std::is_class_v<T>) {
    return holder ? holder->GetData() : QZBaseImpl::GetDefaultData<T>();
  } else {
    return holder ? static_cast<T>(holder->GetData()) : T();
  }
}

template <class Pointer, std::enable_if_t<QZIsArrayData<Pointer>, int>>
QZDataResult<Pointer> QZBase::GetData(unsigned int tag, unsigned int* count) const {
  QZBaseData* const present = Find(tag);
  const QZHolderOf<Pointer>* const holder = QZBaseImpl::As<Pointer>(present);
  if (present && !holder) QZBaseImpl::CheckTypeWarning();
  if (count) *count = holder ? holder->GetSize() : 0;
  return holder ? holder->GetData() : nullptr;
}

}  // namespace QZSystem
