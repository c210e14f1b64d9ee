#pragma once

#include <string>

#include "qz/system/frame/names.h"

namespace QZSystem {

/// Whether `text` is a JSON document whose top-level value is an object, with the messages of JSONParseHelper, but
/// without a document and its memory.
///
///     if (!JSONCheckHelper(text)) return false;  // the warning has been given
///
/// Safe from any thread.
[[nodiscard]] bool JSONCheckHelper(const std::string& text);

}  // namespace QZSystem
