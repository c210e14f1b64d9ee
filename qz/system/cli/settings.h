#pragma once

#include <string>

#include "qz/system/cli/interface.h"
#include "qz/system/cli/writer.h"

namespace QZSystem {

/// Writes what a run was set to, as text that can be read as a parameter file again: values as lines, and with
/// `showUnset` the defaults and what isn't set as comments. Hidden parameters show only where they have a value.
/// `mode` goes into a heading of its own unless it is empty. Always true; a failed write shows in the stream.
///
///     QZWriteSettings(itf, log);
///
/// Const operations may run in parallel; a change needs exclusive access.
bool QZWriteSettings(const QZInterface& itf, qzostream& out, bool showUnset = true, std::string mode = "");

/// The same through any writer, without headings. Always true.
bool WriteSettingsImpl(const QZInterface& itf, QZWriter& writer, bool showUnset = true);

/// The text of a number of a float or double parameter without zeros at its end; other texts as they are.
std::string TrimmedNumber(const QZParameter& parameter, const std::string& text);

}  // namespace QZSystem
