#include "qz/system/frame/hanoi.h"

#include <cstdint>
#include <cstring>

namespace QZSystem {

namespace {

using ByteCompare = int (*)(const void*, const void*);

// Bytes that the caller knows as something else are moved as numbers of that width.
template <class Number>
void SortAsNumbers(void* base, unsigned long count, ByteCompare compare) {
  hanoisort(static_cast<Number*>(base), count, HanoiCompare<Number>(compare));
}

template <class Number>
bool FitsNumber(const void* base, unsigned long size) {
  return size == sizeof(Number) && reinterpret_cast<std::uintptr_t>(base) % sizeof(Number) == 0;
}

void MoveBytes(char*& to, char*& from, unsigned long size) {
  std::memcpy(to, from, size);
  to += size;
  from += size;
}

}  // namespace

bool hanoi(char* a, unsigned long count, char* b, unsigned long size, ByteCompare compare) {
  if (count < 2) return false;
  if (count == 2) {
    if (compare(a, a + size) <= 0) return false;
    std::memcpy(b, a + size, size);
    std::memcpy(b + size, a, size);
    return true;
  }
  const unsigned long half = count / 2;
  const unsigned long middle = half * size;
  const bool firstInB = hanoi(a, half, b, size, compare);
  const bool secondInB = hanoi(a + middle, count - half, b + middle, size, compare);
  char* first = firstInB ? b : a;
  char* const firstEnd = first + middle;
  char* second = (secondInB ? b : a) + middle;
  char* const secondEnd = second + (count - half) * size;
  char* to = firstInB ? a : b;
  while (first != firstEnd && second != secondEnd) MoveBytes(to, compare(first, second) > 0 ? second : first, size);
  const auto rest = static_cast<unsigned long>(firstEnd - first);
  std::memcpy(to, first, rest);
  to += rest;
  // The rest of the second run may lie where it belongs.
  if (to != second) std::memcpy(to, second, static_cast<unsigned long>(secondEnd - second));
  return !firstInB;
}

void hanoisort(void* base, unsigned long count, unsigned long size, ByteCompare compare) {
  if (count < 2 || size == 0) return;
  if (FitsNumber<int>(base, size)) return SortAsNumbers<int>(base, count, compare);
  if (FitsNumber<long>(base, size)) return SortAsNumbers<long>(base, count, compare);
  if (count > ~0UL / size) throw std::bad_array_new_length();
  const std::uint64_t blockSize = QZMallocaSize(count * size);
  void* const onStack = QZMallocaFits(blockSize) ? alloca(blockSize) : nullptr;
  const QZMallocaPtr<char> scratch(blockSize, onStack);
  char* const elements = static_cast<char*>(base);
  if (hanoi(elements, count, scratch.Get(), size, compare)) std::memcpy(elements, scratch.Get(), count * size);
}

}  // namespace QZSystem
