#pragma once

#include "qz/platform/stream.h"

namespace QZPlatform {

/// Reads a file.
///
///     qzifstream in;
///     in.open("nuclides.csv");
///     if (in.eof()) return in.error();  // a directory, an unreadable or a missing file
///     std::string content;
///     in.read(content);
///
/// One thread at a time. A regular file has a size; a pipe, a device, and a file of size 0 that delivers bytes, as
/// under /proc, has none: `size()` is 2^64 - 1 and reading goes by what arrives. An interrupted read is repeated.
class qzifstream : public qzistream {
 public:
  qzifstream() = default;
  ~qzifstream() override { qzifstream::_qzclose(); }

  /// Reads an open descriptor from its present place on, after closing what is open. With `own` the stream closes
  /// it; otherwise it must outlive the reading. Failure shows as with `open`.
  void attach(int descriptor, bool own);

  bool _qzseek(long position) override;
  unsigned long _qzsize() override;
  bool _qzopen(const char* name) override;
  void _qzclose() override;
  bool _qzfill() override;

 private:
  bool begin(int opened, bool owned);

  int descriptor = -1;
  bool own = false;
  bool regular = false;
};

/// Writes a file.
///
///     qzofstream out;
///     out.open("result.csv");
///     out << "mass,charge\n";
///     if (!out.close()) return out.error();
///
/// One thread at a time. `open` creates the file or truncates it; to replace one only when the new one is whole, use
/// `QZFileReplacement`. An interrupted or short write goes on. The destructor closes, and then nobody sees a failure.
class qzofstream : public qzostream {
 public:
  qzofstream() = default;
  ~qzofstream() override { close(); }

  /// Writes to an open descriptor at its present place, after closing what is open. With `own` the stream closes it.
  void attach(int descriptor, bool own);

  bool _qzopen(const char* name) override;
  bool _qzclose() override;
  unsigned long _qzwrite(const unsigned char* bytes, unsigned long count) override;

 private:
  int descriptor = -1;
  bool own = false;
};

}  // namespace QZPlatform
