#pragma once

#include <cstdarg>
#include <cstddef>

namespace QZPlatform {

/// `vsnprintf` in the C locale, as QZVSNPrintf is, and several times as fast for the formats of messages: text, %%, and
/// c, s, the decimal integers and f, e, g without flags and width. Any other format is left to QZVSNPrintf.
///
///     char text[8192];
///     FormatText(text, sizeof text, format, arguments);
///
/// Safe from any thread. `arguments` is used up. REQUIRES: `size` isn't 0.
[[gnu::format(printf, 3, 0)]] int FormatText(char* buffer, std::size_t size, const char* format,
                                             std::va_list arguments);

}  // namespace QZPlatform
