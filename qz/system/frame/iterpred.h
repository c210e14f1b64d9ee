#pragma once

#include <memory>
#include <vector>

#include "qz/system/frame/iterbase.h"

namespace QZSystem {

/// Walks those of the objects behind a vector of pointers for which a predicate holds. `Pred` derives from
/// `QZUnaryPredicate<T>`. The vector isn't owned, and the iterator is good until it changes.
///
///     return new QZPredVectorPtrIter<QZEqualTag>(data, QZEqualTag(tag));
///
/// A null pointer in the vector is on no element, and a search stops there. One thread at a time.
template <class Pred>
class QZPredVectorPtrIter : public QZIterBase<typename Pred::argument_type> {
 public:
  using T = typename Pred::argument_type;
  using Vector = std::vector<T*>;

  /// On the first match in `vector`, which must stand as long as the iterator and its copies; with no match on the
  /// last element, which tests false. Keeps a copy of `predicate`.
  QZPredVectorPtrIter(const Vector& vector, const Pred& predicate) : QZPredVectorPtrIter(&vector, 0, predicate) {
    while (Size() > 1 && offset < Size() - 1 && Rejected()) ++offset;
  }
  QZPredVectorPtrIter(Vector&&, const Pred&) = delete;
  QZPredVectorPtrIter(const QZPredVectorPtrIter&) = delete;
  QZPredVectorPtrIter& operator=(const QZPredVectorPtrIter&) = delete;

  [[nodiscard]] QZPredVectorPtrIter* Copy() const override { return new QZPredVectorPtrIter(elements, offset, *pred); }

  /// Step to the next match; with none beyond the end, where a step the other way searches back.
  QZPredVectorPtrIter& operator++() override {
    do ++offset;
    while (Rejected());
    return *this;
  }
  QZPredVectorPtrIter& operator--() override {
    do --offset;
    while (Rejected());
    return *this;
  }

  /// Repeat a single step `n` times.
  QZPredVectorPtrIter& operator+=(unsigned int n) override {
    for (; n > 0; --n) ++*this;
    return *this;
  }
  QZPredVectorPtrIter& operator-=(unsigned int n) override {
    for (; n > 0; --n) --*this;
    return *this;
  }
  QZPredVectorPtrIter& operator+=(int n) override {
    return n < 0 ? *this -= 0U - static_cast<unsigned int>(n) : *this += static_cast<unsigned int>(n);
  }
  QZPredVectorPtrIter& operator-=(int n) override {
    return n < 0 ? *this += 0U - static_cast<unsigned int>(n) : *this -= static_cast<unsigned int>(n);
  }

  QZPredVectorPtrIter& ToFirst() override {
    offset = 0;
    while (Rejected()) ++offset;
    return *this;
  }
  QZPredVectorPtrIter& ToLast() override {
    offset = Size() - 1U;
    while (Rejected()) --offset;
    return *this;
  }

  T& operator*() const override { return *(*elements)[offset]; }
  T* operator->() const override { return (*elements)[offset]; }
  operator bool() const override { return OnPointer() && (*pred)(*(*elements)[offset]); }

 private:
  QZPredVectorPtrIter(const Vector* vector, unsigned int at, const Pred& predicate)
      : elements(vector), offset(at), pred(static_cast<Pred*>(predicate.CreateCopy())) {}

  [[nodiscard]] unsigned int Size() const { return elements ? static_cast<unsigned int>(elements->size()) : 0; }
  [[nodiscard]] bool OnPointer() const { return offset < Size() && (*elements)[offset]; }
  [[nodiscard]] bool Rejected() const { return OnPointer() && !(*pred)(*(*elements)[offset]); }

  const Vector* elements;
  unsigned int offset;
  std::unique_ptr<Pred> pred;
};

}  // namespace QZSystem
