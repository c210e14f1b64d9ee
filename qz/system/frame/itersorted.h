#pragma once

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "qz/system/frame/functor.h"
#include "qz/system/frame/hanoi.h"
#include "qz/system/frame/iterbase.h"

namespace QZSystem {

/// Sorts pointers by what they point to: an order of `T` as an order of `T*`. Const operations may run in parallel; a
/// change needs exclusive access.
template <class T>
class SortedIterCriterion : public QZBinaryPredicate<T*, T*> {
 public:
  /// The order of the elements, which are looked at and not changed.
  using Predicate = QZBinaryPredicate<std::remove_const_t<T>, std::remove_const_t<T>>;

  /// No order at all.
  SortedIterCriterion() = default;
  /// Keeps a copy of `order`.
  explicit SortedIterCriterion(const Predicate& order) : predicate(CopyOf(&order)) {}
  SortedIterCriterion(const SortedIterCriterion& other)
      : QZBinaryPredicate<T*, T*>(other), predicate(CopyOf(other.predicate.get())) {}
  SortedIterCriterion(SortedIterCriterion&&) noexcept = default;
  SortedIterCriterion& operator=(SortedIterCriterion other) noexcept {
    predicate = std::move(other.predicate);
    return *this;
  }

  /// Whether there is an order.
  explicit operator bool() const { return predicate != nullptr; }

  /// Whether `*a` sorts strictly before `*b`; false without an order.
  bool operator()(T* const& a, T* const& b) const override { return predicate && (*predicate)(*a, *b); }

  [[nodiscard]] SortedIterCriterion* CreateCopy() const override { return new SortedIterCriterion(*this); }

 private:
  static std::unique_ptr<Predicate> CopyOf(const Predicate* order) {
    return std::unique_ptr<Predicate>(order ? static_cast<Predicate*>(order->CreateCopy()) : nullptr);
  }

  std::unique_ptr<Predicate> predicate;
};

/// The elements of another iterator, sorted. The sort is stable, and is made once, when the iterator or a copy of it
/// is made; elements that come later aren't seen.
///
///     return new QZSortedIter<QZParameter>(new QZSTLIter<DerefIterGuts<Parameters>>(own),
///     SortItfStuff<QZParameter>());
///
/// The elements must stand as long as the iterator; their container may change. One thread at a time.
template <class T>
class QZSortedIter : public QZIterBase<T> {
 public:
  using Predicate = typename SortedIterCriterion<T>::Predicate;

  /// Takes over `unsorted`, which may be null, and lists its elements in their own order.
  explicit QZSortedIter(QZIterBase<T>* unsorted = nullptr) : source(unsorted) { Fill(); }

  /// Takes over `unsorted`, which may be null, and lists its elements sorted by `order`, of which it keeps a copy.
  /// A single element is not compared.
  QZSortedIter(QZIterBase<T>* unsorted, const Predicate& order) : source(unsorted), criterion(order) { Fill(); }

  QZSortedIter(const QZSortedIter&) = delete;
  QZSortedIter& operator=(const QZSortedIter&) = delete;

  /// An iterator over a copy of the source, listed and sorted anew; it stands at the first element.
  [[nodiscard]] QZSortedIter* Copy() const override {
    std::unique_ptr<QZIterBase<T>> sourceCopy(source ? source->Copy() : nullptr);
    return new QZSortedIter(std::move(sourceCopy), criterion);
  }

  /// Takes over `more` as the source, or appends it to the source, and returns this iterator. The list stays as it is:
  /// the new elements show in copies.
  QZSortedIter* Push(QZIterBase<T>* more) override {
    std::unique_ptr<QZIterBase<T>> added(more);
    if (source) {
      auto both = std::make_unique<QZConcatIter<T>>(std::move(source), std::move(added));
      source = std::move(both);
    } else {
      source = std::move(added);
    }
    return this;
  }

  QZSortedIter& operator++() override { return Move(1U); }
  QZSortedIter& operator--() override { return Move(0U - 1U); }
  QZSortedIter& operator+=(unsigned int n) override { return Move(n); }
  QZSortedIter& operator-=(unsigned int n) override { return Move(0U - n); }
  QZSortedIter& operator+=(int n) override { return Move(static_cast<unsigned int>(n)); }
  QZSortedIter& operator-=(int n) override { return Move(0U - static_cast<unsigned int>(n)); }
  QZSortedIter& ToFirst() override {
    offset = 0;
    return *this;
  }
  QZSortedIter& ToLast() override {
    offset = elements.empty() ? 0U : static_cast<unsigned int>(elements.size() - 1);
    return *this;
  }

  T& operator*() const override { return *elements[offset]; }
  T* operator->() const override { return elements[offset]; }
  operator bool() const override { return offset < elements.size(); }

 private:
  QZSortedIter(std::unique_ptr<QZIterBase<T>> unsorted, const SortedIterCriterion<T>& order)
      : source(std::move(unsorted)), criterion(order) {
    Fill();
  }

  QZSortedIter& Move(unsigned int n) {
    offset += n;
    return *this;
  }

  void Fill() {
    if (source) {
      for (source->ToFirst(); *source; ++*source) elements.push_back(source->operator->());
    }
    if (criterion && elements.size() > 1) hanoisort(elements.data(), elements.size(), criterion);
  }

  std::unique_ptr<QZIterBase<T>> source;
  std::vector<T*> elements;
  unsigned int offset = 0;
  SortedIterCriterion<T> criterion;
};

}  // namespace QZSystem
