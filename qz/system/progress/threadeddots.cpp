#include "qz/system/progress/threadeddots.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <list>
#include <thread>

#include "qz/platform/lock_impl.h"
#include "qz/platform/machine.h"
#include "qz/platform/thread.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/theonly_impl.h"
#include "qz/system/progress/boundedbuffer.h"
#include "qz/system/progress/dots.h"

namespace QZSystem {

namespace {

constexpr const char* AfterTotal = "Attempting to Update a QZThreadedDots after Total already called.";
constexpr const char* StepOfZero = "Invalid step size of 0 for QZThreadedDots::Update";
constexpr const char* FailedToUpdate = "Failed to Update a QZThreadedDots";

using StepQueue = QZProtectedBuffer<QZBoundedBuffer<unsigned int>>;

class QZDotsThread : public QZThread {
 public:
  QZDotsThread(QZDots& shown, StepQueue& steps) : dots(&shown), queue(&steps) {}

  void* Run(void*) override {
    for (unsigned int step = queue->Take(); step != StepQueue::null; step = queue->Take()) dots->Update(step);
    return nullptr;
  }

  [[nodiscard]] bool IsJoined() const { return joined.load(); }
  void SetJoined() { joined.store(true); }

 private:
  QZDots* dots;
  StepQueue* queue;
  std::atomic<bool> joined{false};
};

}  // namespace

// Only what is due for a dot goes through the queue: a count that prints nothing needn't wake anybody. All items are
// counted in one number. Of the updates exactly one takes it past each multiple of the small step, and that one hands
// the multiple on; what is left at the end is handed on then, and makes no dot. So the dots that are printed, and when,
// are those of a thread that is handed each update.
struct QZThreadedDots::Impl {
  static constexpr std::uint64_t closed = std::uint64_t{1} << 63;
  static constexpr std::uint64_t largestStep = 0xFFFFFFFF;

  Impl(unsigned int bigstep, unsigned int itemsPerDot, const char* name, unsigned int processors)
      : dots(bigstep, itemsPerDot, name, "processed"),
        queue(2UL * processors, processors),
        thread(dots, queue),
        smallstep(bigstep == 0 ? 0 : itemsPerDot) {}

  // False if no more is counted.
  bool Count(unsigned int step) {
    const std::uint64_t before = counted.fetch_add(step);
    if ((before & closed) != 0) return false;
    if (smallstep == 0) return true;
    const std::uint64_t sum = before % smallstep + step;
    if (sum >= smallstep) HandOn(sum / smallstep * smallstep, step < smallstep);
    return true;
  }

  // Where not every update makes a dot, the next one may be a long time off, and this one shouldn't wait for it.
  void HandOn(std::uint64_t items, bool urgent) {
    for (std::uint64_t rest = items; rest > 0;) {
      const std::uint64_t piece = std::min(rest, largestStep);
      static_cast<void>(queue.Put(static_cast<unsigned int>(piece), urgent));
      rest -= piece;
    }
    handedOn.fetch_add(items);
  }

  // What is counted is shown before the thread ends. An update that has counted may still be about to hand on.
  void End() {
    if (thread.IsJoined()) return;
    const std::uint64_t total = counted.fetch_or(closed);
    if ((total & closed) == 0) {
      const std::uint64_t left = smallstep == 0 ? total : total % smallstep;
      while (handedOn.load() != total - left && smallstep != 0) std::this_thread::yield();
      if (left % (largestStep + 1) != 0) static_cast<void>(queue.Put(static_cast<unsigned int>(left)));
    }
    queue.Finish();
    thread.Join();
    thread.SetJoined();
  }

  QZDots dots;
  StepQueue queue;
  QZDotsThread thread;
  unsigned int smallstep;  // 0 if no dot is ever due
  std::atomic<std::uint64_t> handedOn{0};
  alignas(64) std::atomic<std::uint64_t> counted{0};
};

// The dots whose threads run. A fork leaves the threads behind: in the child these dots have ended, and as neither a
// thread that isn't there can be joined nor a condition be destroyed that it waits for, the child keeps them for good.
struct RunningDots {
  using Impl = QZThreadedDots::Impl;

  RunningDots() {
    pthread_atfork(nullptr, nullptr, [] { TheOnly<RunningDots>().EndInChild(); });
  }

  void Add(Impl* impl) {
    const ForkSafeLock lock(mutex);
    running.push_back(impl);
  }

  // False if the object was left behind.
  bool Remove(const Impl* impl) {
    const ForkSafeLock lock(mutex);
    const auto found = std::find(running.begin(), running.end(), impl);
    if (found == running.end()) return false;
    running.erase(found);
    return true;
  }

  void EndInChild() {
    for (Impl* impl : running) impl->thread.SetJoined();
    leftBehind.splice(leftBehind.end(), running);
  }

  ForkSafeMutex mutex{LockRank::Platform};
  std::list<Impl*> running;
  std::list<Impl*> leftBehind;
};

QZThreadedDots::QZThreadedDots(unsigned int bigstep, unsigned int smallstep, const char* name)
    : impl(new Impl(bigstep, smallstep, name, QZGetNumProcessors())) {
  TheOnly<RunningDots>().Add(impl.get());
  if (!impl->thread.Start()) impl->counted.store(Impl::closed);
}

QZThreadedDots::~QZThreadedDots() {
  impl->End();
  if (!TheOnly<RunningDots>().Remove(impl.get())) static_cast<void>(impl.release());
}

void QZThreadedDots::Update(unsigned int step) {
  if (impl->thread.IsJoined()) {
    QZThrow.Error(AfterTotal);
  } else if (step == 0) {
    QZThrow.Error(StepOfZero);
  } else if (!impl->Count(step)) {
    QZThrow.Error(FailedToUpdate);
  }
}

void QZThreadedDots::Total() {
  impl->End();
  impl->dots.Total();
}

}  // namespace QZSystem
