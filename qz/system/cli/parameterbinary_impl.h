#pragma once

#include <deque>
#include <string>

#include "qz/platform/memorystream.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// The bytes that a reader of parameter lists may look at, and how many of them it has used. One thread at a time.
class ParameterBytes {
 public:
  ParameterBytes(const unsigned char* first, unsigned long count) : at(first), left(count), start(first) {}

  unsigned long Used() const { return static_cast<unsigned long>(at - start); }
  /// REQUIRES: count is not above `left`.
  void Skip(unsigned long count) {
    at += count;
    left -= count;
  }

  const unsigned char* at;
  unsigned long left;

 private:
  const unsigned char* start;
};

/// The bytes of a list, and the write, which returns them. What is too much for the form of a list is left out of it.
/// REQUIRES: room for that many bytes. T is one of float, double, int, unsigned int, bool and std::string.
template <class T>
unsigned long ParameterListSize(const std::deque<T>& list);
template <class T>
unsigned long WriteParameterList(unsigned char* bytes, const std::deque<T>& list);

/// Replaces the values and then the defaults by the lists in the bytes. A list of another form ends the reading behind
/// its first byte, and what it would have replaced stays. False if the bytes end before what they claim to hold; what
/// was read before stays.
template <class T>
bool ReadParameterLists(ParameterBytes& in, std::deque<T>& values, std::deque<T>& defaults);

/// The same for file contents, which have a form of their own.
unsigned long ParameterContentsSize(const std::deque<qzisstream>& list);
unsigned long WriteParameterContents(unsigned char* bytes, const std::deque<qzisstream>& list);
bool ReadParameterContents(ParameterBytes& in, std::deque<qzisstream>& values, std::deque<qzisstream>& defaults);

}  // namespace QZSystem
