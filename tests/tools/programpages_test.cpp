#include "tests/tools/toolrun.h"
#include "tools/common/completion.h"
#include "tools/common/manpage.h"
#include "tools/common/programtext.h"
#include "tools/common/toolerror.h"

using namespace QZSystem;
using namespace QZTools;

namespace {

// Everything that a description can hold, with signs that shells and roff take for their own.
constexpr const char* drawing = R"(
!BRIEF Draw 'things' \ shapes
!DETAIL
  First line
  .second line
    as it is

  A paragraph, see :ref:$the manual$manual.html$
!PARAMETER -in 1
  !ALIAS -I
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !INPUT 1
  !BRIEF What is read
!END
!PARAMETER -names 2
  !TYPE string
  !LIST true
  !KEYLESS 2
  !LEGAL_VALUE a:b
  !LEGAL_VALUE it's
  !LEGAL_VALUE p*
  !LEGAL_VALUE $x
!END
!PARAMETER -secret
  !TYPE int
  !VISIBILITY hidden
!END
!CATEGORY "How it looks" 2
  !BRIEF The looks
  !PARAMETER -width
    !TYPE int
    !DEFAULT 5
    !LEGAL_RANGE 1 10
    !LEGAL_RANGE 20 inf
    !ILLEGAL_VALUE 3
    !BRIEF Points [wide]: many
  !END
  !PARAMETER -style
    !TYPE stringEx
    !LEGAL_VALUE plain
    !LEGAL_VALUE fancy
  !END
  !PARAMETER -settings
    !TYPE param_file
  !END
  !PARAMETER -flat
    !TYPE bool
    !DEFAULT false
  !END
!END
)";

std::string documentOf(const char* configuration) {
  const QZInterface itf(configuration);
  qzosstream out;
  QZWriteJSON(itf, out);
  return out.str();
}

class Pages : public ToolRun {
 protected:
  void SetUp() override {
    write("draw.json", documentOf(drawing));
    write("file.txt", "");
    ASSERT_EQ(run("qzcomplete -name draw - draw.bash < draw.json && bash -n draw.bash").messages, "");
  }

  // What bash is told to offer where the cursor stands behind these words, which it splits at colons too.
  std::string offered(const std::string& line) {
    std::vector<std::string> words(1);
    for (const char byte : line) {
      if (byte == ' ' || byte == ':') words.emplace_back(byte == ':' ? ":" : "");
      if (byte == ':') words.emplace_back();
      if (byte != ' ' && byte != ':') words.back() += byte;
    }
    std::string script = "source ./draw.bash\nCOMP_WORDS=(";
    for (const std::string& word : words) script += quoted(word) + " ";
    script += ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMP_LINE=" + quoted(line);
    write("ask", script + "\n_qz_draw\nprintf '%s ' \"${COMPREPLY[@]}\"\n");
    const Outcome outcome = run("bash ask");
    EXPECT_EQ(outcome.messages, "") << line;
    return outcome.out;
  }

 private:
  static std::string quoted(const std::string& text) {
    std::string made = "'";
    for (const char byte : text) made += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
    return made + "'";
  }
};

TEST_F(Pages, CompleteKeysValuesAndFilesInBash) {
  const std::pair<const char*, const char*> cases[] = {
      {"draw -", "-in -I -names -flat -settings -style -width --help --version "},
      {"draw -flat -s", "-settings -style "},
      {"draw --unset-w", "--unset-width "},
      {"draw --",
       "--unset-in --unset-I --unset-names --unset-flat --unset-settings --unset-style --unset-width --help "
       "--version "},
      {"draw --help h", "hidden html "},
      {"draw --help -w", "-width "},
      // A value of no kind, whatever it looks like; a hidden key is known.
      {"draw -width ", " "},
      {"draw -secret -", " "},
      // Values before files, and files alone, which the shell completes itself.
      {"draw -style f", "fancy file.txt "},
      {"draw -in f", " "},
      // A list goes on to the next key; words are cut where the shell splits them.
      {"draw -names ", "a:b it\\'s \\$x "},
      {"draw -names a:b i", "it\\'s "},
      {"draw -names a:", "b "},
      {"draw -names 'i", "it's "},
      {"draw -names x -w", "-width "},
      // Places count from the last key, whose value isn't one of them.
      {"draw x a", "a:b "},
      {"draw -width 3 x ", "a:b it\\'s \\$x "},
      {"draw -flat true x ", "a:b it\\'s \\$x "},
      {"draw -flat x ", "a:b it\\'s \\$x "},
      {"draw -flat t", "true "},
  };
  for (const auto& [words, offers] : cases) EXPECT_EQ(offered(words), offers) << words;
}

TEST_F(Pages, CompleteInZsh) {
  const auto unset = [](const std::string& key) {
    return "  '*--unset-" + key + "[Take back what a parameter file has set]' \\\n";
  };
  EXPECT_EQ(run("qzcomplete -shell zsh -name draw - < draw.json").out,
            "#compdef draw\n# zsh completion for draw, made by qzcomplete\n\n_arguments \\\n"
            "  '(-in -I)-in[What is read]:in:_files' \\\n"
            "  '(-in -I)-I[What is read]:in:_files' \\\n"
            "  '(-names)-names[]:*-*:names:(a\\\\:b it\\'\\''s \\$x)' \\\n"
            "  '(-flat)-flat[]' \\\n"
            "  '(-settings)-settings[]:settings:_files' \\\n"
            "  '(-style)-style[]:style:_alternative \"values\\:value\\:(plain fancy)\" files\\:file\\:_files' \\\n"
            "  '(-width)-width[Points \\[wide\\]: many]:width: ' \\\n" +
                unset("in") + unset("I") + unset("names") + unset("flat") + unset("settings") + unset("style") +
                unset("width") +
                "  '1:in:_files' \\\n"
                "  '*:names:(a\\\\:b it\\'\\''s \\$x)' \\\n"
                "  '(- *)--help[Show help]::topic:(simple all hidden defaults versions html)' \\\n"
                "  '(- *)--version[Show the version]'\n");
}

TEST_F(Pages, DescribeTheProgramToMan) {
  const Outcome page = run("qzman -name draw -source 'shapes 2' -manual M - < draw.json");
  EXPECT_EQ(page.messages, "");
  const std::string help = page.out.substr(page.out.find(".SH HELP"));
  EXPECT_NE(help.find("\\fB\\-\\-unset\\-KEY\\fR"), std::string::npos) << help;
  EXPECT_EQ(page.out.substr(0, page.out.size() - help.size()),
            ".\\\" Made by qzman.\n.TH \"DRAW\" \"1\" \"\" \"shapes 2\" \"M\"\n.SH NAME\n"
            "draw \\- Draw \\(aqthings\\(aq \\e shapes\n.SH SYNOPSIS\n"
            "\\fBdraw\\fR [\\fIoptions\\fR] \\fIin\\fR [\\fInames\\fR ...]\n.SH DESCRIPTION\n"
            ".PP\nFirst line\n\\&.second line\n.nf\n  as it is\n.fi\n.PP\nA paragraph, see the manual\n.PP\n"
            "An option is followed by its value, a list by several, and keys are compared without regard to case. A "
            "switch needs no value. Arguments without a key come behind the last option.\n"
            "A value on the command line wins over one in a parameter file, and that over the default.\n.SH OPTIONS\n"
            ".TP\n\\fB\\-in\\fR, \\fB\\-I\\fR \\fIfile\\fR\nWhat is read.\nRequired.\n"
            ".TP\n\\fB\\-names\\fR \\fItext\\fR ...\nLegal: \\fBa:b\\fR, \\fBit\\(aqs\\fR, \\fBp*\\fR, \\fB$x\\fR.\n"
            ".SS \"How it looks\"\nThe looks.\n.TP\n\\fB\\-flat\\fR\n\\&\n.TP\n\\fB\\-settings\\fR \\fIfile\\fR\n\\&\n"
            ".TP\n\\fB\\-style\\fR \\fIfile\\fR\nLegal: \\fBplain\\fR, \\fBfancy\\fR.\n"
            ".TP\n\\fB\\-width\\fR \\fInumber\\fR\nPoints [wide]: many.\n"
            "Legal: \\fB1\\fR to \\fB10\\fR, or from \\fB20\\fR on.\nNot legal: \\fB3\\fR.\nDefault: \\fB5\\fR.\n");
  if (run("command -v groff").status != 0) return;
  EXPECT_EQ(run("qzman -name draw - < draw.json | groff -man -ww -Tutf8 > page").messages, "");
}

TEST(ProgramText, EscapesControlsInsideStringsAlone) {
  const std::pair<const char*, const char*> cases[] = {
      {"{\n\t\"a\tb\" : \"c\nd\"}", "{\n\t\"a\\u0009b\" : \"c\\u000ad\"}"},
      {"\"a\\\"\t\"\t", "\"a\\\"\\u0009\"\t"},
      {"\"a\\\\\"\t\"\x1f\"", "\"a\\\\\"\t\"\\u001f\""},
      {"\"cut\t", "\"cut\\u0009"},
  };
  for (const auto& [raw, escaped] : cases) EXPECT_EQ(EscapeControls(raw), escaped) << raw;
}

TEST_F(Pages, RefuseWhatIsNoDescription) {
  const std::pair<const char*, const char*> cases[] = {
      {"qzman ./none", "Fatal: ./none: can't be run: No such file or directory\n"},
      {"qzman false", "Fatal: false: fails when it is asked for --json\n"},
      {"qzman echo",
       "Fatal: echo: is no program on this framework: what it answers to --json can't be read (JSON: parse error "
       "offset 1: Invalid value.)\n"},
      {"echo '{}' | qzcomplete -name x -",
       "Fatal: standard input: is no program on this framework: what it answers to --json can't be read (JSON: missing "
       "required attribute, key: name)\n"},
      {"qzcomplete - < draw.json", "Fatal: Give the name of the program as -name\n"},
      {"sed 's/\"list\" : true/\"list\" : 1/' draw.json | qzman -name x - o",
       "Fatal: standard input: is no program on this framework: what it answers to --json can't be read (JSON: expects "
       "type of: boolean, key: list)\n"},
  };
  for (const auto& [command, message] : cases) EXPECT_EQ(refusal(command), message);
  EXPECT_FALSE(exists("o"));
}

}  // namespace
