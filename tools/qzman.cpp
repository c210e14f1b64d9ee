// Writes the man page of a program.

#include "tools/common/files.h"
#include "tools/common/manpage.h"
#include "tools/common/programtext.h"
#include "tools/common/tool.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

constexpr const char* ownConfiguration = R"(
!BRIEF Write the man page of a program
!DETAIL
  Works for every program on the framework: the page is made from what the program says of itself
  under --json. It holds no date, so that the same program gives the same page.
)";

constexpr const char* pageConfiguration = R"(
!PARAMETER -source 4
  !TYPE string
  !BRIEF What the program belongs to, with its version, for the foot of the page
!END
!PARAMETER -manual 5
  !TYPE string
  !DEFAULT Commands
  !BRIEF The name of the manual, for the head of the page
!END
)";

void writePage(QZInterface& settings) {
  ManPage page;
  page.name = CalledName(settings);
  page.source = TextSetting(settings, "-source");
  page.manual = TextSetting(settings, "-manual");
  const CategoryText program = AskProgram(TextSetting(settings, "-program"));
  Output output(TextSetting(settings, "-out"));
  output.Stream() << page.Text(program);
  output.Finish();
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool(argc, argv, std::string(ownConfiguration) + ProgramConfiguration() + pageConfiguration, writePage);
}
