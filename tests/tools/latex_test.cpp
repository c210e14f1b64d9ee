#include <vector>

#include "tests/tools/toolrun.h"
#include "tools/common/programtext.h"

using namespace QZTools;

namespace {

class Latex : public ToolRun {};

// A manual takes the texts as they are, by making the signs that mean something to LaTeX letters.
constexpr const char* preamble = R"(\documentclass{article}
\newcommand{\code}[1]{\texttt{#1}}
\newcommand{\plain}[1]{\catcode`#1=12}
\begin{document}
\begin{description}
\plain\_ \plain\^ \plain\& \plain\% \plain\$ \plain\~ \plain\#
)";

constexpr const char* ending = "\\end{description}\n\\end{document}\n";

}  // namespace

TEST_F(Latex, TheItemsOfEachToolCompile) {
  if (run("command -v pdflatex").status != 0) GTEST_SKIP() << "pdflatex isn't installed";
  std::string manual = preamble;
  std::size_t items = 0;
  for (const char* tool : {"qzcolors", "qzcomplete", "qzconvert", "qzdump", "qzfilter", "qzgrid", "qzman", "qzshow",
                           "qzsimilar", "qzsuperpose"}) {
    const CategoryText program = ReadProgramText(run(std::string(tool) + " --json").out, tool);
    for (const ParameterText* parameter : program.All()) {
      const Outcome item = run(std::string(tool) + " --latex " + parameter->name.substr(1));
      EXPECT_EQ(item.out.rfind("\n\\item[\\code{" + parameter->name + "}] ", 0), 0U) << item.out;
      manual += item.out;
      ++items;
    }
  }
  EXPECT_GT(items, 60U);
  write("manual.tex", manual + ending);
  const Outcome outcome = run("pdflatex -interaction=nonstopmode -halt-on-error manual.tex");
  EXPECT_EQ(outcome.status, 0) << outcome.out;
  EXPECT_TRUE(exists("manual.pdf"));
}
