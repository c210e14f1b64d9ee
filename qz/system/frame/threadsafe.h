#pragma once

#include "qz/system/frame/memcache.h"
#include "qz/system/frame/threadsafe_impl.h"

/// The pools of the small iterators that are made most often, and how they behave in the threads of a program.
///
///     // The first thing in main, where iterators are to be deleted on any thread:
///     QZSetMemPoolMode(QZMemPoolMode::Mutexed | QZMemPoolMode::UnboundedCache);
///
/// In the default mode each thread has its own blocks: nothing is locked, and an iterator from a pool is deleted on the
/// thread that made it, before that thread ends. Safe from any thread.
namespace QZSystem {

/// What the mode of the pools is made of: one of `SingleThreaded`, `Mutexed`, `ThreadLocal` and `Spinlocked`, with one
/// of `BoundedCache` and `UnboundedCache`; or `System` alone. `Mutexed`, `Spinlocked` and `System` let a block be freed
/// on any thread; with `SingleThreaded` only one thread may use the pools.
namespace QZMemPoolMode {
inline constexpr unsigned int SingleThreaded = 0;  ///< one cache for the process, no lock
inline constexpr unsigned int Mutexed = 1;         ///< one cache for the process, under a mutex
inline constexpr unsigned int ThreadLocal = 2;     ///< one cache for each thread
inline constexpr unsigned int BoundedCache = 4;    ///< the cache keeps 64 blocks, the heap gives the others
inline constexpr unsigned int UnboundedCache = 8;  ///< the cache grows as needed
inline constexpr unsigned int System = 16;         ///< no cache, the heap alone
inline constexpr unsigned int Spinlocked = 32;     ///< one cache for the process, under a spin lock
inline constexpr unsigned int Default = ThreadLocal | UnboundedCache;
}  // namespace QZMemPoolMode

/// Sets the mode, once in a program and before the first iterator: a change hands the blocks in use to a cache that
/// doesn't know them. A second call sends the Error "QZSetMemPoolMode called twice! Should only be called once per
/// program", and sets the mode too. The value is looked at when the first block is taken: one that isn't a mode then
/// gives the Error "Unrecognized QZMemPoolMode (%u)" and std::bad_alloc.
void QZSetMemPoolMode(unsigned int mode);

/// The mode, 10 at first.
[[nodiscard]] unsigned int QZGetMemPoolMode();

/// Deprecated, as two Warnings say: sets the mode to `Default`, or for false to `SingleThreaded | UnboundedCache`.
void QZSetThreadSafe(bool threadSafe);

/// Deprecated, as two Warnings say: what `QZSetThreadSafe` was last given, true at first.
[[nodiscard]] bool QZGetThreadSafe();

/// The pool of blocks of `N` bytes; there are those of 8 and of 24. Safe from any thread.
template <unsigned long N>
class QZMemPool {
 public:
  /// The cache of the calling thread in the present mode. That of the process is never destroyed, that of a thread
  /// behind all other objects of the thread. A mode that isn't one sends the Error "Unrecognized QZMemPoolMode (%u)"
  /// and gives null. Throws std::bad_alloc where a thread has no room for a cache.
  [[nodiscard]] static QZVirtualCache* cachePtr();
};

extern template class QZMemPool<emptyIterSize>;
extern template class QZMemPool<vectorPtrIterSize>;

/// A block of 8 bytes from the pool that `QZEmptyIter` lives in. Throws std::bad_alloc.
[[nodiscard]] inline void* PopEmptyIter() { return PopPoolBlock<emptyIterSize>(); }

/// Gives it back. REQUIRES: not null.
inline void PushEmptyIter(void* block) { PushPoolBlock<emptyIterSize>(block); }

}  // namespace QZSystem
