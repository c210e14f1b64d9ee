#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

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
  bool operator()(const std::function<bool()>& part);

  /// Whether the fault has been met.
  bool Met() const { return count >= nth && nth != 0; }
  /// Whether the fault stays once it is met, so that an attempt can't mend what it left behind.
  bool IsForGood() const { return fault == Fails::AllocationsFrom || fault == Fails::CallsFrom; }

 private:
  bool WithoutMemory(const std::function<bool()>& part);
  bool WithoutSystem(const std::function<bool()>& part);

  Fails fault;
  unsigned long nth;
  unsigned long count = 0;
};

/// What a road is tested for, added up.
constexpr unsigned allocations = 1;
constexpr unsigned calls = 2;     // of the system
constexpr unsigned firstUse = 4;  // each passage is in a process of its own: what the library makes at its first use

/// A way through the library, which may be gone any number of times. Each road that is made becomes tests: it is gone
/// over and over, with the fault one place further on each time, until it doesn't meet it.
///
///     const Road textIsCopied("TextIsCopied", allocations, [](Attempt& attempt) { ... });
struct Road {
  Road(const char* name, unsigned testedFor, const std::function<void(Attempt& attempt)>& run);

  /// A road that makes a text, each time the same one.
  Road(const char* name, unsigned testedFor, std::string (*make)());
};
