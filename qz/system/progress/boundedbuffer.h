#pragma once

#include <cstddef>
#include <vector>

#include "qz/platform/thread.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// A ring of a fixed number of elements.
///
///     QZBoundedBuffer<int> ring(4);
///     if (!ring.IsFull()) ring.Put(7);
///     if (!ring.IsEmpty()) Use(ring.Get());
///
/// One thread at a time.
template <class T>
class QZBoundedBuffer {
 public:
  using Element = T;

  /// REQUIRES: `cells` isn't 0.
  explicit QZBoundedBuffer(std::size_t cells) : capacity(cells), storage(cells) {}

  [[nodiscard]] std::size_t GetSize() const { return size; }
  [[nodiscard]] bool IsEmpty() const { return size == 0; }
  [[nodiscard]] bool IsFull() const { return size == capacity; }

  /// REQUIRES: the ring isn't full.
  void Put(const T& element) {
    storage[write] = element;
    write = Behind(write);
    ++size;
  }
  /// Takes the oldest element out. REQUIRES: the ring isn't empty.
  T Get() {
    const T element = storage[read];
    read = Behind(read);
    --size;
    return element;
  }

 private:
  [[nodiscard]] std::size_t Behind(std::size_t cell) const { return cell + 1 == capacity ? 0 : cell + 1; }

  std::size_t capacity;
  std::size_t size = 0;
  std::vector<T> storage;
  std::size_t write = 0;
  std::size_t read = 0;
};

/// A buffer between threads, some of which put elements in while others take them out, until one finishes it.
///
///     QZProtectedBuffer<QZBoundedBuffer<unsigned int>> queue(8, 4);
///     queue.Put(7);      // by one thread, and Finish() at last
///     while (const unsigned int step = queue.Take()) Use(step);  // by another
///
/// Wake-ups are batched: those who take are woken when more than `threshold` elements wait, and those who put when
/// fewer are left. Safe from any thread.
template <class B>
class QZProtectedBuffer : private B {
 public:
  using Element = typename B::Element;

  /// Stands for no element, and so can't be put in.
  static constexpr Element null{};

  QZProtectedBuffer(std::size_t cells, unsigned long wakeAt) : B(cells), threshold(wakeAt) {}

  /// Waits while the buffer is full. With `urgent` those who take are woken at once. False, with the element dropped,
  /// once the buffer is finished. REQUIRES: `element` isn't `null`.
  [[nodiscard]] bool Put(const Element& element, bool urgent = false) {
    condition.Acquire();
    while (this->IsFull() && !done) condition.Wait();
    const bool accepted = !done;
    if (accepted) B::Put(element);
    if (urgent || this->GetSize() > threshold) condition.Broadcast();
    condition.Release();
    return accepted;
  }

  /// Waits while the buffer is empty and not finished; then gives the oldest element, or `null` if there is none left.
  [[nodiscard]] Element Take() {
    condition.Acquire();
    while (this->IsEmpty() && !done) condition.Wait();
    const Element element = this->IsEmpty() ? null : B::Get();
    if (threshold > this->GetSize()) condition.Broadcast();
    condition.Release();
    return element;
  }

  /// Nothing is put in from now on; who waits goes on.
  void Finish() {
    condition.Acquire();
    done = true;
    condition.Broadcast();
    condition.Release();
  }

 private:
  QZCondition condition;
  unsigned long threshold;
  bool done = false;
};

}  // namespace QZSystem
