#include "qz/platform/outputstream.h"

#include <cerrno>
#include <charconv>

#include "qz/platform/numbertext.h"

namespace QZPlatform {

namespace {

template <class Integer>
void insertInteger(qzostream& out, Integer value) {
  char room[24];
  const char* const stop = std::to_chars(room, room + sizeof room, value).ptr;
  out.write(room, static_cast<unsigned long>(stop - room));
}

template <class Real>
void insertReal(qzostream& out, Real value) {
  char room[QZShortestRoom];
  const std::string_view text = QZPrintShortest(value, room);
  out.write(text.data(), text.size());
}

template <class Char>
void insertByte(qzostream& out, Char value) {
  out.write(reinterpret_cast<const char*>(&value), 1);
}

}  // namespace

void qzostream::open(const std::string& name) {
  close();
  errorNumber = 0;
  offset = 0;
  if (name.find('\0') == std::string::npos && _qzopen(name.c_str()))
    beginWriting();
  else
    setError(ENOENT);
}

bool qzostream::flush() {
  if (eof()) return !failed();
  if (!drain()) return false;
  if (!_qzflush()) stop();
  return !failed();
}

bool qzostream::close() {
  flush();
  if (!_qzclose()) setError(EIO);
  resetBuffer(_qztell(), true);
  return !failed();
}

void qzostream::beginWriting() {
  resetBuffer(0, false);
  end = start + BufferSize;
}

// A write that doesn't fit in what is left of the buffer: what is buffered goes out, and then the bytes, through the
// buffer if they fit there.
unsigned long qzostream::writeOn(const unsigned char* bytes, unsigned long count) {
  if (eof()) {  // closed, or failed before
    setError(EBADF);
    return 0;
  }
  if (!drain()) return 0;
  if (count < static_cast<unsigned long>(end - start)) {
    std::memcpy(current, bytes, count);
    current += count;
    return count;
  }
  const unsigned long taken = _qzwrite(bytes, count);
  offset += taken;
  if (taken != count) stop();
  return taken;
}

bool qzostream::drain() {
  const unsigned long held = static_cast<unsigned long>(current - start);
  if (held == 0) return true;
  const unsigned long taken = _qzwrite(start, held);
  offset += taken;
  current = start;
  if (taken == held) return true;
  stop();
  return false;
}

// After a failure nothing more is accepted.
void qzostream::stop() {
  setError(EIO);
  current = end = start;
  atEnd = true;
}

bool qzostream::_qzopen(const char*) { return false; }

bool qzostream::_qzclose() { return true; }

unsigned long qzostream::_qzwrite(const unsigned char*, unsigned long) { return 0; }

bool qzostream::_qzflush() { return true; }

qzostream& qzostream::operator<<(const char* text) { return text ? *this << std::string_view(text) : *this; }

qzostream& qzostream::operator<<(const std::string& text) { return *this << std::string_view(text); }

qzostream& qzostream::operator<<(std::string_view text) {
  write(text.data(), text.size());
  return *this;
}

qzostream& qzostream::operator<<(bool value) { return *this << (value ? '1' : '0'); }

qzostream& qzostream::operator<<(char value) {
  insertByte(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(signed char value) {
  insertByte(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(unsigned char value) {
  insertByte(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(short value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(unsigned short value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(int value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(unsigned int value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(long value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(unsigned long value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(long long value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(unsigned long long value) {
  insertInteger(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(float value) {
  insertReal(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(double value) {
  insertReal(*this, value);
  return *this;
}

qzostream& qzostream::operator<<(qzostream& (*manipulator)(qzostream&)) { return manipulator(*this); }

qzostream& qzostream::operator<<(qzstream& (*manipulator)(qzstream&)) {
  manipulator(*this);
  return *this;
}

qzostream& qzendl(qzostream& out) {
  out << '\n';
  out.flush();
  return out;
}

qzostream& qzflush(qzostream& out) {
  out.flush();
  return out;
}

}  // namespace QZPlatform
