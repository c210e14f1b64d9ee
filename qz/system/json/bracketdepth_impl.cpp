#include "qz/system/json/bracketdepth_impl.h"

#include <algorithm>

namespace QZSystem::JSONImpl {

std::size_t BracketDepth(std::string_view text) {
  std::size_t depth = 0, deepest = 0;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      if (c == '\\') ++i;
      inString = c != '"';
    } else if (c == '"') {
      inString = true;
    } else if (c == '{' || c == '[') {
      deepest = std::max(deepest, ++depth);
    } else if ((c == '}' || c == ']') && depth > 0) {
      --depth;
    }
  }
  return deepest;
}

}  // namespace QZSystem::JSONImpl
