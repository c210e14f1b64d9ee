#pragma once

#include "qz/system/cli/interface.h"
#include "qz/system/cli/options.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// Options objects on the command line: an interface is made from them, and what was given comes back.
///
///     FileOptions files;
///     switch (QZConfigureOpts(files, argc, argv, false)) {
///       case QZConfigureStatus::Done: return run(files);
///       case QZConfigureStatus::Help: return 0;
///       default: return 1;
///     }
///
/// One thread at a time.

/// What QZConfigureOpts tells.
namespace QZConfigureStatus {
inline constexpr int Done = 0;
/// Help was given, and the program should stop.
inline constexpr int Help = 1;
/// The command line was refused.
inline constexpr int Failed = 2;
}  // namespace QZConfigureStatus

/// Adds to an interface what the options hold: name, brief, order priority and detail, copies of the parameters with
/// the values and defaults that they have, and a category for each sub-group. Values that the copies are given later
/// reach the options through QZUpdateOpts. Always true.
bool QZConfigureItf(QZInterface& itf, const QZOptions& opts);

/// Appends the values of an interface to the parameters that answer to the same keys, and loads them. A category looks
/// for them in the group of its name, or, where there is none, in the group that is at hand, and in each case below it
/// as well. A parameter without a value or without a counterpart is passed over, and a text that is refused is not
/// told. Always true.
bool QZUpdateOpts(QZOptions& opts, const QZInterface& itf);

/// All in one: makes an interface from the options, answers requests for help on qzerr, parses the command line, and
/// carries the values back; with `printSettings` the settings go to qzout first. The result is one of
/// QZConfigureStatus; the messages are those of QZParseCommandLine, whose Error ends the process in strict mode, and
/// `--version` ends it too. The options change only with Done.
///
/// Values are appended to those that the options hold, which the interface was given as well: before a second call the
/// parameters want ClearValues, or each value would stand twice. What holds without a command line is a default.
/// REQUIRES: argv holds argc texts.
[[nodiscard]] int QZConfigureOpts(QZOptions& opts, int argc, char** argv, bool printSettings);

}  // namespace QZSystem
