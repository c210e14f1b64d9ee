#include "qz/system/cli/interface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "interface_testing.h"
#include "qz/system/cli/parameter_concrete.h"

namespace QZSystem {
namespace {

QZParameter* AddParameter(QZInterface& itf, const std::string& name, int order = 0) {
  QZParameter* parameter = itf.AddParameter(QZStringParameter(name));
  parameter->SetOrderPriority(order);
  return parameter;
}

QZInterface* AddCategory(QZInterface& itf, const std::string& name, int order = 0) {
  QZInterface* category = itf.AddInterface();
  category->SetName(name);
  category->SetOrderPriority(order);
  return category;
}

template <class T>
std::string Names(QZIterBase<T>* things) {
  std::string names;
  for (const T& thing : QZIter<T>(things)) names += (names.empty() ? "" : " ") + thing.GetName();
  return names;
}

/// Two levels of categories whose order of addition, of names and of priorities all differ.
class InterfaceTree : public ::testing::Test {
 protected:
  InterfaceTree() {
    AddParameter(root, "-m");
    AddParameter(root, "-z", -1);
    AddParameter(root, "-a");
    QZInterface* late = AddCategory(root, "late", 2);
    QZInterface* early = AddCategory(root, "early", 1);
    AddParameter(*late, "-l2");
    AddParameter(*late, "-l1");
    AddParameter(*early, "-e2", 1);
    AddParameter(*early, "-e3");
    AddParameter(*AddCategory(*late, "inlate"), "-il");
    AddCategory(*early, "y");
    AddParameter(*AddCategory(*early, "x"), "-x");
  }

  QZInterface root;
};

TEST_F(InterfaceTree, ListsSortedOneLevelAndInTheOrderOfAdditionAtTheTop) {
  const QZInterface& constRoot = root;
  EXPECT_EQ(Names(root.GetParameters(false)), "-z -a -m");
  EXPECT_EQ(Names(root.GetInterfaces(false)), "early late");
  EXPECT_EQ(Names(root.GetParameters(true)), "-m -z -a -l1 -l2 -e3 -e2 -x -il");
  EXPECT_EQ(Names(root.GetInterfaces(true)), "late early y x inlate");
  EXPECT_EQ(Names(constRoot.GetParameters(true)), Names(root.GetParameters(true)));
  EXPECT_EQ(Names(constRoot.GetInterfaces(true)), Names(root.GetInterfaces(true)));
  EXPECT_EQ(Names(constRoot.GetParameters(false)), Names(root.GetParameters(false)));
  EXPECT_EQ(Names(constRoot.GetInterfaces(false)), Names(root.GetInterfaces(false)));
  EXPECT_EQ(Names(QZInterface().GetParameters(true)), "");
  EXPECT_EQ(Names(QZInterface().GetInterfaces(true)), "");
}

TEST_F(InterfaceTree, DeletesTheVeryObjectAtAnyDepth) {
  QZInterface other(root);
  EXPECT_FALSE(root.DeleteParameter(*other.GetParameter("-x")));
  EXPECT_FALSE(root.DeleteInterface(*other.GetInterface("x")));
  EXPECT_TRUE(root.DeleteParameter(*root.GetParameter("-x")));
  EXPECT_TRUE(root.DeleteParameter(*root.GetParameter("-z")));
  EXPECT_TRUE(root.DeleteInterface(*root.GetInterface("inlate")));
  EXPECT_EQ(Names(root.GetParameters(true)), "-m -a -l1 -l2 -e3 -e2");
  EXPECT_TRUE(root.DeleteInterface(*root.GetInterface("early")));
  EXPECT_EQ(Names(root.GetInterfaces(true)), "late");
  EXPECT_EQ(Names(other.GetParameters(true)), "-m -z -a -l1 -l2 -e3 -e2 -x -il");
}

TEST_F(InterfaceTree, CopiesDeepWithParentsOfItsOwn) {
  root.GetParameter("-x")->SetStringValue("value");
  root.GetInterface("early")->SetBrief("brief");
  root.GetInterface("early")->AddDetail("detail");
  QZInterface copy(*root.GetInterface("early"));
  EXPECT_EQ(copy.Parent(), nullptr);
  EXPECT_EQ(copy.GetInterface("x")->Parent(), &copy);
  EXPECT_NE(copy.GetParameter("-x"), root.GetParameter("-x"));
  root.Clear();
  EXPECT_EQ(Names(copy.GetParameters(true)), "-e2 -e3 -x");
  EXPECT_EQ(copy.GetParameter("-x")->GetStringValue(0), "value");
  EXPECT_EQ(copy.GetName() + copy.GetBrief() + Joined(copy.GetDetail()), "earlybriefdetail");
  EXPECT_EQ(copy.GetOrderPriority(), 1);
}

TEST_F(InterfaceTree, AssignsFromItselfAndItsOwnParts) {
  const QZInterface& self = root;
  root = self;
  EXPECT_EQ(Names(root.GetInterfaces(true)), "late early y x inlate");
  root = *root.GetInterface("early");
  EXPECT_EQ(Names(root.GetParameters(true)), "-e2 -e3 -x");
  EXPECT_EQ(root.GetName(), "early");
  EXPECT_EQ(root.GetInterface("x")->Parent(), &root);
  QZInterface& part = *root.GetInterface("x");
  part = root;
  EXPECT_EQ(part.Parent(), nullptr);
  EXPECT_EQ(Names(root.GetInterfaces(true)), "y early y x");
  EXPECT_EQ(Names(root.GetParameters(true)), "-e2 -e3 -e3 -e2 -x");
}

TEST_F(InterfaceTree, ClearLeavesItAsNew) {
  root.SetName("name");
  root.SetBrief("brief");
  root.AddDetail("detail");
  root.SetOrderPriority(3);
  QZInterface above;
  root.SetParent(&above);
  EXPECT_TRUE(root.Clear());
  EXPECT_EQ(Names(root.GetParameters(true)) + Names(root.GetInterfaces(true)), "");
  EXPECT_EQ(root.GetName() + root.GetBrief() + Joined(root.GetDetail()), "");
  EXPECT_EQ(root.GetOrderPriority(), 0);
  EXPECT_EQ(root.Parent(), nullptr);
}

TEST_F(InterfaceTree, KnowsTheSmallestVisibilityBelow) {
  for (QZParameter& parameter : QZIter(root.GetParameters(true))) parameter.SetVisibility(2);
  EXPECT_FALSE(HasParametersWithVis(root, 1));
  EXPECT_TRUE(HasParametersWithVis(root, 2));
  root.GetParameter("-x")->SetVisibility(0);
  EXPECT_TRUE(HasParametersWithVis(root, 0));
  EXPECT_TRUE(HasParametersWithVis(*root.GetInterface("early"), 1));
  EXPECT_FALSE(HasParametersWithVis(*root.GetInterface("late"), 1));
}

TEST(Interface, TellsAnUnknownClassWord) {
  CapturedMessages messages;
  QZInterface itf;
  EXPECT_EQ(itf.AddParameter("bit"), nullptr);
  EXPECT_EQ(messages.Take(), (Told{"Warning: QZSimpleFactory.  Unknown classid bit",
                                   "Warning: QZInterfaceImpl::AddParamter.  Unknown classid bit"}));
  EXPECT_EQ(itf.AddParameter("int")->ClassID(), "int");
  EXPECT_EQ(Names(itf.GetParameters(true)), "");
}

TEST(Interface, ConstructorTellsATextThatDoesNotConfigure) {
  CapturedMessages messages;
  const QZInterface good("!PARAMETER -a\n!TYPE int\n!END\n");
  EXPECT_EQ(messages.Take(), Told{});
  const QZInterface bad("!PARAMETER -a\n!TYPE int\n!END\nwhat\n!PARAMETER -b\n!TYPE int\n!END\n");
  EXPECT_EQ(messages.Take(), (Told{"Error: Configuring interface.  Unable to parse line\n  line : what",
                                   "Error: Problem configuring QZInterface!"}));
  EXPECT_EQ(Names(bad.GetParameters(true)), "-a");
}

TEST(Interface, FindsByNameAndAliasExactlyAndByKeyInAnyCase) {
  QZInterface root;
  AddParameter(root, "-In")->AddAlias("-i");
  const QZInterface& constRoot = root;
  struct Case {
    std::string key;
    bool exact, anyCase;
  };
  for (const Case& c : {Case{"-In", true, true}, Case{"-i", true, true}, Case{"-in", false, true},
                        Case{"-I", false, true}, Case{"-ix", false, false}, Case{"", false, false}}) {
    EXPECT_EQ(constRoot.GetParameter(c.key) != nullptr, c.exact) << c.key;
    EXPECT_EQ(ParameterWithFullname(constRoot, c.key) != nullptr, c.anyCase) << c.key;
    EXPECT_EQ(ParameterWithFullname(root, c.key), ParameterWithFullname(constRoot, c.key)) << c.key;
  }
}

// The listings as they are told, level by level, and the lookups as walks over them.

void AppendInterfaces(QZInterface& itf, std::vector<QZInterface*>& all) {
  std::vector<QZInterface*> direct;
  for (QZInterface& each : QZIter(itf.GetInterfaces(false))) direct.push_back(&each);
  std::vector<QZInterface*> added = direct;
  // Categories are added with a number in their brief.
  std::sort(added.begin(), added.end(), [](auto* a, auto* b) { return stoi(a->GetBrief()) < stoi(b->GetBrief()); });
  all.insert(all.end(), added.begin(), added.end());
  for (QZInterface* each : direct) AppendInterfaces(*each, all);
}

bool HasKey(const QZParameter& parameter, const std::string& key) {
  bool has = parameter.GetName() == key;
  for (const std::string& alias : QZIter(parameter.GetAliases())) has = has || alias == key;
  return has;
}

TEST(Interface, LookupsAgreeWithTheListingsOnRandomTrees) {
  std::mt19937 random(7);
  const auto below = [&random](unsigned int n) { return static_cast<unsigned int>(random() % n); };
  const auto key = [&below] { return std::string("-") + static_cast<char>('a' + below(6)); };
  for (int round = 0; round < 300; ++round) {
    QZInterface root;
    std::vector<QZInterface*> made{&root};
    for (unsigned int i = below(12); i > 0; --i) {
      made.push_back(
          AddCategory(*made[below(static_cast<unsigned int>(made.size()))], key(), static_cast<int>(below(2))));
      made.back()->SetBrief(std::to_string(made.size()));
    }
    for (unsigned int i = below(15); i > 0; --i)
      AddParameter(*made[below(static_cast<unsigned int>(made.size()))], key(), static_cast<int>(below(2)))
          ->AddAlias(key());

    std::vector<QZInterface*> interfaces;
    AppendInterfaces(root, interfaces);
    std::vector<QZInterface*> listed;
    for (QZInterface& each : QZIter(root.GetInterfaces(true))) listed.push_back(&each);
    ASSERT_EQ(listed, interfaces) << "round " << round;

    std::vector<QZParameter*> parameters;
    for (QZParameter& each : QZIter(root.GetParameters(true))) parameters.push_back(&each);
    for (char letter = 'a'; letter <= 'f'; ++letter) {
      const std::string wanted = std::string("-") + letter;
      const auto parameter =
          std::find_if(parameters.begin(), parameters.end(), [&wanted](auto* each) { return HasKey(*each, wanted); });
      EXPECT_EQ(root.GetParameter(wanted), parameter == parameters.end() ? nullptr : *parameter) << round << wanted;
      const auto category = std::find_if(interfaces.begin(), interfaces.end(),
                                         [&wanted](auto* each) { return each->GetName() == wanted; });
      EXPECT_EQ(root.GetInterface(wanted), category == interfaces.end() ? nullptr : *category) << round << wanted;
    }
  }
}

}  // namespace
}  // namespace QZSystem
