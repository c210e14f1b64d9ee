#include "qz/platform/machine.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <limits>
#include <new>
#include <thread>
#include <vector>

#include "qz/platform/syscalls_impl.h"

using namespace QZPlatform;
using SystemCalls::Call;
using SystemCalls::Fault;
using SystemCalls::ScheduledFault;

namespace {

constexpr std::size_t KiB = 1024;

using Seen = std::vector<std::pair<std::size_t, std::uint64_t>>;

// What is left and the thresholds while the stack is used up until `least` bytes are left, about a kilobyte at each
// call.
[[gnu::noinline]] void Descend(const char* bottom, std::size_t least, Seen& seen) {
  volatile char block[1024];
  block[0] = 1;
  const auto left = static_cast<std::size_t>(static_cast<const char*>(__builtin_frame_address(0)) - bottom);
  seen.emplace_back(left, QZGetAllocaThreshold());
  if (left > least) Descend(bottom, least, seen);
  block[1023] = block[0];
}

}  // namespace

TEST(QZGetNumProcessors, CountsThoseTheProcessMayUse) {
  std::thread([] {
    cpu_set_t set;
    ASSERT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
    EXPECT_EQ(QZGetNumProcessors(), static_cast<unsigned int>(CPU_COUNT(&set)));
    std::size_t first = 0;
    while (!CPU_ISSET(first, &set)) ++first;
    CPU_ZERO(&set);
    CPU_SET(first, &set);
    ASSERT_EQ(sched_setaffinity(0, sizeof set, &set), 0);
    EXPECT_EQ(QZGetNumProcessors(), 1U);
  }).join();
  const ScheduledFault fault(Call::Machine, 1, Fault::Fail(EINVAL), true);
  EXPECT_EQ(QZGetNumProcessors(), 1U);
}

TEST(QZGetAllocaThreshold, FallsWithTheStackThatIsLeft) {
  Seen seen;
  std::thread([&] {
    void* bottom = nullptr;
    std::size_t size = 0;
    ASSERT_EQ(SystemCalls::StackBounds(&bottom, &size), 0);
    Descend(static_cast<const char*>(bottom), 50 * KiB, seen);
  }).join();
  EXPECT_EQ(seen.front().second, 32768U);
  std::uint64_t before = 32768;
  for (const auto& [left, threshold] : seen) {
    const std::uint64_t least = left > 200 * KiB ? 32768 : left > 70 * KiB ? 1 : 0;
    const std::uint64_t most = left < 64 * KiB ? 0 : left < 90 * KiB ? 32767 : 32768;
    ASSERT_GE(threshold, least) << left;
    ASSERT_LE(threshold, std::min(most, before)) << left;
    before = threshold;
  }
}

TEST(QZGetAllocaThreshold, IsZeroOnAStackWithUnknownBounds) {
  static std::uint64_t seen = QZGetAllocaThreshold();
  EXPECT_GT(seen, 0U);
  std::vector<char> room(256 * KiB);
  stack_t former{}, other{};
  other.ss_sp = room.data();
  other.ss_size = room.size();
  ASSERT_EQ(sigaltstack(&other, &former), 0);
  struct sigaction action {
  }, before{};
  action.sa_handler = [](int) { seen = QZGetAllocaThreshold(); };
  action.sa_flags = SA_ONSTACK;
  ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
  std::raise(SIGUSR1);
  sigaction(SIGUSR1, &before, nullptr);
  sigaltstack(&former, nullptr);
  EXPECT_EQ(seen, 0U);

  std::thread([] {
    const ScheduledFault fault(Call::Machine, 1, Fault::Fail(ENOENT));
    EXPECT_EQ(QZGetAllocaThreshold(), 0U);
  }).join();
}

TEST(QZMallocaPtr, ASmallBlockStaysOnTheStackAndALargeOneComesFromTheHeap) {
  const std::pair<std::uint64_t, std::uint32_t> cases[] = {
      {0, 0xCCCC}, {1, 0xCCCC}, {32752, 0xCCCC}, {32753, 0xDDDD}, {1000000, 0xDDDD}};
  for (const auto& [payload, expected] : cases) {
    const std::uint64_t size = QZMallocaSize(payload);
    void* const onStack = QZMallocaFits(size) ? alloca(size) : nullptr;
    const QZMallocaPtr<unsigned char> scratch(size, onStack);
    std::uint32_t marker = 0;
    std::memcpy(&marker, scratch.Get() - 16, sizeof marker);
    EXPECT_EQ(marker, expected) << payload;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(scratch.Get()) % 16, 0U) << payload;
    std::memset(scratch.Get(), 0x5A, payload);
  }
}

TEST(QZMallocaPtr, ASizeThatOverflowsIsAFailedAllocation) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(QZMallocaSize(most - 16), most);
  EXPECT_THROW(static_cast<void>(QZMallocaSize(most - 15)), std::bad_alloc);
}
