#pragma once

#include <sys/single_threaded.h>

#include <cstring>
#include <functional>
#include <iterator>

#include "qz/platform/lock_impl.h"

namespace QZPlatform {

/// A pool of `Count` buffers of `Size` bytes each, with the heap behind it.
///
///     QZBoundedCache<32768, 32>& pool = qzstream::GetBufferCache();
///     unsigned char* block = pool.GetBuffer();
///     pool.ReleaseBuffer(block);
///
/// Safe from any thread. A `fork` finds the pool whole.
template <unsigned long Size, unsigned long Count>
class QZBoundedCache {
 public:
  QZBoundedCache() = default;
  QZBoundedCache(const QZBoundedCache&) = delete;
  QZBoundedCache& operator=(const QZBoundedCache&) = delete;

  /// Hands out a buffer of `Size` bytes with unspecified content: one of the pool while there are any, else one from
  /// the heap. Costs one lock at most; throws `std::bad_alloc`, with the lock released, when the heap is exhausted.
  [[nodiscard]] unsigned char* GetBuffer();

  /// Takes back what `GetBuffer` handed out: a buffer of the pool is free again, one from the heap is deleted. Null
  /// does nothing.
  void ReleaseBuffer(unsigned char* buffer);

 private:
  static_assert(Size >= sizeof(unsigned char*), "a free buffer holds the link to the next one");

  bool isPooled(const unsigned char* buffer) const {
    const std::less<const unsigned char*> before;
    return !before(buffer, block[0]) && before(buffer, reinterpret_cast<const unsigned char*>(std::end(block)));
  }

// GCC doesn't know clang's thread-safety attributes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"
  // Holds the mutex for a scope that starts no thread. A process that has one thread only has nobody to exclude, which
  // halves the price of a short-lived stream.
  class __attribute__((scoped_lockable)) PoolLock {
   public:
    explicit PoolLock(ForkSafeMutex& locked) __attribute__((acquire_capability(locked), no_thread_safety_analysis))
    : held(__libc_single_threaded ? nullptr : &locked) {
      if (held) held->lock();
    }
    ~PoolLock() __attribute__((release_capability(), no_thread_safety_analysis)) {
      if (held) held->unlock();
    }
    PoolLock(const PoolLock&) = delete;
    PoolLock& operator=(const PoolLock&) = delete;

   private:
    ForkSafeMutex* const held;
  };

  ForkSafeMutex mutex{LockRank::Platform};
  alignas(64) unsigned char block[Count][Size];
  unsigned char* free __attribute__((guarded_by(mutex))) = nullptr;  // came back; linked through their first word
  unsigned long untouched __attribute__((guarded_by(mutex))) = 0;    // from here on never handed out
#pragma GCC diagnostic pop
};

template <unsigned long Size, unsigned long Count>
unsigned char* QZBoundedCache<Size, Count>::GetBuffer() {
  {
    const PoolLock lock(mutex);
    if (free) {
      unsigned char* buffer = free;
      std::memcpy(&free, buffer, sizeof free);
      return buffer;
    }
    if (untouched < Count) return block[untouched++];
  }
  return new unsigned char[Size];
}

template <unsigned long Size, unsigned long Count>
void QZBoundedCache<Size, Count>::ReleaseBuffer(unsigned char* buffer) {
  if (!isPooled(buffer)) {
    delete[] buffer;
    return;
  }
  const PoolLock lock(mutex);
  std::memcpy(buffer, &free, sizeof free);
  free = buffer;
}

}  // namespace QZPlatform
