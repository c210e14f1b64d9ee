#include "qz/system/cli/requirement.h"

#include <gtest/gtest.h>

#include "qz/system/cli/interface.h"
#include "qz/system/cli/parameter_concrete.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

class Requirement : public testing::Test {
 protected:
  // -a has the value 3, -d the default 4 and the alias -dd, -none nothing; -deep has a value and is in a category.
  Requirement() {
    QZIntParameter a("-a");
    a.SetValue(3);
    itf.AddParameter(a);
    QZIntParameter d("-d", 4);
    d.AddAlias("-dd");
    itf.AddParameter(d);
    itf.AddParameter(QZStringParameter("-none"));
    QZStringParameter deep("-deep");
    deep.SetValue("x");
    itf.AddInterface()->AddParameter(deep);
  }

  bool Check(const std::string& text, unsigned int level = QZErrorLevel::Error) const {
    return QZHasRequired(itf, reinterpret_cast<const unsigned char*>(text.c_str()), level);
  }
  bool CheckOptions(const std::string& options) const { return Check("!REQUIREMENT\n" + options + "\n!END\n"); }

  QZInterface itf;
  Messages messages;
};

TEST_F(Requirement, ConditionsHoldByWhatIsSet) {
  for (const char* met : {"!OPTION", "\t!OPTION -A -DD -DEEP", "!OPTION -a +3 -d 4", "!OPTION !-a 4",
                          "!OPTION !-none x", "!OPTION -a !-none", "!OPTION word !word -a 3 word !OPTION -d",
                          "!OPTION -none\n!OPTION -a", "!OPTION -a\n!OPTION -none"}) {
    EXPECT_TRUE(CheckOptions(met)) << met;
    EXPECT_EQ(messages.Take(), "") << met;
  }
  for (const char* unmet :
       {"!OPTION -none", "!OPTION -a -none", "!OPTION !-d", "!OPTION -a 4", "!OPTION !-a 3", "!OPTION -none x",
        "!OPTION -none\n!OPTION !-a", "something else\n!REQUIREMENT\n#!OPTION -a\n!NEITHER"}) {
    EXPECT_FALSE(CheckOptions(unmet)) << unmet;
    EXPECT_EQ(messages.Take(), "Warning: Missing requirements:\n\n") << unmet;
  }
}

TEST_F(Requirement, TextWithoutRequirementsAsksForNothing) {
  EXPECT_TRUE(QZHasRequired(itf, nullptr));
  EXPECT_TRUE(Check(""));
  EXPECT_TRUE(Check("# comment\n\n \t \n   #!REQUIREMENT\n"));
  EXPECT_EQ(messages.Take(), "");
}

TEST_F(Requirement, EveryMissingParameterIsToldBeforeTheText) {
  itf.GetParameter("-none")->SetRequired(true);
  itf.GetParameter("-d")->SetRequired(true);
  QZBoolParameter other("-other");
  other.SetRequired(true);
  itf.AddInterface()->AddParameter(other);
  const std::string missing = "Warning: Missing required parameter -none\nWarning: Missing required parameter -other\n";
  EXPECT_FALSE(QZHasRequired(itf, nullptr));
  EXPECT_EQ(messages.Take(), missing);
  EXPECT_FALSE(CheckOptions("!OPTION -none"));
  EXPECT_EQ(messages.Take(), missing + "Warning: Missing requirements:\n\n");
}

TEST_F(Requirement, TheMessageIsWhatStandsUpToTheNextKeyword) {
  EXPECT_FALSE(
      CheckOptions("  !ERROR_MSG ignored\n    Give -in or\n  # not this\n \t\n\n      -list.\n  !OPTION -none\n  "
                   "!ERROR_MSG\n100%s\n"));
  EXPECT_EQ(messages.Take(), "Warning: Missing requirements:\n    Give -in or\n\n      -list.\n100%s\n\n");
}

TEST_F(Requirement, TheFirstFailureEndsTheReading) {
  const std::string met = "!REQUIREMENT\n!OPTION -a\n!END\n";
  const struct {
    std::string text;
    bool result;
    std::string message;
  } cases[] = {
      {met + "  #c\n" + met, true, ""},
      {met + "!REQUIREMENT more words\n!OPTION -a", true, ""},
      {met + "!REQUIREMENT", false, "Missing requirements:\n\n"},
      {"!REQUIREMENT\n!ERROR_MSG\nfirst\n!END\n!REQUIREMENT\n!END\n", false, "Missing requirements:\nfirst\n\n"},
      {met + " what is this\n" + met, false, "HasRequired, Problem parsing requirement\n line  what is this\n"},
      {"!END\n", false, "HasRequired, Problem parsing requirement\n line !END\n"},
      {"!REQUIREMENT\n !OPTION -a 3 x\n!END", false,
       "HasRequired.  Problem parsing !OPTION\n line :  !OPTION -a 3 x\n"},
      {"!REQUIREMENT\n!OPTION -\n!END", false, "HasRequired.  Problem parsing !OPTION\n line : !OPTION -\n"},
      {"!REQUIREMENT\n!OPTION -a !\n!END", false, "HasRequired.  Problem parsing !OPTION\n line : !OPTION -a !\n"},
      {"!REQUIREMENT\n!OPTION -a\n!OPTION -none !-No\n!END", false,
       "HasRequired.  Unknown key -No in !OPTION\n line : !OPTION -none !-No\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Check(c.text), c.result) << c.text;
    EXPECT_EQ(messages.Take(), c.message.empty() ? "" : "Warning: " + c.message) << c.text;
  }
}

TEST_F(Requirement, FailuresComeAtTheCallersLevelButAnUnknownKeyIsAnError) {
  itf.GetParameter("-none")->SetRequired(true);
  EXPECT_FALSE(Check("!REQUIREMENT\n!OPTION -none", QZErrorLevel::Info));
  EXPECT_EQ(messages.Take(), "Missing required parameter -none\nMissing requirements:\n\n");
  EXPECT_FALSE(Check("!REQUIREMENT\n!OPTION -x", QZErrorLevel::Verbose));
  EXPECT_EQ(messages.Take(), "Warning: HasRequired.  Unknown key -x in !OPTION\n line : !OPTION -x\n");
}

}  // namespace
}  // namespace QZSystem
