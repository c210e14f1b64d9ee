#pragma once

#include <string>

namespace QZPlatform {

/// Compresses `size` bytes into `out`, whose content is replaced; `data` may lie in `out`.
///
///     std::string packed;
///     if (!QZCompress(packed, text.data(), text.size(), "gz")) return false;
///
/// `format` is a short name; "gz" gives one gzip member (RFC 1952) with no name and no time, so equal bytes give equal
/// results. A format that is unknown or null, or no memory for the compressor, gives false and an empty `out`. Safe
/// from any thread.
[[nodiscard]] bool QZCompress(std::string& out, const char* data, unsigned long size, const char* format);

}  // namespace QZPlatform
