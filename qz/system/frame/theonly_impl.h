#pragma once

#include <atomic>
#include <memory>

namespace QZSystem {

/// The one default-constructed `T` of the process, made at the first call and never destroyed: a thread that runs on
/// while the process ends, and the destructors of static objects, may still use it. Throws what making it throws; the
/// next call tries again. Safe from any thread.
template <class T>
[[nodiscard]] T& TheOnly() {
  // Of threads that make one at the same time the first keeps its own. A static of the language would have the others
  // wait, and the child of a fork at that moment for ever.
  static std::atomic<T*> only{nullptr};
  T* one = only.load(std::memory_order_acquire);
  if (one) return *one;
  auto made = std::make_unique<T>();
  return only.compare_exchange_strong(one, made.get()) ? *made.release() : *one;
}

}  // namespace QZSystem
