#pragma once

#include <cassert>
#include <cstdint>
#include <string>
#include <utility>

/// Lists of strings in memory blocks whose writer may have had the other byte order. A block is a header byte, then a
/// 32-bit count, then for each string its length in 32 bits and its bytes. The header byte has the form in its low five
/// bits (1 is a list with a 32-bit count), and bit 6 is set if the numbers must be swapped.
///
///     const unsigned char head = *bytes++;
///     std::vector<std::string> names;
///     unsigned int status = 0;
///     unsigned long remaining = size - 1;
///     QZBinaryDump::QZPushBackSTLRead(bytes, head >> 7 & 1, head >> 6 & 1, head >> 5 & 1, head & 31U, names, status,
///                                     remaining);
///
/// Safe from any thread.
namespace QZPlatform::QZBinaryDump {

/// Status: the header has another form than 1.
inline constexpr unsigned int UnknownForm = 1;
/// Status: the block ends inside a number or a string.
inline constexpr unsigned int CutShort = 5;

/// Takes a 32-bit number off `bytes`; false, with nothing taken, if fewer than 4 bytes remain.
[[nodiscard]] bool TakeNumber(const unsigned char*& bytes, bool swapped, unsigned long& remaining,
                              std::uint32_t& number);

/// Replaces the content of `out` by the strings of a block, each by push_back.
///
/// `bytes` points behind the header byte, which is handed over in its parts; `bit7` and `bit5` have no effect on
/// strings. `remaining` is the number of bytes there, and goes down by those used; the result is the bytes used.
/// Another form than 1 sets `status` to UnknownForm and reads nothing. Where fewer bytes remain than a number or a
/// string needs, `status` becomes CutShort and reading stops: at the count with `out` empty, in a string with an empty
/// string stored in its place. Memory follows the bytes that are there, not the count that is claimed. REQUIRES:
/// `status` is 0.
template <class Container>
unsigned long QZPushBackSTLRead(const unsigned char* bytes, [[maybe_unused]] bool bit7, bool swapped,
                                [[maybe_unused]] bool bit5, unsigned int form, Container& out, unsigned int& status,
                                unsigned long& remaining) {
  assert(status == 0);
  if (form != 1) {
    status = UnknownForm;
    return 0;
  }
  out.clear();
  const unsigned char* const start = bytes;
  std::uint32_t count = 0;
  if (!TakeNumber(bytes, swapped, remaining, count)) status = CutShort;
  for (; status == 0 && count > 0; --count) {
    std::uint32_t length = 0;
    std::string text;
    if (!TakeNumber(bytes, swapped, remaining, length) || length > remaining) {
      status = CutShort;
    } else {
      text.assign(bytes, bytes + length);
      bytes += length;
      remaining -= length;
    }
    out.push_back(std::move(text));
  }
  return static_cast<unsigned long>(bytes - start);
}

}  // namespace QZPlatform::QZBinaryDump
