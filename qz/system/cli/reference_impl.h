#pragma once

#include <string>

namespace QZSystem {

/// Replaces each reference of a detail line, `:ref:$text$target$`, by what `form(text, target)` makes of it. A `:ref:`
/// that three dollar signs don't follow stays. The search goes on one place behind where the `:ref:` began, so a text
/// may hold a further reference.
template <class Form>
std::string ReplaceReferences(std::string line, Form form) {
  static constexpr char mark[] = ":ref:";
  for (std::size_t at = line.find(mark); at != std::string::npos; at = line.find(mark, at + 1)) {
    const std::size_t first = line.find('$', at);
    const std::size_t second = first == std::string::npos ? first : line.find('$', first + 1);
    const std::size_t third = second == std::string::npos ? second : line.find('$', second + 1);
    // What has too few dollar signs behind it has too few for every later mark.
    if (third == std::string::npos) break;
    const std::string made =
        form(line.substr(first + 1, second - first - 1), line.substr(second + 1, third - second - 1));
    line.replace(at, third + 1 - at, made);
  }
  return line;
}

}  // namespace QZSystem
