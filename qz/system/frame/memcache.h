#pragma once

#include <mutex>

#include "qz/system/frame/memcache_impl.h"

namespace QZSystem {

/// Blocks of one size, to take and to give back.
///
///     QZVirtualCache* cache = QZMemPool<24>::cachePtr();
///     void* block = cache->Pop();
///     cache->Push(block);
///
/// One thread at a time. Implementations with a lock let several in.
class QZVirtualCache {
 public:
  /// A block with unspecified content. Throws std::bad_alloc, with the cache as it was.
  [[nodiscard]] virtual void* Pop() = 0;

  /// Gives a block back, which mustn't be used any more.
  virtual void Push(void* block) = 0;

  virtual ~QZVirtualCache() = default;
};

/// Stands in for `QZVirtualCache` where a cache is a member of another one, which knows its class.
class QZNotVirtualCache {};

/// `M` blocks of `N` bytes in place, with the heap behind them: never are more than `M` free blocks kept.
///
///     QZBoundedCache<24, 64, QZVirtualCache> cache;
///     void* block = cache.Pop();
///
/// A fresh cache hands out its blocks in the order of their addresses. One thread at a time.
template <unsigned long N, unsigned long M, class Base>
class QZBoundedCache : public Base {
 public:
  /// A free block of the cache, else a new array of `N` bytes.
  [[nodiscard]] void* Pop() {
    void* const block = blocks.Take();
    return block ? block : new unsigned char[N];
  }
  /// A block of the cache is free again; any other is freed as an array. Null does nothing.
  void Push(void* block) {
    if (blocks.IsInPlace(block)) {
      blocks.Give(block);
    } else {
      delete[] static_cast<unsigned char*>(block);
    }
  }

 private:
  FreeBlocks<N, M> blocks;
};

/// `M` blocks of `N` bytes in place, and as many more each time they run out, until the cache is destroyed, which frees
/// what is still in use too.
///
///     QZUnboundedCache<24, 64, QZVirtualCache> cache;
///     void* block = cache.Pop();
///
/// A few loads and stores, but for the batches. One thread at a time.
template <unsigned long N, unsigned long M, class Base>
class QZUnboundedCache : public Base {
 public:
  [[nodiscard]] void* Pop() {
    if (!*blocks.Head()) blocks.Grow();
    return blocks.Take();
  }
  /// The next `Pop` gives the block. REQUIRES: not null. A block of another cache is taken in, and must last.
  void Push(void* block) { blocks.Give(block); }

  /// The head of the list of free blocks, each of which begins with the pointer to the next.
  [[nodiscard]] void** Head() { return blocks.Head(); }

 private:
  FreeBlocks<N, M> blocks;
};

/// A `QZBoundedCache` under a lock, which is free while the heap is asked. Safe from any thread.
template <class Lock, unsigned long N, unsigned long M>
class LockedBoundedCache : public QZVirtualCache {
 public:
  [[nodiscard]] void* Pop() override {
    void* const block = TakeLocked();
    return block ? block : new unsigned char[N];
  }
  void Push(void* block) override {
    if (!blocks.IsInPlace(block)) return delete[] static_cast<unsigned char*>(block);
    const std::lock_guard<Lock> guard(lock);
    blocks.Give(block);
  }

  /// The lock, for who forks.
  [[nodiscard]] Lock& GetLock() { return lock; }

 private:
  void* TakeLocked() {
    const std::lock_guard<Lock> guard(lock);
    return blocks.Take();
  }

  Lock lock;
  FreeBlocks<N, M> blocks;
};

/// Another cache under a lock. Safe from any thread.
template <class Lock, class Cache, class Base>
class LockedCache : public Base {
 public:
  [[nodiscard]] void* Pop() {
    const std::lock_guard<Lock> guard(lock);
    return cache.Pop();
  }
  void Push(void* block) {
    const std::lock_guard<Lock> guard(lock);
    cache.Push(block);
  }

  /// The lock, for who forks.
  [[nodiscard]] Lock& GetLock() { return lock; }

 private:
  Lock lock;
  Cache cache;
};

template <unsigned long N, unsigned long M>
using QZMutexedBoundedCache = LockedBoundedCache<CacheMutex, N, M>;
template <class Cache, class Base>
using QZMutexedCache = LockedCache<CacheMutex, Cache, Base>;

/// The same with a lock that waits by looking: for programs whose threads are no more than the processors.
template <unsigned long N, unsigned long M>
using QZSpinlockedBoundedCache = LockedBoundedCache<SpinLock, N, M>;
template <class Cache, class Base>
using QZSpinlockedCache = LockedCache<SpinLock, Cache, Base>;

/// No cache: arrays of `N` bytes from the heap. Safe from any thread.
template <unsigned long N>
class QZSystemAlloc : public QZVirtualCache {
 public:
  [[nodiscard]] void* Pop() override { return new unsigned char[N]; }
  /// Null does nothing.
  void Push(void* block) override { delete[] static_cast<unsigned char*>(block); }
};

}  // namespace QZSystem
