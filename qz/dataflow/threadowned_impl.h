#pragma once

namespace QZDataFlow {

/// The object of type T that belongs to the calling thread, made at first use. Null late in the end of the thread, when
/// it is gone.
template <class T>
T* GetThreadOwned() {
  thread_local T* object = nullptr;
  thread_local bool isClosed = false;
  if (object != nullptr || isClosed) return object;
  struct Closer {
    ~Closer() {
      isClosed = true;
      delete object;
      object = nullptr;
    }
  };
  thread_local const Closer closer;
  static_cast<void>(closer);
  object = new T;
  return object;
}

}  // namespace QZDataFlow
