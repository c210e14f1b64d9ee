#pragma once

#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>

namespace QZSystem {

/// The present mode of the pools; see threadsafe.h.
extern std::atomic<unsigned int> memPoolMode;

/// The mode in which a thread takes blocks from a list of its own and nothing else.
inline constexpr unsigned int threadListMode = 10;

/// Where the calling thread's free lists of that mode begin; null before its first block.
struct ThreadLists {
  void** ofEmptyIter;
  void** ofVectorPtrIter;
};

// Plain values, which code reaches without a call, also from another shared library; that is why the older keyword
// stands here: the compiler takes it as a promise that nothing needs to be initialised.
extern __thread ThreadLists threadLists __attribute__((tls_model("initial-exec")));

/// The size of the blocks of each pool: the two iterators that are made most often.
inline constexpr std::size_t emptyIterSize = 8;
inline constexpr std::size_t vectorPtrIterSize = 24;

template <std::size_t N>
[[nodiscard]] inline void**& ThreadList() {
  static_assert(N == emptyIterSize || N == vectorPtrIterSize, "there are pools for two sizes");
  return N == emptyIterSize ? threadLists.ofEmptyIter : threadLists.ofVectorPtrIter;
}

/// A block by way of `QZMemPool<N>::cachePtr()`. Throws std::bad_alloc where that is null.
template <std::size_t N>
[[nodiscard]] void* PopPoolBlockByMode();
template <std::size_t N>
void PushPoolBlockByMode(void* block);
extern template void* PopPoolBlockByMode<emptyIterSize>();
extern template void* PopPoolBlockByMode<vectorPtrIterSize>();
extern template void PushPoolBlockByMode<emptyIterSize>(void* block);
extern template void PushPoolBlockByMode<vectorPtrIterSize>(void* block);

inline bool Likely(bool condition) { return __builtin_expect(condition, true); }

/// What `QZMemPool<N>::cachePtr()->Pop()` gives, without the calls in nearly all cases: the thread's own list in the
/// default mode, with a block in it.
template <std::size_t N>
[[nodiscard, gnu::always_inline]] inline void* PopPoolBlock() {
  void** const list = ThreadList<N>();
  const bool isListMode = Likely(list) && Likely(memPoolMode.load(std::memory_order_relaxed) == threadListMode);
  void* const block = isListMode ? *list : nullptr;
  if (!Likely(block)) return PopPoolBlockByMode<N>();
  std::memcpy(list, block, sizeof *list);
  return block;
}

/// Gives a block back, in the same way. A thread that has a list needs no look at the mode: who sets another one, or
/// takes a block in it, has a list no more. REQUIRES: not null.
template <std::size_t N>
[[gnu::always_inline]] inline void PushPoolBlock(void* block) {
  void** const list = ThreadList<N>();
  if (!Likely(list)) return PushPoolBlockByMode<N>(block);
  std::memcpy(block, list, sizeof *list);
  *list = block;
}

/// Base of a class whose objects of `N` bytes live in a pool. A derived class that is larger takes the heap. Safe from
/// any thread. In the default mode an object is deleted on the thread that made it, before that thread ends.
template <std::size_t N>
class PoolObject {
 public:
  static void* operator new(std::size_t size) { return size == N ? PopPoolBlock<N>() : ::operator new(size); }
  static void operator delete(void* object, std::size_t size) {
    if (size == N && object) {
      PushPoolBlock<N>(object);
    } else {
      ::operator delete(object);
    }
  }
};

}  // namespace QZSystem
