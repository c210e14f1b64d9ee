#pragma once

#include <ctime>
#include <string>

#include "qz/platform/standardstream.h"
#include "qz/system/frame/names.h"
#include "qz/system/progress/qztracerbase.h"

namespace QZSystem {

/// A tracer that writes rows of dots to a stream, at most one in an interval, and the percentage at the end of a row.
///
///     QZDotTracer tracer("reading ", 1.0f, qzerr, 50);
///     for (unsigned int i = 0; i <= count; ++i) tracer.SetProgress(i, count);
///
///     reading .......................................... 31% processed.
///     ..........Done.
///
/// One thread at a time.
class QZDotTracer : public QZTracerBase {
 public:
  /// `interval` is the least number of seconds between dots, 0 for a dot with every call: seconds of processor time,
  /// or of the clock where that has moved on by more than 2147. `width` is the length of a row at which a percentage
  /// closes it. `out` must outlive the tracer. Prints nothing.
  explicit QZDotTracer(float interval = 1.0F, qzostream& out = qzerr, unsigned int width = 50);

  /// The same, and writes `task`, which counts for the length of the first row.
  explicit QZDotTracer(const std::string& task, float interval = 1.0F, qzostream& out = qzerr, unsigned int width = 50);

  QZDotTracer(const QZDotTracer&) = delete;
  QZDotTracer& operator=(const QZDotTracer&) = delete;

  /// Writes "Done." and a line end; before it a line end if the row is less than 5 dots short of its width.
  ~QZDotTracer() override;

  /// Write the name, which counts for the length of the row. No line end goes before it.
  void SetTask(std::string name) override;
  void Push(std::string name) override;

  /// The others print a dot if one is due, at 100 percent, at 0 percent, or at the percentage reported; a total of 0 is
  /// 100 percent.
  void Pop() override;
  void Refresh() override;
  void SetProgress(unsigned int done, unsigned int total) override;
  void SetProgress(double percent) override;
  bool Aborted() override;

  /// Prints a dot if the interval has passed; before it, if the row has reached its width, closes the row with the
  /// percentage, cut towards zero.
  void PrintDot(double percent);

 private:
  [[nodiscard]] bool IsDue() const;

  std::clock_t lastClock;
  std::time_t lastTime;
  float interval;
  unsigned long column = 0;
  unsigned int width;
  qzostream* out;
};

}  // namespace QZSystem
