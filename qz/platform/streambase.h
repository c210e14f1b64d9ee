#pragma once

namespace QZPlatform {

template <unsigned long Size, unsigned long Count>
class QZBoundedCache;

/// The common base of all streams: one buffer, the pointers into it, and the position.
///
///     void report(const qzstream& s) {
///       if (s.failed()) qzerr << "stopped at byte " << s.tell() << qzendl;
///     }
///
/// One thread at a time. A stream takes its buffer from the process-wide pool when it is made and gives it back when
/// it dies, so that short-lived streams cost a lock and no allocation while fewer than 32 are alive.
class qzstream {
 public:
  qzstream(const qzstream&) = delete;
  qzstream& operator=(const qzstream&) = delete;

  /// The end condition: the buffer is used up and the source holds nothing behind it. True at once after an `open`
  /// that failed, on input and on output. False on an input whose next block isn't known yet: a pipe, or an empty
  /// file just opened, shows its end only when a read has met it.
  [[nodiscard]] bool eof() const { return current == end && atEnd; }

  /// The position in bytes from the start of the source, or the number of bytes written.
  [[nodiscard]] unsigned long tell() const { return _qztell(); }

  /// True when an operation of the system has failed since the last `open` (or since the stream was made): the open
  /// itself, a read that met an error instead of the end, or a write. It stays until the next `open`, over `close`.
  [[nodiscard]] bool failed() const { return errorNumber != 0; }

  /// The `errno` of the first such failure, 0 if there is none.
  [[nodiscard]] int error() const { return errorNumber; }

  /// The process-wide pool that all streams take their buffers from. It outlives every static object. Include
  /// "qz/platform/bufferpool.h" to use it.
  static QZBoundedCache<32768, 32>& GetBufferCache();

  /// Gives a buffer back to that pool.
  static void ReleaseBuffer(unsigned char* buffer);

  // The virtual operations, in slot order; a class that makes a new kind of stream overrides them.

  /// Moves an input to a position outside its buffer, leaving the buffer empty, `offset` at the position and `atEnd`
  /// false. False when the source can't, and then nothing has moved. The base form returns false.
  virtual bool _qzseek(long position);

  /// The size of the source in bytes, all ones if it has none. Asked only while `sizeKnown` is false. The base form
  /// returns 0.
  virtual unsigned long _qzsize();

  /// The position; an override is rarely needed.
  virtual unsigned long _qztell() const;

  virtual ~qzstream();

 protected:
  /// The size of the buffer in bytes.
  static constexpr unsigned long BufferSize = 32768;

  /// Takes a buffer from the pool; throws `std::bad_alloc` when it is empty and the heap too.
  qzstream();

  /// A stream without a buffer of the pool, for those that are there before any initialiser runs.
  constexpr explicit qzstream(unsigned char* own) : start(own), current(own), end(own) {}

  /// Empties the buffer at the given position of the source, which may hold more behind it or not.
  void resetBuffer(unsigned long position, bool nothingBehind) {
    start = current = end = buffer;
    offset = position;
    atEnd = nothingBehind;
  }

  /// Keeps the first failure.
  void setError(int number) {
    if (errorNumber == 0) errorNumber = number;
  }

  unsigned char* start;      // first byte of the buffer
  unsigned char* current;    // next byte to read or to write
  unsigned char* end;        // end of the valid data; of the room, on output
  unsigned long offset = 0;  // position of `start` in the source
  unsigned long total = 0;   // size of the source, while `sizeKnown`
  bool sizeKnown = false;
  bool atEnd = true;  // the source holds nothing beyond the buffer
  int errorNumber = 0;
  unsigned char* buffer = nullptr;  // what the pool gave; `start` points here unless bytes are read in place
};

}  // namespace QZPlatform
