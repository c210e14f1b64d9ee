#include "qz/math/random.h"

#include "qz/platform/syscalls_impl.h"

namespace QZSystem {

QZRandom::QZRandom(bool useTime) : seed(0) {
  if (useTime) TimeSeed();
}

void QZRandom::TimeSeed() { seed = static_cast<std::uint32_t>(QZPlatform::SystemCalls::Time()); }

// The low bits of a congruence modulo 2^32 have short periods, so each step gives its upper ones only: 11, 10 and 10.
int QZRandom::NextInt() {
  const auto step = [this] { return seed = seed * 1103515245U + 12345U; };
  const std::uint32_t first = step();
  const std::uint32_t second = step();
  const std::uint32_t third = step();
  return static_cast<int>((((first << 4) & 0x7FF00000U) | ((second >> 6) & 0xFFC00U)) ^ ((third >> 16) & 0x3FFU));
}

float QZRandom::NextFloat() { return static_cast<float>(NextInt() * 0x1p-31); }

}  // namespace QZSystem
