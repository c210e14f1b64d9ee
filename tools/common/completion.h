#pragma once

#include <string>

#include "tools/common/programtext.h"

namespace QZTools {

/// Scripts that let a shell complete the command line of a program: its keys, aliases included and hidden ones left
/// out, the legal values of the key in front of the cursor, and names of files where a parameter takes them.
///
///     out << BashCompletion(AskProgram("qzfilter"), "qzfilter");
///
/// `name` is what the program is called by on the command line. The same description gives the same script. Safe from
/// any thread.

/// For bash 4.3 or later, to be sourced or put where the shell looks for the program's name.
std::string BashCompletion(const CategoryText& program, const std::string& name);

/// For the completion system of zsh, as a file "_name" in its function path.
std::string ZshCompletion(const CategoryText& program, const std::string& name);

}  // namespace QZTools
