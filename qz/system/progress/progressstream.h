#pragma once

#include "qz/platform/wrapperstream.h"
#include "qz/system/frame/names.h"
#include "qz/system/progress/qztracerbase.h"

namespace QZSystem {

/// An input stream that wraps another one and tells a tracer how far it has been read. The reader needs no change.
///
///     QZConsoleProgressTracer tracer("reading");
///     qzprogressstream in(new qzifstream(file), true, &tracer, false);
///     while (in.getline(line)) Use(line);
///     tracer.Pop();
///
/// There is one report for each refill of the buffer but the first, with the state before the refill, and none at the
/// end. A source without a size gives no reports. Nobody asks the tracer whether to stop. One thread at a time.
class qzprogressstream : public qziwrapperstream {
 public:
  /// Reads `source` from its present position; with `ownsSource` deletes it in the end. If the source is a wrapper
  /// itself, such as one that decompresses, progress is that of the stream beneath it. For the tracer see `SetTracer`.
  /// REQUIRES: `source` isn't null.
  qzprogressstream(qzistream* source, bool ownsSource, QZTracerBase* tracer, bool ownsTracer);

  /// Deletes the tracer if it is owned, then lets go of the source.
  ~qzprogressstream() override;

  /// Reports to `tracer` from now on, to nobody if it is null. The former tracer is deleted if it was owned; this one
  /// is with `owns`, and else must outlive its use here.
  void SetTracer(QZTracerBase* tracer, bool owns);

  bool _qzseek(long n) override;
  bool _qzfill() override;
  /// Another source begins anew, with its own size; the tracer stays.
  void _qzset(qzistream* source) override;

 private:
  void DropTracer();

  long position = 0;
  unsigned long total = 0;
  QZTracerBase* tracer = nullptr;
  bool ownsTracer = false;
  qziwrapperstream* inner = nullptr;
};

}  // namespace QZSystem
