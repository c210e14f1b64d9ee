#pragma once

#include <atomic>

namespace QZSystem {

/// A message to QZThrow below this level is dropped in every thread, so it needn't be formed: a disabled Debug or
/// Verbose costs this load and a branch. It is at most 3, the threshold with which threads start, and 0, which drops
/// nothing, while the implementation of QZThrow isn't known to drop by threshold.
extern std::atomic<unsigned int> errorGate;

/// Some thread of some implementation has this threshold from now on.
void LowerErrorFloor(unsigned int level);

/// Opens the gate (0), or closes it as far as the thresholds of all threads allow.
void CloseErrorGate(bool close);

}  // namespace QZSystem
