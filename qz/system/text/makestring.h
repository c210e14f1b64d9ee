#pragma once

#include <string>

/// Printing into strings in the manner of `printf`, in the C locale whatever locale the program has set.
///
///     std::string text = QZMakeString("%s: %.2f", name.c_str(), 1.5);  // "name: 1.50"
///     char room[16];
///     QZSNPrintf(room, sizeof room, "%d", 42);
///
/// Safe from any thread.
namespace QZSystem {

/// The printed text, of any length up to 2147483646 bytes. A null format gives "". Warnings, each with the result "":
/// "Unable to resize string memory: %lu (%lu)" for a text that is longer or that `printf` refuses,
/// "Unable to allocate string memory (%lu)", "Unable to resize string memory error (%lu)" and
/// "Unable to resize string memory error exception (%lu)" where the buffer can't grow.
[[nodiscard, gnu::format(printf, 1, 2)]] std::string QZMakeString(const char* format, ...);

/// `vsnprintf` with the same arguments and result.
[[gnu::format(printf, 3, 4)]] int QZSNPrintf(char* buffer, unsigned long size, const char* format, ...);

}  // namespace QZSystem
