#include "qz/system/cli/options.h"

#include <gtest/gtest.h>

#include "interface_testing.h"
#include "qz/system/cli/interface_opts.h"
#include "qz/system/cli/parameter_concrete.h"

namespace QZSystem {
namespace {

/// Four slots, of which the first and the third stay null.
class Slots : public QZOptions {
 public:
  Slots() : QZOptions("slots", 4, 4) {
    SetParameter(1, QZStringParameter("-b"));
    SetParameter(3, QZStringParameter("-a"));
    SetParameter(3, QZStringParameter("-c"));
    Group inner("inner");
    inner.AddParameter(QZStringParameter("-i"));
    SetOption(1, Group("other"));
    SetOption(3, inner);
  }
  Slots* CreateCopy() const override { return new Slots(*this); }
};

template <class T>
std::string Names(const std::vector<T*>& things) {
  std::string names;
  for (const T* thing : things) names += (names.empty() ? "" : " ") + thing->GetName();
  return names;
}

QZParameter* Add(QZOptions& group, const std::string& name, const std::string& alias = "",
                 unsigned int visibility = 1) {
  QZParameter* parameter = group.AddParameter(QZStringParameter(name));
  if (!alias.empty()) parameter->AddAlias(alias);
  parameter->SetVisibility(visibility);
  return parameter;
}

/// Two levels of groups whose order of addition, of names and of priorities all differ.
class OptionTree : public ::testing::Test {
 protected:
  OptionTree() : root("root") {
    Add(root, "-m");
    Add(root, "-z", "-First")->SetOrderPriority(-1);
    Add(root, "-a");
    Group late("late");
    late.SetOrderPriority(2);
    Add(late, "-l2");
    Add(late, "-l1", "-a");
    Group deep("deep");
    Add(deep, "-d", "-M");
    late.AddOption(deep);
    root.AddOption(late);
    Group early("early");
    Add(early, "-e");
    root.AddOption(early);
  }

  QZOptions& late() { return *root.GetOption("late"); }

  Group root;
};

TEST_F(OptionTree, ListsSortedInIteratorsAndDepthFirstInVectors) {
  const QZOptions& fixed = root;
  EXPECT_EQ(Names(root.GetParameters(false)), "-z -a -m");
  EXPECT_EQ(Names(fixed.GetParameters(true)), "-z -a -d -e -l1 -l2 -m");
  EXPECT_EQ(Names(root.GetParameters("-A", true)), "-a -l1");
  EXPECT_EQ(Names(root.GetParameters("-A", false)), "-a");
  EXPECT_EQ(Names(fixed.GetParameters("-m", true)), "-d -m");
  EXPECT_EQ(Names(root.GetOptions(false)), "early late");
  EXPECT_EQ(Names(fixed.GetOptions(true)), "deep early late");

  std::vector<QZParameter*> parameters = {root.GetParameter("-e")};
  fixed.GetParameters(parameters, "", true);
  EXPECT_EQ(Names(parameters), "-e -m -z -a -l2 -l1 -d -e");
  std::vector<QZOptions*> groups;
  fixed.GetOptions(groups, true);
  fixed.GetOptions(groups, false);
  EXPECT_EQ(Names(groups), "late deep early late early");
}

TEST_F(OptionTree, IteratorsHoldWhatWasThereWhenTheyWereMade) {
  QZIter<QZParameter> all(root.GetParameters(true));
  for (int i = 0; i < 100; ++i) Add(root, "-more");
  EXPECT_EQ(Names(all.Release()), "-z -a -d -e -l1 -l2 -m");
}

TEST_F(OptionTree, FindsParametersInAnyCaseAndGroupsExactly) {
  EXPECT_EQ(root.GetParameter("-FIRST")->GetName(), "-z");
  // One of the group itself comes before one below, and no sorting takes part.
  EXPECT_EQ(root.GetParameter("-M")->GetName(), "-m");
  EXPECT_EQ(late().GetParameter("-m")->GetName(), "-d");
  EXPECT_EQ(root.GetParameter("m"), nullptr);
  EXPECT_FALSE(late().HasParameter("-z"));
  EXPECT_TRUE(root.HasOption("deep"));
  EXPECT_EQ(root.GetOption("Deep"), nullptr);
  EXPECT_FALSE(root.HasOption("root"));
}

TEST_F(OptionTree, DeletesTheVeryObjectOneLevelDown) {
  Group other(root);
  EXPECT_FALSE(root.DeleteParameter(*other.GetParameter("-m")));
  EXPECT_FALSE(root.DeleteParameter(*root.GetParameter("-d")));
  EXPECT_FALSE(root.DeleteOptions(*root.GetOption("deep")));
  EXPECT_TRUE(root.DeleteParameter(*root.GetParameter("-m")));
  EXPECT_TRUE(root.DeleteParameter(*root.GetParameter("-l2")));
  EXPECT_TRUE(late().DeleteParameter(*root.GetParameter("-d")));
  EXPECT_EQ(Names(root.GetParameters(true)), "-z -a -e -l1");
  EXPECT_TRUE(root.DeleteOptions(late()));
  EXPECT_EQ(Names(root.GetOptions(true)), "early");
  EXPECT_EQ(Names(other.GetParameters(true)), "-z -a -d -e -l1 -l2 -m");
}

TEST_F(OptionTree, ClearReachesTheParametersOneLevelDown) {
  root.SetBrief("brief");
  root.AddDetail("detail");
  root.Clear();
  EXPECT_EQ(Names(root.GetParameters(true)), "-d");
  EXPECT_EQ(Names(root.GetOptions(true)), "deep early late");
  EXPECT_EQ(root.GetName() + root.GetBrief() + Joined(root.GetDetail()), "rootbriefdetail");
}

TEST_F(OptionTree, CopiesDeepAndAssignsFromItselfAndItsParts) {
  root.GetParameter("-d")->SetStringValue("value");
  late().SetBrief("brief");
  late().AddDetail("one");
  const QZOptions& same = root;
  root.QZOptions::operator=(same);
  EXPECT_EQ(Names(root.GetParameters(true)), "-z -a -d -e -l1 -l2 -m");
  root.QZOptions::operator=(late());
  EXPECT_EQ(Names(root.GetParameters(true)), "-d -l1 -l2");
  EXPECT_EQ(root.GetName() + root.GetBrief() + Joined(root.GetDetail()), "latebriefone");
  EXPECT_EQ(root.GetOrderPriority(), 2);
  EXPECT_EQ(root.GetParameter("-d")->GetStringValue(0), "value");
}

TEST(Options, ListsKeysThatSeveralParametersAnswerTo) {
  using Parameters = std::vector<std::tuple<const char*, const char*, unsigned int>>;
  const struct {
    Parameters parameters;  ///< name, alias and visibility; the last one stands in a group below
    const char *all, *withoutHidden;
  } cases[] = {
      {{{"-a", "", 1}, {"-b", "-A", 1}, {"-c", "", 1}}, "-a -b", "-a -b"},
      {{{"-a", "-A", 1}, {"-b", "", 1}}, "-a", "-a"},
      {{{"-a", "-b", 1}, {"-b", "-a", 0}}, "-a -b -a -b", "-a -b -a -b"},
      {{{"-a", "", 1}, {"-b", "-c", 1}, {"-c", "-a", 1}}, "-b -c -a -c", "-b -c -a -c"},
      {{{"-a", "", 2}, {"-b", "-a", 1}}, "-b", ""},
      {{{"-a", "", 2}, {"-A", "", 2}}, "", ""},
      {{{"-a", "", 2}, {"-A", "", 1}, {"-a", "", 1}}, "-A -a", "-A -a"},
  };
  const auto duplicates = [](const QZOptions& group, bool ignoreHidden) {
    std::vector<QZParameter*> found;
    group.GetDuplicateParams(found, ignoreHidden);
    return Names(found);
  };
  for (const auto& each : cases) {
    Group group("group");
    group.AddOption(Group("below"));
    for (const auto& [name, alias, visibility] : each.parameters) {
      const bool isLast = &name == &std::get<0>(each.parameters.back());
      Add(isLast ? *group.GetOption("below") : group, name, alias, visibility);
    }
    EXPECT_EQ(duplicates(group, false), each.all);
    EXPECT_EQ(duplicates(group, true), each.withoutHidden);
    EXPECT_EQ(group.HasDupParameters(true), *each.withoutHidden != '\0') << each.withoutHidden;
  }
}

TEST(Options, FindsDuplicatesSortedOrBehindWhatIsThere) {
  Group group("group");
  QZParameter* const b = Add(group, "-b");
  Add(group, "-a", "-B");
  EXPECT_EQ(Names(group.FindDupParameters(false)), "-a -b");
  QZStringParameter hidden("-h");
  hidden.SetVisibility(2);
  std::vector<QZParameter*> found = {&hidden, b};
  group.GetDuplicateParams(found, false);
  EXPECT_EQ(Names(found), "-b -b -a");
}

TEST_F(OptionTree, SetsVisibilityOfAllOrOfOneKey) {
  root.SetParameterVisibility(0);
  root.SetParameterVisibility("-A", 2);
  std::string shown;
  for (const QZParameter& each : QZIter(root.GetParameters(true))) shown += std::to_string(each.GetVisibility());
  EXPECT_EQ(shown, "0200200");
}

TEST(Options, TakesOverValuesUntilOneIsRefused) {
  Group from("from"), to("to");
  for (const char* name : {"-a", "-b", "-c"}) to.AddParameter(QZIntParameter(name, 7))->SetStringValue("1");
  to.GetParameter("-c")->Load();
  from.AddParameter(QZStringParameter("-other", "9"));
  QZParameter* a = Add(from, "-first", "-A");
  a->SetStringValue("2");
  a->AddStringValue("3");
  from.AddParameter(QZIntParameter("-c", 8));
  // Nothing answers to -b, and -c has a default alone.
  ASSERT_TRUE(to.UpdateValues(from));
  EXPECT_EQ(ValuesOf(to), "-a=2|3 -c=1");
  EXPECT_EQ(Joined(to.GetParameter("-c")->GetStringDefaults()), "7");
  EXPECT_TRUE(to.UpdateValues(to));
  EXPECT_EQ(ValuesOf(to), "-a=2|3 -b=1 -c=1");

  a->SetStringValue("4");
  Add(from, "-b")->SetStringValue("x");
  Add(from, "-c")->SetStringValue("5");
  EXPECT_FALSE(to.UpdateValues(from));
  EXPECT_EQ(Joined(to.GetParameter("-a")->GetStringValues()), "4");
  EXPECT_EQ(Joined(to.GetParameter("-c")->GetStringValues()), "1");
}

TEST(Options, ChangesTheNamesOfAllParameters) {
  const struct {
    const char *name, *suffixed, *underscored, *prefixed;
  } cases[] = {{"-width", "-width2", "-out_width", "-outWidth"},
               {"-9in", "-9in2", "-out_9in", "-out9in"},
               {"-", "-2", "-out_", "-out"},
               {"in", "in2", "-out_n", "-outN"},
               {"--Both", "--Both2", "-out_-Both", "-out-Both"}};
  for (const auto& each : cases) {
    Group inner("inner");
    Add(inner, each.name, "-alias");
    Group suffixed("group");
    suffixed.AddOption(inner);
    Group underscored(suffixed);
    Group prefixed(suffixed);
    EXPECT_TRUE(suffixed.AddParameterSuffix("2"));
    EXPECT_TRUE(underscored.AddParameterPrefix("out", true));
    EXPECT_TRUE(prefixed.AddParameterPrefix("out", false));
    EXPECT_EQ(Names(suffixed.GetParameters(true)), each.suffixed);
    EXPECT_EQ(Names(underscored.GetParameters(true)), each.underscored);
    EXPECT_EQ(Names(prefixed.GetParameters(true)), each.prefixed);
    EXPECT_TRUE(prefixed.HasParameter("-alias"));
  }
  Group blank("blank");
  Add(blank, "-in");
  EXPECT_TRUE(blank.AddParameterSuffix(" two words"));
  EXPECT_EQ(Names(blank.GetParameters(true)), "-in");
}

TEST(Options, PassesOverNullSlotsEverywhere) {
  Slots first;
  const std::unique_ptr<QZOptions> slots(first.CreateCopy());
  EXPECT_EQ(Names(slots->GetParameters(true)), "-b -c -i");
  EXPECT_EQ(Names(slots->GetOptions(true)), "inner other");
  EXPECT_EQ(slots->GetParameter("-I")->GetName(), "-i");
  EXPECT_TRUE(slots->HasOption("inner"));
  EXPECT_FALSE(slots->HasDupParameters(false));
  EXPECT_TRUE(slots->AddParameterSuffix("x"));
  EXPECT_TRUE(slots->UpdateValues(first));
  QZInterface itf;
  EXPECT_TRUE(QZConfigureItf(itf, *slots));
  EXPECT_EQ(Names(itf.GetParameters(true)), "-bx -cx -ix");
  EXPECT_TRUE(slots->DeleteParameter(*slots->GetParameter("-ix")));
  EXPECT_TRUE(slots->DeleteOptions(*slots->GetOption("inner")));
  slots->Clear();
  EXPECT_EQ(Names(slots->GetParameters(true)) + Names(slots->GetOptions(true)), "other");
  *slots = first;
  EXPECT_EQ(Names(slots->GetParameters(true)), "-b -c -i");
}

}  // namespace
}  // namespace QZSystem
