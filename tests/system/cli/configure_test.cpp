#include "qz/system/cli/configure.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "interface_testing.h"
#include "qz/platform/memorystream.h"
#include "qz/system/cli/configureline_impl.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {
namespace {

std::string Text(const QZInterface& itf) {
  qzosstream out;
  QZWriteInterfaceConfigurationFile(itf, out);
  return out.str();
}

constexpr char kExample[] =
    "!BRIEF Compare two files\n"
    "!PARAMETER -in 1\n  !TYPE string\n  !KEYLESS 1\n  !REQUIRED true\n  !BRIEF The input file\n!END\n"
    "!CATEGORY \"Output options\" 2\n  !BRIEF What to write\n"
    "  !PARAMETER -format\n    !ALIAS -f\n    !TYPE string\n    !DEFAULT txt\n    !LEGAL_VALUE txt\n"
    "    !LEGAL_VALUE csv\n    !SIMPLE true\n    !BRIEF The output format\n    !DETAIL\n"
    "        Either of the two forms.\n          Indented further.\n  !END\n"
    "  !PARAMETER -scale\n    !TYPE double\n    !DEFAULT 1.0\n    !LEGAL_RANGE 0 inf\n    !VISIBILITY hidden\n  !END\n"
    "!END\n";

class Configure : public ::testing::Test {
 protected:
  /// Reads a text into the interface and gives whether it configured.
  bool Read(const std::string& text) {
    const bool good = QZConfigure(itf, Bytes(text));
    told = messages.Take();
    return good;
  }

  /// Reads a block of lines as the body of an int parameter, behind some that are passed over.
  const QZParameter& ReadBlock(const std::string& body, const std::string& type = "int") {
    itf.Clear();
    EXPECT_TRUE(
        Read("!PARAMETER -p five\n\n \t \n# !WHAT\n  #!END\n!LIST\n!LIST 1 2\n!TYPE " + type + "\n" + body + "!END\n"))
        << body;
    return *itf.GetParameter("-p");
  }

  CapturedMessages messages;
  QZInterface itf;
  Told told;
};

TEST_F(Configure, ReadsEveryEntryAndReadsBackWhatItWrites) {
  EXPECT_TRUE(Read(
      "!PARAMETER -n -3\n!LEGAL_VALUE 1\n!LEGAL_VALUE 2\n!ILLEGAL_VALUE 3\n!LEGAL_RANGE 5 9\n!ILLEGAL_RANGE 7 8\n"
      "!DEFAULT 1\n!DEFAULT 2\n!LIST true\n!LIST no\n!LIST Yes\n!ALIAS -a\n!ALIAS -b\n!REQUIRED on\n!OUTPUT 1\n"
      "!INPUT 4\n!KEYLESS 1\n!VISIBILITY NORMAL\n!SIMPLE false\n!ELEMENT   an  element \n!COMMAND a command\n"
      "!TYPE int\n!BRIEF one   two\t three\n!DETAIL words here don't count\n text\n\n   more\n!END trailing words\n"
      "!CATEGORY \"a b\" 4\n!PARAMETER -k\n!TYPE const\n!LEGAL_VALUE 3\n!LEGAL_VALUE three\n!DEFAULT 3\n!END\n"
      "!CATEGORY c -1\n!BRIEF of c\n!END\n!END\n"));
  const std::string written =
      "!PARAMETER -n -3\n  !TYPE int\n  !LIST true\n  !ALIAS -a\n  !ALIAS -b\n  !DEFAULT 1\n  !DEFAULT 2\n"
      "  !REQUIRED true\n  !INPUT 4\n  !OUTPUT true\n  !SIMPLE false\n  !KEYLESS 1\n  !LEGAL_VALUE 1\n"
      "  !LEGAL_VALUE 2\n  !ILLEGAL_VALUE 3\n  !LEGAL_RANGE 5 9\n  !ILLEGAL_RANGE 7 8\n  !ELEMENT an  element\n"
      "  !COMMAND a command\n  !BRIEF one two three \n  !DETAIL\n    text\n    \n      more\n!END\n"
      "\n!CATEGORY \"a b\"  4\n"
      "!PARAMETER -k 0\n  !TYPE const\n  !LIST false\n  !DEFAULT 3\n  !REQUIRED false\n  !OUTPUT false\n"
      "  !SIMPLE false\n  !LEGAL_VALUE 3\n  !LEGAL_VALUE three\n!END\n"
      "\n!CATEGORY \"c\"  -1\n  !BRIEF of c \n!END\n\n!END\n\n";
  EXPECT_EQ(Text(itf), written);
  itf.Clear();
  EXPECT_TRUE(Read("#BeginInterface#\n" + written + "#EndInterface#\n"));
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(Text(itf), written);
}

TEST_F(Configure, WritesWhatNoTextBrings) {
  EXPECT_TRUE(
      Read("!BRIEF none\n!CATEGORY c\n!DETAIL\n  more\n\n!PARAMETER -h\n!TYPE int\n!VISIBILITY hidden\n!END\n!END\n"));
  QZParameter& p = *itf.AddParameter("string");
  EXPECT_TRUE(p.SetName("-p") && p.SetVisibility(7) && p.SetIsList(true));
  for (const char* text : {"a b", "a\tb", "a\"b", ""}) EXPECT_TRUE(p.AddStringDefault(text) && p.LoadDefault());
  EXPECT_EQ(Text(itf),
            "!PARAMETER -p 0\n  !TYPE string\n  !LIST true\n  !DEFAULT \"a b\"\n  !DEFAULT \"a\tb\"\n  !DEFAULT a\"b\n"
            "  !REQUIRED false\n  !OUTPUT false\n!END\n"
            "\n!CATEGORY \"c\"  0\n!DETAIL\n      more\n    \n!END\n\n");
}

TEST_F(Configure, LevelLines) {
  const std::string keyword = "Error: Probable invalid keyword in interface configuration file\n  line : ";
  const std::string unknown = "Error: Configuring interface.  Unable to parse line\n  line : ";
  const struct {
    std::string text, brief, detail, told;
  } cases[] = {
      {"\n \t\n#BeginInterface#\n  # !what\n#EndInterface#", "", "", ""},
      {"!BRIEF one    two\n!END\nwhat\n", "one two ", "", ""},
      {"!BRIEF one\n!BRIEF", "", "", ""},
      {"!BRIEF one\r\n", "one\r ", "", ""},
      {"!DETAIL not this\n  a\n\n# b\n !BRIEF c\nd\n", "c ", "  a||# b", unknown + "d"},
      {"!DETAIL\na\n!DETAIL\nb", "", "a|b", ""},
      {"!DETAIL\na\n!END\nwhat\n", "", "a", ""},
      {"  !PARAMETER  ", "", "", keyword + "  !PARAMETER  "},
      {"!CATEGORY\n!END\n", "", "", keyword + "!CATEGORY"},
      {"!CATEGORY\"a\"\n", "", "", keyword + "!CATEGORY\"a\""},
      {"!END\r\n", "", "", keyword + "!END\r"},
  };
  for (const auto& c : cases) {
    itf.Clear();
    EXPECT_EQ(Read("!PARAMETER -z\n!TYPE int\n!END\n" + c.text), c.told.empty()) << c.text;
    EXPECT_EQ(told, c.told.empty() ? Told{} : Told{c.told}) << c.text;
    EXPECT_EQ(itf.GetBrief(), c.brief) << c.text;
    EXPECT_EQ(Joined(itf.GetDetail()), c.detail) << c.text;
    EXPECT_NE(itf.GetParameter("-z"), nullptr) << c.text;
  }
}

TEST_F(Configure, CategoryLines) {
  const std::string count = "Invalid number of double quotes";
  const std::string words = "a single word does not follow the quoted category name";
  const struct {
    std::string words, name;
    int order;
    std::vector<std::string> faults;
  } cases[] = {
      {"plain 3", "plain", 3, {}},
      {"plain 3 4", "plain", 0, {}},
      {"\" two words \" -7 \t", " two words ", -7, {}},
      {"\"two words\" x", "two words", 0, {}},
      {"\"two words\" 1 2", "two words", 0, {words}},
      {"passed \"over\" 5", "over", 5, {}},
      {"\"\" 4", " 4", 0, {}},
      {"\"\"", "\"\"", 0, {}},
      {"\"open", "open", 0, {count}},
      {"\"a\" \"5\"", "\"a\"", 0, {count, "too many quotes"}},
      {"\"a\"\" 5", "a", 5, {count}},
  };
  for (const auto& c : cases) {
    itf.Clear();
    const std::string line = "\t!CATEGORY " + c.words;
    EXPECT_TRUE(Read(line + "\n!BRIEF inside\n!END\n!BRIEF outside\n")) << line;
    Told expected;
    for (const std::string& fault : c.faults) expected.push_back("Error: Error parsing line\n" + line + "\n" + fault);
    EXPECT_EQ(told, expected) << line;
    const QZInterface* category = itf.GetInterface(c.name);
    ASSERT_NE(category, nullptr) << line;
    EXPECT_EQ(category->GetOrderPriority(), c.order) << line;
    EXPECT_EQ(category->GetBrief() + itf.GetBrief(), "inside outside ") << line;
  }
}

TEST_F(Configure, AKnownCategoryIsContinuedWhereverItStands) {
  EXPECT_TRUE(Read("!CATEGORY a 1\n!CATEGORY b 5\n!BRIEF one\n!END\n!END\n"));
  EXPECT_TRUE(Read("!CATEGORY b 2\n!PARAMETER -p\n!TYPE int\n!END\n!END\n!CATEGORY a\n!CATEGORY a 3\n!END\n"));
  EXPECT_EQ(told, Told{});
  EXPECT_EQ(Text(itf),
            "\n!CATEGORY \"a\"  0\n"
            "\n!CATEGORY \"b\"  2\n  !BRIEF one \n!PARAMETER -p 0\n  !TYPE int\n  !LIST false\n  !REQUIRED false\n"
            "  !OUTPUT false\n  !SIMPLE false\n!END\n!END\n\n"
            "\n!CATEGORY \"a\"  3\n!END\n\n!END\n\n");
}

TEST_F(Configure, AFailedCategoryLeavesTheRestToTheLevelAbove) {
  EXPECT_TRUE(Read("!CATEGORY a\n!CATEGORY b\nwhat\n!BRIEF of a\n!END\n!BRIEF of root\n"));
  EXPECT_EQ(told, (Told{"Error: Configuring interface.  Unable to parse line\n  line : what",
                        "Error: Problem configuring subcategory"}));
  EXPECT_EQ(itf.GetInterface("a")->GetBrief() + itf.GetBrief(), "of a of root ");
}

TEST_F(Configure, ParametersThatFailAreNotAdded) {
  const std::string untyped = "Error: Unknown or unspecified type for parameter -p";
  const std::pair<std::string, Told> cases[] = {
      {"!TYPE int\n", {"Error: Configure.  !PARAMETER -p is unterminated (by !END)"}},
      {"!TYPE int\n!LIST maybe\n!END\n", {"Error: configuring parameter -p : !LIST must be followed by true or false"}},
      {"!BRIEF text\n!END\n", {untyped}},
      {"!TYPE\n!END\n", {untyped}},
      {"!TYPE int long\n!END\n", {untyped}},
      {"!TYPE bit\n!TYPE int\n!END\n",
       {"Warning: QZSimpleFactory.  Unknown classid bit", "Warning: QZInterfaceImpl::AddParamter.  Unknown classid bit",
        untyped}},
  };
  for (const auto& [body, expected] : cases) {
    EXPECT_FALSE(Read("!PARAMETER -p\n" + body + "!BRIEF behind\n")) << body;
    EXPECT_EQ(told, expected) << body;
    EXPECT_EQ(itf.GetParameter("-p"), nullptr) << body;
    EXPECT_EQ(itf.GetBrief(), "") << body;
  }
}

TEST_F(Configure, BadLinesInAParameterAreToldAndPassedOver) {
  std::istringstream lines(
      "!ALIAS|!ALIAS -a -b|!DEFAULT|!DEFAULT 1 2|!DEFAULT one|!REQUIRED maybe|!SIMPLE|!SIMPLE 2|!VISIBILITY|"
      "!KEYLESS -1|!KEYLESS|!INPUT x|!OUTPUT 7|!LEGAL_VALUE x|!LEGAL_VALUE 1 2|!LEGAL_RANGE 1|!ILLEGAL_VALUE x|"
      "!ILLEGAL_RANGE 1 inf|!ILLEGAL_RANGE 1 2 3|!ELEMENT|!ELEMENT  |!ELEMENT\tword|!COMMAND|!WHAT|word|!brief x|"
      "!PARAMETER -q|!CATEGORY c|!END\r");
  for (std::string line; std::getline(lines, line, '|');) {
    const QZParameter& parameter = ReadBlock("  " + line + "\n!KEYLESS 3\n");
    EXPECT_EQ(told, Told{"Error: Problem parsing interface configuration file or parameter -p\n  line :   " + line});
    EXPECT_EQ(parameter.GetKeyless(), 3U) << line;
  }
}

TEST_F(Configure, Visibilities) {
  for (const auto& [line, visibility] :
       {std::pair{"!SIMPLE yes", 0U}, {"!SIMPLE off", 1U}, {"!VISIBILITY Simple", 0U}, {"!VISIBILITY HIDDEN", 2U}})
    EXPECT_EQ(ReadBlock(line + std::string("\n")).GetVisibility(), visibility) << line;
  EXPECT_EQ(ReadBlock("!VISIBILITY hidden\n!VISIBILITY Secret\n").GetVisibility(), 2U);
  EXPECT_EQ(told, Told{"Error: Unknown keyword, secret, passed to !VISIBILITY"});
}

TEST_F(Configure, Defaults) {
  EXPECT_EQ(Joined(ReadBlock("!DEFAULT 1\n!DEFAULT 2\n").GetStringDefaults()), "2");
  EXPECT_EQ(Joined(ReadBlock("!DEFAULT 1\n!DEFAULT 2\n!LIST true\n").GetStringDefaults()), "1|2");
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
  const std::pair<const char*, const char*> cases[] = {{"    a\n      b\n    c\n", "a|  b|c"},
                                                       {"    a\n\n   \n     \n    b\n", "a||   | |b"},
                                                       {"\ta\n    b\n", "\ta|    b"},
                                                       {"    a\n    # b\n", "a|# b"},
                                                       {"  !what\n  !END_\n", "!what|!END_"},
                                                       {"  a\n!DETAIL\n    b\n", "a|b"},
                                                       {"", ""},
                                                       {"   \n", "   "}};
  for (const auto& [lines, detail] : cases) {
    EXPECT_EQ(Joined(ReadBlock(std::string("!DETAIL\n") + lines).GetDetail()), detail) << lines;
    EXPECT_EQ(told, Told{}) << lines;
  }
}

TEST_F(Configure, DetailEndsAtEveryKeywordOfAParameter) {
  for (const std::string keyword : {"!TYPE", "!LIST", "!ALIAS", "!BRIEF", "!DETAIL", "!DEFAULT", "!REQUIRED", "!SIMPLE",
                                    "!VISIBILITY", "!KEYLESS", "!INPUT", "!OUTPUT", "!LEGAL_VALUE", "!LEGAL_RANGE",
                                    "!ILLEGAL_VALUE", "!ILLEGAL_RANGE", "!COMMAND", "!ELEMENT"})
    EXPECT_EQ(Joined(ReadBlock("!DETAIL\n a\n " + keyword + " x y z\n").GetDetail()), "a") << keyword;
}

TEST_F(Configure, TheRestOfALineIsTakenByBlanks) {
  const std::pair<const char*, const char*> cases[] = {
      {"!ELEMENT a", "a"}, {"\t !ELEMENT   a  b  ", "a  b"}, {"!ELEMENT\ta b", "b"}, {"!ELEMENT \ta", "\ta"}};
  for (const auto& [line, rest] : cases) EXPECT_EQ(ReadBlock(std::string(line) + "\n").GetElement(), rest) << line;
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
  const Told refused = {"Error: Problem configuring subcategory"};
  for (const unsigned int levels : {257U, 10000U}) {
    itf.Clear();
    EXPECT_TRUE(Read(Nested(levels, inside))) << levels;
    EXPECT_EQ(told, refused) << levels;
    EXPECT_NE(itf.GetInterface("c256"), nullptr) << levels;
    EXPECT_EQ(itf.GetInterface("c257"), nullptr) << levels;
    EXPECT_EQ(itf.GetParameter("-p"), nullptr) << levels;
    EXPECT_EQ(itf.GetBrief(), "end ") << levels;
  }
  // The limit counts from the root also below a category that is continued.
  EXPECT_TRUE(Read("!CATEGORY c255\n!CATEGORY d\n!END\n!CATEGORY c256\n!CATEGORY e\n"));
  EXPECT_EQ(told, refused);
  EXPECT_NE(itf.GetInterface("d"), nullptr);
  EXPECT_EQ(itf.GetInterface("e"), nullptr);
}

// The line reader looks at many bytes at a time; a plain split of the same text stands beside it.
TEST(ConfigureLines, AreThoseOfAPlainSplitFromMemoryAndFromAStream) {
  std::mt19937 random(3);
  const std::string letters = "  \t\n!ab\r#\x80";
  for (std::size_t round = 0; round < 6000; ++round) {
    std::string text;
    while (text.size() < round / 40) text += random() % 3 == 0 ? letters[random() % letters.size()] : 'w';
    std::vector<std::string> lines, words;
    QZStringTokenize(lines, text, "\n", false);
    if (lines.back().empty()) lines.pop_back();
    qzisstream in;
    in.set(text);
    for (ConfigureSource source : {ConfigureSource(text), ConfigureSource(in)}) {
      ConfigureLine line;
      for (const std::string& expected : lines) {
        ASSERT_TRUE(source.Read(line)) << text;
        ASSERT_EQ(line.text, expected) << text;
        words.clear();
        QZStringTokenize(words, expected, " \t\n", true);
        ASSERT_EQ(std::vector<std::string>(line.words.begin(), line.words.end()), words) << text;
      }
      EXPECT_FALSE(source.Read(line)) << text;
    }
  }
}

// A text that is cut or damaged gives the parameters whose blocks are whole.
class ConfigureDamage : public Configure {
 protected:
  /// The text that configured `itf` had its first fault at `place`.
  void ExpectWholeBlocks(std::size_t place, bool isCut) {
    std::size_t end = 0;
    for (const std::string name : {"-in", "-format", "-scale"}) {
      end = good.find("!END", end) + 4;
      if (end > place && !isCut) continue;
      EXPECT_EQ(itf.GetParameter(name) != nullptr, end <= place) << name << " " << place;
    }
  }
  const std::string good = kExample;
};

TEST_F(ConfigureDamage, ACutTextGivesTheParametersThatAreWhole) {
  for (std::size_t size = 0; size <= good.size(); ++size) {
    itf.Clear();
    Read(good.substr(0, size));
    ExpectWholeBlocks(size, true);
  }
}

TEST_F(ConfigureDamage, AFlippedByteLeavesTheParametersBeforeIt) {
  for (std::size_t i = 1; i < good.size(); ++i) {
    for (const int flip : {0x01, 0x02, 0x04, 0x08, 0x0A, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
      std::string damaged = good;
      damaged[i] = static_cast<char>(damaged[i] ^ flip);
      qzisstream in;
      in.set(damaged);
      itf.Clear();
      QZConfigure(itf, in);
      ExpectWholeBlocks(i - 1, false);
      QZInterface fromMemory, again;
      QZConfigure(fromMemory, Bytes(damaged));
      EXPECT_TRUE(damaged[i] == 0 || Text(itf) == Text(fromMemory)) << i << " flip " << flip;
      QZConfigure(again, Bytes(Text(itf)));  // what was read can be written and read again, whatever it is
    }
  }
  EXPECT_FALSE(messages.Take().empty());
}

}  // namespace
}  // namespace QZSystem
