#pragma once

#include <string>
#include <vector>

#include "qz/system/text/makestring.h"
#include "qz/system/text/stringnumber.h"
#include "qz/system/text/tokenize.h"

/// Small operations on strings; conversion of numbers, tokenizers and formatted printing come with this header.
///
///     QZStringStripWhiteSpace("  a b\t");          // "a b"
///     QZStringEquals("Mass", "MASS");              // true
///     QZStringMatch("spectrum.csv", "spec*.csv");  // true
///     QZFileExtension("a.txt.gz", "gz");           // "txt"
///
/// Strings are bytes here, whatever their encoding, and letters are A to Z and a to z in every locale. Blanks are the
/// bytes 32 and 9. Safe from any thread.
namespace QZSystem {

/// `text` with A to Z made a to z, or the other way round; every other byte stays.
[[nodiscard]] std::string QZStringLower(const std::string& text);
[[nodiscard]] std::string QZStringUpper(const std::string& text);

/// True for texts of equal length whose bytes are equal or the same letter in either case.
[[nodiscard]] bool QZStringEquals(const std::string& a, const std::string& b);

/// `text` without the blanks at its ends.
[[nodiscard]] std::string QZStringStripWhiteSpace(const std::string& text);

/// `text` with each run of blanks made one space, and without those at its end: " a  b " gives " a b".
[[nodiscard]] std::string QZStringSimplifyWhiteSpace(const std::string& text);

/// `text` with four spaces in place of each tab, wherever it stands.
[[nodiscard]] std::string QZStringTabsToSpaces(const std::string& text);

/// `text`. All words that users see and that a translation would change go through here.
[[nodiscard]] std::string QZStringTranslate(const std::string& text);

/// Compares `text`, case and all, with a pattern in which up to two "*" stand for any bytes or none. The bytes before
/// the first and behind the last "*" may overlap in the text: "ab*bc" matches "abc". What stands between two must
/// occur behind the first part and before the last; a text that ends with the first part or earlier has no room for
/// it. False with the warning "QZStringMatch doesn't support more than two wildcards, *'s, in a pattern" for a
/// pattern with more, unless the text doesn't fit its ends.
[[nodiscard]] bool QZStringMatch(const std::string& text, const std::string& pattern);

/// What stands behind the last "." of a file's name, in lower case; "" without one. With `ignore`, extensions with
/// commas between them, the last part of the name, its first part apart, that isn't one of them, or "". Empty parts
/// don't count. Directories are passed over.
[[nodiscard]] std::string QZFileExtension(const std::string& filename, const std::string& ignore = "");

/// All that stands behind the first "." of a file's name, split at ".", in lower case, without empty parts.
[[nodiscard]] std::vector<std::string> QZFileExtensions(const std::string& filename);

}  // namespace QZSystem
