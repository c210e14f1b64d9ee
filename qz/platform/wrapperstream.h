#pragma once

#include "qz/platform/stream.h"

namespace QZPlatform {

/// Reads through another input stream, which it may own; the base of streams that watch or change what is read.
///
///     qziwrapperstream in;
///     in.set(&file, false);
///     int first = in.get();
///
/// One thread at a time. Positions are those of the source. Whoever reads the source directly while it is attached
/// misses what the wrapper has buffered.
class qziwrapperstream : public qzistream {
 public:
  qziwrapperstream() = default;
  ~qziwrapperstream() override;

  /// Attaches a source at its present position, after `clear()`. With `own` the wrapper deletes it when it is
  /// cleared; otherwise it must outlive the wrapper's reading. Null leaves nothing attached. The source that is
  /// attached already isn't deleted; its bytes that are buffered here stay as long as it stands right behind them, so
  /// that its ownership can be changed, and are dropped if it was moved or opened anew.
  void set(qzistream* source, bool own);

  /// Detaches the source, and deletes it if it is owned. The stream is then at its end.
  void clear();

  /// The attached source, null if there is none.
  [[nodiscard]] qzistream* source() const { return attached; }

  /// These go to the source. A fill takes at most one buffer and only what the source has ready, so that a wrapper
  /// over a pipe doesn't wait for more than the pipe gives.
  bool _qzseek(long position) override;
  unsigned long _qzsize() override;
  void _qzclose() override;
  bool _qzfill() override;

  // The virtual operations that the wrapper appends, in slot order.

  /// Detaches and, if owning, deletes the source; `clear` calls it.
  virtual void _qzclear();

  /// Takes up a source with an empty buffer; `set` calls it after `_qzclear`.
  virtual void _qzset(qzistream* source);

 private:
  qzistream* attached = nullptr;
  bool owned = false;
};

}  // namespace QZPlatform
