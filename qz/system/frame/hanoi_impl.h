#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

// The sort halves its range down to a few elements, sorts those by insertion, and merges pairs of runs from one buffer
// into the other, level by level. Which buffer the whole run must end in is known before the sort begins, so every
// half can be told to go to the other one: both runs of a merge then lie in the same buffer, and its destination holds
// nothing that is still needed. That leaves the way free for merges from both ends at once.

namespace QZSystem {

/// Up to this many elements are sorted by insertion.
inline constexpr unsigned long HanoiSmall = 8;
/// Runs of more elements are merged from both ends; for shorter ones that takes too many comparisons.
inline constexpr unsigned long HanoiShort = 32;
/// A merge of pointers asks for what they point to as many elements ahead.
inline constexpr unsigned long HanoiAhead = 4;

/// Moves `count` elements to a place that doesn't overlap theirs; returns the end of that place.
template <class T>
T* HanoiMoveRun(T* from, unsigned long count, T* to) {
  for (T* const end = from + count; from != end; ++from, ++to) *to = std::move(*from);
  return to;
}

/// Keeps objects alive in a raw block while it serves as the second buffer of a sort.
template <class T>
class HanoiScratch {
 public:
  HanoiScratch(T* room, [[maybe_unused]] const T* source, unsigned long size) : block(room), count(size) {
    if constexpr (std::is_default_constructible_v<T>) {
      std::uninitialized_default_construct_n(block, count);
    } else {
      std::uninitialized_copy_n(source, count, block);
    }
  }
  ~HanoiScratch() { std::destroy_n(block, count); }
  HanoiScratch(const HanoiScratch&) = delete;
  HanoiScratch& operator=(const HanoiScratch&) = delete;

 private:
  T* block;
  unsigned long count;
};

/// Whether a sort of `a` ends in the other buffer. A run of 1 lies in `a`, a run of 2 in the other buffer if its
/// elements change places, and a longer run in the buffer that doesn't hold its first half.
template <class T, class Compare>
bool HanoiEndsInOther(const T* a, unsigned long count, Compare& less) {
  bool flips = false;
  for (; count > 2; count /= 2) flips = !flips;
  return flips != (count == 2 && less(a[1], a[0]));
}

/// Sorts a few elements at `a` into `to`, which is `a` or a place that doesn't overlap it.
template <class T, class Compare>
void HanoiInsertionSort(T* a, unsigned long count, T* to, Compare& less) {
  if (to != a && count > 0) to[0] = std::move(a[0]);
  for (unsigned long i = 1; i < count; ++i) {
    if (!less(a[i], to[i - 1])) {
      if (to != a) to[i] = std::move(a[i]);
      continue;
    }
    T element = std::move(a[i]);
    unsigned long at = i;
    do {
      to[at] = std::move(to[at - 1]);
      --at;
    } while (at > 0 && less(element, to[at - 1]));
    to[at] = std::move(element);
  }
}

/// Merges two runs, of which the second lies behind the first, into `to`.
template <class T, class Compare>
void HanoiMergeForward(T* first, unsigned long firstCount, unsigned long secondCount, T* to, Compare& less) {
  T* const firstEnd = first + firstCount;
  T* second = firstEnd;
  T* const secondEnd = second + secondCount;
  while (first != firstEnd && second != secondEnd) {
    if (less(*second, *first)) {
      *to++ = std::move(*second++);
    } else {
      *to++ = std::move(*first++);
    }
  }
  to = HanoiMoveRun(first, static_cast<unsigned long>(firstEnd - first), to);
  HanoiMoveRun(second, static_cast<unsigned long>(secondEnd - second), to);
}

/// Merges a run of `half` elements and one of `half` or one more behind it, from both ends at once, by copying. False,
/// with nothing useful in `to`, if the two sides don't meet, which happens when the comparison contradicts itself.
///
/// Each side takes `half` steps, so no step can leave a run, whatever the comparison says. The outcome of a comparison,
/// 1 or 0, goes into the arithmetic of the pointers, since a branch on it can't be predicted, and the processor works
/// on both sides at the same time.
template <class T, class Compare>
bool HanoiMergeBothEnds(const T* runs, unsigned long half, unsigned long secondCount, T* to, Compare& less) {
  const T* low1 = runs;
  const T* low2 = runs + half;
  const T* high1 = low2 - 1;
  const T* high2 = low2 + secondCount - 1;
  T* toEnd = to + half + secondCount;
  for (unsigned long steps = half; steps > 0; --steps) {
    if constexpr (std::is_pointer_v<T> && std::is_convertible_v<T, const void*>) {
      if (steps > HanoiAhead) {
        __builtin_prefetch(low1[HanoiAhead]);
        __builtin_prefetch(low2[HanoiAhead]);
        __builtin_prefetch(*(high1 - HanoiAhead));
        __builtin_prefetch(*(high2 - HanoiAhead));
      }
    }
    const std::ptrdiff_t fromSecond = static_cast<bool>(less(*low2, *low1));
    *to++ = low1[(low2 - low1) & -fromSecond];
    low2 += fromSecond;
    low1 += 1 - fromSecond;
    const std::ptrdiff_t fromFirst = static_cast<bool>(less(*high2, *high1));
    *--toEnd = high2[(high1 - high2) & -fromFirst];
    high1 -= fromFirst;
    high2 -= 1 - fromFirst;
  }
  // What is left between the sides: nothing, or one element where the second run is the longer one.
  const auto left1 = high1 + 1 - low1;
  const auto left2 = high2 + 1 - low2;
  if (to != toEnd) *to = left1 == 1 ? *low1 : *low2;
  return left1 >= 0 && left2 >= 0 && left1 + left2 == toEnd - to;
}

/// Merges a run of `half` elements and one of `half` or one more behind it into `to`.
template <class T, class Compare>
void HanoiMerge(T* runs, unsigned long half, unsigned long secondCount, T* to, Compare& less) {
  if constexpr (std::is_trivially_copyable_v<T> && std::is_copy_assignable_v<T>) {
    if (half > HanoiShort && HanoiMergeBothEnds(runs, half, secondCount, to, less)) return;
    // The runs are still whole, and a merge from one end loses nothing under any comparison.
  }
  HanoiMergeForward(runs, half, secondCount, to, less);
}

/// Sorts the elements at `a` with the help of as many at `b`, into `b` or else into `a`.
template <class T, class Compare>
void HanoiSortInto(T* a, unsigned long count, T* b, bool intoB, Compare& less) {
  T* const to = intoB ? b : a;
  if (count <= HanoiSmall) {
    HanoiInsertionSort(a, count, to, less);
    return;
  }
  const unsigned long half = count / 2;
  HanoiSortInto(a, half, b, !intoB, less);
  HanoiSortInto(a + half, count - half, b + half, !intoB, less);
  HanoiMerge(intoB ? a : b, half, count - half, to, less);
}

/// The step behind `hanoi`: sorts, and returns whether the run ended in `b`.
template <class T, class Compare>
bool HanoiStep(T* a, unsigned long count, T* b, Compare& less) {
  const bool intoB = HanoiEndsInOther(a, count, less);
  if (count == 2) {
    if (intoB) HanoiMoveRun(a, 1, HanoiMoveRun(a + 1, 1, b));
  } else {
    HanoiSortInto(a, count, b, intoB, less);
  }
  return intoB;
}

}  // namespace QZSystem
