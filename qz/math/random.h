#pragma once

#include <cstdint>

namespace QZSystem {

/// A tiny generator on its own: three steps of a linear congruence a number. Good enough to scatter test data; for
/// statistics take an engine and a distribution of QZMath.
///
///     QZRandom random(false);                       // the same stream on every run
///     const int die = 1 + random.NextInt() % 6;
///
/// One thread at a time.
class QZRandom {
 public:
  /// Seeds from the clock, in seconds, or with 0.
  explicit QZRandom(bool useTime);

  void Seed(unsigned int newSeed) { seed = newSeed; }
  /// The state, which is the seed of the numbers to come.
  [[nodiscard]] unsigned int GetSeed() const { return seed; }
  /// Seeds from the clock, in seconds.
  void TimeSeed();

  /// The next number from 0 to 2147483647, both included.
  int NextInt();
  /// The next number from 0 to 1; 1 itself comes of rounding to float only.
  float NextFloat();

 private:
  std::uint32_t seed;
};

}  // namespace QZSystem
