#include "qz/platform/memorystream.h"

#include <cstring>

namespace QZPlatform {

qzisstream::qzisstream(const qzisstream& other) : qzisstream() { *this = other; }

qzisstream& qzisstream::operator=(const qzisstream& other) {
  if (this == &other) return *this;
  const long position = other.current - other.start;
  set(other.start, static_cast<unsigned long>(other.end - other.start), other.owns);
  current = start + position;
  atEnd = other.atEnd;
  sizeKnown = other.sizeKnown;
  errorNumber = other.errorNumber;
  return *this;
}

void qzisstream::set(const char* bytes, unsigned long count, bool copy) {
  set(reinterpret_cast<const unsigned char*>(bytes), count, copy);
}

void qzisstream::set(char* bytes, unsigned long count, bool copy) { set(static_cast<const char*>(bytes), count, copy); }

// A small copy stands in the stream's own buffer. The bytes may be those of this very stream: the new copy is whole
// before the old one goes.
void qzisstream::set(const unsigned char* bytes, unsigned long count, bool copy) {
  std::unique_ptr<unsigned char[]> held;
  unsigned char* content = const_cast<unsigned char*>(bytes);  // an input never writes to it
  if (copy) {
    if (count > BufferSize) held.reset(new unsigned char[count]);
    content = held ? held.get() : buffer;
    if (count) std::memmove(content, bytes, count);
  } else if (count == 0) {
    content = buffer;
  }
  block = std::move(held);
  owns = copy;
  errorNumber = 0;
  start = current = content;
  end = start + count;
  offset = 0;
  total = count;
  sizeKnown = true;
  atEnd = true;
}

void qzisstream::set(const std::string& content) { set(content.data(), content.size(), true); }

void qzisstream::getbuffer(std::string& content) const {
  content.assign(reinterpret_cast<const char*>(start), static_cast<unsigned long>(end - start));
}

// All that there is is in the buffer; only an empty content has its one position outside it.
bool qzisstream::_qzseek(long position) { return position == 0 && start == end; }

void qzisstream::_qzclose() {
  block.reset();
  owns = false;
}

std::string qzosstream::str() const {
  const unsigned long held = static_cast<unsigned long>(current - start);
  std::string text;
  text.reserve(written.size() + held);
  text.append(written).append(reinterpret_cast<const char*>(start), held);
  return text;
}

unsigned long qzosstream::_qzwrite(const unsigned char* bytes, unsigned long count) {
  written.append(reinterpret_cast<const char*>(bytes), count);
  return count;
}

}  // namespace QZPlatform
