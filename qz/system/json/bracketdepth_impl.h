#pragma once

#include <cstddef>
#include <string_view>

#include "qz/system/frame/names.h"

namespace QZSystem::JSONImpl {

/// The brackets that are open at most at a time in JSON text, outside strings.
std::size_t BracketDepth(std::string_view text);

}  // namespace QZSystem::JSONImpl
