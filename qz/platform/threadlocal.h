#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "qz/platform/threadlocal_impl.h"

namespace QZPlatform {

/// One value of T for each thread that touches the object.
///
///     QZThreadLocal<int> depth;    // a thread's first look makes its value with T()
///     ++*depth;                    // this thread's value; no other thread sees it
///     if (depth.Get() > 3) ...
///
/// A thread's value lives until the thread ends or the object is destroyed, whichever comes first; then it is destroyed
/// in the thread that does so. The main thread's values live until their objects go. Safe from any thread.
template <class T>
class QZThreadLocal {
 public:
  QZThreadLocal() = default;
  QZThreadLocal(const QZThreadLocal&) = delete;
  QZThreadLocal& operator=(const QZThreadLocal&) = delete;

  /// REQUIRES: no thread is inside an operation of this object or still uses a reference that it gave.
  ~QZThreadLocal() = default;

  /// The calling thread's value, made by T() at the thread's first call. Later calls take no lock.
  /// The reference is good until the thread ends or this object is destroyed. A const object gives a value that can be
  /// changed, since the value belongs to the thread and not to the object. Passes on what T() throws.
  T& Get() const {
    if (void* const known = ThreadValueCache::Find(values.Id())) return *static_cast<T*>(known);
    return *static_cast<T*>(values.FindOrMake(&MakeValue));
  }

  T& operator*() const { return Get(); }
  T* operator->() const { return &Get(); }

 private:
  static std::shared_ptr<void> MakeValue() { return std::make_shared<T>(); }

  ThreadValues values;
};

}  // namespace QZPlatform
