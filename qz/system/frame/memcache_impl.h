#pragma once

#include <atomic>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "qz/platform/lock_impl.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// The mutex of a cache, which survives a fork.
class CacheMutex : public ForkSafeMutex {
 public:
  CacheMutex() : ForkSafeMutex(LockRank::Platform) {}
};

/// A lock of one byte for a few instructions: a thread that finds it taken looks again and again.
class SpinLock {
 public:
  void lock() noexcept {
    while (taken.exchange(1, std::memory_order_acquire) != 0) {
    }
  }
  void unlock() noexcept { taken.store(0, std::memory_order_release); }

 private:
  std::atomic<unsigned char> taken{0};
};

/// Free blocks of `N` bytes, chained through their first bytes: `M` in place, and batches of `M` from the heap. At
/// first all blocks in place are free, and the one of the lowest address comes first. One thread at a time.
template <unsigned long N, unsigned long M>
class FreeBlocks {
 public:
  FreeBlocks() { Chain(slots); }
  FreeBlocks(const FreeBlocks&) = delete;
  FreeBlocks& operator=(const FreeBlocks&) = delete;

  /// A free block, or null if there is none.
  [[nodiscard]] void* Take() {
    void* const block = head;
    if (block) std::memcpy(&head, block, sizeof head);
    return block;
  }

  /// The next `Take` gives the block.
  void Give(void* block) {
    std::memcpy(block, &head, sizeof head);
    head = block;
  }

  /// Makes a batch of free blocks, the lowest address first. Throws std::bad_alloc, with nothing changed.
  void Grow() {
    chunks.push_back(std::unique_ptr<unsigned char[]>(new unsigned char[M * N]));
    Chain(chunks.back().get());
  }

  [[nodiscard]] bool IsInPlace(const void* block) const {
    const std::less<const void*> before;
    return !before(block, slots) && before(block, slots + M * N);
  }

  [[nodiscard]] void** Head() { return &head; }

 private:
  static_assert(N >= sizeof(void*), "a free block holds the pointer to the next one");

  void Chain(unsigned char* first) {
    for (unsigned long n = M; n-- > 0;) Give(first + n * N);
  }

  alignas(void*) unsigned char slots[M * N];
  void* head = nullptr;
  std::vector<std::unique_ptr<unsigned char[]>> chunks;
};

}  // namespace QZSystem
