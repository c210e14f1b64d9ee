#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tools/common/toolerror.h"

namespace QZTools {

/// Work on the pieces of a stream by several threads, with the results in the order of the stream.
///
///     OrderedWork<Piece> work(4, [&](Piece& p) { return source.Take(p); }, [&](unsigned worker, Piece& p) { ... });
///     while (Piece* piece = work.Next()) write(*piece);
///
/// Each thread takes the next piece, one at a time, and works on it. Pieces are used again, twice as many as there are
/// threads and two more, so that memory doesn't grow with the stream. One thread at a time.
template <class Piece>
class OrderedWork {
 public:
  /// `read` fills the next piece and gives false at the end; what it throws comes out of Next in its turn. It is called
  /// by one thread at a time. `work` gets the number of its thread, from 0, and must not throw.
  OrderedWork(unsigned int threads, std::function<bool(Piece&)> read, std::function<void(unsigned int, Piece&)> work)
      : readPiece(std::move(read)), workOn(std::move(work)), slots(2 * threads + 2) {
    // As many threads as there can be, and one at least.
    try {
      for (unsigned int i = 0; i < threads; ++i) workers.emplace_back([this, i] { run(i); });
    } catch (const std::system_error&) {
      if (workers.empty()) throw ToolError("No thread can be started; give -threads 1");
    }
  }

  /// Waits until the pieces that are being worked on are done; the others are left.
  ~OrderedWork() {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      stop = true;
    }
    changed.notify_all();
    for (std::thread& each : workers) each.join();
  }
  OrderedWork(const OrderedWork&) = delete;
  OrderedWork& operator=(const OrderedWork&) = delete;

  /// The next piece of the stream once the work on it is done, good until the next call; null at the end.
  Piece* Next() {
    std::unique_lock<std::mutex> lock(mutex);
    if (handedOut > 0) {
      slot(handedOut - 1).state = State::Free;
      changed.notify_all();
    }
    changed.wait(lock, [this] { return slot(handedOut).state == State::Done || (ended && handedOut == taken); });
    if (slot(handedOut).state == State::Done) return &slot(handedOut++).piece;
    if (failure) std::rethrow_exception(failure);
    return nullptr;
  }

 private:
  enum class State { Free, Busy, Done };
  struct Slot {
    Piece piece;
    State state = State::Free;
  };

  Slot& slot(unsigned long number) { return slots[number % slots.size()]; }

  void run(unsigned int worker) {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
      changed.wait(lock, [this] { return stop || ended || (!reading && slot(taken).state == State::Free); });
      if (stop || ended) return;
      Slot& mine = slot(taken);
      reading = true;
      lock.unlock();
      std::exception_ptr thrown;
      bool any = false;
      try {
        any = readPiece(mine.piece);
      } catch (...) {
        thrown = std::current_exception();
      }
      lock.lock();
      reading = false;
      if (any) {
        mine.state = State::Busy;
        ++taken;
      } else {
        ended = true;
        failure = thrown;
      }
      changed.notify_all();
      if (!any) return;
      lock.unlock();
      workOn(worker, mine.piece);
      lock.lock();
      mine.state = State::Done;
      changed.notify_all();
    }
  }

  std::function<bool(Piece&)> readPiece;
  std::function<void(unsigned int, Piece&)> workOn;
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Slot> slots;
  // Pieces that were read and that were handed out, counted from the beginning of the stream.
  unsigned long taken = 0;
  unsigned long handedOut = 0;
  bool reading = false;
  bool ended = false;
  bool stop = false;
  std::exception_ptr failure;
  std::vector<std::thread> workers;
};

}  // namespace QZTools
