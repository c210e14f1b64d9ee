#pragma once

#include "qz/system/frame/iterbase.h"
#include "qz/system/frame/iterempty_impl.h"
#include "qz/system/frame/threadsafe_impl.h"

namespace QZSystem {

/// A sequence without elements, for functions that must return an iterator and have nothing to show.
///
///     if (!impl) return new QZEmptyIter<QZBaseData>;
///
/// Stepping does nothing and no position is on an element. It lives in a pool: see threadsafe.h. One thread at a time.
template <class T>
class QZEmptyIter : public QZIterBase<T>, public PoolObject<emptyIterSize> {
 public:
  [[nodiscard]] QZEmptyIter* Copy() const override { return new QZEmptyIter; }

  QZEmptyIter& operator++() override { return *this; }
  QZEmptyIter& operator--() override { return *this; }
  QZEmptyIter& operator+=(unsigned int) override { return *this; }
  QZEmptyIter& operator-=(unsigned int) override { return *this; }
  QZEmptyIter& operator+=(int) override { return *this; }
  QZEmptyIter& operator-=(int) override { return *this; }
  QZEmptyIter& ToFirst() override { return *this; }
  QZEmptyIter& ToLast() override { return *this; }

  /// Send the Error "Dereferencing empty iterator". `operator->` then gives a null pointer; what `operator*` refers to
  /// is storage of the right size without an object in it, which must not be used.
  T& operator*() const override {
    SendEmptyDereference();
    alignas(T) static unsigned char nothing[sizeof(T)] = {};
    return *reinterpret_cast<T*>(nothing);
  }
  T* operator->() const override {
    SendEmptyDereference();
    return nullptr;
  }

  operator bool() const override { return false; }
};

}  // namespace QZSystem
