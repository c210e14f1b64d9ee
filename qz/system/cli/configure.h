#pragma once

#include <string>

#include "qz/platform/stream.h"
#include "qz/system/cli/interface.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// The configuration language, in which a program writes its settings: lines of words, of which the first says what
/// the line is. `!PARAMETER key` to `!END` describes a parameter, `!CATEGORY name` to `!END` a category.
///
///     QZInterface itf;
///     const unsigned char text[] = "!BRIEF Counts lines\n!PARAMETER -in\n  !TYPE string\n  !KEYLESS 1\n!END\n";
///     if (!QZConfigure(itf, text)) return 1;
///     QZWriteInterfaceConfigurationFile(itf, qzout);
///
/// Const operations may run in parallel; a change needs exclusive access.

/// Reads a zero-terminated text, in place, and adds what it describes to the interface; a category of a known name is
/// continued. Reading ends at the end of the text or at an `!END` of the outer level.
/// False when a line of a level can't be taken, or a parameter has no end, no known type or a wrong `!LIST`: an Error
/// tells, reading stops, and what was read before stays. A line in a parameter's block that can't be taken, and a
/// category that fails, send an Error and reading goes on. Categories more than 256 levels below the root are refused.
/// REQUIRES: text is not null.
bool QZConfigure(QZInterface& itf, const unsigned char* text);

/// The same from a stream, line by line. After an `!END` of the outer level the stream stands behind that line.
bool QZConfigure(QZInterface& itf, qzistream& in);

/// Writes the parameters and categories of the interface in the configuration language, in sorted order; its own name,
/// brief and detail are not written. Always true; a failed write shows in the stream.
/// What doesn't come back through QZConfigure: hidden parameters, and those of the kinds "Pointer" and "NonCL", which
/// are left out; a default that holds a blank; a default that is a keyword of a "const" parameter, which stands before
/// the legal values that declare it. Each line of a category's detail comes back with four blanks more in front, and a
/// detail with an empty line behind it where a category follows.
bool QZWriteInterfaceConfigurationFile(const QZInterface& itf, qzostream& out);

/// The text in double quotes if it holds a blank or a tab, else the text as it is.
std::string QuotedString(const std::string& text);

/// What follows the first word of a line: the text behind its first blank (32), without the blanks at its ends. Empty
/// if there is no blank or nothing else behind it.
std::string GetStringAfterFirstWord(const std::string& line);

}  // namespace QZSystem
