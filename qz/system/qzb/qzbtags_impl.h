#pragma once

#include <string_view>

namespace QZSystem {

/// The name that a code byte stands for, empty for a code without one. Good to the end of the process.
std::string_view TagName(unsigned char code);

/// The code of a name, 0 if it has none.
unsigned char TagCode(std::string_view name);

/// Whether a name that begins with that letter may go back to a code at all; nearly no name of a user does.
inline bool MayHaveCode(char first) { return first == 'Q' || first == 'U' || first == 'M' || first == 'z'; }

/// What a name begins with that stands for a code without a name; the code follows in decimal.
inline constexpr std::string_view UnknownCodePrefix = "UnknownQZB";

/// The name that a value goes by in an object whose tag is the code alone: that of the code, or "UnknownQZB60"; empty
/// for 0 and from 128 on. Good to the end of the process.
std::string_view EntryName(unsigned char code);

/// The code that a value's name goes back to: 1 to 127 for a name that stands for one, from 128 to 255 for one that
/// can't be written, 0 for any other name.
unsigned char UnknownCodeOf(std::string_view name);

/// What the second tag of a value begins with that only a registered function understands.
inline constexpr std::string_view HandledPrefix = "!HandledQZBTag:";

inline bool StartsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

}  // namespace QZSystem
