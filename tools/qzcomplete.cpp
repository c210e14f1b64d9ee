// Writes the script by which a shell completes the command line of a program.

#include "tools/common/completion.h"
#include "tools/common/files.h"
#include "tools/common/programtext.h"
#include "tools/common/tool.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

constexpr const char* ownConfiguration = R"(
!BRIEF Write the script by which a shell completes the command line of a program
!DETAIL
  Works for every program on the framework: the script is made from what the program says of
  itself under --json, and completes its options, their legal values, and names of files.
  In bash: source <(qzcomplete PROGRAM). In zsh: qzcomplete -shell zsh PROGRAM _PROGRAM, in a
  folder of $fpath.
)";

constexpr const char* shellConfiguration = R"(
!PARAMETER -shell 4
  !TYPE string
  !DEFAULT bash
  !LEGAL_VALUE bash
  !LEGAL_VALUE zsh
  !SIMPLE true
  !BRIEF The shell that the script is for
!END
)";

void complete(QZInterface& settings) {
  const CategoryText program = AskProgram(TextSetting(settings, "-program"));
  const std::string name = CalledName(settings);
  const bool forBash = TextSetting(settings, "-shell") == "bash";
  Output output(TextSetting(settings, "-out"));
  output.Stream() << (forBash ? BashCompletion(program, name) : ZshCompletion(program, name));
  output.Finish();
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool(argc, argv, std::string(ownConfiguration) + ProgramConfiguration() + shellConfiguration, complete);
}
