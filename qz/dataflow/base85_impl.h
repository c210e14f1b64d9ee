#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "qz/dataflow/names.h"

namespace QZDataFlow::Base85 {

/// The characters for that many bytes.
constexpr std::size_t EncodedSize(std::size_t size) { return size / 4 * 5 + (size % 4 == 0 ? 0 : size % 4 + 1); }

/// Writes EncodedSize characters to `out`.
void Encode(const unsigned char* data, std::size_t size, char* out);

/// Appends the bytes of the text to `out`. For text that has none: the warning, and false, with `out` as it was.
[[nodiscard]] bool Decode(std::string_view text, std::vector<unsigned char>& out);

}  // namespace QZDataFlow::Base85
