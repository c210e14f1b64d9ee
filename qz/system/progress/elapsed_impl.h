#pragma once

#include <ctime>

namespace QZSystem {

/// Seconds since a moment of both clocks: of processor time, or of the clock where that has moved on by more than 2147.
/// Safe from any thread.
float SecondsSince(std::clock_t clock, std::time_t time);

}  // namespace QZSystem
