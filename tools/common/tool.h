#pragma once

#include <functional>
#include <string>
#include <vector>

#include "qz/system.h"

namespace QZTools {

/// The frame of a tool: settings, help, messages, signals and exit status, the same for all of them.
///
///     int main(int argc, char** argv) {
///       return QZTools::RunTool(argc, argv, configuration, [](QZSystem::QZInterface& settings) { ... });
///     }
///
/// Help goes to standard output, so that it can be piped; with no arguments it goes to standard error. `-quiet` and
/// `-verbose` set the threshold of messages. A ToolError that leaves `body` is printed as the one message of the run
/// and gives 1; a ToolEnd gives its own status; otherwise the result is 0, or 1 where standard output couldn't be
/// written. `configuration` needs no entry for the options that all tools share: they are added to it.
int RunTool(int argc, char** argv, const std::string& configuration,
            const std::function<void(QZSystem::QZInterface& settings)>& body);

/// Ends the run by ToolEnd(130) once the user has asked for it by Ctrl-C or a TERM signal. Called between two records,
/// so that what was begun is finished and half-made files are removed on the way out.
void CheckInterrupt();

/// The text of a setting, by value or default; "" where neither is there.
std::string TextSetting(const QZSystem::QZInterface& settings, const std::string& key);

/// Whether a flag is set.
bool FlagSetting(const QZSystem::QZInterface& settings, const std::string& key);

/// A count, by value or default; 0 where neither is there.
unsigned int CountSetting(const QZSystem::QZInterface& settings, const std::string& key);

/// The words of `candidates` that look like `word`: for a message about an unknown name. At most three, nearest first.
std::vector<std::string> NearWords(const std::string& word, const std::vector<std::string>& candidates);

/// The first warning that the library has given this thread since the last call, "" if there was none. Inside a run
/// they are kept back, so that a tool turns the first of them into its one message with the place.
std::string TakeWarning();

}  // namespace QZTools
