// Packed strings and vectors from a stream, and lists of strings in memory blocks. What was read whole is packed again
// to the same bytes.
#include <deque>

#include "fuzz/fuzzing.h"
#include "qz/platform/binarydump.h"
#include "qz/platform/binaryvalue.h"

using namespace QZPlatform;

namespace {

template <class Value>
void goThroughStream(const std::uint8_t* data, std::size_t size) {
  BytesStream in(data, size);
  Value value;
  const unsigned long used = QZ_io_read_binary(in, value);
  Require(used <= size && used == in.tell());
  // A value that the bytes end in is stored as it came.
  const unsigned long needed = QZ_io_binary_size(value);
  Require(used <= needed);
  std::vector<unsigned char> block(needed);
  Require(QZ_io_write_binary(block.data(), value) == needed);
  qzosstream out;
  Require(QZ_io_write_binary(out, value) == needed);
  Require(out.str() == std::string(block.begin(), block.end()));
  Value again;
  Require(QZ_io_read_binary(block.data(), again) == needed && again == value);
}

// The list packed in this order of bytes, behind its header.
std::string packed(const std::deque<std::string>& list, bool swapped) {
  std::string bytes;
  const auto addNumber = [&](std::size_t number) {
    for (unsigned i = 0; i < 4; ++i)
      bytes += static_cast<char>(static_cast<std::uint32_t>(number) >> (swapped ? 24 - 8 * i : 8 * i));
  };
  addNumber(list.size());
  for (const std::string& text : list) {
    addNumber(text.size());
    bytes += text;
  }
  return bytes;
}

void goThroughList(const std::uint8_t* data, std::size_t size) {
  const unsigned int head = data[0];
  const bool swapped = (head >> 6 & 1) != 0;
  std::deque<std::string> list{"before"};
  unsigned int status = 0;
  unsigned long remaining = size - 1;
  const unsigned long used = QZBinaryDump::QZPushBackSTLRead(data + 1, (head >> 7 & 1) != 0, swapped,
                                                             (head >> 5 & 1) != 0, head & 31U, list, status, remaining);
  Require(used + remaining == size - 1);
  if (status == 0) Require(packed(list, swapped) == TextOf(data + 1, used));
  if (status == QZBinaryDump::UnknownForm) Require(used == 0 && list.size() == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  goThroughStream<std::string>(data, size);
  goThroughStream<std::vector<std::string>>(data, size);
  goThroughStream<std::vector<std::vector<std::string>>>(data, size);
  if (size > 0) goThroughList(data, size);
  return 0;
}
