#pragma once

#include <sys/time.h>

#include <atomic>
#include <mutex>
#include <sstream>
#include <string>

#include "qz/system/frame/names.h"
#include "qz/system/progress/qztracerbase.h"

namespace QZSystem {

/// A tracer that draws a bar on the terminal: one line of the standard error stream, drawn over and over.
///
///     QZConsoleProgressTracer tracer("reading");
///     for (unsigned int i = 0; i <= count; ++i) tracer.SetProgress(i, count);
///     tracer.Pop();
///
///     reading                  [====================--------------------]  50.00%  00:00:12
///
/// `SetProgress` is safe from any thread; with everything else one thread at a time.
class QZConsoleProgressTracer : public QZTracerBase {
 public:
  /// `width` is the number of cells of the bar. A report is drawn when it is `progressStep` percent or more ahead of
  /// the last one drawn, or `timeStep` seconds or more later. Starts the clock of the task; draws nothing.
  explicit QZConsoleProgressTracer(std::string task = "", unsigned int width = 40, double progressStep = 1.0,
                                   double timeStep = 1.0);

  /// Begins anew under that name and draws an empty bar. Tasks aren't stacked: `Push` is the same.
  void SetTask(std::string name) override;
  void Push(std::string name) override;

  /// Draws a full bar, whatever was reported, and ends the line.
  void Pop() override;

  /// Does nothing.
  void Refresh() override {}

  /// The same as the percentage that it makes; a total of 0 makes 100.
  void SetProgress(unsigned int done, unsigned int total) override;

  /// Draws the bar if it is time. A report behind what is drawn already is dropped without a lock.
  void SetProgress(double percent) override;

  bool Aborted() override { return false; }

  // What a drawing is made of.

  /// Takes note of both figures and draws them: carriage return, task, bar and time, in one piece, without a line end.
  void PrintProgress(double percent, double seconds);
  /// Adds the bar with its percentage to `line`. The bar is empty or full where the figure is beyond 0 or 100, and
  /// empty for a not-a-number; the figure is printed as it is.
  void PrintBar(std::ostringstream& line, double percent) const;
  /// Adds hours, minutes and seconds to `line`, two digits or more each. Just 60 seconds are "00:00:60", and 3600 are
  /// "00:60:00".
  void PrintTime(std::ostringstream& line, double seconds) const;

 private:
  [[nodiscard]] double Seconds() const;

  std::string task;
  unsigned int width;
  double progressStep;
  double timeStep;
  std::atomic<double> progress{0};
  std::atomic<double> elapsed{0};
  timeval start{};
  std::mutex mutex;
};

}  // namespace QZSystem
