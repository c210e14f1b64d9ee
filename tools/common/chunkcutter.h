#pragma once

#include <string>
#include <string_view>

#include "tools/common/files.h"

namespace QZTools {

/// Cuts the text of an input into pieces of whole records, some 64 KiB each.
///
///     ChunkCutter cutter;
///     while (cutter.Next(input, text, [](std::string_view t) { return t.rfind('\n') + 1; })) use(text);
///
/// One thread at a time.
class ChunkCutter {
 public:
  /// Replaces `text` by the next piece; false at the end. `whole` gives the length of the whole records that a text
  /// begins with, 0 where the first one goes on; a record is longer than a piece only where it has to be, and what is
  /// left at the end of the input is a piece, whole or not.
  template <class Whole>
  bool Next(Input& input, std::string& text, const Whole& whole) {
    constexpr std::size_t least = 1UL << 16;
    text.clear();
    text.swap(rest);
    // Twice as much each time, so that a long record isn't looked at over and over.
    while (input.Append(text, text.size() < least ? least - text.size() : text.size())) {
      const std::size_t size = whole(std::string_view(text));
      if (size == 0) continue;
      rest.assign(text, size);
      text.resize(size);
      return true;
    }
    if (text.empty()) input.Finish();
    return !text.empty();
  }

 private:
  std::string rest;
};

}  // namespace QZTools
