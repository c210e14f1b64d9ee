#include "qz/platform/machine.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <thread>
#include <vector>

#include "qz/platform/syscalls_impl.h"

using namespace QZPlatform;

namespace {

// Runs `work` on a thread with a stack of that many bytes.
template <class Work>
void OnStackOf(std::size_t size, Work work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, size);
  pthread_t thread{};
  const auto run = [](void* argument) -> void* {
    (*static_cast<Work*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

struct Seen {
  std::size_t left;
  std::uint64_t threshold;
};

// The thresholds while the stack is used up until `least` bytes are left, about a kilobyte at each call.
[[gnu::noinline]] void Descend(const char* bottom, std::size_t least, std::vector<Seen>& seen) {
  volatile char block[1024];
  block[0] = 1;
  const auto left = static_cast<std::size_t>(static_cast<const char*>(__builtin_frame_address(0)) - bottom);
  seen.push_back({left, QZGetAllocaThreshold()});
  if (left > least) Descend(bottom, least, seen);
  block[1023] = block[0];
}

std::uint32_t Marker(const void* payload) {
  std::uint32_t marker = 0;
  std::memcpy(&marker, static_cast<const char*>(payload) - 16, sizeof marker);
  return marker;
}

}  // namespace

TEST(QZGetNumProcessors, CountsThoseTheProcessMayUse) {
  std::thread([] {
    cpu_set_t all;
    ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
    EXPECT_EQ(QZGetNumProcessors(), static_cast<unsigned int>(CPU_COUNT(&all)));
    cpu_set_t one;
    CPU_ZERO(&one);
    std::size_t first = 0;
    while (!CPU_ISSET(first, &all)) ++first;
    CPU_SET(first, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(QZGetNumProcessors(), 1U);
  }).join();
  const SystemCalls::ScheduledFault fault(SystemCalls::Call::Machine, 1, SystemCalls::Fault::Fail(EINVAL), true);
  EXPECT_EQ(QZGetNumProcessors(), 1U);
}

TEST(QZGetAllocaThreshold, FallsWithTheStackThatIsLeft) {
  constexpr std::size_t KiB = 1024;
  std::vector<Seen> seen;
  OnStackOf(1024 * KiB, [&] {
    void* bottom = nullptr;
    std::size_t size = 0;
    ASSERT_EQ(SystemCalls::StackBounds(&bottom, &size), 0);
    Descend(static_cast<const char*>(bottom), 50 * KiB, seen);
  });
  EXPECT_EQ(seen.front().threshold, 32768U);
  std::uint64_t before = 32768;
  for (const Seen& each : seen) {
    const std::uint64_t least = each.left > 200 * KiB ? 32768 : each.left > 70 * KiB ? 1 : 0;
    const std::uint64_t most = each.left < 64 * KiB ? 0 : each.left < 90 * KiB ? 32767 : 32768;
    ASSERT_GE(each.threshold, least) << each.left;
    ASSERT_LE(each.threshold, std::min(most, before)) << each.left;
    before = each.threshold;
  }
}

TEST(QZGetAllocaThreshold, IsZeroOnAStackWithUnknownBounds) {
  static std::uint64_t seen;
  std::vector<char> room(std::size_t{256} * 1024);
  stack_t other{};
  other.ss_sp = room.data();
  other.ss_size = room.size();
  stack_t former{};
  ASSERT_EQ(sigaltstack(&other, &former), 0);
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { seen = QZGetAllocaThreshold(); };
  action.sa_flags = SA_ONSTACK;
  ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
  seen = QZGetAllocaThreshold();
  EXPECT_GT(seen, 0U);
  std::raise(SIGUSR1);
  sigaction(SIGUSR1, &before, nullptr);
  sigaltstack(&former, nullptr);
  EXPECT_EQ(seen, 0U);

  std::thread([] {
    const SystemCalls::ScheduledFault fault(SystemCalls::Call::Machine, 1, SystemCalls::Fault::Fail(ENOENT));
    EXPECT_EQ(QZGetAllocaThreshold(), 0U);
  }).join();
}

TEST(QZMallocaPtr, ASmallBlockStaysOnTheStackAndALargeOneComesFromTheHeap) {
  const struct {
    std::uint64_t payload;
    std::uint32_t marker;
  } cases[] = {{0, 0xCCCC}, {1, 0xCCCC}, {32752, 0xCCCC}, {32753, 0xDDDD}, {1000000, 0xDDDD}};
  OnStackOf(std::size_t{1024} * 1024, [&] {
    for (const auto& each : cases) {
      const std::uint64_t size = QZMallocaSize(each.payload);
      void* const onStack = QZMallocaFits(size) ? alloca(size) : nullptr;
      const QZMallocaPtr<unsigned char> scratch(size, onStack);
      EXPECT_EQ(Marker(scratch.Get()), each.marker) << each.payload;
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.Get()) % 16, 0U) << each.payload;
      std::memset(scratch.Get(), 0x5A, each.payload);
    }
  });
}

TEST(QZMallocaPtr, ASizeThatOverflowsIsAFailedAllocation) {
  constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(QZMallocaSize(Most - 16), Most);
  for (const std::uint64_t payload : {Most - 15, Most}) {
    EXPECT_THROW(static_cast<void>(QZMallocaSize(payload)), std::bad_alloc) << payload;
  }
}
