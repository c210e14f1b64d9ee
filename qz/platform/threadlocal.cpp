#include "qz/platform/threadlocal.h"

#include <limits.h>
#include <pthread.h>

#include <atomic>
#include <map>
#include <thread>
#include <utility>

#include "qz/platform/lock_impl.h"

// Two maps hold each value, and neither keeps the other alive. A value sits in a slot, a shared pointer that is itself
// shared: by the object's map, from thread to slot, and by the thread's map, from object to slot. An object that goes
// empties its slots, which frees the values of all threads; a thread that ends takes its slots out of the objects that
// are still there. The thread's map knows an object's map by a weak reference alone.

// GCC doesn't know clang's thread-safety attributes.
#pragma GCC diagnostic ignored "-Wattributes"

namespace QZPlatform {

namespace {

using Slot = std::shared_ptr<std::shared_ptr<void>>;

}  // namespace

class InterThreadMap {
 public:
  ~InterThreadMap() {
    for (auto& [thread, slot] : slots) slot->reset();
  }

  // An entry that is there already is of a thread that a fork left behind and whose identity came up again.
  void Insert(std::thread::id thread, Slot slot) {
    const ForkSafeLock lock(mutex);
    slots[thread].swap(slot);
  }

  // The value lives on in the thread's own map: its destructor, which may do anything, doesn't run under the lock.
  void Erase(std::thread::id thread) {
    const ForkSafeLock lock(mutex);
    slots.erase(thread);
  }

 private:
  ForkSafeMutex mutex{LockRank::Platform};
  std::map<std::thread::id, Slot> slots __attribute__((guarded_by(mutex)));
};

namespace {

class IntraThreadMap {
 public:
  IntraThreadMap() = default;
  IntraThreadMap(const IntraThreadMap&) = delete;
  IntraThreadMap& operator=(const IntraThreadMap&) = delete;

  ~IntraThreadMap() {
    for (auto& [owner, slot] : slots) {
      if (const std::shared_ptr<InterThreadMap> object = owner.lock()) object->Erase(std::this_thread::get_id());
    }
  }

  Slot Find(const std::shared_ptr<InterThreadMap>& object) {
    Slot& slot = slots[object];
    if (!slot) slot = std::make_shared<std::shared_ptr<void>>();
    return slot;
  }

  // An object that is gone has emptied its slots, or is about to; asking for the object doesn't race with that.
  void Sweep() {
    for (auto entry = slots.begin(); entry != slots.end();) {
      entry = entry->first.expired() ? slots.erase(entry) : std::next(entry);
    }
  }

 private:
  std::map<std::weak_ptr<InterThreadMap>, Slot, std::owner_less<>> slots;
};

thread_local IntraThreadMap* threadMap = nullptr;

void EndThreadMap(void* map) {
  ThreadValueCache::Clear();
  threadMap = nullptr;
  delete static_cast<IntraThreadMap*>(map);
}

// The thread's map hangs on a POSIX key and not on a thread_local object: a thread_local object of the main thread is
// destroyed before the static objects, whose destructors still want the main thread's values; and where a destructor at
// the end of a thread looks up a value again, the key's destructor is called again.
IntraThreadMap& ThreadMap() {
  static const pthread_key_t key = [] {
    pthread_key_t made = PTHREAD_KEYS_MAX;  // no key: where there are none left, maps outlive their threads
    pthread_key_create(&made, &EndThreadMap);
    return made;
  }();
  if (threadMap == nullptr) {
    auto made = std::make_unique<IntraThreadMap>();
    pthread_setspecific(key, made.get());
    threadMap = made.release();
  }
  return *threadMap;
}

std::uint64_t NextId() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

}  // namespace

ThreadValues::ThreadValues() : id(NextId()), threads(std::make_shared<InterThreadMap>()) {}

ThreadValues::~ThreadValues() = default;

void* ThreadValues::FindOrMake(std::shared_ptr<void> (*make)()) const {
  const Slot slot = ThreadMap().Find(threads);
  if (!*slot) {
    std::shared_ptr<void> value = make();  // may look up other values, and this one too
    if (!*slot) *slot = std::move(value);
    ThreadMap().Sweep();
    threads->Insert(std::this_thread::get_id(), slot);
  }
  ThreadValueCache::Set(id, slot->get());
  return slot->get();
}

}  // namespace QZPlatform
