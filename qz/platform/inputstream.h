#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "qz/platform/streambase.h"

namespace QZPlatform {

class qzostream;

/// An input stream: bytes and text from a source that a derived class supplies.
///
///     qzifstream in;
///     in.open("table.csv");
///     if (in.eof()) return false;  // it didn't open
///     std::string line;
///     while (in.getline(line)) use(line);
///
/// One thread at a time. Nothing throws for bad input: the end of the data, and a read that fails, show as a short
/// count or false, and `failed()` tells them apart. A byte of a filled buffer costs a test and an increment.
class qzistream : public qzstream {
 public:
  // Bytes.

  /// The next byte, 0 to 255, or -1 when no byte is left; the end condition holds then.
  int get() { return current != end || refill() ? *current++ : -1; }

  /// The same without consuming it.
  [[nodiscard]] int peek() { return current != end || refill() ? *current : -1; }

  /// Reads up to `count` bytes and returns how many were delivered: fewer only at the end of the data. `count` may be
  /// any number. A count of 0 changes nothing.
  unsigned long read(char* bytes, unsigned long count);
  unsigned long read(unsigned char* bytes, unsigned long count);

  /// Replaces the text with all that is left and returns its length. Memory grows with what arrives.
  unsigned long read(std::string& text);

  /// Fills the first `count` bytes of a string that the caller has sized, and never more than its size. Returns the
  /// bytes delivered, which the caller compares with `count`; what stands behind them in the string stays.
  unsigned long read(std::string& text, unsigned long count);

  /// Replaces the output with the next `count` bytes, or with fewer at the end of the data, and returns how many.
  /// Made for lengths that come from outside: room is made for a claim only as far as the source's size bears it, and
  /// where it has none, room grows with what arrives.
  unsigned long readclaimed(std::string& bytes, unsigned long count);
  unsigned long readclaimed(std::vector<unsigned char>& bytes, unsigned long count);

  /// The bytes that stand ready, at least one unless the data has ended. The view lives until the next operation
  /// that isn't const, other than a `skip` inside of it, which consumes. For readers that scan whole blocks.
  [[nodiscard]] std::string_view buffered();

  /// Moves forward by `count` bytes, at most to the end. A count of 0 or below does nothing.
  void skip(long count);

  // Position.

  /// The size of the source in bytes: of a regular file or a memory block its length, of a source that has none (a
  /// pipe, a device, a file under /proc) 2^64 - 1, of a stream that isn't open 0.
  [[nodiscard]] unsigned long size() { return sizeKnown ? total : _qzsize(); }

  /// Moves to a position counted from the start of the source. False, and nothing moved, when the source can't: a
  /// pipe outside the buffer, a position below 0 or behind the size. After a move inside the buffer, or to where an
  /// empty one stands, the end shows only when a read has met it again.
  bool seek(long position);

  // Text.

  /// Replaces the text with the next line, without its LF. A CR is data; a last line without LF is a line; an empty
  /// line gives true and "". False at the end of the data, and then the text is empty.
  bool getline(std::string& line);

  /// Passes over a line by the same rule; false when there was none.
  bool skipline();

  // Opening and closing.

  /// Closes what is open and opens the named source. Failure shows as `eof()` true at once, with `error()` telling
  /// why; a source of 0 bytes that did open has `eof()` false until a read has met its end.
  void open(const char* name);
  void open(const std::string& name);

  /// Closes the source; the stream is then at its end. May be repeated.
  void close();

  // The virtual operations of an input, in slot order.

  /// Opens the named source; true on success. `open` has closed the stream before and sets the flags after it. A
  /// failure calls `setError`. The base form returns false.
  virtual bool _qzopen(const char* name);

  /// Lets go of the source. The base form does nothing.
  virtual void _qzclose();

  /// Fills the used-up buffer with the next block of at least one byte and returns true: `start` and `current` at
  /// its first byte, `end` behind its last, `offset` grown by the length of the block before, `atEnd` if it is known
  /// to be the last. Otherwise false, with `current` at `end` and `atEnd` set, which is all that the base form does.
  virtual bool _qzfill();

  /// Text extraction. White space is blank, tab, LF and CR. The numbers, `bool` and a string skip it and then take
  /// the longest text of the type's grammar, wherever buffers end: decimal integers over the full range of the type;
  /// what `strtod` takes in the C locale; the words yes, true, on, y, t, 1 and no, false, off, n, f, 0 in any case;
  /// a word up to the next white space. The `char` kinds take one byte and skip nothing. When there is no such text,
  /// or the integer is out of range, the target becomes 0, false or empty and only white space has been consumed.
  /// A manipulator is called with the stream.
  virtual qzistream& operator>>(qzistream& (*manipulator)(qzistream&));
  virtual qzistream& operator>>(qzstream& (*manipulator)(qzstream&));
  virtual qzistream& operator>>(bool& value);
  virtual qzistream& operator>>(char& value);
  virtual qzistream& operator>>(unsigned char& value);
  virtual qzistream& operator>>(signed char& value);
  virtual qzistream& operator>>(std::string& value);
  virtual qzistream& operator>>(short& value);
  virtual qzistream& operator>>(int& value);
  virtual qzistream& operator>>(long& value);
  virtual qzistream& operator>>(unsigned short& value);
  virtual qzistream& operator>>(unsigned int& value);
  virtual qzistream& operator>>(unsigned long& value);
  virtual qzistream& operator>>(float& value);
  virtual qzistream& operator>>(double& value);
  /// Writes all that is left to another stream, as long as that accepts it.
  virtual qzistream& operator>>(qzostream& out);

 protected:
  qzistream() = default;

 private:
  bool refill();
  bool isCarried() const;
  bool extend();
  bool extendTo(unsigned long unread);
  unsigned long readOn(unsigned char* bytes, unsigned long count);
  template <class Bytes>
  unsigned long readGrowing(Bytes& bytes, unsigned long count);
  void skipWhiteSpace();
  template <class T>
  qzistream& extract(T& value);

  // Unread bytes of earlier blocks with a later block behind them, read as the buffer: a number that is looked at
  // over the end of a block may turn out to end before it. Empty nearly always.
  std::string carried;
};

/// Skips white space: `in >> qzws`.
qzistream& qzws(qzistream& in);

inline unsigned long qzistream::read(unsigned char* bytes, unsigned long count) {
  if (count > static_cast<unsigned long>(end - current)) return readOn(bytes, count);
  if (count == 0) return 0;
  std::memcpy(bytes, current, count);
  current += count;
  return count;
}

inline unsigned long qzistream::read(char* bytes, unsigned long count) {
  return read(reinterpret_cast<unsigned char*>(bytes), count);
}

inline bool qzistream::seek(long position) {
  const unsigned long to = static_cast<unsigned long>(position);
  if (start == end || position < 0 || to < offset || to - offset > static_cast<unsigned long>(end - start))
    return _qzseek(position);
  current = start + (to - offset);
  atEnd = false;
  return true;
}

}  // namespace QZPlatform
