#pragma once

#include "qz/system/qzb/qzb.h"

namespace QZSystem {

/// The messages of a length that can't be read.
void SendLengthEnd();
void SendLengthCorrupt();
void SendTagCorrupt(unsigned long length);

/// Reads a length from anything whose `get` gives the next byte, or -1 where none is left. False, after the message,
/// with a length of 0.
template <class Source>
bool ReadLength(Source& in, unsigned long largest, unsigned long& length) {
  constexpr unsigned int lastShift = 63;
  unsigned long value = 0;
  for (unsigned int shift = 0;; shift += 7) {
    const int byte = in.get();
    if (byte < 0) {
      SendLengthEnd();
      length = 0;
      return false;
    }
    value |= static_cast<unsigned long>(byte & 0x7F) << shift;  // of the tenth byte only bit 0 has a place left
    if (byte & 0x80) break;
    if (shift == lastShift) {
      value = ~0UL;
      largest = 0;
      break;
    }
  }
  length = value <= largest ? value : 0;
  if (value > largest) SendLengthCorrupt();
  return value <= largest;
}

/// Puts a length at `to`, which has room for 10 bytes, and returns the place behind it.
inline char* PutLength(char* to, unsigned long length) {
  for (; length >= 0x80; length >>= 7) *to++ = static_cast<char>(length & 0x7F);
  *to++ = static_cast<char>(length | 0x80);
  return to;
}

}  // namespace QZSystem
