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
  EXPECT_EQ(Names(constRoot.GetParameters(true)), "-m -z -a -l1 -l2 -e3 -e2 -x -il");
  EXPECT_EQ(Names(constRoot.GetInterfaces(true)), "late early y x inlate");
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
  QZInterface above, early(*root.GetInterface("early"));
  early.SetBrief("brief");
  early.AddDetail("detail");
  early.SetParent(&above);
  EXPECT_TRUE(early.Clear());
  EXPECT_EQ(Names(early.GetParameters(true)) + Names(early.GetInterfaces(true)), "");
  EXPECT_EQ(early.GetName() + early.GetBrief() + Joined(early.GetDetail()), "");
  EXPECT_EQ(early.GetOrderPriority(), 0);
  EXPECT_EQ(early.Parent(), nullptr);
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

TEST(Interface, FindsByNameAndAliasExactlyAndByKeyInAnyCase) {
  QZInterface root;
  AddParameter(root, "-In")->AddAlias("-i");
  const QZInterface& constRoot = root;
  const struct {
    std::string key;
    bool exact, anyCase;
  } cases[] = {{"-In", true, true}, {"-i", true, true},    {"-in", false, true},
               {"-I", false, true}, {"-ix", false, false}, {"", false, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(constRoot.GetParameter(c.key) != nullptr, c.exact) << c.key;
    EXPECT_EQ(ParameterWithFullname(constRoot, c.key) != nullptr, c.anyCase) << c.key;
    EXPECT_EQ(ParameterWithFullname(root, c.key), ParameterWithFullname(constRoot, c.key)) << c.key;
  }
}

// The listings as they are told, level by level, and the lookups as walks over them.

template <class T>
std::vector<T*> Listed(QZIterBase<T>* things) {
  std::vector<T*> all;
  for (T& each : QZIter<T>(things)) all.push_back(&each);
  return all;
}

void AppendInterfaces(QZInterface& itf, std::vector<QZInterface*>& all) {
  const std::vector<QZInterface*> direct = Listed(itf.GetInterfaces(false));
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
bool HasKey(const QZInterface& category, const std::string& name) { return category.GetName() == name; }

template <class T>
T* FirstWith(const std::string& key, const std::vector<T*>& all) {
  const auto found = std::find_if(all.begin(), all.end(), [&key](T* each) { return HasKey(*each, key); });
  return found == all.end() ? nullptr : *found;
}

TEST(Interface, LookupsAgreeWithTheListingsOnRandomTrees) {
  std::mt19937 random(7);
  const auto below = [&random](std::size_t n) { return static_cast<unsigned int>(random() % n); };
  const auto key = [&below] { return std::string("-") + static_cast<char>('a' + below(6)); };
  for (int round = 0; round < 300; ++round) {
    QZInterface root;
    std::vector<QZInterface*> made{&root};
    for (unsigned int i = below(12); i > 0; --i) {
      made.push_back(AddCategory(*made[below(made.size())], key(), static_cast<int>(below(2))));
      made.back()->SetBrief(std::to_string(made.size()));
    }
    for (unsigned int i = below(15); i > 0; --i)
      AddParameter(*made[below(made.size())], key(), static_cast<int>(below(2)))->AddAlias(key());

    std::vector<QZInterface*> interfaces;
    AppendInterfaces(root, interfaces);
    ASSERT_EQ(Listed(root.GetInterfaces(true)), interfaces) << "round " << round;
    for (const char* wanted : {"-a", "-b", "-c", "-d", "-e", "-f"}) {
      EXPECT_EQ(root.GetParameter(wanted), FirstWith(wanted, Listed(root.GetParameters(true)))) << round << wanted;
      EXPECT_EQ(root.GetInterface(wanted), FirstWith(wanted, interfaces)) << round << wanted;
    }
  }
}

}  // namespace
}  // namespace QZSystem
