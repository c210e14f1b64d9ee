#include "qz/platform/inputstream.h"

#include <algorithm>
#include <cerrno>

#include "qz/platform/outputstream.h"

namespace QZPlatform {

namespace {

constexpr unsigned long NoSize = ~0UL;

// How much room a claimed length gets at once before its bytes have arrived.
constexpr unsigned long GrowthStep = 1UL << 16;

// How much room is made at once for the rest of a source that says its size.
constexpr unsigned long LargestReserve = 1UL << 24;

}  // namespace

unsigned long qzistream::read(std::string& text) {
  text.clear();
  const unsigned long whole = size();
  const unsigned long position = tell();
  if (whole != NoSize && whole > position) text.reserve(std::min(whole - position, LargestReserve));
  for (std::string_view block = buffered(); !block.empty(); block = buffered()) {
    text.append(block);
    current = end;
  }
  return text.size();
}

unsigned long qzistream::read(std::string& text, unsigned long count) {
  return read(text.data(), std::min<unsigned long>(count, text.size()));
}

unsigned long qzistream::readclaimed(std::string& bytes, unsigned long count) { return readGrowing(bytes, count); }

unsigned long qzistream::readclaimed(std::vector<unsigned char>& bytes, unsigned long count) {
  return readGrowing(bytes, count);
}

// A claim that the source's size bears gets its room at once. Any other, true or not, gets it as bytes arrive: each
// step at most doubles what is there already.
template <class Bytes>
unsigned long qzistream::readGrowing(Bytes& bytes, unsigned long count) {
  bytes.clear();
  const unsigned long whole = size();
  const unsigned long position = tell();
  const bool borne = whole != NoSize && whole >= position && count <= whole - position;
  unsigned long done = 0;
  while (done != count) {
    const unsigned long step = borne ? count : std::min(count - done, std::max(done, GrowthStep));
    bytes.resize(done + step);
    const unsigned long got = read(reinterpret_cast<unsigned char*>(bytes.data()) + done, step);
    done += got;
    if (got != step) break;
  }
  bytes.resize(done);
  return done;
}

std::string_view qzistream::buffered() {
  if (current == end && !refill()) return {};
  return {reinterpret_cast<const char*>(current), static_cast<unsigned long>(end - current)};
}

// Over a long way within a known size the source is moved, which reads nothing.
void qzistream::skip(long count) {
  if (count <= 0) return;
  unsigned long left = static_cast<unsigned long>(count);
  do {
    const unsigned long ready = static_cast<unsigned long>(end - current);
    if (left <= ready) {
      current += left;
      return;
    }
    left -= ready;
    current = end;
    const unsigned long position = offset + static_cast<unsigned long>(end - start);
    if (sizeKnown && left > BufferSize && position < total &&
        _qzseek(static_cast<long>(position + std::min(left, total - position))))
      return;
  } while (refill());
}

bool qzistream::getline(std::string& line) {
  line.clear();
  bool any = false;
  while (current != end || refill()) {
    any = true;
    const auto* const stop =
        static_cast<unsigned char*>(std::memchr(current, '\n', static_cast<size_t>(end - current)));
    const unsigned char* const last = stop ? stop : end;
    line.append(reinterpret_cast<const char*>(current), static_cast<size_t>(last - current));
    current += last - current;
    if (stop) {
      ++current;
      break;
    }
  }
  return any;
}

bool qzistream::skipline() {
  bool any = false;
  while (current != end || refill()) {
    any = true;
    auto* const stop = static_cast<unsigned char*>(std::memchr(current, '\n', static_cast<size_t>(end - current)));
    current = stop ? stop + 1 : end;
    if (stop) break;
  }
  return any;
}

void qzistream::open(const char* name) {
  close();
  errorNumber = 0;
  const bool opened = name && _qzopen(name);
  if (!opened) setError(ENOENT);
  resetBuffer(0, !opened);
}

void qzistream::open(const std::string& name) {
  open(name.find('\0') == std::string::npos ? name.c_str() : nullptr);  // no name has a zero in it
}

void qzistream::close() {
  _qzclose();
  sizeKnown = false;
  total = 0;
  resetBuffer(0, true);
}

bool qzistream::_qzopen(const char*) { return false; }

void qzistream::_qzclose() {}

bool qzistream::_qzfill() {
  current = end;
  atEnd = true;
  return false;
}

unsigned long qzistream::readOn(unsigned char* bytes, unsigned long count) {
  unsigned long done = 0;
  do {
    const unsigned long step = std::min(count - done, static_cast<unsigned long>(end - current));
    if (step) std::memcpy(bytes + done, current, step);
    current += step;
    done += step;
  } while (done != count && refill());
  return done;
}

bool qzistream::isCarried() const { return start == reinterpret_cast<const unsigned char*>(carried.data()); }

// The next block, once the buffer is used up.
bool qzistream::refill() {
  if (isCarried()) {
    resetBuffer(offset + static_cast<unsigned long>(end - start), atEnd);
    carried = std::string();
  }
  return _qzfill();
}

// Puts the next block behind the unread bytes, which stay. False, and nothing changed, when there is none.
bool qzistream::extend() {
  if (current == end) return refill();
  if (atEnd) return false;
  const unsigned long unread = static_cast<unsigned long>(end - current);
  const unsigned long position = offset + static_cast<unsigned long>(current - start);
  const bool again = isCarried();
  if (!again) carried.assign(reinterpret_cast<const char*>(current), unread);
  carried.reserve(carried.size() + BufferSize);  // the last that may throw
  if (again) {
    carried.erase(0, carried.size() - unread);
    resetBuffer(position + unread, false);
  }
  current = end;
  const bool more = _qzfill();
  if (more)
    carried.append(reinterpret_cast<const char*>(current), static_cast<unsigned long>(end - current));
  else if (!again) {
    current = end - unread;
    return false;
  }
  start = current = reinterpret_cast<unsigned char*>(carried.data());
  end = start + carried.size();
  offset = position;
  return more;
}

bool qzistream::extendTo(unsigned long unread) {
  const unsigned long before = static_cast<unsigned long>(end - current);
  while (static_cast<unsigned long>(end - current) < unread && extend()) {
  }
  return static_cast<unsigned long>(end - current) > before;
}

}  // namespace QZPlatform
