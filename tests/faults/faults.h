#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <new>
#include <ostream>
#include <string>
#include <tuple>

#include "qz/platform/syscalls_impl.h"

/// What is made to fail: the n-th allocation or call of the system, alone or with all that follow it.
enum class Fails { Allocation, AllocationsFrom, Call, CallsFrom };

/// One passage over a road, on which one fault stands somewhere.
///
///     const bool read = attempt([&] { return record.FromBytes(bytes); });
///     if (read) EXPECT_EQ(record.ToBytes(), bytes);
///     EXPECT_TRUE(record.FromBytes(bytes));  // whatever has happened, the record is still good
///
/// Only what runs inside of the attempts can meet the fault. They may be several; the count goes on from one to the
/// next.
class Attempt {
 public:
  Attempt(Fails what, unsigned long place) : fault(what), nth(place) {}

  /// Runs a part of the road that tells whether it succeeded, and returns that. A part must succeed as long as the
  /// fault hasn't been met; behind it, it may give false, or let std::bad_alloc out where it was an allocation.
  template <class Part>
  bool operator()(Part part);

  /// Whether the fault has been met.
  bool Met() const { return count >= nth && nth != 0; }
  /// Whether the fault stays once it is met, so that an attempt can't mend what it left behind.
  bool IsForGood() const { return fault == Fails::AllocationsFrom || fault == Fails::CallsFrom; }

 private:
  bool OfMemory() const { return fault == Fails::Allocation || fault == Fails::AllocationsFrom; }

  template <class Part>
  bool WithoutMemory(Part part);
  template <class Part>
  bool WithoutSystem(Part part);

  Fails fault;
  unsigned long nth;
  unsigned long count = 0;
};

/// A way through the library, which may be gone any number of times.
struct Road {
  const char* name;
  void (*run)(Attempt& attempt);
};

inline void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }

/// Each road is gone over and over, with the fault one place further on each time, until it doesn't meet it.
class Roads : public testing::TestWithParam<std::tuple<Road, Fails>> {};

/// What is made at the first use of the library in a process. Each passage runs in a process of its own.
class FirstUses : public testing::TestWithParam<std::tuple<Road, Fails>> {};

std::string NameOfCase(const testing::TestParamInfo<std::tuple<Road, Fails>>& info);

/// A name in the folder of temporary files that no other process has, and nobody after the test.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content = {});
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& Path() const { return path; }
  std::string Content() const;

 private:
  std::string path;
};

/// The allocations of this thread, as the global operator new counts and refuses them.
namespace Allocations {

struct Schedule {
  bool active = false;
  unsigned long nth = 0;  // from 1; 0 refuses none
  bool fromThere = false;
  unsigned long count = 0;
};
extern thread_local Schedule schedule;

/// Counts an allocation; true if it is refused.
bool Refused();

}  // namespace Allocations

template <class Part>
bool Attempt::WithoutMemory(Part part) {
  struct Armed {
    Armed(unsigned long nth, bool fromThere, unsigned long count) {
      Allocations::schedule = {true, nth, fromThere, count};
    }
    ~Armed() { Allocations::schedule.active = false; }
  };
  bool done = false;
  try {
    const Armed armed(nth, IsForGood(), count);
    done = part();
  } catch (const std::bad_alloc&) {
    done = false;
  }
  count = Allocations::schedule.count;
  return done;
}

template <class Part>
bool Attempt::WithoutSystem(Part part) {
  namespace System = QZPlatform::SystemCalls;
  const unsigned long left = nth > count ? nth - count : IsForGood() && nth != 0 ? 1 : 0;
  System::ScheduledFault scheduled(System::Call::Any, left, System::Fault::Fail(EIO), IsForGood());
  const bool done = part();
  count += scheduled.Count();
  return done;
}

template <class Part>
bool Attempt::operator()(Part part) {
  const bool done = OfMemory() ? WithoutMemory(part) : WithoutSystem(part);
  EXPECT_TRUE(done || Met()) << "failed without a fault";
  return done;
}
