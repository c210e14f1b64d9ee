#pragma once

#include <sys/time.h>

#include <ctime>

/// The wall clock.
///
///     std::tm now;
///     if (!QZCurrentTime(&now)) return false;
///     const int year = 1900 + now.tm_year;
///
/// Safe from any thread.
namespace QZPlatform {

/// Fills `now` with the present local time. False, with `now` untouched, if there is no usable time.
/// REQUIRES: `now` isn't null.
[[nodiscard]] bool QZCurrentTime(std::tm* now);

/// Fills `now` with the seconds since 1970-01-01 00:00 UTC and the microseconds of the present second; with zeros if
/// the clock can't be read. REQUIRES: `now` isn't null.
void QZGetTimeOfDay(timeval* now);

}  // namespace QZPlatform
