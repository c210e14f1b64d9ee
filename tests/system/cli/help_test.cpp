#include "qz/system/cli/help.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/system/cli/configure.h"
#include "qz/system/cli/settings.h"
#include "tests/system/cli/messages.h"

using namespace QZSystem;

namespace {

constexpr const char* compareText =
    "!BRIEF Compare two files\n"
    "!PARAMETER -in 1\n!TYPE string\n!KEYLESS 1\n!REQUIRED true\n!BRIEF The input file\n!END\n"
    "!PARAMETER -tolerance 2\n!TYPE double\n!ALIAS -t\n!ALIAS -tol\n!DEFAULT 0.500\n!LEGAL_RANGE 0 5\n"
    "!ILLEGAL_VALUE 3\n!ILLEGAL_RANGE 1 2\n!SIMPLE true\n!DETAIL\n"
    "  Differences up to this count as equal, see :ref:$the manual$manual.html$.\n  Not a :ref: at all.\n!END\n"
    "!CATEGORY \"Output options\" 2\n!BRIEF What to write\n"
    "!PARAMETER -columns\n!TYPE string\n!LIST true\n!DEFAULT left\n!DEFAULT right\n!LEGAL_VALUE left\n"
    "!LEGAL_VALUE right\n!BRIEF The columns to show\n!END\n"
    "!PARAMETER -scale\n!TYPE float\n!VISIBILITY hidden\n!END\n!END\n";

// Asks for help as a program with these arguments would, and keeps what was told and whether it was.
class Help : public testing::Test {
 protected:
  void SetUp() override {
    unsetenv("COLUMNS");
    ASSERT_TRUE(QZConfigure(itf, reinterpret_cast<const unsigned char*>(compareText)));
  }

  bool ask(std::initializer_list<const char*> arguments, bool noArguments = true) {
    std::vector<std::string> texts(arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& text : texts) argv.push_back(text.data());
    qzosstream out;
    const bool given = QZCheckHelp(itf, static_cast<int>(argv.size()), argv.data(), noArguments, out);
    told = out.str();
    return given;
  }

  QZInterface itf;
  std::string told;
};

TEST_F(Help, TellsWhatIsRequiredWithoutArguments) {
  EXPECT_TRUE(ask({"compare"}));
  EXPECT_EQ(told,
            "No arguments specified on the command line\n"
            "compare : Compare two files \n"
            "Required parameters:\n"
            "    -in : The input file \n"
            "For more help type:\n"
            "  compare --help\n");
  EXPECT_FALSE(ask({"compare"}, false));
  itf.GetParameter("-in")->SetRequired(false);
  EXPECT_FALSE(ask({"compare"}));
  EXPECT_EQ(told, "");
}

TEST_F(Help, ListsSimpleParametersAndTheFurtherFunctions) {
  EXPECT_TRUE(ask({"compare", "--help"}));
  EXPECT_EQ(told,
            "compare : Compare two files \n"
            "Simple parameter list\n"
            "    -tolerance\n"
            "\n"
            "Additional help functions:\n"
            "  compare --help simple      : Get a list of simple parameters (as seen above)\n"
            "  compare --help all         : Get a complete list of parameters\n"
            "  compare --help defaults    : List the defaults for all parameters\n"
            "  compare --help <parameter> : Get detailed help on a parameter\n"
            "  compare --help html        : Create an html help file for this program\n"
            "  compare --help versions    : List the toolkits and versions used in the application\n"
            "\n");
}

TEST_F(Help, ListsByVisibilityWithCategoriesBehind) {
  EXPECT_TRUE(ask({"compare", "--help", "all"}));
  EXPECT_EQ(told,
            "compare : Compare two files \n"
            "Complete parameter list\n"
            "    -in : The input file\n"
            "    -tolerance\n"
            "\n"
            "    Output options : What to write \n"
            "      -columns : The columns to show\n"
            "\n"
            "\n");
  EXPECT_TRUE(ask({"compare", "--help", "poweruser"}));
  EXPECT_NE(told.find("Power user parameter list\n"), std::string::npos) << told;
  EXPECT_NE(told.find("      -scale\n"), std::string::npos) << told;
}

TEST_F(Help, WrapsBriefsAtTheWidth) {
  EXPECT_TRUE(ask({"compare", "--help", "all", "20"}));
  EXPECT_NE(told.find("    -in : The input\n          file\n"), std::string::npos) << told;
  setenv("COLUMNS", "wide", 1);
  EXPECT_TRUE(ask({"compare", "--help", "all"}));
  EXPECT_NE(told.find("    -in :\n          The\n          input\n          file\n"), std::string::npos) << told;
  EXPECT_TRUE(ask({"compare", "--help", "all", "120"}));
  EXPECT_NE(told.find("    -in : The input file\n"), std::string::npos) << told;
  unsetenv("COLUMNS");
}

TEST_F(Help, ExplainsOneParameter) {
  const std::string tolerance =
      "\n"
      "Contents of parameter -tolerance  \n"
      "    Aliases : -t  -tol  \n"
      "    Type : double\n"
      "    Allow list : false\n"
      "    Default : 0.5\n"
      "    Simple : true\n"
      "    Required : false\n"
      "    Legal ranges :  \n"
      "        5 to 0\n"
      "    Illegal values : 3\n"
      "    Illegal ranges :  \n"
      "        2 to 1\n"
      "    Brief : (No brief description)\n"
      "    Detail  \n"
      "        Differences up to this count as equal, see the manual.\n"
      "        Not a :ref: at all.\n";
  for (const char* word : {"-tolerance", "tolerance", "-TOL", "t"}) {
    EXPECT_TRUE(ask({"compare", "--help", word})) << word;
    EXPECT_EQ(told, tolerance) << word;
  }
  EXPECT_TRUE(ask({"compare", "--help", "columns"}));
  EXPECT_EQ(told,
            "\n"
            "Contents of parameter -columns  \n"
            "    Type : string\n"
            "    Allow list : true\n"
            "    Default is a list :  \n"
            "        left\n"
            "        right\n"
            "    Simple : false\n"
            "    Required : false\n"
            "    Legal values : left right\n"
            "    Brief : The columns to show \n");
  EXPECT_TRUE(ask({"compare", "--help", "nosuch"}));
  EXPECT_EQ(told, "Unable to find help for 'nosuch'\n");
}

TEST_F(Help, ListsDefaultsAsAParameterFile) {
  EXPECT_TRUE(ask({"compare", "--help", "defaults"}));
  EXPECT_EQ(told,
            "#Default settings\n"
            "  #-in : (no default setting)\n"
            "    -tolerance 0.500\n"
            "    \n"
            "    #Output options What to write   \n"
            "        -columns left right\n");
}

TEST_F(Help, PassesOverWhatIsNoRequest) {
  EXPECT_FALSE(ask({"compare", "-in", "--help"}));
  EXPECT_FALSE(ask({"compare", "--help", "all", "80", "x"}));
  EXPECT_FALSE(ask({"compare", "--json", "x"}));
  EXPECT_EQ(told, "");
  EXPECT_TRUE(ask({"compare", "--latex", "nosuch"}));
}

TEST_F(Help, CreatesTheHtmlPageBesideTheProgram) {
  const std::string program = testing::TempDir() + "compare" + std::to_string(getpid());
  EXPECT_TRUE(ask({program.c_str(), "--help", "html"}));
  EXPECT_EQ(told, "Creating '" + program + "_help.html'\n");
  std::ifstream page(program + "_help.html");
  std::string line;
  std::getline(page, line);
  EXPECT_EQ(line, "<html>");
  std::remove((program + "_help.html").c_str());
  EXPECT_TRUE(ask({"/nosuch/compare", "--help", "html"}));
  EXPECT_EQ(told, "Unable to create file '/nosuch/compare_help.html'\n");
}

TEST_F(Help, WritesTheSettingsOfARun) {
  ASSERT_TRUE(itf.GetParameter("-columns")->SetStringValues("right,left"));
  ASSERT_TRUE(itf.GetParameter("-in")->SetStringValue("my file.txt"));
  ASSERT_TRUE(itf.GetParameter("-in")->Load());
  const std::string columns = "\n#Output options : What to write   \n    -columns  right left\n";
  qzosstream full, set;
  EXPECT_TRUE(QZWriteSettings(itf, full, true, "fast"));
  EXPECT_EQ(full.str(), "#Interface settings\n\n#Mode fast\n-in  \"my file.txt\"\n#-tolerance  0.5\n" + columns);
  EXPECT_TRUE(QZWriteSettings(itf, set, false, ""));
  EXPECT_EQ(set.str(), "#Interface settings\n-in  \"my file.txt\"\n" + columns);
}

TEST(TextWriter, PrintsLineEndsLateAndIndentsByLevel) {
  qzosstream out;
  QZTextWriter writer(out);
  writer.Start("head");
  writer("one");
  writer.NewLine();
  writer.Indent();
  writer("two");
  writer.NewLine();
  writer.EndIndent();
  writer("three");
  writer.Line();
  writer.End();
  EXPECT_EQ(out.str(), "head\none  \n    two\nthree" + std::string(80, '-') + "\n");

  Messages messages;
  EXPECT_FALSE(writer.EndIndent());
  EXPECT_EQ(messages.Take(), "Warning: Too Many EndIndents\n");
}

}  // namespace
