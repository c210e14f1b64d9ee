#include "qz/system/frame/threadsafe.h"

#include <limits.h>
#include <pthread.h>

#include <memory>
#include <mutex>

#include "qz/system/frame/error.h"
#include "qz/system/frame/iterempty.h"
#include "qz/system/frame/itervector.h"
#include "qz/system/frame/theonly_impl.h"

namespace QZSystem {

namespace {

constexpr const char* calledTwice = "QZSetMemPoolMode called twice! Should only be called once per program";
constexpr const char* badMode = "Unrecognized QZMemPoolMode (%u)";
constexpr const char* setDeprecated = "QZSetThreadSafe(%s) is deprecated as of Tessaly 1.7.0";
constexpr const char* useDefault = "Use QZSetMemPoolMode(QZMemPoolMode::Default) instead";
constexpr const char* useSingleThreaded =
    "Use QZSetMemPoolMode(QZMemPoolMode::SingleThreaded|QZMemPoolMode::UnboundedCache) instead";
constexpr const char* getDeprecated = "QZGetThreadSafe() is deprecated as of Tessaly 1.7.0";
constexpr const char* useGetMode = "Use QZGetMemPoolMode() instead";

// Of whatever type the elements are.
static_assert(sizeof(QZEmptyIter<int>) == emptyIterSize);
static_assert(sizeof(QZVectorPtrIter<int>) == vectorPtrIterSize);

constexpr unsigned long batch = 64;

template <unsigned long N>
using Bounded = QZBoundedCache<N, batch, QZVirtualCache>;
template <unsigned long N>
using Unbounded = QZUnboundedCache<N, batch, QZVirtualCache>;
template <unsigned long N>
using Inner = QZUnboundedCache<N, batch, QZNotVirtualCache>;

std::atomic<bool> modeWasSet{false};
std::atomic<bool> threadSafeFlag{true};

// The spin locks of the process, which a fork finds free, as it does the mutexes: the forking thread takes them first
// and gives them back in both processes. No cache with such a lock comes up meanwhile.
std::mutex spinLocksMutex;
SpinLock* spinLocks[4];  // of two sizes, bounded and unbounded
unsigned int spinLockCount = 0;

void TakeSpinLocks() {
  spinLocksMutex.lock();
  for (unsigned int n = 0; n < spinLockCount; ++n) spinLocks[n]->lock();
}

void GiveBackSpinLocks() {
  for (unsigned int n = 0; n < spinLockCount; ++n) spinLocks[n]->unlock();
  spinLocksMutex.unlock();
}

[[maybe_unused]] const int spinLocksAreForked = pthread_atfork(&TakeSpinLocks, &GiveBackSpinLocks, &GiveBackSpinLocks);

template <class Cache>
Cache& TheOnlySpinlocked() {
  static std::atomic<Cache*> only{nullptr};
  if (Cache* const known = only.load(std::memory_order_acquire)) return *known;
  const std::lock_guard<std::mutex> guard(spinLocksMutex);
  if (Cache* const known = only.load(std::memory_order_relaxed)) return *known;
  auto made = std::make_unique<Cache>();
  spinLocks[spinLockCount++] = &made->GetLock();
  only.store(made.get(), std::memory_order_release);
  return *made.release();
}

// Static initialisers run on the main thread, and these before any other thread is there.
bool IsMainThread() {
  static const pthread_t mainThread = pthread_self();
  return pthread_equal(mainThread, pthread_self()) != 0;
}
[[maybe_unused]] const bool mainThreadIsNoted = IsMainThread();

// The caches of one thread other than the main one, each made at its first use.
struct ThreadCaches {
  std::unique_ptr<Bounded<emptyIterSize>> boundedOfEmptyIter;
  std::unique_ptr<Bounded<vectorPtrIterSize>> boundedOfVectorPtrIter;
  std::unique_ptr<Unbounded<emptyIterSize>> unboundedOfEmptyIter;
  std::unique_ptr<Unbounded<vectorPtrIterSize>> unboundedOfVectorPtrIter;
};

[[gnu::tls_model("initial-exec")]] thread_local ThreadCaches* threadCaches = nullptr;

void EndThreadCaches(void* caches) {
  threadCaches = nullptr;
  threadLists = {nullptr, nullptr};
  delete static_cast<ThreadCaches*>(caches);
}

// The caches hang on a POSIX key: its destructor runs when those of all thread_local objects have run, which may still
// hold iterators. A thread that uses a pool after that gets new caches, and the key's destructor is called again.
pthread_key_t CachesKey() {
  static const pthread_key_t key = [] {
    pthread_key_t made = PTHREAD_KEYS_MAX;  // no key: where there are none left, caches outlive their threads
    pthread_key_create(&made, &EndThreadCaches);
    return made;
  }();
  return key;
}
[[maybe_unused]] const pthread_key_t keyIsMade = CachesKey();

ThreadCaches& OfThread() {
  if (!threadCaches) {
    auto made = std::make_unique<ThreadCaches>();
    pthread_setspecific(CachesKey(), made.get());
    threadCaches = made.release();
  }
  return *threadCaches;
}

template <class Cache>
Cache& Made(std::unique_ptr<Cache>& cache) {
  if (!cache) cache = std::make_unique<Cache>();
  return *cache;
}

template <unsigned long N>
QZVirtualCache& BoundedOfThread() {
  if (IsMainThread()) return TheOnly<Bounded<N>>();
  if constexpr (N == emptyIterSize) {
    return Made(OfThread().boundedOfEmptyIter);
  } else {
    return Made(OfThread().boundedOfVectorPtrIter);
  }
}

template <unsigned long N>
Unbounded<N>& FindUnboundedOfThread() {
  if (IsMainThread()) return TheOnly<Unbounded<N>>();
  if constexpr (N == emptyIterSize) {
    return Made(OfThread().unboundedOfEmptyIter);
  } else {
    return Made(OfThread().unboundedOfVectorPtrIter);
  }
}

// From here on the thread's blocks are taken and given back without a call.
template <unsigned long N>
QZVirtualCache& UnboundedOfThread() {
  Unbounded<N>& cache = FindUnboundedOfThread<N>();
  ThreadList<N>() = cache.Head();
  return cache;
}

}  // namespace

std::atomic<unsigned int> memPoolMode{QZMemPoolMode::Default};
static_assert(QZMemPoolMode::Default == threadListMode, "the short way is that of the default mode");

__thread ThreadLists threadLists __attribute__((tls_model("initial-exec"))) = {nullptr, nullptr};

void QZSetMemPoolMode(unsigned int mode) {
  if (modeWasSet.load()) QZThrow.Error(calledTwice);
  memPoolMode.store(mode);
  threadLists = {nullptr, nullptr};
  modeWasSet.store(true);
}

unsigned int QZGetMemPoolMode() { return memPoolMode.load(); }

void QZSetThreadSafe(bool threadSafe) {
  threadSafeFlag.store(threadSafe);
  QZThrow.Warning(setDeprecated, threadSafe ? "true" : "false");
  QZThrow.Warning(threadSafe ? useDefault : useSingleThreaded);
  QZSetMemPoolMode(threadSafe ? QZMemPoolMode::Default : QZMemPoolMode::SingleThreaded | QZMemPoolMode::UnboundedCache);
}

bool QZGetThreadSafe() {
  QZThrow.Warning(getDeprecated);
  QZThrow.Warning(useGetMode);
  return threadSafeFlag.load();
}

template <unsigned long N>
QZVirtualCache* QZMemPool<N>::cachePtr() {
  using namespace QZMemPoolMode;
  const unsigned int mode = memPoolMode.load(std::memory_order_relaxed);
  ThreadList<N>() = nullptr;
  switch (mode) {
    case SingleThreaded | BoundedCache:
      return &TheOnly<Bounded<N>>();
    case Mutexed | BoundedCache:
      return &TheOnly<QZMutexedBoundedCache<N, batch>>();
    case ThreadLocal | BoundedCache:
      return &BoundedOfThread<N>();
    case SingleThreaded | UnboundedCache:
      return &TheOnly<Unbounded<N>>();
    case Mutexed | UnboundedCache:
      return &TheOnly<QZMutexedCache<Inner<N>, QZVirtualCache>>();
    case ThreadLocal | UnboundedCache:
      return &UnboundedOfThread<N>();
    case System:
      return &TheOnly<QZSystemAlloc<N>>();
    case Spinlocked | BoundedCache:
      return &TheOnlySpinlocked<QZSpinlockedBoundedCache<N, batch>>();
    case Spinlocked | UnboundedCache:
      return &TheOnlySpinlocked<QZSpinlockedCache<Inner<N>, QZVirtualCache>>();
    default:
      QZThrow.Error(badMode, mode);
      return nullptr;
  }
}

template class QZMemPool<emptyIterSize>;
template class QZMemPool<vectorPtrIterSize>;

template <std::size_t N>
void* PopPoolBlockByMode() {
  QZVirtualCache* const cache = QZMemPool<N>::cachePtr();
  if (!cache) throw std::bad_alloc();
  return cache->Pop();
}

// Where there is no cache that the block could go to, it is lost: in a bad mode, and in a thread that has no room to
// make its first one.
template <std::size_t N>
void PushPoolBlockByMode(void* block) {
  try {
    if (QZVirtualCache* const cache = QZMemPool<N>::cachePtr()) cache->Push(block);
  } catch (const std::bad_alloc&) {
  }
}

template void* PopPoolBlockByMode<emptyIterSize>();
template void* PopPoolBlockByMode<vectorPtrIterSize>();
template void PushPoolBlockByMode<emptyIterSize>(void* block);
template void PushPoolBlockByMode<vectorPtrIterSize>(void* block);

}  // namespace QZSystem
