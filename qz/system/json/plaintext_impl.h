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
  const auto find = [&](const char* from) {
    std::uint64_t word;
    std::memcpy(&word, from, sizeof word);
    return controls(word) | zeros(word ^ kOnes * '"') | zeros(word ^ kOnes * '\\');
  };
  const bool isLong = end - at >= 8;
  for (; end - at >= 8; at += 8) {
    const std::uint64_t found = find(at);
    if (found != 0) return at + __builtin_ctzll(found) / 8;
  }
  if (isLong) {
    // The last eight bytes, of which the first have been looked at.
    const std::uint64_t found = find(end - 8);
    return found == 0 ? end : end - 8 + __builtin_ctzll(found) / 8;
  }
  while (at != end && static_cast<unsigned char>(*at) >= 0x20 && *at != '"' && *at != '\\') ++at;
  return at;
}

}  // namespace QZSystem::JSONImpl
