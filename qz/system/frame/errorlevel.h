#pragma once

#include <string>

namespace QZSystem {

/// The levels of messages. A thread sees those at its threshold, Info at first, and above.
///
///     QZThrow.SetLevel(QZErrorLevel::Warning);
///     QZThrow.Msg(lenient ? QZErrorLevel::Warning : QZErrorLevel::Error, "no such file");
///
/// Safe from any thread.
namespace QZErrorLevel {
inline constexpr unsigned int Undefined = 0;
inline constexpr unsigned int Debug = 1;
inline constexpr unsigned int Verbose = 2;
inline constexpr unsigned int Info = 3;
inline constexpr unsigned int Warning = 4;
inline constexpr unsigned int Error = 5;
inline constexpr unsigned int Fatal = 6;
inline constexpr unsigned int Usage = 7;
inline constexpr unsigned int Quiet = 8;
}  // namespace QZErrorLevel

/// The name of a level: "Undefined", "Debug" and so on, "Unknown Error Level" for 9 and above.
[[nodiscard]] std::string QZErrorLevelToString(unsigned int level);

}  // namespace QZSystem
