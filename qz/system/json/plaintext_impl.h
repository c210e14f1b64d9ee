#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "qz/system/frame/names.h"

namespace QZSystem::JSONImpl {

/// The first byte that doesn't stand for itself in a JSON string, which is a quote, a backslash or a control character;
/// `end` when there is none. Eight bytes are looked at in one step.
inline const char* FindSpecial(const char* at, const char* end) {
  constexpr std::uint64_t kOnes = 0x0101010101010101, kHighs = 0x8080808080808080;
  // In each of these the lowest byte that comes out with its high bit set is one that fits; those above it may be
  // wrong.
  const auto zeros = [](std::uint64_t word) { return (word - kOnes) & ~word & kHighs; };
  const auto controls = [](std::uint64_t word) { return (word - kOnes * 0x20) & ~word & kHighs; };
  for (; end - at >= 8; at += 8) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    const std::uint64_t found = controls(word) | zeros(word ^ kOnes * '"') | zeros(word ^ kOnes * '\\');
    if (found != 0) return at + __builtin_ctzll(found) / 8;
  }
  while (at != end && static_cast<unsigned char>(*at) >= 0x20 && *at != '"' && *at != '\\') ++at;
  return at;
}

}  // namespace QZSystem::JSONImpl
