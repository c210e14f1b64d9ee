#pragma once

#include <cstring>
#include <string_view>

#include "qz/system/qzb/qzbtags_impl.h"

namespace QZSystem {

/// The largest length that takes one byte.
inline constexpr unsigned long longestShortName = 127;

/// A length below 128.
constexpr char ShortLength(unsigned long length) { return static_cast<char>(length | 0x80); }

/// Whether a name stands in a tag as a zero byte, a length of one byte and itself: nearly every name does.
inline bool IsShortName(std::string_view name) {
  return name.size() - 1 < longestShortName && !MayHaveCode(name.front());
}

/// Copies bytes and gives the place behind them. Names and texts are short: two copies that may overlap cost less than
/// a call.
[[gnu::always_inline]] inline char* PutBytes(char* to, const char* bytes, unsigned long size) {
  if (size > 32) {
    std::memcpy(to, bytes, size);
  } else if (size >= 16) {
    std::memcpy(to, bytes, 16);
    std::memcpy(to + size - 16, bytes + size - 16, 16);
  } else if (size >= 8) {
    std::memcpy(to, bytes, 8);
    std::memcpy(to + size - 8, bytes + size - 8, 8);
  } else if (size >= 4) {
    std::memcpy(to, bytes, 4);
    std::memcpy(to + size - 4, bytes + size - 4, 4);
  } else {
    for (unsigned long i = 0; i < size; ++i) to[i] = bytes[i];
  }
  return to + size;
}

/// Puts the tag of a short name, up to 129 bytes, and gives the place behind it. REQUIRES: IsShortName(name).
[[gnu::always_inline]] inline char* PutShortName(char* to, std::string_view name) {
  to[0] = 0;
  to[1] = ShortLength(name.size());
  return PutBytes(to + 2, name.data(), name.size());
}

}  // namespace QZSystem
