#pragma once

#include <string>

namespace QZSystem {

/// Whom a long-running operation tells how far it is; what becomes of the news is the tracer's business.
///
///     void Filter(QZTracerBase& tracer = QZNoTracer) {
///       tracer.SetTask("filtering");
///       for (unsigned int i = 0; i < count && !tracer.Aborted(); ++i) {
///         Handle(i);
///         tracer.SetProgress(i + 1, count);
///       }
///       tracer.Pop();
///     }
///
/// One thread at a time.
class QZTracerBase {
 public:
  virtual ~QZTracerBase() = default;

  /// Begins a task of that name, from 0 percent.
  virtual void SetTask(std::string name) = 0;
  /// Begins a subtask of that name.
  virtual void Push(std::string name) = 0;
  /// Ends the current task or subtask.
  virtual void Pop() = 0;
  /// A sign of life without new figures.
  virtual void Refresh() = 0;
  /// Progress as a count. A derived class says what a total of 0 means.
  virtual void SetProgress(unsigned int done, unsigned int total) = 0;
  /// Progress in percent, 0 to 100.
  virtual void SetProgress(double percent) = 0;
  /// Whether the operation should give up. Operations ask as often as they can stop; the answer may stay false.
  virtual bool Aborted() = 0;

 protected:
  constexpr QZTracerBase() = default;
  QZTracerBase(const QZTracerBase&) = default;
  QZTracerBase& operator=(const QZTracerBase&) = default;
};

/// A tracer that does nothing and never aborts. Safe from any thread.
///
///     Filter(QZNoTracer);
class QZNullTracer : public QZTracerBase {
 public:
  constexpr QZNullTracer() = default;

  void SetTask(std::string) override {}
  void Push(std::string) override {}
  void Pop() override {}
  void Refresh() override {}
  void SetProgress(unsigned int, unsigned int) override {}
  void SetProgress(double) override {}
  bool Aborted() override { return false; }
};

/// Two tracers for whoever wants no reports. They are there from the first static initialiser to the end of the
/// process.
extern QZNullTracer& QZNoTracer;
extern QZNullTracer& NullTracer;

}  // namespace QZSystem
