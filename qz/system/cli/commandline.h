#pragma once

#include <vector>

#include "qz/system/cli/interface.h"
#include "qz/system/frame/error.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// The command line of a program: fills the parameters of an interface from argc and argv.
///
///     QZInterface itf(settingsText);
///     if (!QZParseCommandLine(itf, "1.2.0", argc, argv)) return 1;
///     const QZParameter* in = itf.GetParameter("-in");
///
/// A value given here wins over one from a parameter file, which wins over the default. Keys are compared without
/// regard to case, aliases included. One thread at a time.

/// Reads `-key value` pairs, lists, booleans that need no value, `--unset-key`, arguments without a key (which go to
/// the keyless parameters by their numbers, and stand behind the last key), and then the parameter files that were
/// named; finally checks that everything required is set. `requirements` is a text of conditions over several
/// parameters (see requirement.h), or null.
///
/// The first failure is sent to QZThrow at `level` and gives false; the values taken so far stay. Faults of the
/// interface itself, such as a gap in the keyless numbers, are Errors whatever the level.
///
/// Ends the process with status 0 for `--version`, after printing `version` or "version not set" on qzout, and, with
/// `checkHelp`, when QZCheckHelp has answered.
/// REQUIRES: argv holds argc texts.
bool QZParseCommandLine(QZInterface& itf, const char* version, int argc, char** argv,
                        const unsigned char* requirements = nullptr, unsigned int level = QZErrorLevel::Error,
                        bool checkHelp = true);
bool QZParseCommandLine(QZInterface& itf, int argc, char** argv, const unsigned char* requirements = nullptr,
                        unsigned int level = QZErrorLevel::Error, bool checkHelp = true);

/// The light-weight form in the manner of Unix filters: switches of one letter, which may be grouped behind one dash,
/// and then positional arguments for the keyless parameters. Everything from the first argument without a dash on is
/// positional. Each parameter that isn't keyless must be a bool with the default false and with a name and aliases of
/// two characters; another interface is refused by an Error and false.
///
/// A bad argument is sent to QZThrow at `level`, the parse goes on, and the result is false. `--version` acts as
/// above; help, `--unset` and parameter files are not known here.
/// REQUIRES: argv holds argc texts.
bool QZParseCommandLineLW(QZInterface& itf, const char* version, int argc, char** argv,
                          const unsigned char* requirements = nullptr, unsigned int level = QZErrorLevel::Error);
bool QZParseCommandLineLW(QZInterface& itf, int argc, char** argv, const unsigned char* requirements = nullptr,
                          unsigned int level = QZErrorLevel::Error);

/// Replaces `keyless` by the parameters that may be given without a key, in the order of their numbers. False, with
/// an Error for each fault, if the numbers aren't 1, 2, 3 and so on, or if one that isn't the last is a list; the
/// vector holds them all the same.
bool GetKeylessParameters(QZInterface& itf, std::vector<QZParameter*>& keyless);

}  // namespace QZSystem
