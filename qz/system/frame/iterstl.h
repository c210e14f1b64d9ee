#pragma once

#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>

#include "qz/system/frame/iterbase.h"

namespace QZSystem {

/// How an iterator views a container: its elements as they are, const.
template <class ContainerType>
struct ConstIterGuts {
  using Container = const ContainerType;
  using Iterator = typename ContainerType::const_iterator;
  using T = const typename ContainerType::value_type;
  static T& Element(Iterator at) { return *at; }
};

/// How an iterator views a container of pointers: the objects that they point to.
template <class ContainerType>
struct DerefIterGuts {
  using Container = const ContainerType;
  using Iterator = typename ContainerType::const_iterator;
  using T = std::remove_reference_t<decltype(**std::declval<Iterator>())>;
  static T& Element(Iterator at) { return **at; }
};

/// The same with the objects const.
template <class ContainerType>
struct ConstDerefIterGuts {
  using Container = const ContainerType;
  using Iterator = typename ContainerType::const_iterator;
  using T = std::add_const_t<std::remove_reference_t<decltype(**std::declval<Iterator>())>>;
  static T& Element(Iterator at) { return **at; }
};

/// Walks a standard container in the view of its `Guts`. The container isn't owned; its size is taken once, and the
/// iterator is good until the container changes.
///
///     return new QZSTLIter<ConstIterGuts<std::vector<std::string>>>(names);       // of const string
///     return new QZSTLIter<DerefIterGuts<std::vector<QZParameter*>>>(parameters);  // of QZParameter
///
/// One thread at a time.
template <class Guts>
class QZSTLIter : public QZIterBase<typename Guts::T> {
 public:
  using T = typename Guts::T;
  using Container = typename Guts::Container;

  /// On nothing, for good.
  QZSTLIter() = default;
  /// On the first element of `walked`, which must stand as long as the iterator and its copies.
  explicit QZSTLIter(Container& walked) : container(&walked), position(walked.begin()), size(walked.size()) {}
  explicit QZSTLIter(std::remove_const_t<Container>&&) = delete;

  [[nodiscard]] QZSTLIter* Copy() const override { return new QZSTLIter(*this); }

  /// Step by elements, in constant time over containers with random access. A step off an end followed by a step back
  /// is on the element at that end.
  QZSTLIter& operator++() override { return MoveTo(index + 1); }
  QZSTLIter& operator--() override { return MoveTo(index - 1); }
  QZSTLIter& operator+=(unsigned int n) override { return MoveTo(index + n); }
  QZSTLIter& operator-=(unsigned int n) override { return MoveTo(index - n); }
  QZSTLIter& operator+=(int n) override { return MoveTo(index + static_cast<std::uint64_t>(n)); }
  QZSTLIter& operator-=(int n) override { return MoveTo(index - static_cast<std::uint64_t>(n)); }
  QZSTLIter& ToFirst() override { return MoveTo(0); }

  /// Moves to the last element; in an empty container as `ToFirst`.
  QZSTLIter& ToLast() override { return MoveTo(size == 0 ? 0 : size - 1); }

  T& operator*() const override { return Guts::Element(position); }
  T* operator->() const override { return std::addressof(Guts::Element(position)); }
  operator bool() const override { return container && index < size; }

 private:
  // Off the ends the container's iterator stays on the element that it last was on, since it must not leave the
  // container; inside it is always begin plus index.
  QZSTLIter& MoveTo(std::uint64_t to) {
    index = to;
    if (index < size) {
      using Distance = typename std::iterator_traits<typename Guts::Iterator>::difference_type;
      position = std::next(container->begin(), static_cast<Distance>(index));
    }
    return *this;
  }

  Container* container = nullptr;
  std::uint64_t index = 0;
  typename Guts::Iterator position = {};
  std::uint64_t size = 0;
};

/// Walks a copy of a standard container: a snapshot, which stays good whatever happens to the source.
///
///     return new QZSTLCacheIter<ConstIterGuts<std::vector<bool>>>(flags);
///
/// The bits of a vector of `bool` are no objects that one can refer to; for these the iterator holds the value at its
/// position, and a reference to it is good until the next step. One thread at a time.
template <class Guts>
class QZSTLCacheIter : public QZIterBase<typename Guts::T> {
 public:
  using T = typename Guts::T;
  using Container = std::remove_const_t<typename Guts::Container>;

  /// On the first element of `copied`, which it keeps.
  explicit QZSTLCacheIter(Container copied) : elements(std::move(copied)), size(elements.size()) { MoveTo(0); }

  // The current element points into the own copy, so each iterator finds it anew.
  QZSTLCacheIter(const QZSTLCacheIter& other) : elements(other.elements), size(other.size) { MoveTo(other.index); }
  QZSTLCacheIter& operator=(const QZSTLCacheIter&) = delete;

  /// An iterator at the same position over a copy of the container.
  [[nodiscard]] QZSTLCacheIter* Copy() const override { return new QZSTLCacheIter(*this); }

  QZSTLCacheIter& operator++() override { return MoveTo(index + 1); }
  QZSTLCacheIter& operator--() override { return MoveTo(index - 1); }
  QZSTLCacheIter& operator+=(unsigned int n) override { return MoveTo(index + n); }
  QZSTLCacheIter& operator-=(unsigned int n) override { return MoveTo(index - n); }
  QZSTLCacheIter& operator+=(int n) override { return MoveTo(index + static_cast<std::uint64_t>(n)); }
  QZSTLCacheIter& operator-=(int n) override { return MoveTo(index - static_cast<std::uint64_t>(n)); }
  QZSTLCacheIter& ToFirst() override { return MoveTo(0); }

  /// Moves to the last element; in an empty container as `ToFirst`.
  QZSTLCacheIter& ToLast() override { return MoveTo(size == 0 ? 0 : size - 1); }

  T& operator*() const override { return *operator->(); }
  T* operator->() const override {
    if constexpr (refersToElements) {
      return current;
    } else {
      return &current;
    }
  }
  operator bool() const override { return index < size; }

 private:
  static constexpr bool refersToElements = std::is_reference_v<typename Container::const_reference>;
  using Current = std::conditional_t<refersToElements, T*, typename Container::value_type>;

  QZSTLCacheIter& MoveTo(std::uint64_t to) {
    index = to;
    if (index >= size) return *this;
    const auto at = std::next(elements.cbegin(), static_cast<typename Container::difference_type>(index));
    if constexpr (refersToElements) {
      current = std::addressof(Guts::Element(at));
    } else {
      current = *at;
    }
    return *this;
  }

  Container elements;
  std::uint64_t index = 0;
  Current current{};
  std::uint64_t size;
};

}  // namespace QZSystem
