#pragma once

#include <sys/time.h>

#include <memory>
#include <string>

#include "qz/system.h"

namespace QZTools {

/// Shows how far a run is, in the status file and in the way that suits where standard error goes: a bar on a terminal,
/// a line every tenth of the work elsewhere. With `auto` it begins only once the run has lasted two seconds. One thread
/// at a time.
class RunTracer : public QZSystem::QZTracerBase {
 public:
  /// `word` is that of the option -progress: auto, bar, dots or none; with the last two nothing is drawn here.
  RunTracer(const std::string& word, std::string taskName);
  /// Closes the line of a bar whose work has been broken off.
  ~RunTracer() override;

  void SetTask(std::string name) override;
  void Push(std::string name) override;
  /// The end of the work: whatever has begun to show is completed.
  void Pop() override;
  void Refresh() override;
  void SetProgress(unsigned int done, unsigned int total) override;
  void SetProgress(double percent) override;
  bool Aborted() override;

 private:
  bool hasBegun();
  void writeTenth(int tenth);

  std::string task;
  bool silent;
  bool waits;
  bool drawsBar;
  bool begun = false;
  int lastTenth = 0;
  timeval start;
  QZSystem::QZConsoleProgressTracer bar;
};

}  // namespace QZTools
