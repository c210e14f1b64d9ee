#pragma once

#include <memory>
#include <string>

#include "qz/system/progress/qztracerbase.h"

namespace QZSystem {

class QZStatusFileTracerImpl;

/// A tracer that keeps a small text file up to date, so that a long run can be watched from outside.
///
///     QZStatusFileTracer tracer("run.status", 2.0f);
///     tracer.SetTask("filtering");
///     tracer.Push("reading");
///     tracer.SetProgress(12, 40);
///
///     filtering
///      reading (12 of 40 done)
///
/// One line stands for each open task, with as many blanks before it as tasks are open around it, and behind its name
/// " (% 42.50 done)" or " (12 of 40 done)" once there is a figure. The file is written whole, at most once in an
/// interval, and left with the line "Finished" in the end.
///
/// A file that is there and regular, or isn't there yet, is written beside its name and then takes it, so that nobody
/// sees half of one; a link, a device, or a file in a folder that takes no new file is rewritten where it is. What
/// can't be written is lost without a message. One thread at a time.
class QZStatusFileTracer : public QZTracerBase {
 public:
  /// With one task that has no name yet. `interval` is the least number of seconds between writings, 0 for one with
  /// every call: seconds of processor time, or of the clock where that has moved on by more than 2147. Writes nothing.
  QZStatusFileTracer(std::string fileName, float interval);

  /// A tracer in the same state that writes to the same file, and when it goes leaves "Finished" there.
  QZStatusFileTracer(const QZStatusFileTracer& other);
  /// Leaves "Finished" in the present file, then becomes a copy. To itself it does nothing.
  QZStatusFileTracer& operator=(const QZStatusFileTracer& other);

  /// Writes "Finished".
  ~QZStatusFileTracer() override;

  // Each of these writes the file if the interval has passed; otherwise the change shows with the next writing.

  /// Names the innermost task, which keeps its figure; without an open task it opens one.
  void SetTask(std::string name) override;
  /// Opens a task within the innermost one.
  void Push(std::string name) override;
  /// Closes the innermost task; without one it does nothing.
  void Pop() override;
  void Refresh() override;
  /// Sets the figure of the innermost task; without an open task these open one.
  void SetProgress(unsigned int done, unsigned int total) override;
  void SetProgress(double percent) override;

  /// Always false; writes nothing.
  bool Aborted() override;

 private:
  std::unique_ptr<QZStatusFileTracerImpl> impl;
};

}  // namespace QZSystem
