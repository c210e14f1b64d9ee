#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qz/platform/halffloat.h"
#include "qz/system/data/types.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Holds one value of some type under a tag; the base of all holders.
///
///     std::unique_ptr<QZBaseData> data(new QZBaseDataT<double>(QZGetTag("energy"), -7.25));
///     if (data->GetDataType() == QZBaseDataT<double>::DataType())
///       return static_cast<const QZBaseDataT<double>&>(*data).GetData();
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZBaseData {
 public:
  virtual ~QZBaseData() = default;
  QZBaseData(const QZBaseData&) = delete;
  QZBaseData& operator=(const QZBaseData&) = delete;

  /// The identity of the type of the value; two holders with the same identity are of the same class.
  [[nodiscard]] virtual const void* GetDataType() const = 0;
  /// The number of elements of an array, else 1.
  [[nodiscard]] virtual unsigned int GetSize() const = 0;
  /// A new holder with the same tag and a copy of the value; the caller deletes it.
  [[nodiscard]] virtual QZBaseData* CreateCopy() const = 0;

  /// The tag that the value stands under.
  [[nodiscard]] unsigned int GetTag() const { return tag; }

 protected:
  explicit QZBaseData(unsigned int valueTag) : tag(valueTag) {}

 private:
  unsigned int tag;
};

/// Holds a single value of type `T`. Of a `char const*` it holds the pointer alone: the text isn't copied and must
/// outlive the holder and all its copies. Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZBaseDataT : public QZBaseData {
 public:
  QZBaseDataT(unsigned int valueTag, T data) : QZBaseData(valueTag), value(std::move(data)) {}

  /// The identity that every holder of this class answers with.
  [[nodiscard]] static const void* DataType() { return QZGetDataType<T>(); }

  [[nodiscard]] const void* GetDataType() const override { return DataType(); }
  [[nodiscard]] unsigned int GetSize() const override { return 1; }
  [[nodiscard]] QZBaseDataT* CreateCopy() const override { return new QZBaseDataT(GetTag(), value); }

  /// The value, in place.
  [[nodiscard]] const T& GetData() const { return value; }
  [[nodiscard]] T& GetData() { return value; }

 private:
  T value;
};

/// Holds a single `unsigned int`, which counts as an `int`: the holder is one of `int` and answers as one, so the two
/// can be read for one another. Their vectors and arrays are types of their own. Const operations may run in parallel;
/// a change needs exclusive access.
template <>
class QZBaseDataT<unsigned int> : public QZBaseDataT<int> {
 public:
  QZBaseDataT(unsigned int valueTag, unsigned int data) : QZBaseDataT<int>(valueTag, static_cast<int>(data)) {}

  [[nodiscard]] QZBaseDataT* CreateCopy() const override { return new QZBaseDataT(GetTag(), GetData()); }

  /// The value, in place: the same bits as the `int`.
  [[nodiscard]] const unsigned int& GetData() const {
    return reinterpret_cast<const unsigned int&>(QZBaseDataT<int>::GetData());
  }
  [[nodiscard]] unsigned int& GetData() { return reinterpret_cast<unsigned int&>(QZBaseDataT<int>::GetData()); }
};

template <class Pointer>
class QZBaseDataTPtr;

/// Holds an array of `T`, which it owns; `GetData` gives the pointer to its first element.
///
///     const float masses[] = {12.0F, 1.008F};
///     QZBaseDataTPtr<float*> data(QZGetTag("masses"), masses, 2);
///
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZBaseDataTPtr<T*> : public QZBaseDataT<T*> {
 public:
  /// Copies `size` elements from `source`. If `source` is null, the elements are zero; if `size` is 0, there is no
  /// array and the pointer is null.
  QZBaseDataTPtr(unsigned int valueTag, const T* source, unsigned int size) : QZBaseDataT<T*>(valueTag, nullptr) {
    Hold(source, size);
  }
  ~QZBaseDataTPtr() override { delete[] this->GetData(); }

  [[nodiscard]] unsigned int GetSize() const override { return count; }
  [[nodiscard]] QZBaseDataTPtr* CreateCopy() const override {
    return new QZBaseDataTPtr(this->GetTag(), this->GetData(), count);
  }

  /// Takes a copy of `size` elements from `source`, which may lie in the present array, in place of that array. If
  /// `source` is null or `size` is 0, there is no array any more. Throws std::bad_alloc, with the array as it was.
  void Assign(const T* source, unsigned int size) { Hold(source, source ? size : 0); }

 private:
  void Hold(const T* source, unsigned int size) {
    std::unique_ptr<T[]> elements = size == 0 ? nullptr : std::make_unique<T[]>(size);
    if (source) std::copy_n(source, size, elements.get());
    delete[] this->GetData();
    this->GetData() = elements.release();
    count = size;
  }

  unsigned int count = 0;
};

// The types of attached data that need no class of their own are compiled once, with the toolkit.
extern template class QZBaseDataT<bool>;
extern template class QZBaseDataT<int>;
extern template class QZBaseDataT<float>;
extern template class QZBaseDataT<double>;
extern template class QZBaseDataT<const char*>;
extern template class QZBaseDataT<std::string>;

extern template class QZBaseDataT<std::vector<bool>>;
extern template class QZBaseDataT<std::vector<char>>;
extern template class QZBaseDataT<std::vector<unsigned char>>;
extern template class QZBaseDataT<std::vector<short>>;
extern template class QZBaseDataT<std::vector<unsigned short>>;
extern template class QZBaseDataT<std::vector<int>>;
extern template class QZBaseDataT<std::vector<unsigned int>>;
extern template class QZBaseDataT<std::vector<float>>;
extern template class QZBaseDataT<std::vector<double>>;
extern template class QZBaseDataT<std::vector<QZHalfFloat>>;
extern template class QZBaseDataT<std::vector<std::string>>;

extern template class QZBaseDataTPtr<bool*>;
extern template class QZBaseDataTPtr<char*>;
extern template class QZBaseDataTPtr<unsigned char*>;
extern template class QZBaseDataTPtr<int*>;
extern template class QZBaseDataTPtr<unsigned int*>;
extern template class QZBaseDataTPtr<float*>;
extern template class QZBaseDataTPtr<double*>;
extern template class QZBaseDataTPtr<QZHalfFloat*>;

}  // namespace QZSystem
