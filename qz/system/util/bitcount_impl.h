#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

/// Counting of set bits in blocks of words, by the fastest means that the processor has. Safe from any thread.
namespace QZSystem {

/// The number of set bits of each byte value.
extern const std::array<std::uint8_t, 256> BitCount;

/// What two blocks have set.
struct PairCounts {
  std::uint64_t both = 0;
  std::uint64_t either = 0;
};

/// One way of counting. All give the same results.
struct BitCounter {
  const char* name;
  bool (*isSupported)();
  std::uint64_t (*count)(const std::uint64_t* words, std::size_t size);
  PairCounts (*countPair)(const std::uint64_t* a, const std::uint64_t* b, std::size_t size);
};

/// The fastest first; the last one runs on every processor.
extern const std::array<BitCounter, 3> BitCounters;

extern std::atomic<const BitCounter*> chosenBitCounter;
const BitCounter& ChooseBitCounter();

/// The first that the processor supports.
inline const BitCounter& BestBitCounter() {
  const BitCounter* const chosen = chosenBitCounter.load(std::memory_order_relaxed);
  return chosen != nullptr ? *chosen : ChooseBitCounter();
}

}  // namespace QZSystem
