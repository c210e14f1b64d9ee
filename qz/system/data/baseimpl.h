#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "qz/system/data/basedata.h"
#include "qz/system/frame/functor.h"
#include "qz/system/frame/theonly_impl.h"

namespace QZSystem {

class QZBase;

/// Selects the values under one tag.
///
///     QZPredVectorPtrIter<QZEqualTag> charges(data, QZEqualTag(chargeTag));
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZEqualTag : public QZUnaryPredicate<QZBaseData> {
 public:
  explicit QZEqualTag(unsigned int wanted) : tag(wanted) {}

  bool operator()(const QZBaseData& data) const override { return data.GetTag() == tag; }
  [[nodiscard]] QZEqualTag* CreateCopy() const override { return new QZEqualTag(*this); }

 private:
  unsigned int tag;
};

/// Whether `Type` names an array of attached data: a pointer to elements that can be changed, as in
/// `GetData<float*>`. A pointer to const, such as `char const*`, is a single value, the pointer itself.
template <class Type>
inline constexpr bool QZIsArrayData = std::is_pointer_v<Type> && !std::is_const_v<std::remove_pointer_t<Type>>;

/// The class that every holder of the identity of `T` is of, or derives from. A single `unsigned int` is held as an
/// `int`.
template <class T>
using QZHolderOf = std::conditional_t<QZIsArrayData<T>, QZBaseDataTPtr<std::conditional_t<QZIsArrayData<T>, T, char*>>,
                                      QZBaseDataT<std::conditional_t<std::is_same_v<T, unsigned int>, int, T>>>;

/// The values attached to one object, in the order in which they were added. A `QZBase` has one of these from its first
/// value on.
///
///     QZBaseImpl values;
///     values.Append(std::make_unique<QZBaseDataT<int>>(chargeTag, -1));
///     if (const auto* charge = QZBaseImpl::As<int>(values.FindData(chargeTag))) return charge->GetData();
///
/// Several values may have one tag. Const operations may run in parallel; a change needs exclusive access.
class QZBaseImpl {
 public:
  QZBaseImpl() = default;
  /// A copy of every value, in order.
  QZBaseImpl(const QZBaseImpl& other);
  QZBaseImpl& operator=(const QZBaseImpl&) = delete;

  /// Deletes all values.
  virtual ~QZBaseImpl();

  /// Deletes all values; the room for them stays.
  virtual void Clear();

  /// Sends the Warning "data type mismatch found when using generic data" and returns false.
  static bool CheckTypeWarning();

  /// What a missing value of a class type reads as: the one default-constructed `T`, made at the first call, good to
  /// the end of the process.
  template <class T>
  [[nodiscard]] static const T& GetDefaultData() {
    return TheOnly<T>();
  }

  /// The first value under a tag, or null. Cost: linear in the number of values.
  [[nodiscard]] QZBaseData* FindData(unsigned int tag) const {
    for (QZBaseData* holder : data) {
      if (holder && holder->GetTag() == tag) return holder;
    }
    return nullptr;
  }

  /// The holder as one of type `T`, or null if it holds another type. `holder` may be null.
  template <class T>
  [[nodiscard]] static QZHolderOf<T>* As(QZBaseData* holder) {
    if (!holder) return nullptr;
    // Nearly always the class is the very one, which shows sooner than its identity does.
    const bool isT = &typeid(*holder) == &typeid(QZHolderOf<T>) || holder->GetDataType() == QZHolderOf<T>::DataType();
    return isT ? static_cast<QZHolderOf<T>*>(holder) : nullptr;
  }

  /// Adds a value behind all others. Throws std::bad_alloc, with nothing changed.
  void Append(std::unique_ptr<QZBaseData> holder) {
    if (data.size() == data.capacity()) Grow();
    data.push_back(holder.release());
  }

  /// Adds copies of all values of `other`, which may be this object, behind the own ones. Throws std::bad_alloc, with
  /// nothing changed.
  void Append(const QZBaseImpl& other);

  /// Puts a value in the place of the first one with its tag, whose holder is deleted; else behind all others.
  void Replace(std::unique_ptr<QZBaseData> holder);

  /// Deletes all values under a tag. Returns whether there were any.
  bool Delete(unsigned int tag);

  /// Exchanges all values with `other`.
  void Swap(QZBaseImpl& other) noexcept { data.swap(other.data); }

  /// The values, as the iterators walk them.
  [[nodiscard]] const std::vector<QZBaseData*>& GetData() const { return data; }

  /// Those of an object, null if it never had one: what `GetDataIter` walks, for code that walks it very often.
  [[nodiscard]] static const std::vector<QZBaseData*>* DataOf(const QZBase& object);

 private:
  void Grow();

  std::vector<QZBaseData*> data;
};

}  // namespace QZSystem
