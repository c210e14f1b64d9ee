#pragma once

#include <string>

namespace QZSystem {

/// Prints on qzerr how far a counted job is: a dot for each small step, a line with the total for each big one.
///
///     QZDots dots(1000, 100, "items", "processed");
///     for (const Item& item : items) {
///       Process(item);
///       dots.Update(1);
///     }
///     dots.Total();
///
///     .......... 1000 items processed.
///     ....
///     Total: 1420 items processed.
///
/// One thread at a time.
class QZDots {
 public:
  /// `bigstep` is the number of items between two lines, `smallstep` that between two dots; if one of them is 0 there
  /// are neither. Prints nothing. REQUIRES: `name` and `verb` aren't null.
  QZDots(unsigned int bigstep, unsigned int smallstep, const char* name, const char* verb);

  /// Counts `step` items, and prints a dot for each small step that is full, or `mark` in its place.
  void Update(unsigned int step) { Update('.', step); }
  void Update(char mark, unsigned int step);

  /// Prints the total on a line of its own; may be called more than once.
  void Total();

 private:
  void PrintLine();

  unsigned int bigstep;
  unsigned int smallstep;
  unsigned int total = 0;
  unsigned int reported = 0;   // the figure of the last line
  unsigned int sinceLine = 0;  // items shown by dots since the last line
  unsigned int pending = 0;    // items not yet shown by a dot
  std::string name;
  std::string verb;
  bool silent;
};

}  // namespace QZSystem
