#include "qz/platform/clock.h"

#include "qz/platform/syscalls_impl.h"

namespace QZPlatform {

bool QZCurrentTime(std::tm* now) {
  const std::time_t seconds = SystemCalls::Time();
  std::tm local{};
  if (seconds == -1 || SystemCalls::LocalTime(&seconds, &local) == nullptr) return false;
  *now = local;
  return true;
}

void QZGetTimeOfDay(timeval* now) {
  if (SystemCalls::GetTimeOfDay(now) != 0) *now = timeval{};
}

}  // namespace QZPlatform
