#include "qz/platform/syscalls_impl.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

namespace {

using namespace QZPlatform;
using SystemCalls::Call;
using SystemCalls::Fault;
using SystemCalls::ScheduledFault;

TEST(SystemCalls, AnInterruptedCallIsRepeatedButNotAClose) {
  const ScheduledFault opens(Call::Open, 1, Fault::Interrupt());
  const int descriptor = SystemCalls::Open("/dev/null", 0);
  EXPECT_GE(descriptor, 0);
  EXPECT_EQ(opens.Count(), 2U);
  const ScheduledFault closes(Call::Close, 1, Fault::Interrupt());
  EXPECT_EQ(SystemCalls::Close(descriptor), 0);
  EXPECT_EQ(closes.Count(), 1U);
  ::close(descriptor);
}

TEST(SystemCalls, CallsThatReturnTheirErrorFailInTheirWay) {
  const ScheduledFault fault(Call::Any, 1, Fault::Fail(EAGAIN), true);
  pthread_t thread = {};
  EXPECT_EQ(SystemCalls::CreateThread(&thread, nullptr, nullptr, nullptr), EAGAIN);
  void* lowest = nullptr;
  std::size_t size = 0;
  EXPECT_EQ(SystemCalls::StackBounds(&lowest, &size), EAGAIN);
  EXPECT_EQ(SystemCalls::Processors(), 0U);
  EXPECT_FALSE(SystemCalls::IsTerminal(0));
  EXPECT_EQ(SystemCalls::TerminalColumns(0), 0U);
}

}  // namespace
