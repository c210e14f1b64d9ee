#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include "qz/platform/streambase.h"

namespace QZPlatform {

/// An output stream: bytes and text to a sink that a derived class supplies.
///
///     qzofstream out;
///     out.open("table.csv");
///     out << "width" << ',' << 0.25 << qzendl;
///     if (!out.close()) return false;  // the file isn't whole
///
/// One thread at a time. A write that fails stays visible: every later write returns 0 until the next `open`,
/// `flush` and `close` give false, `failed()` and `error()` tell.
class qzostream : public qzstream {
 public:
  /// Takes `count` bytes and returns how many were accepted; anything other than `count` is a failure. Accepted bytes
  /// may wait in the buffer: only `flush` and `close` say that the sink has them.
  unsigned long write(const char* bytes, unsigned long count);
  unsigned long write(const unsigned char* bytes, unsigned long count);

  /// The same for the whole content of a string, zeros included.
  unsigned long write(const std::string& bytes) { return write(bytes.data(), bytes.size()); }

  /// Closes what is open, then creates or truncates the named sink. Failure shows as `eof()` true at once, with
  /// `error()` telling why.
  void open(const std::string& name);

  /// Pushes out what is buffered. False if that fails, or a write has failed since `open`.
  bool flush();

  /// Flushes and closes; may be repeated. False if anything written since `open` hasn't reached the sink whole.
  bool close();

  // Text insertion. A null text inserts nothing. Integers are decimal, `bool` is 1 or 0, the `char` kinds are one
  // byte, and floating-point numbers are the shortest text that reads back to the same value, in every locale.
  qzostream& operator<<(const char* text);
  qzostream& operator<<(const std::string& text);
  qzostream& operator<<(std::string_view text);
  qzostream& operator<<(bool value);
  qzostream& operator<<(char value);
  qzostream& operator<<(signed char value);
  qzostream& operator<<(unsigned char value);
  qzostream& operator<<(short value);
  qzostream& operator<<(unsigned short value);
  qzostream& operator<<(int value);
  qzostream& operator<<(unsigned int value);
  qzostream& operator<<(long value);
  qzostream& operator<<(unsigned long value);
  qzostream& operator<<(long long value);
  qzostream& operator<<(unsigned long long value);
  qzostream& operator<<(float value);
  qzostream& operator<<(double value);
  /// A pointer isn't text, and mustn't become the `bool` that it converts to.
  qzostream& operator<<(const void*) = delete;
  /// Calls the manipulator with the stream.
  qzostream& operator<<(qzostream& (*manipulator)(qzostream&));
  qzostream& operator<<(qzstream& (*manipulator)(qzstream&));

  // The virtual operations of an output, in slot order behind those of `qzstream`.

  /// Opens the named sink; true on success. `open` has closed the stream before and sets buffer and flags after it.
  /// A failure calls `setError`. The base form returns false.
  virtual bool _qzopen(const char* name);

  /// Lets go of the sink, which has got all bytes; false if that fails. The base form returns true.
  virtual bool _qzclose();

  /// Gives bytes to the sink and returns how many it took; fewer than `count` is a failure and calls `setError`. The
  /// base form takes none.
  virtual unsigned long _qzwrite(const unsigned char* bytes, unsigned long count);

  /// Pushes out what the sink itself holds back; false if that fails. The base form returns true.
  virtual bool _qzflush();

 protected:
  qzostream() = default;
  constexpr explicit qzostream(unsigned char* own) : qzstream(own) {}

  /// Makes the stream writable from position 0, through its buffer.
  void beginWriting();

 private:
  unsigned long writeOn(const unsigned char* bytes, unsigned long count);
  bool drain();
  void stop();
};

/// Inserts a line end and flushes: `out << "done" << qzendl`.
qzostream& qzendl(qzostream& out);

/// Flushes.
qzostream& qzflush(qzostream& out);

inline unsigned long qzostream::write(const unsigned char* bytes, unsigned long count) {
  if (count > static_cast<unsigned long>(end - current)) {
    // The address of a small value goes no further than here, so that the caller can keep it in a register.
    unsigned char small[16] = {};
    if (!__builtin_constant_p(count) || count > sizeof small) return writeOn(bytes, count);
    std::memcpy(small, bytes, count);
    return writeOn(small, count);
  }
  if (count == 0) return 0;
  unsigned char* const to = current;
  std::memcpy(to, bytes, count);
  current = to + count;
  return count;
}

inline unsigned long qzostream::write(const char* bytes, unsigned long count) {
  return write(reinterpret_cast<const unsigned char*>(bytes), count);
}

}  // namespace QZPlatform
