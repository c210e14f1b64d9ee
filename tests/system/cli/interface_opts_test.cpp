#include "qz/system/cli/interface_opts.h"

#include <gtest/gtest.h>

#include "interface_testing.h"
#include "qz/system/cli/configure.h"
#include "qz/system/cli/parameter_concrete.h"

namespace QZSystem {
namespace {

/// -in and the default -n 5 at the top, -width in the group "Output", -deep in one below that.
class Settings : public ::testing::Test {
 protected:
  Settings() : opts("render") {
    opts.SetBrief("Draw");
    opts.AddDetail("one");
    opts.AddDetail("two");
    opts.SetOrderPriority(4);
    opts.AddParameter(QZStringParameter("-in"))->SetRequired(true);
    opts.AddParameter(QZIntParameter("-n", 5))->SetOrderPriority(-1);
    Group output("Output");
    output.SetOrderPriority(2);
    output.AddParameter(QZIntParameter("-width"))->SetIsList(true);
    Group below("Below");
    below.AddParameter(QZBoolParameter("-deep", false));
    output.AddOption(below);
    opts.AddOption(output);
    opts.AddOption(Group("Empty"));
  }

  int configure(const std::vector<std::string>& texts, bool print = false) {
    Arguments arguments(texts);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = QZConfigureOpts(opts, arguments.Count(), arguments.Values(), print);
    qzout.flush();
    printed = testing::internal::GetCapturedStdout();
    told = testing::internal::GetCapturedStderr();
    return status;
  }

  Group opts;
  std::string printed;
  std::string told;
};

TEST_F(Settings, MakeAnInterfaceOfCopies) {
  QZInterface itf;
  ASSERT_TRUE(QZConfigureItf(itf, opts));
  EXPECT_EQ(itf.GetName() + itf.GetBrief() + Joined(itf.GetDetail()), "renderDrawone|two");
  EXPECT_EQ(itf.GetOrderPriority(), 4);
  // The categories come in sorted order, and so do the parameters.
  QZIter<QZInterface> categories(itf.GetInterfaces(true));
  std::string names;
  for (const QZInterface& each : categories) names += each.GetName() + " ";
  EXPECT_EQ(names, "Empty Output Below ");
  names.clear();
  for (const QZParameter& each : QZIter(itf.GetParameters(true))) names += each.GetName() + " ";
  EXPECT_EQ(names, "-n -in -width -deep ");
  EXPECT_EQ(itf.GetInterface("Below")->Parent(), itf.GetInterface("Output"));
  EXPECT_TRUE(itf.GetParameter("-n")->GetHasDefault(0));
  itf.GetParameter("-in")->SetStringValue("a");
  EXPECT_EQ(opts.GetParameter("-in")->GetStringValue(0), "");
}

TEST_F(Settings, TakeTheValuesBackByKey) {
  QZInterface itf;
  ASSERT_TRUE(QZConfigure(itf, Bytes("!PARAMETER -Width\n!TYPE string\n!LIST true\n!END\n"
                                     "!CATEGORY Unknown\n!PARAMETER -IN\n!TYPE string\n!END\n"
                                     "!PARAMETER -none\n!TYPE string\n!END\n!END\n"
                                     "!CATEGORY Output\n!PARAMETER -n\n!TYPE int\n!END\n"
                                     "!PARAMETER -deep\n!TYPE bool\n!END\n!END\n")));
  for (const char* key : {"-Width", "-IN", "-none", "-n", "-deep"}) itf.GetParameter(key)->SetStringValue("1");
  // A text that is no number is refused in silence, and a value that isn't loaded is none.
  itf.GetParameter("-Width")->AddStringValue("x");
  itf.GetParameter("-Width")->AddStringValue("2");
  for (QZParameter& each : QZIter(itf.GetParameters(true)))
    if (each.GetName() != "-deep") each.Load();
  opts.GetParameter("-width")->SetStringValue("9");
  EXPECT_TRUE(QZUpdateOpts(opts, itf));
  // -n is looked for in the group "Output" and below it alone; what was there stays in front.
  EXPECT_EQ(ValuesOf(opts), "-in=1 -width=9|1|2");
}

TEST_F(Settings, AreFilledFromTheCommandLine) {
  EXPECT_EQ(configure({"-in", "a.txt", "-WIDTH", "1", "2", "-deep"}), QZConfigureStatus::Done);
  EXPECT_EQ(ValuesOf(opts), "-deep=true -in=a.txt -width=1|2");
  EXPECT_EQ(printed + told, "");
  // Values are appended: without ClearValues they stand twice.
  EXPECT_EQ(configure({"-n", "6"}), QZConfigureStatus::Done);
  EXPECT_EQ(ValuesOf(opts), "-n=6 -deep=true|true -in=a.txt|a.txt -width=1|2|1|2");
}

TEST_F(Settings, StayAsTheyWereAfterHelpAndRefusal) {
  EXPECT_EQ(configure({"--help"}), QZConfigureStatus::Help);
  EXPECT_EQ(told.substr(0, 13), "render : Draw");
  EXPECT_EQ(configure({}), QZConfigureStatus::Help);
  EXPECT_NE(told.find("-in"), std::string::npos) << told;
  EXPECT_EQ(ValuesOf(opts) + printed, "");

  CapturedMessages messages;
  EXPECT_EQ(configure({"-n", "6"}), QZConfigureStatus::Failed);
  EXPECT_EQ(messages.Take(), Told{"Error: Missing required parameter -in"});
  EXPECT_EQ(ValuesOf(opts), "");
}

TEST_F(Settings, PrintWhatWasSet) {
  EXPECT_EQ(configure({"-in", "a.txt"}, true), QZConfigureStatus::Done);
  EXPECT_EQ(printed.find("#Interface settings\n#-n  5\n-in  a.txt\n\n#Output :   \n"), 0U) << printed;
  EXPECT_EQ(told, "\n");
}

using SettingsDeath = Settings;

TEST_F(SettingsDeath, EndTheProcessWithAnErrorInStrictModeAndWithTheVersion) {
  const auto run = [this](const std::vector<std::string>& texts) {
    Arguments arguments(texts);
    std::exit(10 + QZConfigureOpts(opts, arguments.Count(), arguments.Values(), false));
  };
  EXPECT_EXIT(run({"-bad"}), testing::ExitedWithCode(1), "-bad");
  EXPECT_EXIT(run({"--version"}), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace QZSystem
