#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "qz/math/rand.h"

/// The steps from the random bytes of the system to an identifier. Safe from any thread.
namespace QZSystem {

/// The sum of the bytes, each shifted by 8 bits more than the one before; a byte of 0x80 or above counts as negative.
unsigned long SeedOfBytes(const std::array<signed char, 4>& bytes);

/// The next word of the stream after the one more step that `getUnitDouble` makes, which completes the tempering of
/// the published generator.
std::uint64_t NextWord(QZMath::MtRng<QZMath::Mt64Traits>& engine);

/// 16 lower-case digits.
std::string HexOfWord(std::uint64_t word);

}  // namespace QZSystem
