#pragma once

#include <alloca.h>

#include <new>

#include "qz/platform/machine.h"
#include "qz/system/frame/hanoi_impl.h"
#include "qz/system/frame/names.h"

/// A stable merge sort that never copies a run back: each step reports in which of two buffers its run lies, and the
/// merge that follows goes into the other one.
///
///     hanoisort(items.data(), items.size(), [](const Item* a, const Item* b) { return a->key < b->key; });
///
/// About n log2 n - 1.2 n comparisons, and as many moves of an element as there are levels. Safe from any thread, each
/// on its own elements.
namespace QZSystem {

/// Compares two elements of the size of `T` by a function of the kind that `qsort` takes.
template <class T>
class HanoiCompare {
 public:
  using Function = int (*)(const void*, const void*);

  explicit HanoiCompare(Function function) : compare(function) {}

  /// Whether `x` sorts strictly before `y`.
  bool operator()(const T& x, const T& y) const { return compare(&x, &y) < 0; }

 private:
  Function compare;
};

/// Sorts the `count` elements at `a` with the help of as many at `b`, and returns where the sorted run lies: false in
/// `a`, true in `b`. The elements of the other buffer are left in any state. Nothing is moved where `count` is below 2,
/// or is 2 and the two are in order. Elements need assignment by copy or move; what `less` or an assignment throws
/// passes, and the elements are then spread over both buffers.
/// REQUIRES: the buffers don't overlap, and `less` is a strict weak order.
template <class T, class Compare>
[[nodiscard]] bool hanoi(T* a, unsigned long count, T* b, Compare less) {
  return HanoiStep(a, count, b, less);
}

/// The same for elements of `size` bytes under a comparison as for `qsort`.
[[nodiscard]] bool hanoi(char* a, unsigned long count, char* b, unsigned long size,
                         int (*compare)(const void*, const void*));

/// Sorts the `count` elements at `base`, keeping the order of those of which neither sorts before the other.
/// `less(x, y)` says whether `x` sorts strictly before `y`. Takes one scratch block for as many elements, from the
/// stack where it is small; throws std::bad_alloc, with nothing moved, if there is no room for it.
/// REQUIRES: as for `hanoi`; an alignment of at most 16.
template <class T, class Compare>
void hanoisort(T* base, unsigned long count, Compare less) {
  if (count < 2) return;
  if (count > ~0UL / sizeof(T)) throw std::bad_array_new_length();
  const std::uint64_t size = QZMallocaSize(count * sizeof(T));
  void* const onStack = QZMallocaFits(size) ? alloca(size) : nullptr;
  const QZMallocaPtr<T> block(size, onStack);
  const HanoiScratch<T> scratch(block.Get(), base, count);
  if (HanoiStep(base, count, block.Get(), less)) HanoiMoveRun(block.Get(), count, base);
}

/// Sorts the `count` elements of `size` bytes at `base`, which are compared as for `qsort` and moved as bytes.
/// Elements of 4 or 8 bytes on an address that is a multiple of their size are moved as numbers.
void hanoisort(void* base, unsigned long count, unsigned long size, int (*compare)(const void*, const void*));

}  // namespace QZSystem
