#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "qz/system/progress/qztracerbase.h"

namespace QZSystem {

/// Does the work of a QZStatusFileTracer. One thread at a time.
class QZStatusFileTracerImpl : public QZTracerBase {
 public:
  QZStatusFileTracerImpl(std::string file, float seconds);
  QZStatusFileTracerImpl(const QZStatusFileTracerImpl& other) = default;
  QZStatusFileTracerImpl& operator=(const QZStatusFileTracerImpl&) = delete;
  ~QZStatusFileTracerImpl() override;

  void SetTask(std::string name) override;
  void Push(std::string name) override;
  void Pop() override;
  void Refresh() override;
  void SetProgress(unsigned int done, unsigned int total) override;
  void SetProgress(double percent) override;
  bool Aborted() override;

 private:
  void Open(std::string name);
  void SetFigure(std::string text);
  void WriteIfDue();
  [[nodiscard]] std::string Lines() const;

  std::vector<std::string> tasks;     // outermost first
  std::vector<std::string> progress;  // of each task
  std::clock_t lastClock;
  std::time_t lastTime;
  float interval;
  std::string fileName;
};

}  // namespace QZSystem
