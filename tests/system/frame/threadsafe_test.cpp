#include "qz/system/frame/threadsafe.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <tuple>
#include <typeinfo>
#include <vector>

#include "qz/system/frame/error.h"
#include "qz/system/frame/iterator.h"
#include "tests/platform/childstatus.h"
#include "tests/system/cli/messages.h"

using namespace QZSystem;
using testing::ExitedWithCode;

namespace {

// What the heap has given, in bytes and blocks; the blocks that are still out; from which block on it refuses.
std::atomic<std::size_t> lastSize{0};
std::atomic<long> allocations{0};
std::atomic<long> live{0};
std::atomic<bool> refuses{false};

void* AllocateOrNull(std::size_t size) {
  void* const block = refuses ? nullptr : std::malloc(size);
  if (!block) return nullptr;
  lastSize = size;
  ++allocations;
  ++live;
  return block;
}

void* Allocate(std::size_t size) {
  if (void* const block = AllocateOrNull(size)) return block;
  throw std::bad_alloc();
}

void Free(void* block) {
  if (block) --live;
  std::free(block);
}

}  // namespace

// Not inlined, so that the compiler takes them for the pair that they are.
[[gnu::noinline]] void* operator new(std::size_t size) { return Allocate(size); }
[[gnu::noinline]] void* operator new[](std::size_t size) { return Allocate(size); }
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return AllocateOrNull(size); }
[[gnu::noinline]] void operator delete(void* block) noexcept { Free(block); }
[[gnu::noinline]] void operator delete[](void* block) noexcept { Free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { Free(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { Free(block); }

namespace {

using Blocks = std::vector<unsigned char*>;

Blocks PopSeveral(QZVirtualCache& cache, int count) {
  Blocks blocks;
  blocks.reserve(static_cast<std::size_t>(count));
  for (int n = 0; n < count; ++n) blocks.push_back(static_cast<unsigned char*>(cache.Pop()));
  return blocks;
}

// Whether each block of `size` bytes begins where the one before it ends.
bool AreInARow(const Blocks& blocks, long size) {
  return std::adjacent_find(blocks.begin(), blocks.end(), [size](auto* a, auto* b) { return b - a != size; }) ==
         blocks.end();
}

// Every cache class, with blocks of 24 bytes in batches of 64.
using Unbounded = QZUnboundedCache<24, 64, QZVirtualCache>;
using Inner = QZUnboundedCache<24, 64, QZNotVirtualCache>;
using Bounded = QZSystem::QZBoundedCache<24, 64, QZVirtualCache>;
using MutexedBounded = QZMutexedBoundedCache<24, 64>;
using Mutexed = QZMutexedCache<Inner, QZVirtualCache>;
using SpinlockedBounded = QZSpinlockedBoundedCache<24, 64>;
using Spinlocked = QZSpinlockedCache<Inner, QZVirtualCache>;
using SystemAlloc = QZSystemAlloc<24>;

template <class Cache>
void CheckBounded() {
  SCOPED_TRACE(typeid(Cache).name());
  Cache cache;
  const Blocks slots = PopSeveral(cache, 64);
  EXPECT_TRUE(AreInARow(slots, 24));
  const long before = live;
  unsigned char* const extra = PopSeveral(cache, 1)[0];
  EXPECT_EQ(live, before + 1);
  cache.Push(slots[5]);
  cache.Push(extra);
  cache.Push(nullptr);
  EXPECT_EQ(live, before) << "a block of the heap goes back to it";
  EXPECT_EQ(cache.Pop(), slots[5]);
}

TEST(MemCache, ABoundedOneKeepsItsOwnBlocks) {
  CheckBounded<Bounded>();
  CheckBounded<MutexedBounded>();
  CheckBounded<SpinlockedBounded>();
}

template <class Cache>
void CheckUnbounded(long size) {
  SCOPED_TRACE(typeid(Cache).name());
  const long before = live;
  {
    Cache cache;
    EXPECT_TRUE(AreInARow(PopSeveral(cache, 64), size));
    EXPECT_EQ(live, before) << "the first batch is in place";
    const Blocks batch = PopSeveral(cache, 64);
    EXPECT_TRUE(AreInARow(batch, size));
    EXPECT_LE(live, before + 3) << "one batch for 64 blocks, its entry, and the list here";
    cache.Push(batch[9]);
    EXPECT_EQ(cache.Pop(), batch[9]);
  }
  EXPECT_EQ(live, before) << "the batches go with the cache, whatever is still out";
}

TEST(MemCache, AnUnboundedOneGrowsByBatches) {
  CheckUnbounded<Unbounded>(24);
  CheckUnbounded<QZUnboundedCache<8, 64, QZVirtualCache>>(8);
  CheckUnbounded<Mutexed>(24);
  CheckUnbounded<Spinlocked>(24);
}

template <class Cache>
void CheckRefusal() {
  SCOPED_TRACE(typeid(Cache).name());
  Cache cache;
  const Blocks slots = PopSeveral(cache, 64);
  void* volatile got = nullptr;  // or the compiler may leave out the whole allocation
  refuses = true;
  EXPECT_THROW(got = cache.Pop(), std::bad_alloc);
  refuses = false;
  EXPECT_EQ(got, nullptr);
  cache.Push(slots[3]);
  EXPECT_EQ(cache.Pop(), slots[3]) << "and no lock is left taken";
  cache.Push(cache.Pop());
}

TEST(MemCache, OneThatGetsNoMemoryStaysAsItWas) {
  CheckRefusal<Bounded>();
  CheckRefusal<Unbounded>();
  CheckRefusal<MutexedBounded>();
  CheckRefusal<Mutexed>();
  CheckRefusal<SpinlockedBounded>();
  CheckRefusal<Spinlocked>();
}

// Takes blocks, marks them, and gives them back: nobody else may have marked one meanwhile.
bool AreMine(QZVirtualCache& cache, unsigned char mark) {
  bool mine = true;
  for (int round = 0; round < 300; ++round) {
    const Blocks blocks = PopSeveral(cache, 1 + round % 40);
    for (unsigned char* block : blocks) std::fill_n(block, 24, mark);
    std::this_thread::yield();
    for (unsigned char* block : blocks) {
      mine = mine && std::all_of(block, block + 24, [mark](unsigned char each) { return each == mark; });
      cache.Push(block);
    }
  }
  return mine;
}

template <class Cache>
void CheckThreads() {
  Cache cache;
  std::atomic<int> sound{0};
  std::vector<std::thread> threads;
  for (unsigned char mark = 1; mark <= 3; ++mark) {
    threads.emplace_back([&, mark] { sound += AreMine(cache, mark) ? 1 : 0; });
  }
  for (std::thread& each : threads) each.join();
  EXPECT_EQ(sound, 3) << typeid(Cache).name();
}

TEST(MemCache, ALockedOneServesSeveralThreads) {
  CheckThreads<MutexedBounded>();
  CheckThreads<Mutexed>();
  CheckThreads<SpinlockedBounded>();
  CheckThreads<Spinlocked>();
  CheckThreads<SystemAlloc>();
}

// The modes, the class of their cache, and whether each thread has one.
const std::tuple<unsigned int, const std::type_info&, bool> modes[] = {
    {36, typeid(SpinlockedBounded), false}, {40, typeid(Spinlocked), false}, {4, typeid(Bounded), false},
    {5, typeid(MutexedBounded), false},     {8, typeid(Unbounded), false},   {9, typeid(Mutexed), false},
    {16, typeid(SystemAlloc), false},       {10, typeid(Unbounded), true},   {6, typeid(Bounded), true}};

// The mode is set once in a process, so each has a child.
TEST(MemPool, EachModeHasItsCache) {
  for (const auto& [mode, type, isOfThread] : modes) {
    const int status = StatusOfChild([&, mode = mode, &type = type, isOfThread = isOfThread] {
      QZSetMemPoolMode(mode);
      QZVirtualCache* const cache = QZMemPool<24>::cachePtr();
      if (!cache || typeid(*cache) != type || QZMemPool<24>::cachePtr() != cache) return 1;
      QZVirtualCache *other = nullptr, *again = nullptr;
      std::thread([&] { other = QZMemPool<24>::cachePtr(), again = QZMemPool<24>::cachePtr(); }).join();
      if (!other || again != other || (other != cache) != isOfThread) return 2;
      return QZGetMemPoolMode() == mode ? 0 : 3;
    });
    EXPECT_EQ(status, 0) << "mode " << mode;
  }
}

TEST(MemPool, TheMainThreadSharesTheCacheOfTheProcess) {
  const int status = StatusOfChild([] {
    const Messages messages;
    const auto cacheOf = [](unsigned int mode) { return QZSetMemPoolMode(mode), QZMemPool<8>::cachePtr(); };
    QZVirtualCache* const bounded = cacheOf(6);
    QZVirtualCache* const unbounded = cacheOf(10);
    return cacheOf(4) == bounded && cacheOf(8) == unbounded && bounded != unbounded ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
}

// Iterators of every mode, made and deleted by all threads, while the process forks over and over.
TEST(MemPool, AForkFindsEachPoolUnlocked) {
  for (const auto& [mode, type, isOfThread] : modes) {
    if (mode == 4 || mode == 8) continue;
    const int status = StatusOfChild([mode = mode] {
      QZSetMemPoolMode(mode);
      std::atomic<bool> stop{false};
      std::thread busy([&stop] {
        while (!stop) delete new QZVectorPtrIter<int>;
      });
      int failed = 0;
      for (int n = 0; n < 30; ++n) {
        failed += StatusOfChild([] {
                    alarm(10);
                    delete new QZVectorPtrIter<int>;
                    return 0;
                  }) != 0;
      }
      stop = true;
      busy.join();
      return failed;
    });
    EXPECT_EQ(status, 0) << "mode " << mode;
  }
}

// What is said while `work` runs, in a process of its own; its status is the mode.
template <class Work>
[[noreturn]] void Tell(const Work& work) {
  Messages messages;
  work();
  std::fputs(messages.Take().c_str(), stderr);
  _exit(static_cast<int>(QZGetMemPoolMode()));
}

TEST(MemPoolDeathTest, ASecondModeIsAnError) {
  const std::string twice = ": QZSetMemPoolMode called twice! Should only be called once per program\n$";
  EXPECT_EXIT((QZSetMemPoolMode(8), QZSetMemPoolMode(10)), ExitedWithCode(1), "^Fatal" + twice);
  EXPECT_EXIT(Tell([] { QZSetMemPoolMode(16), QZSetMemPoolMode(5); }), ExitedWithCode(5), "^Warning" + twice);
}

TEST(MemPoolDeathTest, ABadModeIsFoundByTheFirstIterator) {
  for (const unsigned int mode : {0U, 1U, 2U, 3U, 7U, 11U, 12U, 18U, 26U, 32U, 37U, 44U, 0xFFFFFFFFU}) {
    const std::string unknown = ": Unrecognized QZMemPoolMode \\(" + std::to_string(mode) + "\\)\n";
    const auto work = [mode] {
      auto* const before = new QZEmptyIter<int>;
      QZSetMemPoolMode(mode);
      EXPECT_THROW(delete new QZEmptyIter<int>, std::bad_alloc);
      delete before;
    };
    EXPECT_EXIT(Tell(work), ExitedWithCode(static_cast<int>(mode & 0xFF)), "^Warning" + unknown);
    EXPECT_EXIT((QZSetMemPoolMode(mode), delete new QZVectorPtrIter<int>), ExitedWithCode(1), "^Fatal" + unknown);
  }
}

TEST(MemPoolDeathTest, TheDeprecatedCallsSayWhatToUse) {
  const auto call = [](bool safe) {
    Tell([safe] {
      QZSetThreadSafe(safe);
      EXPECT_EQ(QZGetThreadSafe(), safe);
    });
  };
  const std::string get =
      "Warning: QZGetThreadSafe\\(\\) is deprecated as of Tessaly 1.7.0\n"
      "Warning: Use QZGetMemPoolMode\\(\\) instead\n$";
  EXPECT_EXIT(call(true), ExitedWithCode(10),
              "^Warning: QZSetThreadSafe\\(true\\) is deprecated as of Tessaly 1.7.0\n"
              "Warning: Use QZSetMemPoolMode\\(QZMemPoolMode::Default\\) instead\n" +
                  get);
  EXPECT_EXIT(call(false), ExitedWithCode(8),
              "^Warning: QZSetThreadSafe\\(false\\) is deprecated as of Tessaly 1.7.0\n"
              "Warning: Use QZSetMemPoolMode\\(QZMemPoolMode::SingleThreaded\\|QZMemPoolMode::UnboundedCache\\) "
              "instead\n" +
                  get);
}

TEST(MemPool, BothPoolsServeIteratorsOfEveryType) {
  const auto* const empty = new QZEmptyIter<int>;
  delete empty;
  const std::unique_ptr<QZIterBase<std::string>> emptyOfText(new QZEmptyIter<std::string>);
  EXPECT_EQ(static_cast<const void*>(emptyOfText.get()), empty);

  const auto* const vector = new QZVectorPtrIter<int>;
  delete vector;
  void* const block = QZMemPool<24>::cachePtr()->Pop();
  EXPECT_EQ(block, vector);
  QZMemPool<24>::cachePtr()->Push(block);
  void* const small = PopEmptyIter();
  PushEmptyIter(small);
  EXPECT_EQ(QZMemPool<8>::cachePtr()->Pop(), small);
  PushEmptyIter(small);
}

TEST(MemPool, AWarmOneNeedsNoHeap) {
  static std::unique_ptr<QZIterBase<int>> held[63];  // the static object below holds one
  const std::vector<int*> numbers;
  for (int round = 0; round < 2; ++round) {
    const long before = allocations;
    for (auto& each : held) each.reset(new QZVectorPtrIter<int>(numbers));
    for (auto& each : held) each.reset(new QZEmptyIter<int>);
    for (auto& each : held) each.reset();
    if (round > 0) {
      EXPECT_EQ(allocations, before);
    }
  }
}

struct LargerIter : QZVectorPtrIter<int> {
  long more[4] = {1, 2, 3, 4};
};

TEST(MemPool, ALargerClassTakesTheHeap) {
  const long before = live;
  const std::unique_ptr<QZIterBase<int>> larger(new LargerIter);
  EXPECT_EQ(live, before + 1);
  EXPECT_GE(lastSize, sizeof(LargerIter));
}

// An iterator that lives to the end of its thread, and whose owner makes more at that time.
struct LateIterators {
  LateIterators() : held(new QZVectorPtrIter<int>) {}
  ~LateIterators() {
    if (QZGetMemPoolMode() == QZMemPoolMode::Default) {
      delete new QZEmptyIter<int>;
      delete new QZVectorPtrIter<int>;
    } else {
      static_cast<void>(held.release());  // the end of a test of another mode
    }
  }
  std::unique_ptr<QZIterBase<int>> held;
};

void UseInKeyDestructor(void* left) {
  delete new QZVectorPtrIter<int>;
  auto* const rounds = static_cast<int*>(left);
  if (--*rounds > 0) pthread_setspecific(static_cast<pthread_key_t>(rounds[1]), left);
}

TEST(MemPool, TheEndOfAThreadMayStillUseItAndFreesItsBlocks) {
  pthread_key_t key = 0;
  ASSERT_EQ(pthread_key_create(&key, &UseInKeyDestructor), 0);
  int rounds[] = {3, static_cast<int>(key)};
  const auto work = [&] {
    static thread_local LateIterators first;
    static_cast<void>(first);
    pthread_setspecific(key, rounds);
    std::vector<std::unique_ptr<QZIterBase<int>>> more;  // than the first batch
    for (int n = 0; n < 1000; ++n) more.emplace_back(new QZVectorPtrIter<int>);
    for (int n = 0; n < 1000; ++n) more.emplace_back(new QZEmptyIter<int>);
  };
  std::thread(work).join();
  EXPECT_EQ(rounds[0], 0);
  rounds[0] = 3;
  const long before = live;
  std::thread(work).join();
  EXPECT_EQ(live, before);
  pthread_key_delete(key);
}

// Static objects that use the pool from before the first test to behind the last one.
const LateIterators ofStaticLife __attribute__((init_priority(101)));

}  // namespace
