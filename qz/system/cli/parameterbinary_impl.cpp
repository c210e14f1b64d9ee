// The binary form of a parameter's converted lists. The values stand first, the defaults behind them, nothing is
// aligned, and numbers are in the order of the machine. A list of plain values:
//
//     header   1 byte    bits 0 to 4: the form, 1; bit 6: the numbers are in the opposite order
//     count    4 bytes   n
//     n times  the element: 4 bytes of a float, an int or an unsigned int, 8 of a double, 1 of a bool (0 is false),
//              or a length of 4 bytes and that many bytes of a string
//
// A list of file contents is a count of 4 bytes and n times a length of 4 bytes and the bytes, without a header.
#include "qz/system/cli/parameterbinary_impl.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "qz/platform/binarydump.h"
#include "qz/platform/binaryvalue.h"

namespace QZSystem {

namespace {

constexpr unsigned int listForm = 1;
constexpr unsigned int formBits = 0x1F;
constexpr unsigned long numberWidth = 4;
constexpr unsigned long headWidth = 1 + numberWidth;

// A list takes at most 2^32 - 1 bytes: this many are left for the elements, and this many stand behind the header byte.
constexpr unsigned long elementCeiling = (1UL << 32) - 6;
constexpr unsigned long bodyCeiling = (1UL << 32) - 2;
constexpr unsigned long contentsCeiling = std::numeric_limits<std::uint32_t>::max();

template <class T>
constexpr unsigned long elementWidth = std::is_same_v<T, bool> ? 1 : sizeof(T);

template <class T>
unsigned long writeElement(unsigned char* bytes, const T& value) {
  std::memcpy(bytes, &value, sizeof value);
  return sizeof value;
}

unsigned long writeElement(unsigned char* bytes, const bool& value) {
  *bytes = value ? 1 : 0;
  return 1;
}

unsigned long writeElement(unsigned char* bytes, const std::string& value) { return QZ_io_write_binary(bytes, value); }

template <class T>
void readElement(const unsigned char* bytes, bool swapped, T& value) {
  unsigned char room[sizeof(T)];
  std::memcpy(room, bytes, sizeof room);
  if (swapped) std::reverse(room, room + sizeof room);
  std::memcpy(&value, room, sizeof room);
}

void readElement(const unsigned char* bytes, bool, bool& value) { value = *bytes != 0; }

// How many elements of a list its form has room for, and the bytes that they take.
struct Fitting {
  unsigned long count;
  unsigned long bytes;
};

template <class T>
Fitting fitting(const std::deque<T>& list) {
  const unsigned long count = std::min(list.size(), elementCeiling / elementWidth<T>);
  return {count, count * elementWidth<T>};
}

Fitting fitting(const std::deque<std::string>& list) {
  Fitting fits = {0, 0};
  for (const std::string& value : list) {
    const unsigned long left = elementCeiling - fits.bytes;
    if (left < numberWidth || value.size() > left - numberWidth) break;
    fits.bytes += numberWidth + value.size();
    ++fits.count;
  }
  return fits;
}

// What stands behind the header byte of a list; false if the bytes end before what is claimed.
template <class T>
bool readBody(ParameterBytes& in, unsigned char header, std::deque<T>& list) {
  const bool swapped = (header & 0x40U) != 0;
  list.clear();
  std::uint32_t count = 0;
  if (!QZBinaryDump::TakeNumber(in.at, swapped, in.left, count)) return false;
  const unsigned long there = std::min<unsigned long>(count, in.left / elementWidth<T>);
  for (unsigned long i = 0; i < there; ++i) {
    readElement(in.at, swapped, list.emplace_back());
    in.Skip(elementWidth<T>);
  }
  return there == count;
}

bool readBody(ParameterBytes& in, unsigned char header, std::deque<std::string>& list) {
  unsigned int status = 0;
  unsigned long left = std::min(in.left, bodyCeiling);
  in.Skip(QZBinaryDump::QZPushBackSTLRead(in.at, (header & 0x80U) != 0, (header & 0x40U) != 0, (header & 0x20U) != 0,
                                          header & formBits, list, status, left));
  return status == 0;
}

enum class Found { list, otherForm, cutShort };

template <class T>
Found readList(ParameterBytes& in, std::deque<T>& list) {
  if (in.left == 0) return Found::cutShort;
  const unsigned char header = *in.at;
  in.Skip(1);
  if ((header & formBits) != listForm) return Found::otherForm;
  return readBody(in, header, list) ? Found::list : Found::cutShort;
}

std::string contentsOf(const qzisstream& stream) {
  std::string contents;
  stream.getbuffer(contents);
  if (contents.size() > contentsCeiling) contents.resize(contentsCeiling);
  return contents;
}

bool readContents(ParameterBytes& in, std::deque<qzisstream>& list) {
  list.clear();
  std::uint32_t count = 0;
  if (!QZBinaryDump::TakeNumber(in.at, false, in.left, count)) return false;
  for (; count > 0; --count) {
    std::uint32_t length = 0;
    if (!QZBinaryDump::TakeNumber(in.at, false, in.left, length) || length > in.left) return false;
    list.emplace_back().set(in.at, length, true);
    in.Skip(length);
  }
  return true;
}

}  // namespace

template <class T>
unsigned long ParameterListSize(const std::deque<T>& list) {
  return headWidth + fitting(list).bytes;
}

template <class T>
unsigned long WriteParameterList(unsigned char* bytes, const std::deque<T>& list) {
  const unsigned long count = fitting(list).count;
  bytes[0] = listForm;
  writeElement(bytes + 1, static_cast<std::uint32_t>(count));
  unsigned long used = headWidth;
  auto at = list.begin();
  for (unsigned long i = 0; i < count; ++i) used += writeElement(bytes + used, *at++);
  return used;
}

template <class T>
bool ReadParameterLists(ParameterBytes& in, std::deque<T>& values, std::deque<T>& defaults) {
  const Found first = readList(in, values);
  if (first != Found::list) return first == Found::otherForm;
  return readList(in, defaults) != Found::cutShort;
}

unsigned long ParameterContentsSize(const std::deque<qzisstream>& list) {
  unsigned long size = numberWidth;
  for (const qzisstream& stream : list) size += QZ_io_binary_size(contentsOf(stream));
  return size;
}

unsigned long WriteParameterContents(unsigned char* bytes, const std::deque<qzisstream>& list) {
  unsigned long used = QZ_io_write_count(bytes, list.size());
  for (const qzisstream& stream : list) used += QZ_io_write_binary(bytes + used, contentsOf(stream));
  return used;
}

bool ReadParameterContents(ParameterBytes& in, std::deque<qzisstream>& values, std::deque<qzisstream>& defaults) {
  return readContents(in, values) && readContents(in, defaults);
}

// T by T, what the parameters use.
template unsigned long ParameterListSize(const std::deque<float>&);
template unsigned long ParameterListSize(const std::deque<double>&);
template unsigned long ParameterListSize(const std::deque<int>&);
template unsigned long ParameterListSize(const std::deque<unsigned int>&);
template unsigned long ParameterListSize(const std::deque<bool>&);
template unsigned long ParameterListSize(const std::deque<std::string>&);
template unsigned long WriteParameterList(unsigned char*, const std::deque<float>&);
template unsigned long WriteParameterList(unsigned char*, const std::deque<double>&);
template unsigned long WriteParameterList(unsigned char*, const std::deque<int>&);
template unsigned long WriteParameterList(unsigned char*, const std::deque<unsigned int>&);
template unsigned long WriteParameterList(unsigned char*, const std::deque<bool>&);
template unsigned long WriteParameterList(unsigned char*, const std::deque<std::string>&);
template bool ReadParameterLists(ParameterBytes&, std::deque<float>&, std::deque<float>&);
template bool ReadParameterLists(ParameterBytes&, std::deque<double>&, std::deque<double>&);
template bool ReadParameterLists(ParameterBytes&, std::deque<int>&, std::deque<int>&);
template bool ReadParameterLists(ParameterBytes&, std::deque<unsigned int>&, std::deque<unsigned int>&);
template bool ReadParameterLists(ParameterBytes&, std::deque<bool>&, std::deque<bool>&);
template bool ReadParameterLists(ParameterBytes&, std::deque<std::string>&, std::deque<std::string>&);

}  // namespace QZSystem
