#pragma once

#include <string>
#include <vector>

#include "qz/dataflow/names.h"

namespace QZDataFlow {

/// Text for bytes in the alphabet of RFC 1924: four bytes are a number, most significant first, written as five digits
/// to the base 85, most significant first. Of a last group of r bytes, filled up with zeros, the first r + 1 digits
/// stay. There is no frame, no short form for zeros, and no line break.
///
///     const std::string text = QZBase85Encode({1, 2, 3, 4, 5});  // "0RjUA1p"
///     const std::vector<unsigned char> bytes = QZBase85Decode(text);
///
/// Safe from any thread.
std::string QZBase85Encode(const std::vector<unsigned char>& bytes);

/// The bytes of such a text. A last group of r digits is filled up with the highest digit and gives r - 1 bytes. A
/// character outside the alphabet, or a group above 2^32 - 1, gives the warning "Base85: invalid character at offset
/// %lu", with the offset of the character or of the group's first, and no bytes.
std::vector<unsigned char> QZBase85Decode(const std::string& text);

}  // namespace QZDataFlow
