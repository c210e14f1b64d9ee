#include "qz/system/qzb/payload_impl.h"

#include <algorithm>
#include <cstring>

namespace QZSystem {

namespace {

constexpr unsigned long noSize = ~0UL;
constexpr unsigned long firstRoom = 256;

// Whether the stream has told that it holds fewer bytes; a stream without a size hasn't.
bool isTooShort(qzistream& in, unsigned long length) {
  const unsigned long whole = in.size();
  const unsigned long position = in.tell();
  return whole != noSize && (whole < position || whole - position < length);
}

}  // namespace

void PayloadStream::Set(std::string_view bytes) {
  start = current = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data()));  // an input never writes to it
  end = start + bytes.size();
  offset = 0;
  total = bytes.size();
  sizeKnown = true;
  atEnd = true;
}

Payload::Payload(qzistream& in, unsigned long length) : source(in), whole(true) {
  if (length == 0) return;
  bytes = in.buffered().substr(0, length);
  isInPlace = bytes.size() == length;
  if (isInPlace) return;
  whole = !isTooShort(in, length);
  bytes = std::string_view();
  if (!whole) {
    while (!in.buffered().empty()) in.skip(static_cast<long>(in.buffered().size()));
    return;
  }
  block = std::make_unique<std::string>();
  whole = in.readclaimed(*block, length) == length;
  bytes = *block;
}

Payload::~Payload() {
  if (isInPlace) source.skip(static_cast<long>(bytes.size()));
}

qzistream& Payload::Stream() {
  if (!stream) {
    stream = std::make_unique<PayloadStream>();
    stream->Set(bytes);
  }
  return *stream;
}

// The base class keeps what is written between `start` and `end`, and here that is the free part of the block: each
// time it is full, the block grows and `start` moves behind what has been written.
unsigned long BodyStream::_qzwrite(const unsigned char* bytes, unsigned long count) {
  const bool isOwn = bytes == start;
  const unsigned long held = offset + (isOwn ? count : 0);
  const unsigned long needed = isOwn ? held : held + count;
  const unsigned long room = std::max(firstRoom, 2 * needed);
  std::unique_ptr<char[]> larger(new char[room]);
  if (held != 0) std::memcpy(larger.get(), block.get(), held);
  if (!isOwn) std::memcpy(larger.get() + held, bytes, count);
  block = std::move(larger);
  start = current = reinterpret_cast<unsigned char*>(block.get()) + needed;
  end = reinterpret_cast<unsigned char*>(block.get()) + room;
  return count;
}

}  // namespace QZSystem
