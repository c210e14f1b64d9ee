#pragma once

#include <memory>

namespace QZSystem {

/// The dots of QZDots for a job of many threads. They count into a short queue, and a thread of the dots' own does the
/// printing, so that nobody waits for the terminal unless the queue is full.
///
///     QZThreadedDots dots(1000, 100, "items");
///     std::thread other([&] { while (ProcessNext()) dots.Update(1); });
///     while (ProcessNext()) dots.Update(1);
///     other.join();
///     dots.Total();
///
/// The queue holds twice as many updates as there are processors, and the dots may lag behind by that many; updates
/// that make no dot take no room in it. What other threads write to qzerr meanwhile stands among the dots. `Update` is
/// safe from any thread, also beside `Total`; with everything else one thread at a time.
///
/// In the child of a fork there is no thread that prints: `Update` is the error that it is after `Total`, and what was
/// counted, but not yet printed, is its parent's to print.
class QZThreadedDots {
 public:
  /// Starts the thread; `bigstep`, `smallstep` and `name` are those of QZDots, and the verb is "processed". Where no
  /// thread can be made every `Update` fails. REQUIRES: `name` isn't null.
  QZThreadedDots(unsigned int bigstep, unsigned int smallstep, const char* name);
  QZThreadedDots(const QZThreadedDots&) = delete;
  QZThreadedDots& operator=(const QZThreadedDots&) = delete;
  /// Waits until all that was counted is shown, and ends the thread. Prints no total.
  ~QZThreadedDots();

  /// Counts `step` items; waits while a dot is due and the queue is full. Errors, with nothing counted: "Invalid step
  /// size of 0 for QZThreadedDots::Update"; after `Total` "Attempting to Update a QZThreadedDots after Total already
  /// called.", and beside it, or without a thread, "Failed to Update a QZThreadedDots".
  void Update(unsigned int step);

  /// Waits until all that was counted is shown, ends the thread, and prints the total. A second call only prints.
  void Total();

 private:
  friend struct RunningDots;
  struct Impl;

  std::unique_ptr<Impl> impl;
};

}  // namespace QZSystem
