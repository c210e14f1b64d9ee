#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace QZPlatform {

class qzistream;
class qzostream;

/// Packs values for small binary forms: numbers little-endian, a string as its length in 4 bytes and its bytes, a
/// vector as its count in 4 bytes and its elements. Memory and stream forms have the same bytes.
///
///     std::vector<std::string> names = ...;
///     std::vector<unsigned char> bytes(QZ_io_binary_size(names));
///     QZ_io_write_binary(bytes.data(), names);
///     QZ_io_read_binary(bytes.data(), names);      // the same names again
///
/// Each function returns the bytes that it used. A write to a stream that fails, or a read from one that ends, stops
/// there, which shows in the number. The memory forms know no bounds: REQUIRES: the block is as long as the value
/// needs. A type takes part by five overloads: size, stream write, stream read, memory write, memory read.
///
/// Safe from any thread.

/// Packs `count` elements of `width` bytes each.
unsigned long QZ_io_write_binary(unsigned char* out, const unsigned char* elements, unsigned long width,
                                 unsigned int count);
/// Unpacks `count` elements of `width` bytes each.
unsigned long QZ_io_read_binary(const unsigned char* in, unsigned char* elements, unsigned long width,
                                unsigned int count);
/// Packs `count` elements of `width` bytes each to a stream.
unsigned long QZ_io_write_binary(qzostream& out, const unsigned char* elements, unsigned long width,
                                 unsigned int count);
/// Unpacks `count` elements of `width` bytes each from a stream. Elements behind the end of the data stay untouched.
unsigned long QZ_io_read_binary(qzistream& in, unsigned char* elements, unsigned long width, unsigned int count);

/// The bytes of a string's packed form. REQUIRES: fewer than 2^32 bytes, in this and the next four.
unsigned long QZ_io_binary_size(const std::string& value);
unsigned long QZ_io_write_binary(qzostream& out, const std::string& value);
/// Memory grows with the bytes that arrive and not with the length that is claimed. After an early end the string holds
/// what arrived.
unsigned long QZ_io_read_binary(qzistream& in, std::string& value);
unsigned long QZ_io_write_binary(unsigned char* out, const std::string& value);
unsigned long QZ_io_read_binary(const unsigned char* in, std::string& value);

/// The bytes of a vector's packed form. REQUIRES: fewer than 2^32 elements, in this and the next four.
template <class T>
unsigned long QZ_io_binary_size(const std::vector<T>& values);
template <class T>
unsigned long QZ_io_write_binary(qzostream& out, const std::vector<T>& values);
/// Clears the vector first. It grows with the elements that arrive; the one in which the data end is stored as it came.
template <class T>
unsigned long QZ_io_read_binary(qzistream& in, std::vector<T>& values);
template <class T>
unsigned long QZ_io_write_binary(unsigned char* out, const std::vector<T>& values);
/// Clears the vector and sizes it to the stored count first.
template <class T>
unsigned long QZ_io_read_binary(const unsigned char* in, std::vector<T>& values);

/// An element count or a length as 4 bytes. A stream that ends early gives the count 0.
unsigned long QZ_io_write_count(qzostream& out, std::size_t count);
unsigned long QZ_io_read_count(qzistream& in, std::uint32_t& count);
unsigned long QZ_io_write_count(unsigned char* out, std::size_t count);
unsigned long QZ_io_read_count(const unsigned char* in, std::uint32_t& count);

template <class T>
unsigned long QZ_io_binary_size(const std::vector<T>& values) {
  unsigned long size = 4;
  for (const T& value : values) size += QZ_io_binary_size(value);
  return size;
}

template <class T>
unsigned long QZ_io_write_binary(qzostream& out, const std::vector<T>& values) {
  unsigned long used = QZ_io_write_count(out, values.size());
  if (used != 4) return used;
  for (const T& value : values) {
    const unsigned long written = QZ_io_write_binary(out, value);
    used += written;
    if (written != QZ_io_binary_size(value)) break;
  }
  return used;
}

template <class T>
unsigned long QZ_io_read_binary(qzistream& in, std::vector<T>& values) {
  values.clear();
  std::uint32_t count = 0;
  unsigned long used = QZ_io_read_count(in, count);
  while (values.size() < count) {
    T value{};
    const unsigned long read = QZ_io_read_binary(in, value);
    if (read == 0) break;
    used += read;
    values.push_back(std::move(value));
  }
  return used;
}

template <class T>
unsigned long QZ_io_write_binary(unsigned char* out, const std::vector<T>& values) {
  unsigned long used = QZ_io_write_count(out, values.size());
  for (const T& value : values) used += QZ_io_write_binary(out + used, value);
  return used;
}

template <class T>
unsigned long QZ_io_read_binary(const unsigned char* in, std::vector<T>& values) {
  values.clear();
  std::uint32_t count = 0;
  unsigned long used = QZ_io_read_count(in, count);
  values.resize(count);
  for (T& value : values) used += QZ_io_read_binary(in + used, value);
  return used;
}

}  // namespace QZPlatform
