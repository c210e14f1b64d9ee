#pragma once

#include <memory>
#include <utility>

#include "qz/system/frame/iterbase.h"

namespace QZSystem {

/// Owns an iterator that a function handed out, deletes it, and walks it.
///
///     for (const QZParameter& p : QZIter(itf.GetParameters(true))) Show(p);
///
///     QZIter values(param.GetStringValues());
///     if (values) Show(*values);
///
/// Without an iterator it is an empty sequence. Movable; `Copy` copies. One thread at a time.
template <class T>
class QZIter {
 public:
  QZIter() = default;

  /// Takes over `taken`, which may be null.
  explicit QZIter(QZIterBase<T>* taken) noexcept : iter(taken) {}

  /// A second iterator on the same sequence at the same position.
  [[nodiscard]] QZIter Copy() const { return QZIter(iter ? iter->Copy() : nullptr); }

  /// Appends the sequence of `more`.
  void Push(QZIter more) {
    if (!iter) {
      *this = std::move(more);
    } else if (more.iter) {
      QZIterBase<T>* joined = iter->Push(more.iter.release());
      // Push has taken over the iterator, or is it.
      static_cast<void>(iter.release());
      iter.reset(joined);
    }
  }

  /// Whether the position is on an element.
  explicit operator bool() const { return iter && bool(*iter); }

  /// The present element. REQUIRES: the position is on an element.
  T& operator*() const { return **iter; }
  T* operator->() const { return iter->operator->(); }

  QZIter& operator++() {
    if (iter) ++*iter;
    return *this;
  }
  QZIter& operator--() {
    if (iter) --*iter;
    return *this;
  }
  QZIter& ToFirst() {
    if (iter) iter->ToFirst();
    return *this;
  }
  QZIter& ToLast() {
    if (iter) iter->ToLast();
    return *this;
  }

  /// The iterator, for its other operations; it stays owned. Null if there is none.
  [[nodiscard]] QZIterBase<T>* Get() const noexcept { return iter.get(); }

  /// Gives the iterator away: the caller deletes it.
  [[nodiscard]] QZIterBase<T>* Release() noexcept { return iter.release(); }

  /// What a range-for compares with and steps.
  struct End {};
  class Position {
   public:
    explicit Position(QZIterBase<T>* walked) : iter(walked) {}
    T& operator*() const { return **iter; }
    Position& operator++() {
      ++*iter;
      return *this;
    }
    bool operator!=(End) const { return iter && bool(*iter); }

   private:
    QZIterBase<T>* iter;
  };

  /// A range-for starts at the first element, wherever the position was, and leaves it behind the last one, or on the
  /// element at which the loop was left.
  [[nodiscard]] Position begin() { return Position(ToFirst().Get()); }
  [[nodiscard]] End end() const { return End(); }

 private:
  std::unique_ptr<QZIterBase<T>> iter;
};

}  // namespace QZSystem
