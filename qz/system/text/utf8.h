#pragma once

#include <string>

/// Bytes of unknown origin as UTF-8.
///
///     const std::string title = QZBytesToUTF8(header.title);
///     if (!QZIsValidUTF8(reinterpret_cast<const unsigned char*>(text))) return false;
///
/// Texts end at their NUL. Safe from any thread.
namespace QZSystem {

/// Whether the text is well-formed UTF-8 (RFC 3629): no overlong forms, no surrogates, nothing above U+10FFFF, and
/// neither U+FFFE nor U+FFFF. REQUIRES: `text` isn't null.
[[nodiscard]] bool QZIsValidUTF8(const unsigned char* text);

/// The text, read as Windows-1252, in UTF-8. The five bytes that this leaves undefined become the control characters of
/// the same number. REQUIRES: `text` isn't null.
[[nodiscard]] std::string QZWin1252ToUTF8(const unsigned char* text);

/// The text itself if it is valid UTF-8, else as `QZWin1252ToUTF8` gives it. REQUIRES: `text` isn't null.
[[nodiscard]] std::string QZBytesToUTF8(const char* text);

}  // namespace QZSystem
