#pragma once

#include <mutex>

namespace QZPlatform {

/// The order in which locks nest: a thread that holds a lock takes only locks of a later rank.
enum class LockRank {
  Service,   ///< registries and factories of the upper folders, which may report while they are locked
  Report,    ///< the printing of messages
  Platform,  ///< per-thread values, buffers, versions: nothing else is taken under them
};

// GCC doesn't know clang's thread-safety attributes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"

/// A mutex that survives fork(): the forking thread takes it first and gives it back in both processes, so the child
/// finds it free and what it guards whole.
///
///     ForkSafeMutex mutex{LockRank::Service};
///     ...
///     ForkSafeLock lock(mutex);
///
/// Safe from any thread. None is made or destroyed under another one, and nobody forks while holding one.
class __attribute__((capability("mutex"))) ForkSafeMutex {
 public:
  explicit ForkSafeMutex(LockRank rank);
  ~ForkSafeMutex();
  ForkSafeMutex(const ForkSafeMutex&) = delete;
  ForkSafeMutex& operator=(const ForkSafeMutex&) = delete;

  void lock() __attribute__((acquire_capability())) {
    if (!mutex.try_lock()) LockPatiently();
  }
  void unlock() __attribute__((release_capability())) { mutex.unlock(); }

 private:
  friend struct ForkSafeMutexes;

  void LockPatiently();

  std::mutex mutex;
  LockRank rank;
  ForkSafeMutex* previous = nullptr;
  ForkSafeMutex* next = nullptr;
};

/// Holds a ForkSafeMutex for a scope.
class __attribute__((scoped_lockable)) ForkSafeLock {
 public:
  explicit ForkSafeLock(ForkSafeMutex& locked) __attribute__((acquire_capability(locked))) : held(locked) {
    held.lock();
  }
  ~ForkSafeLock() __attribute__((release_capability())) { held.unlock(); }
  ForkSafeLock(const ForkSafeLock&) = delete;
  ForkSafeLock& operator=(const ForkSafeLock&) = delete;

 private:
  ForkSafeMutex& held;
};

#pragma GCC diagnostic pop

}  // namespace QZPlatform
