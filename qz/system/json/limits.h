#pragma once

#include <cstddef>

#include "qz/system/frame/names.h"

namespace QZSystem {

/// The brackets of a JSON document that may be open at a time, the same for what is read and what is written.
inline constexpr int kMaxJSONDepth = 1024;

/// The bytes that a JSON document may have.
inline constexpr std::size_t kMaxJSONSize = 2'000'000'000;

}  // namespace QZSystem
