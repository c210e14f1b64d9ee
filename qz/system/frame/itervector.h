#pragma once

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "qz/system/frame/iterbase.h"
#include "qz/system/frame/threadsafe_impl.h"

namespace QZSystem {

/// What the iterators over vectors share: a position is an offset of 32 bits that wraps around, so that a step off
/// the front followed by a step forward is on the first element again. One thread at a time.
template <class T>
class QZOffsetIterBase : public QZIterBase<T> {
 public:
  QZOffsetIterBase& operator++() override { return Move(1U); }
  QZOffsetIterBase& operator--() override { return Move(0U - 1U); }
  QZOffsetIterBase& operator+=(unsigned int n) override { return Move(n); }
  QZOffsetIterBase& operator-=(unsigned int n) override { return Move(0U - n); }
  QZOffsetIterBase& operator+=(int n) override { return Move(static_cast<unsigned int>(n)); }
  QZOffsetIterBase& operator-=(int n) override { return Move(0U - static_cast<unsigned int>(n)); }
  QZOffsetIterBase& ToFirst() override {
    offset = 0;
    return *this;
  }

 protected:
  QZOffsetIterBase() = default;
  QZOffsetIterBase(const QZOffsetIterBase&) = default;
  QZOffsetIterBase& operator=(const QZOffsetIterBase&) = default;

  QZOffsetIterBase& Move(unsigned int n) {
    offset += n;
    return *this;
  }

  /// Moves to the last of `size` elements; with none to an offset that is on no element.
  QZOffsetIterBase& MoveToLast(std::size_t size) {
    offset = static_cast<unsigned int>(size - 1);
    return *this;
  }

  unsigned int offset = 0;
};

/// Walks the objects that a vector of pointers points to. The vector isn't owned, and the iterator is good until it
/// changes.
///
///     std::vector<QZBaseData*> data;
///     QZIterBase<QZBaseData>* all = new QZVectorPtrIter<QZBaseData>(data);
///
/// It lives in a pool: see threadsafe.h. REQUIRES: no element is null where it is dereferenced. One thread at a time.
template <class T>
class QZVectorPtrIter : public QZOffsetIterBase<T>, public PoolObject<vectorPtrIterSize> {
 public:
  using Vector = std::vector<T*>;

  /// On nothing, for good.
  QZVectorPtrIter() = default;
  /// On the first element of `vector`, which must stand as long as the iterator and its copies.
  explicit QZVectorPtrIter(const Vector& vector) : elements(&vector) {}
  explicit QZVectorPtrIter(Vector&&) = delete;

  [[nodiscard]] QZVectorPtrIter* Copy() const override { return new QZVectorPtrIter(*this); }
  QZVectorPtrIter& ToLast() override {
    this->MoveToLast(elements ? elements->size() : 0);
    return *this;
  }

  T& operator*() const override { return *(*elements)[this->offset]; }
  T* operator->() const override { return (*elements)[this->offset]; }
  operator bool() const override { return elements && this->offset < elements->size(); }

 private:
  const Vector* elements = nullptr;
};

/// Walks the elements of a vector. The vector isn't owned, and the iterator is good until it changes. For a const
/// `T` it is a vector of the type without const. One thread at a time.
template <class T>
class QZVectorIter : public QZOffsetIterBase<T> {
 public:
  using Elements = std::vector<std::remove_const_t<T>>;
  using Vector = std::conditional_t<std::is_const_v<T>, const Elements, Elements>;

  /// On nothing, for good.
  QZVectorIter() = default;
  /// On the first element of `vector`, which must stand as long as the iterator and its copies.
  explicit QZVectorIter(Vector& vector) : elements(&vector) {}
  explicit QZVectorIter(Elements&&) = delete;

  [[nodiscard]] QZVectorIter* Copy() const override { return new QZVectorIter(*this); }
  QZVectorIter& ToLast() override {
    this->MoveToLast(elements ? elements->size() : 0);
    return *this;
  }

  T& operator*() const override { return (*elements)[this->offset]; }
  T* operator->() const override { return elements->data() + this->offset; }
  operator bool() const override { return elements && this->offset < elements->size(); }

 private:
  Vector* elements = nullptr;
};

/// Walks the elements of a vector on the heap that it may own; every copy has a vector of its own.
///
///     return new QZVectorCacheIter<QZColor>(new std::vector<QZColor>(colors), true);
///
/// One thread at a time.
template <class T>
class QZVectorCacheIter : public QZOffsetIterBase<T> {
 public:
  using Vector = std::vector<std::remove_const_t<T>>;

  /// On the first element of `vector`, which may be null. With `own` the destructor deletes it; without, it must
  /// stand as long as this iterator.
  QZVectorCacheIter(Vector* vector, bool own) : elements(vector), owned(own) {}
  QZVectorCacheIter(const QZVectorCacheIter&) = delete;
  QZVectorCacheIter& operator=(const QZVectorCacheIter&) = delete;
  ~QZVectorCacheIter() override {
    if (owned) delete elements;
  }

  /// An iterator at the same position over a copy of the vector that it owns, whether or not this one does.
  [[nodiscard]] QZVectorCacheIter* Copy() const override {
    auto elementsCopy = elements ? std::make_unique<Vector>(*elements) : nullptr;
    auto* copy = new QZVectorCacheIter(elementsCopy.get(), true);
    static_cast<void>(elementsCopy.release());
    copy->offset = this->offset;
    return copy;
  }

  QZVectorCacheIter& ToLast() override {
    this->MoveToLast(elements ? elements->size() : 0);
    return *this;
  }

  T& operator*() const override { return (*elements)[this->offset]; }
  T* operator->() const override { return elements->data() + this->offset; }
  operator bool() const override { return elements && this->offset < elements->size(); }

 private:
  Vector* elements;
  bool owned;
};

/// Walks a vector that it holds by value: a snapshot, which stays good whatever happens to the source.
///
///     return new QZCacheIter<QZHeader>(std::move(history));
///
/// One thread at a time.
template <class T>
class QZCacheIter : public QZOffsetIterBase<T> {
 public:
  using Vector = std::vector<std::remove_const_t<T>>;

  /// On the first element of `vector`, which it keeps.
  explicit QZCacheIter(Vector vector) : elements(std::move(vector)) {}

  /// An iterator at the same position over a copy of the vector.
  [[nodiscard]] QZCacheIter* Copy() const override { return new QZCacheIter(*this); }

  QZCacheIter& ToLast() override {
    this->MoveToLast(elements.size());
    return *this;
  }

  T& operator*() const override { return elements[this->offset]; }
  T* operator->() const override { return elements.data() + this->offset; }
  operator bool() const override { return this->offset < elements.size(); }

 private:
  mutable Vector elements;
};

}  // namespace QZSystem
