#pragma once

#include <memory>
#include <string>

#include "qz/platform/stream.h"

namespace QZPlatform {

/// Reads a block of memory, in place or from a copy of its own.
///
///     qzisstream in;
///     in.set(bytes, count, false);
///     while (!in.eof()) use(in.get());
///
/// One thread at a time. The whole content is one buffer, so that the end condition holds exactly when the last byte
/// has been consumed, and at once for no bytes.
class qzisstream : public qzistream {
 public:
  qzisstream() = default;

  /// A stream over the same content at the same position: a stream that has a copy of its own gives a copy, one that
  /// reads in place reads the same block.
  qzisstream(const qzisstream& other);
  qzisstream& operator=(const qzisstream& other);

  /// Points the stream at `count` bytes, positioned at the first. With `copy` false they stay the caller's, must
  /// outlive the reading, and are read in place; with `copy` true the caller may free them at once, also when they
  /// are bytes of this very stream.
  void set(const char* bytes, unsigned long count, bool copy);
  void set(char* bytes, unsigned long count, bool copy);
  void set(const unsigned char* bytes, unsigned long count, bool copy);

  /// Reads a copy of the string's content.
  void set(const std::string& content);

  /// Replaces the string with the whole content, whatever the position.
  void getbuffer(std::string& content) const;

  bool _qzseek(long position) override;
  void _qzclose() override;

 private:
  bool owns = false;                       // the bytes are a copy, in the stream's buffer or in `block`
  std::unique_ptr<unsigned char[]> block;  // a copy that is larger than the buffer
};

/// Collects output in memory.
///
///     qzosstream out;
///     out << "mass " << 0.5;
///     std::string text = out.str();
///
/// One thread at a time. `tell()` is the number of bytes written.
class qzosstream : public qzostream {
 public:
  qzosstream() { beginWriting(); }

  /// Everything written so far; the stream is not disturbed. After `close` it is the same text still.
  [[nodiscard]] std::string str() const;

  unsigned long _qzwrite(const unsigned char* bytes, unsigned long count) override;

 private:
  std::string written;  // what has left the buffer
};

}  // namespace QZPlatform
