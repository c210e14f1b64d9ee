#include "qz/system/progress/elapsed_impl.h"

#include "qz/platform/syscalls_impl.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

namespace {

// Processor time overflows 32 bits, the width that it has on some machines, after as many seconds.
constexpr std::time_t longestProcessorTime = 2147;
constexpr float clockTicks = 1e6F;

}  // namespace

float SecondsSince(std::clock_t clock, std::time_t time) {
  const std::time_t seconds = SystemCalls::Time() - time;
  return seconds > longestProcessorTime ? static_cast<float>(seconds)
                                        : static_cast<float>(SystemCalls::ProcessorTime() - clock) / clockTicks;
}

}  // namespace QZSystem
