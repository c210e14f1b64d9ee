#pragma once

#include <pthread.h>

namespace QZPlatform {

/// A thread that runs the virtual `Run` of an object.
///
///     class Counter : public QZThread {
///       void* Run(void* argument) override { return Count(*static_cast<Job*>(argument)); }
///     };
///     Counter counter;
///     if (!counter.Start(&job)) return false;
///     counter.Join();
///
/// One thread at a time.
class QZThread {
 public:
  /// Creates no thread yet.
  QZThread() = default;
  /// REQUIRES: a thread that was started has been joined.
  virtual ~QZThread();
  QZThread(const QZThread&) = delete;
  QZThread& operator=(const QZThread&) = delete;

  /// What the thread does, with the argument of Start, which may be null. Nobody reads the result. An exception that
  /// leaves it ends the program.
  virtual void* Run(void* argument) = 0;

  /// Starts a thread that calls Run on this object. False, with no thread started, if the system can't make one or one
  /// is running that wasn't joined. The object can be started again after Join.
  [[nodiscard]] bool Start(void* argument = nullptr);

  /// Blocks until Run has returned; everything the thread wrote is then visible here. Does nothing without a thread.
  /// REQUIRES: isn't called by the thread itself.
  void Join();

 private:
  static void* Enter(void* object);

  pthread_t thread{};
  void* runArgument = nullptr;
  bool started = false;
};

/// A condition variable with its own lock.
///
///     condition.Acquire();
///     while (queue.empty()) condition.Wait();
///     Take(queue);
///     condition.Release();
///
/// Safe from any thread.
class QZCondition {
 public:
  QZCondition() = default;
  /// REQUIRES: nobody holds the lock or waits.
  ~QZCondition();
  QZCondition(const QZCondition&) = delete;
  QZCondition& operator=(const QZCondition&) = delete;

  /// Takes the lock; blocks while another thread holds it. REQUIRES: the caller doesn't hold it.
  void Acquire();
  /// Gives the lock back. REQUIRES: the caller holds it.
  void Release();

  /// Gives the lock back and sleeps, in one step, and holds the lock again on return. It may return without a
  /// broadcast, so callers test what they wait for in a loop. REQUIRES: the caller holds the lock.
  void Wait();

  /// Wakes all waiters. REQUIRES: the caller holds the lock.
  void Broadcast();

 private:
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
};

}  // namespace QZPlatform
