#pragma once

#include <string>

#include "qz/system/cli/interface.h"
#include "qz/system/cli/writer.h"

namespace QZSystem {

/// Help that every program gets from its interface: a brief list, all about one parameter, the defaults, and the
/// exports for other readers.
///
///     if (QZCheckHelp(itf, argc, argv, true, qzout)) return 0;
///
/// The one-line entry of QZInterface and QZParseCommandLine do this by themselves. Const operations may run in
/// parallel; a change needs exclusive access.

/// Answers a request for help. True if help was given and the program should stop.
///
/// - No arguments, with `noArguments`: where a parameter is required, what is missing goes to `out`.
/// - "--help", "--help WORD", "--help WORD WIDTH": the words simple, all, hidden, poweruser, defaults, versions and
///   html, or the key of a parameter with or without its dash. "html" creates the file argv[0] + "_help.html".
/// - "--itf", "--json", "--latex KEY": the interface for other programs, always on qzout.
///
/// Everything else is no request. The brief list is wrapped at WIDTH, else at the environment variable COLUMNS, else at
/// 80; a text that is no number counts as 0. REQUIRES: argv holds argc texts.
[[nodiscard]] bool QZCheckHelp(const QZInterface& itf, int argc, char** argv, bool noArguments = true,
                               qzostream& out = qzerr);

/// The name of the interface, or `program` where it has none, and its brief; nothing without a brief.
void WriteTopLevelBriefDescription(const QZInterface& itf, const char* program, qzostream& out);

/// The brief list under its headings: parameters whose visibility isn't above `visibility` (0 simple, 1 normal, 2
/// hidden), wrapped at `columns`. Always true.
bool WriteBriefHelpDescription(const QZInterface& itf, const char* program, qzostream& out, unsigned int visibility = 0,
                               unsigned int columns = 80);

/// The brief list alone, each line with `indent` in front. Always true.
bool WriteBrief(const QZInterface& itf, qzostream& out, std::string indent, unsigned int visibility = 0,
                unsigned int columns = 80);

/// Everything about one parameter. False for null.
bool WriteParameterDetailImpl(const QZParameter* parameter, QZWriter& writer);

/// The defaults in the form of a parameter file; parameters without one are comments, hidden ones are left out. Always
/// true.
bool WriteDefaultsImpl(const QZInterface& itf, QZWriter& writer);

}  // namespace QZSystem
