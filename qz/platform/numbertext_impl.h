#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// What the sources of `numbertext.h` share: digits, words of eight digits, powers of ten. Not for use elsewhere. Safe
/// from any thread.
namespace QZPlatform::NumberText {

__extension__ using Wide = unsigned __int128;

// 10^0 to 10^19, all that 64 bits hold.
inline constexpr auto powersOfTen = [] {
  std::array<std::uint64_t, 20> powers{};
  std::uint64_t power = 1;
  for (auto& p : powers) {
    p = power;
    power *= 10;
  }
  return powers;
}();

// The value of a decimal digit; 10 and above for any other byte.
inline unsigned decimalDigit(char c) { return static_cast<unsigned>(static_cast<unsigned char>(c)) - '0'; }

// The lower form of a letter. Other bytes come out as no letter.
inline char lower(char c) { return static_cast<char>(c | 0x20); }

// The bytes of a word in lower case that `text` begins with, letters in either case.
inline std::size_t commonLength(std::string_view text, std::string_view word) {
  const auto same = [](char c, char w) { return c == w || (w >= 'a' && lower(c) == w); };
  std::size_t n = 0;
  while (n < text.size() && n < word.size() && same(text[n], word[n])) ++n;
  return n;
}

template <class Word>
Word load(const void* p) {
  Word word = 0;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// Up to eight digits at once: a word of the next eight bytes less '0', the first in the lowest byte, bytes behind the
// last of `count` being no digits. Loads that overlap save a branch for each byte.
inline std::uint64_t digitWord(const char* p, std::size_t count) {
  const auto at = [p](std::size_t i) {
    return static_cast<std::uint64_t>(static_cast<unsigned char>(p[i])) << (8 * i);
  };
  std::uint64_t bytes = 0;
  if (count >= 4) {
    const std::size_t second = (count < 8 ? count : 8) - 4;
    bytes = static_cast<std::uint64_t>(load<std::uint32_t>(p + second)) << (8 * second) | load<std::uint32_t>(p);
  } else if (count > 0) {
    bytes = at(0) | at(count / 2) | at(count - 1);
  }
  return bytes ^ 0x3030303030303030;
}

// A bit for each byte of a word that is no digit, exact up to the first of them.
inline std::uint64_t nonDigits(std::uint64_t word) { return ((word + 0x7676767676767676) | word) & 0x8080808080808080; }

// The number of digits that a word begins with, 0 to 8.
inline unsigned countDigits(std::uint64_t word) {
  const std::uint64_t others = nonDigits(word);
  return others == 0 ? 8 : static_cast<unsigned>(__builtin_ctzll(others)) / 8;
}

// The first 1 to 8 digits of a word moved to its end, with zeros before them.
inline std::uint64_t lastDigits(std::uint64_t word, unsigned count) { return word << (8 * (8 - count)); }

// The number that eight digits make: by pairs of digits, then fours, then all.
inline std::uint64_t packDigits(std::uint64_t word) {
  constexpr std::uint64_t mask = 0x000000FF000000FF;
  word = word * 10 + (word >> 8);
  return ((word & mask) * 0x000F424000000064 + (word >> 16 & mask) * 0x0000271000000001) >> 32;
}

}  // namespace QZPlatform::NumberText
