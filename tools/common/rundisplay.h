#pragma once

#include <string>

#include "qz/system.h"

namespace QZTools {

/// What a run shows of itself while it lasts: dots for its records, and a status file that another terminal can watch.
/// RunTool makes the one that there is.
///
///     RunDisplay display("dots", "run.status");
///     body();
///     display.Finish();
///
/// One thread at a time.
class RunDisplay {
 public:
  /// `progress` is the word of the option -progress, `statusFile` the text of -status, "" for none.
  RunDisplay(const std::string& progress, const std::string& statusFile);
  /// Leaves "Finished" in the status file, and ends a row of dots that has no total.
  ~RunDisplay();
  RunDisplay(const RunDisplay&) = delete;
  RunDisplay& operator=(const RunDisplay&) = delete;

  /// Ends the row of dots by its total, if that wasn't done. Called where the run was completed.
  void Finish();
};

/// Counts records that were read. Safe from any thread.
void CountRecords(unsigned int count);

/// Counts one record, keeps the status file fresh, and ends the run as CheckInterrupt does. For the one thread of a
/// loop over records.
void CountRecord();

/// Ends the row of dots by its total once all records were counted, so that a result stands below it.
void FinishDots();

/// Whether there is a status file.
bool HasStatus();

/// Tell the status file what is being done and how far that is. Safe from any thread.
void ShowStatus(const std::string& task);
void ShowStatus(double percent);

}  // namespace QZTools
