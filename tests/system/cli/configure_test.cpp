#include "qz/system/cli/configure.h"

#include <gtest/gtest.h>

#include <random>

#include "interface_testing.h"
#include "qz/platform/memorystream.h"
#include "qz/system/cli/configureline_impl.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {
namespace {

using Ranges = QZIter<const QZParameter::Range>;

std::string Text(const QZInterface& itf) {
  qzosstream out;
  QZWriteInterfaceConfigurationFile(itf, out);
  return out.str();
}

/// Everything that a text can set, a line for each parameter and each category.
std::string Everything(const QZInterface& itf, const std::string& indent = "") {
  qzosstream out;
  out << indent << "'" << itf.GetName() << "' " << itf.GetOrderPriority() << " brief '" << itf.GetBrief()
      << "' detail '" << Joined(itf.GetDetail()) << "'\n";
  for (const QZParameter& p : QZIter(itf.GetParameters(false))) {
    out << indent << "  " << p.GetName() << " " << p.GetOrderPriority() << " " << p.ClassID();
    if (p.GetIsList()) out << " list";
    if (p.GetRequired()) out << " required";
    if (p.GetOutput()) out << " output";
    out << " vis " << p.GetVisibility() << " keyless " << p.GetKeyless() << " input " << p.GetInput();
    out << " alias '" << Joined(p.GetAliases()) << "' default '" << Joined(p.GetStringDefaults()) << "' legal '"
        << Joined(p.GetLegalValues()) << "' illegal '" << Joined(p.GetIllegalValues()) << "'";
    for (const auto& [from, to] : Ranges(p.GetLegalRanges())) out << " from " << from << " to " << to;
    for (const auto& [from, to] : Ranges(p.GetIllegalRanges())) out << " not from " << from << " to " << to;
    out << " element '" << p.GetElement() << "' command '" << p.GetCommand() << "' brief '" << p.GetBrief()
        << "' detail '" << Joined(p.GetDetail()) << "'\n";
  }
  std::string all = out.str();
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) all += Everything(category, indent + "  ");
  return all;
}

constexpr char kExample[] = R"(!BRIEF Compare two files
!PARAMETER -in 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !BRIEF The input file
!END
!CATEGORY "Output options" 2
  !BRIEF What to write
  !PARAMETER -format
    !ALIAS -f
    !TYPE string
    !DEFAULT txt
    !LEGAL_VALUE txt
    !LEGAL_VALUE csv
    !SIMPLE true
    !BRIEF The output format
    !DETAIL
        Either of the two forms.
          Indented further.
  !END
  !PARAMETER -scale
    !TYPE double
    !DEFAULT 1.0
    !LEGAL_RANGE 0 inf
    !VISIBILITY hidden
  !END
!END
)";

constexpr char kExampleRead[] =
    "'' 0 brief 'Compare two files ' detail ''\n"
    "  -in 1 string required vis 1 keyless 1 input 0 alias '' default '' legal '' illegal '' element '' command ''"
    " brief 'The input file ' detail ''\n"
    "  'Output options' 2 brief 'What to write ' detail ''\n"
    "    -format 0 string vis 0 keyless 0 input 0 alias '-f' default 'txt' legal 'txt|csv' illegal '' element ''"
    " command '' brief 'The output format ' detail 'Either of the two forms.|  Indented further.'\n"
    "    -scale 0 double vis 2 keyless 0 input 0 alias '' default '1.0' legal '' illegal '' from 0 to inf element ''"
    " command '' brief '' detail ''\n";

class Configure : public ::testing::Test {
 protected:
  /// Reads a text into the interface and gives whether it configured.
  bool Read(const std::string& text) {
    const bool good = QZConfigure(itf, Bytes(text));
    told = messages.Take();
    return good;
  }

  /// Reads a block of lines as the body of an int parameter.
  const QZParameter& ReadBlock(const std::string& body, const std::string& type = "int") {
    itf.Clear();
    EXPECT_TRUE(Read("!PARAMETER -p\n!TYPE " + type + "\n" + body + "!END\n")) << body;
    return *itf.GetParameter("-p");
  }

  CapturedMessages messages;
  QZInterface itf;
  Told told;
};

TEST_F(Configure, ReadsTheWorkedExample) {
  EXPECT_TRUE(Read(kExample));
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(Everything(itf), kExampleRead);
  EXPECT_TRUE(itf.GetParameter("-scale")->GetHasDefault(0));
  EXPECT_EQ(itf.GetInterface("Output options")->Parent(), &itf);
}

TEST_F(Configure, ReadsEveryEntry) {
  EXPECT_TRUE(
      Read("!PARAMETER -n -3\n!LEGAL_VALUE 1\n!LEGAL_VALUE 2\n!ILLEGAL_VALUE 3\n!LEGAL_RANGE 5 9\n!ILLEGAL_RANGE 7 8\n"
           "!DEFAULT 1\n!DEFAULT 2\n!LIST true\n!LIST no\n!LIST Yes\n!ALIAS -a\n!ALIAS -b\n!REQUIRED on\n!OUTPUT 1\n"
           "!INPUT 4\n!KEYLESS 1\n!VISIBILITY NORMAL\n!SIMPLE false\n!ELEMENT   an  element \n!COMMAND a command\n"
           "!TYPE int\n!BRIEF one   two\t three\n!DETAIL words here don't count\n text\n!END trailing words\n"));
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(
      Everything(itf),
      "'' 0 brief '' detail ''\n"
      "  -n -3 int list required output vis 1 keyless 1 input 4 alias '-a|-b' default '1|2' legal '1|2' illegal '3'"
      " from 5 to 9 not from 7 to 8 element 'an  element' command 'a command' brief 'one two three '"
      " detail 'text'\n");
}

TEST_F(Configure, LevelLines) {
  const std::string keyword = "Error: Probable invalid keyword in interface configuration file\n  line : ";
  const std::string unknown = "Error: Configuring interface.  Unable to parse line\n  line : ";
  const std::string parameter = "!PARAMETER -z\n!TYPE int\n!END\n";
  struct Case {
    std::string text;
    bool good;
    Told told;
    std::string brief, detail;
  };
  for (const Case& c : {
           Case{"", true, {}, "", ""},
           Case{"\n \t\n#BeginInterface#\n  # !what\n#EndInterface#", true, {}, "", ""},
           Case{"!BRIEF one    two\n!END\nwhat\n", true, {}, "one two ", ""},
           Case{"!BRIEF one\n!BRIEF", true, {}, "", ""},
           Case{"!BRIEF one\r\n", true, {}, "one\r ", ""},
           Case{"!DETAIL not this\n  a\n\n# b\n !BRIEF c\nd\n", false, {unknown + "d"}, "c ", "  a||# b"},
           Case{"!DETAIL\na\n!DETAIL\nb", true, {}, "", "a|b"},
           Case{"!DETAIL\na\n!END\nwhat\n", true, {}, "", "a"},
           Case{"!brief one", false, {keyword + "!brief one"}, "", ""},
           Case{"  !PARAMETER  ", false, {keyword + "  !PARAMETER  "}, "", ""},
           Case{"!CATEGORY\n!END\n", false, {keyword + "!CATEGORY"}, "", ""},
           Case{"!CATEGORY\"a\"\n", false, {keyword + "!CATEGORY\"a\""}, "", ""},
           Case{"!TYPE int", false, {keyword + "!TYPE int"}, "", ""},
           Case{"!END\r\n", false, {keyword + "!END\r"}, "", ""},
           Case{"one !BRIEF", false, {unknown + "one !BRIEF"}, "", ""},
       }) {
    itf.Clear();
    EXPECT_EQ(Read(parameter + c.text), c.good) << c.text;
    EXPECT_EQ(told, c.told) << c.text;
    EXPECT_EQ(itf.GetBrief(), c.brief) << c.text;
    EXPECT_EQ(Joined(itf.GetDetail()), c.detail) << c.text;
    EXPECT_NE(itf.GetParameter("-z"), nullptr) << c.text;
  }
}

TEST_F(Configure, CategoryLines) {
  const auto bad = [](const std::string& line, const std::string& what) {
    return "Error: Error parsing line\n" + line + "\n" + what;
  };
  const std::string count = "Invalid number of double quotes";
  const std::string words = "a single word does not follow the quoted category name";
  const std::string many = "too many quotes";
  struct Case {
    std::string line, name;
    int order;
    std::vector<std::string> faults;
  };
  for (const Case& c : {
           Case{"!CATEGORY plain", "plain", 0, {}},
           Case{"!CATEGORY plain 3", "plain", 3, {}},
           Case{"!CATEGORY plain word", "plain", 0, {}},
           Case{"!CATEGORY plain 3 4", "plain", 0, {}},
           Case{"!CATEGORY \"two words\"", "two words", 0, {}},
           Case{"!CATEGORY \" two words \"  \t", " two words ", 0, {}},
           Case{"\t!CATEGORY \"two words\" -7 ", "two words", -7, {}},
           Case{"!CATEGORY \"two words\" x", "two words", 0, {}},
           Case{"!CATEGORY \"two words\" 1 2", "two words", 0, {words}},
           Case{"!CATEGORY passed \"over\" 5", "over", 5, {}},
           Case{"!CATEGORY \"\" 4", " 4", 0, {}},
           Case{"!CATEGORY \"\"", "\"\"", 0, {}},
           Case{"!CATEGORY \"open", "open", 0, {count}},
           Case{"!CATEGORY \"a\" \"5", "\"a\"", 0, {count, many}},
           Case{"!CATEGORY \"a\" \"5\"", "\"a\"", 0, {count, many}},
           Case{"!CATEGORY \"a\"\" 5", "a", 5, {count}},
       }) {
    itf.Clear();
    EXPECT_TRUE(Read(c.line + "\n!BRIEF inside\n!END\n!BRIEF outside\n")) << c.line;
    Told expected;
    for (const std::string& fault : c.faults) expected.push_back(bad(c.line, fault));
    EXPECT_EQ(told, expected) << c.line;
    const QZInterface* category = itf.GetInterface(c.name);
    ASSERT_NE(category, nullptr) << c.line;
    EXPECT_EQ(category->GetOrderPriority(), c.order) << c.line;
    EXPECT_EQ(category->GetBrief() + itf.GetBrief(), "inside outside ") << c.line;
  }
}

TEST_F(Configure, AKnownCategoryIsContinuedWhereverItStands) {
  EXPECT_TRUE(Read("!CATEGORY a 1\n!CATEGORY b 5\n!BRIEF one\n!END\n!END\n"));
  EXPECT_TRUE(Read("!CATEGORY b 2\n!PARAMETER -p\n!TYPE int\n!END\n!END\n!CATEGORY a\n!CATEGORY a 3\n!END\n"));
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(Everything(itf),
            "'' 0 brief '' detail ''\n"
            "  'a' 0 brief '' detail ''\n"
            "    'b' 2 brief 'one ' detail ''\n"
            "      -p 0 int vis 1 keyless 0 input 0 alias '' default '' legal '' illegal '' element '' command ''"
            " brief '' detail ''\n"
            "    'a' 3 brief '' detail ''\n");
}

TEST_F(Configure, AFailedCategoryLeavesTheRestToTheLevelAbove) {
  EXPECT_TRUE(Read("!CATEGORY a\n!CATEGORY b\nwhat\n!BRIEF of a\n!END\n!BRIEF of root\n"));
  EXPECT_EQ(told, (Told{"Error: Configuring interface.  Unable to parse line\n  line : what",
                        "Error: Problem configuring subcategory"}));
  EXPECT_EQ(itf.GetInterface("a")->GetBrief() + itf.GetBrief(), "of a of root ");
  EXPECT_TRUE(Read("!CATEGORY c\n!PARAMETER -x\n!TYPE int\n"));
  EXPECT_EQ(told, (Told{"Error: Configure.  !PARAMETER -x is unterminated (by !END)",
                        "Error: Problem configuring subcategory"}));
}

TEST_F(Configure, ParametersThatFailAreNotAdded) {
  const std::string untyped = "Error: Unknown or unspecified type for parameter -p";
  struct Case {
    std::string body;
    Told told;
  };
  for (const Case& c : {
           Case{"!TYPE int\n", {"Error: Configure.  !PARAMETER -p is unterminated (by !END)"}},
           Case{"!TYPE int\n!LIST maybe\n!END\n",
                {"Error: configuring parameter -p : !LIST must be followed by true or false"}},
           Case{"!BRIEF text\n!END\n", {untyped}},
           Case{"!TYPE\n!END\n", {untyped}},
           Case{"!TYPE int long\n!END\n", {untyped}},
           Case{"!TYPE bit\n!TYPE int\n!END\n",
                {"Warning: QZSimpleFactory.  Unknown classid bit",
                 "Warning: QZInterfaceImpl::AddParamter.  Unknown classid bit", untyped}},
       }) {
    EXPECT_FALSE(Read("!PARAMETER -p\n" + c.body + "!BRIEF behind\n")) << c.body;
    EXPECT_EQ(told, c.told) << c.body;
    EXPECT_EQ(itf.GetParameter("-p"), nullptr) << c.body;
    EXPECT_EQ(itf.GetBrief(), "") << c.body;
  }
}

TEST_F(Configure, ParameterOrders) {
  for (const auto& [line, order] : {std::pair{"-p", 0}, {"-p 5", 5}, {"-p -5", -5}, {"-p five", 0}, {"-p 1 2", 0}}) {
    itf.Clear();
    EXPECT_TRUE(Read(std::string("!PARAMETER ") + line + "\n!TYPE int\n!END\n")) << line;
    EXPECT_EQ(itf.GetParameter("-p")->GetOrderPriority(), order) << line;
  }
}

TEST_F(Configure, BadLinesInAParameterAreToldAndPassedOver) {
  for (const std::string line : {"!ALIAS",
                                 "!ALIAS -a -b",
                                 "!DEFAULT",
                                 "!DEFAULT 1 2",
                                 "!DEFAULT one",
                                 "!REQUIRED maybe",
                                 "!SIMPLE",
                                 "!SIMPLE 2",
                                 "!VISIBILITY",
                                 "!KEYLESS -1",
                                 "!KEYLESS",
                                 "!INPUT x",
                                 "!OUTPUT 7",
                                 "!LEGAL_VALUE x",
                                 "!LEGAL_VALUE 1 2",
                                 "!LEGAL_RANGE 1",
                                 "!ILLEGAL_VALUE x",
                                 "!ILLEGAL_RANGE 1 inf",
                                 "!ILLEGAL_RANGE 1 2 3",
                                 "!ELEMENT",
                                 "!ELEMENT  ",
                                 "!ELEMENT\tword",
                                 "!COMMAND",
                                 "!WHAT",
                                 "word",
                                 "!brief x",
                                 "!PARAMETER -q",
                                 "!CATEGORY c",
                                 "!END\r"}) {
    const QZParameter& parameter = ReadBlock("  " + line + "\n!KEYLESS 3\n");
    EXPECT_EQ(told, Told{"Error: Problem parsing interface configuration file or parameter -p\n  line :   " + line});
    EXPECT_EQ(parameter.GetKeyless(), 3U) << line;
  }
}

TEST_F(Configure, PassesOverWhatIsNoEntry) {
  ReadBlock("\n \t \n# !WHAT\n  #!END\n!TYPE a b\n!LIST\n!LIST 1 2\n");
  EXPECT_EQ(told, Told{});
}

TEST_F(Configure, Visibilities) {
  for (const auto& [line, visibility] : {std::pair{"!SIMPLE yes", 0U},
                                         {"!SIMPLE off", 1U},
                                         {"!VISIBILITY Simple", 0U},
                                         {"!VISIBILITY normal", 1U},
                                         {"!VISIBILITY HIDDEN", 2U}})
    EXPECT_EQ(ReadBlock(std::string("!VISIBILITY hidden\n") + line + "\n").GetVisibility(), visibility) << line;
  EXPECT_EQ(ReadBlock("!VISIBILITY hidden\n!VISIBILITY Secret\n").GetVisibility(), 2U);
  EXPECT_EQ(told, Told{"Error: Unknown keyword, secret, passed to !VISIBILITY"});
}

TEST_F(Configure, Defaults) {
  EXPECT_EQ(Joined(ReadBlock("!DEFAULT 1\n!DEFAULT 2\n").GetStringDefaults()), "2");
  EXPECT_EQ(Joined(ReadBlock("!DEFAULT 1\n!DEFAULT 2\n!LIST true\n").GetStringDefaults()), "1|2");
  EXPECT_TRUE(itf.GetParameter("-p")->GetHasDefault(1));
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(Joined(ReadBlock("!DEFAULT 7\n!LEGAL_RANGE 1 5\n").GetStringDefaults()), "7");
  EXPECT_EQ(told, Told{"Warning: !DEFAULT value of 7 is not a legal setting for parameter -p"});
  const std::string keywords = "!LEGAL_VALUE 1\n!LEGAL_VALUE one\n";
  EXPECT_EQ(Joined(ReadBlock(keywords + "!DEFAULT one\n", "const").GetStringDefaults()), "one");
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(Joined(ReadBlock("!DEFAULT one\n" + keywords, "const").GetStringDefaults()), "");
  EXPECT_EQ(told, Told{"Error: Problem parsing interface configuration file or parameter -p\n  line : !DEFAULT one"});
}

TEST_F(Configure, DetailLosesTheCommonIndentation) {
  struct Case {
    std::string lines, detail;
  };
  for (const Case& c : {
           Case{"    a\n      b\n    c\n", "a|  b|c"},
           Case{"    a\n\n   \n     \n    b\n", "a||   | |b"},
           Case{"\ta\n    b\n", "\ta|    b"},
           Case{"    a\n    # b\n", "a|# b"},
           Case{"  !what\n  !END_\n", "!what|!END_"},
           Case{"  a\n!DETAIL\n    b\n", "a|b"},
           Case{"  a\n  !BRIEF x\n", "a"},
           Case{"", ""},
           Case{"   \n", "   "},
       }) {
    EXPECT_EQ(Joined(ReadBlock("!DETAIL\n" + c.lines).GetDetail()), c.detail) << c.lines;
    EXPECT_EQ(told, Told{}) << c.lines;
  }
}

TEST_F(Configure, DetailEndsAtEveryKeywordOfAParameter) {
  for (const std::string keyword : {"!TYPE", "!LIST", "!ALIAS", "!BRIEF", "!DETAIL", "!DEFAULT", "!REQUIRED", "!SIMPLE",
                                    "!VISIBILITY", "!KEYLESS", "!INPUT", "!OUTPUT", "!LEGAL_VALUE", "!LEGAL_RANGE",
                                    "!ILLEGAL_VALUE", "!ILLEGAL_RANGE", "!COMMAND", "!ELEMENT"})
    EXPECT_EQ(Joined(ReadBlock("!DETAIL\n a\n " + keyword + " x y z\n").GetDetail()), "a") << keyword;
}

TEST_F(Configure, TheRestOfALineIsTakenByBlanks) {
  for (const auto& [line, rest] : {std::pair{"!ELEMENT a", "a"},
                                   {"  !ELEMENT   a  b  ", "a  b"},
                                   {"\t !ELEMENT a", "a"},
                                   {"!ELEMENT\ta b", "b"},
                                   {"!ELEMENT \ta", "\ta"}})
    EXPECT_EQ(ReadBlock(std::string(line) + "\n").GetElement(), rest) << line;
  EXPECT_EQ(GetStringAfterFirstWord(""), "");
  EXPECT_EQ(GetStringAfterFirstWord("word"), "");
}

TEST_F(Configure, ReadingAStreamStopsBehindTheEnd) {
  qzisstream in;
  in.set("!BRIEF one\n!CATEGORY c\n!END\n!END\nrest\n");
  EXPECT_TRUE(QZConfigure(itf, in));
  std::string line;
  EXPECT_TRUE(in.getline(line));
  EXPECT_EQ(line, "rest");
}

std::string Nested(unsigned int levels, const std::string& inside) {
  std::string text;
  for (unsigned int i = 1; i <= levels; ++i) text += "!CATEGORY c" + std::to_string(i) + "\n";
  text += inside;
  for (unsigned int i = 0; i < levels; ++i) text += "!END\n";
  return text + "!BRIEF end\n";
}

TEST_F(Configure, RefusesCategoriesBelowLevel256) {
  const std::string inside = "!PARAMETER -p\n!CATEGORY x\n!TYPE int\n!END\n!CATEGORY y\n!DETAIL\ntext\n!END\n";
  EXPECT_TRUE(Read(Nested(256, "")));
  EXPECT_EQ(told, Told{});
  for (const unsigned int levels : {257U, 10000U}) {
    itf.Clear();
    EXPECT_TRUE(Read(Nested(levels, inside))) << levels;
    EXPECT_EQ(told, Told{"Error: Problem configuring subcategory"}) << levels;
    EXPECT_NE(itf.GetInterface("c256"), nullptr) << levels;
    EXPECT_EQ(itf.GetInterface("c257"), nullptr) << levels;
    EXPECT_EQ(itf.GetParameter("-p"), nullptr) << levels;
    EXPECT_EQ(itf.GetBrief(), "end ") << levels;
  }
}

TEST_F(Configure, TheLimitCountsFromTheRootAlsoBelowAContinuedCategory) {
  EXPECT_TRUE(Read(Nested(200, "")));
  std::string text = "!CATEGORY c200\n";
  for (int i = 1; i <= 57; ++i) text += "!CATEGORY d" + std::to_string(i) + "\n";
  EXPECT_TRUE(Read(text));
  EXPECT_EQ(told, Told{"Error: Problem configuring subcategory"});
  EXPECT_NE(itf.GetInterface("d56"), nullptr);
  EXPECT_EQ(itf.GetInterface("d57"), nullptr);
}

TEST_F(Configure, WritesTheLanguage) {
  EXPECT_TRUE(Read(kExample));
  QZInterface& category = *itf.GetInterface("Output options");
  category.AddDetail("More of it.");
  category.AddDetail("");
  QZParameter& in = *itf.GetParameter("-in");
  in.AddLegalValue("a");
  in.AddIllegalValue("b");
  in.AddAlias("-i");
  in.SetInput(2);
  in.SetOutput(true);
  in.SetElement("some element");
  in.SetCommand("some command");
  in.SetStringDefault("two words");
  in.LoadDefault();
  itf.AddParameter("int")->SetName("-z");
  itf.GetParameter("-z")->AddLegalRange("-inf", "5");
  itf.GetParameter("-z")->AddIllegalRange("1", "2");
  itf.GetParameter("-z")->SetVisibility(7);
  const std::string expected =
      "!PARAMETER -z 0\n  !TYPE int\n  !LIST false\n  !REQUIRED false\n  !OUTPUT false\n  !LEGAL_RANGE -inf 5\n"
      "  !ILLEGAL_RANGE 1 2\n!END\n"
      "!PARAMETER -in 1\n  !TYPE string\n  !LIST false\n  !ALIAS -i\n  !DEFAULT \"two words\"\n  !REQUIRED true\n"
      "  !INPUT 2\n  !OUTPUT true\n  !SIMPLE false\n  !KEYLESS 1\n  !LEGAL_VALUE a\n  !ILLEGAL_VALUE b\n"
      "  !ELEMENT some element\n  !COMMAND some command\n  !BRIEF The input file \n!END\n"
      "\n!CATEGORY \"Output options\"  2\n  !BRIEF What to write \n!DETAIL\n    More of it.\n    \n"
      "!PARAMETER -format 0\n  !TYPE string\n  !LIST false\n  !ALIAS -f\n  !DEFAULT txt\n  !REQUIRED false\n"
      "  !OUTPUT false\n  !SIMPLE true\n  !LEGAL_VALUE txt\n  !LEGAL_VALUE csv\n  !BRIEF The output format \n"
      "  !DETAIL\n    Either of the two forms.\n      Indented further.\n!END\n"
      "!END\n\n";
  EXPECT_EQ(Text(itf), expected);
}

TEST_F(Configure, ReadsBackWhatItWrites) {
  EXPECT_TRUE(Read(
      "!PARAMETER -n 2\n!TYPE float\n!LIST true\n!DEFAULT 1.5\n!DEFAULT 2\n!ALIAS -m\n!LEGAL_RANGE 0 inf\n"
      "!ILLEGAL_RANGE 7 8\n!KEYLESS 2\n!INPUT 1\n!OUTPUT true\n!REQUIRED true\n!SIMPLE true\n!ELEMENT e f\n!COMMAND c\n"
      "!BRIEF of n\n!DETAIL\n a\n\n  b\n!END\n!CATEGORY \"a b\" 4\n!PARAMETER -k\n!TYPE const\n!LEGAL_VALUE 3\n"
      "!LEGAL_VALUE three\n!DEFAULT 3\n!END\n!CATEGORY c -1\n!BRIEF of c\n!END\n!END\n"));
  const std::string text = Text(itf);
  const std::string everything = Everything(itf);
  itf.Clear();
  EXPECT_TRUE(Read("#BeginInterface#\n" + text + "#EndInterface#\n"));
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(Everything(itf), everything);
  EXPECT_EQ(Text(itf), text);
}

TEST(ConfigureText, QuotesWhatHoldsBlanks) {
  EXPECT_EQ(QuotedString("a b"), "\"a b\"");
  EXPECT_EQ(QuotedString("a\tb"), "\"a\tb\"");
  EXPECT_EQ(QuotedString("a\"b"), "a\"b");
  EXPECT_EQ(QuotedString(""), "");
}

// The line reader looks at many bytes at a time; a plain split of the same text stands beside it.
TEST(ConfigureLines, AreThoseOfAPlainSplitFromMemoryAndFromAStream) {
  std::mt19937 random(3);
  const std::string letters = "  \t\n!ab\r#\x80";
  for (std::size_t size = 0; size < 150; ++size)
    for (int round = 0; round < 40; ++round) {
      std::string text;
      while (text.size() < size) text += random() % 3 == 0 ? letters[random() % letters.size()] : 'w';
      std::vector<std::string> lines;
      QZStringTokenize(lines, text, "\n", false);
      if (lines.back().empty()) lines.pop_back();

      qzisstream in;
      in.set(text);
      for (ConfigureSource source : {ConfigureSource(text), ConfigureSource(in)}) {
        ConfigureLine line;
        for (const std::string& expected : lines) {
          ASSERT_TRUE(source.Read(line)) << text;
          ASSERT_EQ(line.text, expected) << text;
          std::vector<std::string> words;
          QZStringTokenize(words, expected, " \t\n", true);
          ASSERT_EQ(std::vector<std::string>(line.words.begin(), line.words.end()), words) << text;
        }
        EXPECT_FALSE(source.Read(line)) << text;
      }
    }
}

/// The parameters of the example and where their blocks end.
struct Block {
  std::string name;
  std::size_t end;
};

std::vector<Block> ExampleBlocks() {
  const std::string text = kExample;
  std::vector<Block> blocks;
  std::size_t at = 0;
  for (const std::string name : {"-in", "-format", "-scale"}) {
    at = text.find("!END", at) + 4;
    blocks.push_back({name, at});
  }
  return blocks;
}

TEST_F(Configure, ACutTextGivesTheParametersThatAreWhole) {
  const std::string good = kExample;
  for (std::size_t size = 0; size <= good.size(); ++size) {
    itf.Clear();
    Read(good.substr(0, size));
    for (const Block& block : ExampleBlocks())
      EXPECT_EQ(itf.GetParameter(block.name) != nullptr, block.end <= size) << block.name << " cut at " << size;
  }
}

TEST_F(Configure, AFlippedByteLeavesTheParametersBeforeIt) {
  const std::string good = kExample;
  for (std::size_t i = 0; i < good.size(); ++i)
    for (const int flip : {0x01, 0x02, 0x04, 0x08, 0x0A, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
      std::string damaged = good;
      damaged[i] = static_cast<char>(damaged[i] ^ flip);
      qzisstream in;
      in.set(damaged);
      itf.Clear();
      QZConfigure(itf, in);
      QZInterface fromMemory;
      QZConfigure(fromMemory, Bytes(damaged));
      EXPECT_TRUE(damaged[i] == 0 || Everything(itf) == Everything(fromMemory)) << i << " flip " << flip;
      for (const Block& block : ExampleBlocks())
        EXPECT_TRUE(block.end >= i || itf.GetParameter(block.name) != nullptr) << i << " flip " << flip;
      // What was read can be written and read again, whatever it is.
      QZInterface again;
      QZConfigure(again, Bytes(Text(itf)));
    }
  EXPECT_FALSE(messages.Take().empty());
}

}  // namespace
}  // namespace QZSystem
