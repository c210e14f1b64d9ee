#include "qz/platform/lock_impl.h"

#include <immintrin.h>
#include <pthread.h>

namespace QZPlatform {

namespace {

constexpr int Ranks = 3;
constexpr int Looks = 200;

// Constant-initialised and never destroyed: locks are made in static initialisers and used in static destructors.
std::mutex listMutex;
ForkSafeMutex* first[Ranks];

}  // namespace

// All mutexes, one list for each rank, the newest first. Before a fork they are taken rank by rank, in the order in
// which threads nest them, so that taking them all can't deadlock with a thread that holds one and wants another.
struct ForkSafeMutexes {
  static ForkSafeMutex*& First(LockRank rank) { return first[static_cast<int>(rank)]; }

  static void Add(ForkSafeMutex& mutex) {
    static const int registered = pthread_atfork(&TakeAll, &GiveBackAll, &GiveBackAll);
    static_cast<void>(registered);
    std::lock_guard<std::mutex> lock(listMutex);
    ForkSafeMutex*& head = First(mutex.rank);
    mutex.next = head;
    if (head != nullptr) head->previous = &mutex;
    head = &mutex;
  }

  static void Remove(ForkSafeMutex& mutex) {
    std::lock_guard<std::mutex> lock(listMutex);
    if (mutex.next != nullptr) mutex.next->previous = mutex.previous;
    (mutex.previous != nullptr ? mutex.previous->next : First(mutex.rank)) = mutex.next;
  }

  static void TakeAll() {
    listMutex.lock();
    for (ForkSafeMutex* mutex : first) {
      for (; mutex != nullptr; mutex = mutex->next) mutex->mutex.lock();
    }
  }

  static void GiveBackAll() {
    for (ForkSafeMutex* mutex : first) {
      for (; mutex != nullptr; mutex = mutex->next) mutex->mutex.unlock();
    }
    listMutex.unlock();
  }
};

ForkSafeMutex::ForkSafeMutex(LockRank mutexRank) : rank(mutexRank) { ForkSafeMutexes::Add(*this); }

// What these mutexes guard is short, one write at most, and going to sleep costs several times as much: the lock is
// nearly always free again after a few looks.
void ForkSafeMutex::LockPatiently() {
  for (int look = 0; look < Looks; ++look) {
    _mm_pause();
    if (mutex.try_lock()) return;
  }
  mutex.lock();
}

ForkSafeMutex::~ForkSafeMutex() { ForkSafeMutexes::Remove(*this); }

}  // namespace QZPlatform
