#include "qz/platform/binaryvalue.h"

#include <cassert>
#include <cstring>
#include <limits>

#include "qz/platform/stream.h"

namespace QZPlatform {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "elements lie in memory as they are stored");

namespace {

constexpr unsigned long CountSize = 4;

std::uint32_t StoredCount(std::size_t count) {
  assert(count <= std::numeric_limits<std::uint32_t>::max());
  return static_cast<std::uint32_t>(count);
}

}  // namespace

unsigned long QZ_io_write_binary(unsigned char* out, const unsigned char* elements, unsigned long width,
                                 unsigned int count) {
  const unsigned long size = width * count;
  if (size != 0) std::memcpy(out, elements, size);
  return size;
}

unsigned long QZ_io_read_binary(const unsigned char* in, unsigned char* elements, unsigned long width,
                                unsigned int count) {
  return QZ_io_write_binary(elements, in, width, count);
}

unsigned long QZ_io_write_binary(qzostream& out, const unsigned char* elements, unsigned long width,
                                 unsigned int count) {
  return out.write(elements, width * count);
}

unsigned long QZ_io_read_binary(qzistream& in, unsigned char* elements, unsigned long width, unsigned int count) {
  return in.read(elements, width * count);
}

unsigned long QZ_io_write_count(unsigned char* out, std::size_t count) {
  const std::uint32_t stored = StoredCount(count);
  std::memcpy(out, &stored, CountSize);
  return CountSize;
}

unsigned long QZ_io_read_count(const unsigned char* in, std::uint32_t& count) {
  std::memcpy(&count, in, CountSize);
  return CountSize;
}

unsigned long QZ_io_write_count(qzostream& out, std::size_t count) {
  unsigned char bytes[CountSize];
  QZ_io_write_count(bytes, count);
  return out.write(bytes, CountSize);
}

unsigned long QZ_io_read_count(qzistream& in, std::uint32_t& count) {
  unsigned char bytes[CountSize];
  count = 0;
  const unsigned long used = in.read(bytes, CountSize);
  if (used == CountSize) QZ_io_read_count(bytes, count);
  return used;
}

unsigned long QZ_io_binary_size(const std::string& value) { return CountSize + value.size(); }

unsigned long QZ_io_write_binary(unsigned char* out, const std::string& value) {
  QZ_io_write_count(out, value.size());
  if (!value.empty()) std::memcpy(out + CountSize, value.data(), value.size());
  return CountSize + value.size();
}

unsigned long QZ_io_read_binary(const unsigned char* in, std::string& value) {
  std::uint32_t length = 0;
  QZ_io_read_count(in, length);
  value.assign(in + CountSize, in + CountSize + length);
  return CountSize + length;
}

unsigned long QZ_io_write_binary(qzostream& out, const std::string& value) {
  const unsigned long used = QZ_io_write_count(out, value.size());
  return used == CountSize ? used + out.write(value) : used;
}

unsigned long QZ_io_read_binary(qzistream& in, std::string& value) {
  value.clear();
  std::uint32_t length = 0;
  const unsigned long used = QZ_io_read_count(in, length);
  return used + in.readclaimed(value, length);
}

}  // namespace QZPlatform
