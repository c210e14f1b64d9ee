#include "qz/system/util/unionfind.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "tests/system/cli/messages.h"

using namespace QZSystem;

namespace {

using Groups = std::vector<std::vector<int>>;

// The arrays of Subsets: the roots, then each group.
Groups SubsetsOf(QZUnionFind& sets) {
  int** const table = sets.Subsets();
  Groups groups;
  for (int k = 0; k <= table[0][0]; ++k) groups.emplace_back(table[k] + 1, table[k] + 1 + table[k][0]);
  QZDeleteSubsets(table);
  return groups;
}

// Every element with a label; those of a group have the same.
class NaiveSets {
 public:
  explicit NaiveSets(int size) {
    for (int i = 0; i < size; ++i) labels.push_back(i);
  }
  void Union(int a, int b) {
    const int from = labels[At(a)], to = labels[At(b)];
    std::replace(labels.begin(), labels.end(), from, to);
  }
  bool Related(int a, int b) const { return labels[At(a)] == labels[At(b)]; }
  unsigned int Count(int a) const {
    return static_cast<unsigned int>(std::count(labels.begin(), labels.end(), labels[At(a)]));
  }

 private:
  static std::size_t At(int i) { return static_cast<std::size_t>(i); }
  std::vector<int> labels;
};

void ExpectSame(QZUnionFind& sets, const NaiveSets& naive, int size) {
  unsigned int groups = 0, large = 0;
  for (int a = 0; a < size; ++a) {
    const int id = sets.FindID(a);
    ASSERT_TRUE(naive.Related(a, id)) << a;
    ASSERT_EQ(sets.Count(a), naive.Count(a)) << a;
    ASSERT_EQ(sets.IsID(a), a == id) << a;
    ASSERT_EQ(sets.IsSingleton(a), naive.Count(a) == 1) << a;
    groups += a == id;
    large += a == id && naive.Count(a) > 1;
    for (int b = 0; b < size; ++b) ASSERT_EQ(sets.Related(a, b), naive.Related(a, b)) << a << ' ' << b;
  }
  ASSERT_EQ(sets.NumGroups(true), groups);
  ASSERT_EQ(sets.NumGroups(false), large);

  const Groups subsets = SubsetsOf(sets);
  ASSERT_EQ(subsets.size(), large + 1);
  ASSERT_TRUE(std::is_sorted(subsets[0].begin(), subsets[0].end()));
  for (std::size_t k = 1; k < subsets.size(); ++k) {
    ASSERT_EQ(subsets[k].size(), naive.Count(subsets[0][k - 1]));
    ASSERT_EQ(std::set<int>(subsets[k].begin(), subsets[k].end()).size(), subsets[k].size());
    for (const int member : subsets[k]) ASSERT_EQ(sets.FindID(member), subsets[0][k - 1]);
  }
}

}  // namespace

TEST(UnionFind, JoinsAsANaiveOne) {
  std::mt19937 engine(1);
  for (int round = 0; round < 60; ++round) {
    const int size = 1 + static_cast<int>(engine() % 40);
    QZUnionFind sets(static_cast<unsigned int>(size));
    NaiveSets naive(size);
    for (int join = 0; join < size; ++join) {
      const int a = static_cast<int>(engine()) & 0xFFFF, b = static_cast<int>(engine()) & 0xFFFF;
      sets.Union(a % size, b % size);
      naive.Union(a % size, b % size);
      if (join % 8 == 0) ExpectSame(sets, naive, size);
    }
    ExpectSame(sets, naive, size);
  }
}

TEST(UnionFind, TheRootOfTheLargerGroupStaysRoot) {
  QZUnionFind sets(6);
  sets.Union(1, 2);
  EXPECT_EQ(sets.FindID(2), 1);
  sets.Union(3, 2);
  EXPECT_EQ(sets.FindID(3), 1);
  sets.Union(5, 4);
  EXPECT_EQ(sets.FindID(4), 5);
  sets.Union(4, 3);
  EXPECT_EQ(sets.FindID(5), 1);
}

TEST(UnionFind, SubsetsComeInTheOrderThatTheSortLeaves) {
  QZUnionFind sets(9);
  for (const auto& [a, b] : {std::pair(7, 8), {7, 5}, {1, 3}, {1, 6}, {0, 4}}) sets.Union(a, b);
  // Worked out by hand: the elements 0 1 3 4 5 6 7 8 with the roots 0 1 1 0 7 1 7 7.
  EXPECT_EQ(SubsetsOf(sets), (Groups{{0, 1, 7}, {0, 4}, {3, 1, 6}, {7, 5, 8}}));
  QZUnionFind none(3), empty(0);
  EXPECT_EQ(SubsetsOf(none), Groups(1));
  EXPECT_EQ(SubsetsOf(empty), Groups(1));
  QZDeleteSubsets(nullptr);
}

TEST(UnionFind, ReportsElementsOutOfRange) {
  Messages messages;
  QZUnionFind sets(3);
  const std::string range = " - parameter not in range [0..2]\n";
  EXPECT_EQ(sets.FindID(3), -1);
  EXPECT_EQ(messages.Take(), "Warning: QZUnionFind::FindID(3)" + range);
  sets.Union(-1, 5);
  EXPECT_EQ(messages.Take(), "Warning: QZUnionFind::FindID(-1)" + range + "Warning: QZUnionFind::FindID(5)" + range);
  sets.Union(7, 7);
  for (const int outside : {-1, 3, -2147483647 - 1}) {
    EXPECT_EQ(sets.Count(outside), 0U);
    EXPECT_FALSE(sets.Related(outside, outside) || sets.Related(0, outside));
    EXPECT_FALSE(sets.IsSingleton(outside) || sets.IsID(outside));
  }
  EXPECT_EQ(sets.NumGroups(true), 3U);
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(QZUnionFind(0).FindID(0), -1);
  EXPECT_EQ(messages.Take(), "Warning: QZUnionFind::FindID(0) - parameter not in range [0..-1]\n");
}

TEST(UnionFind, CopiesAreIndependent) {
  QZUnionFind a(4), sameSize(4), other(9);
  a.Union(0, 1);
  const QZUnionFind copy(a);
  sameSize.Union(2, 3);
  sameSize = copy;
  other = copy;
  const QZUnionFind& self = other;
  other = self;
  a.Union(2, 3);
  for (QZUnionFind each : {copy, sameSize, other}) {
    EXPECT_EQ(each.NumGroups(true), 3U);
    EXPECT_TRUE(each.Related(0, 1));
    EXPECT_FALSE(each.Related(2, 3));
  }
}
