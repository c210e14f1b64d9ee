#include "qz/system/util/unionfind.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <tuple>
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
void NaiveUnion(std::vector<int>& labels, int a, int b) {
  const int from = labels[static_cast<std::size_t>(a)], to = labels[static_cast<std::size_t>(b)];
  std::replace(labels.begin(), labels.end(), from, to);
}

void ExpectSame(QZUnionFind& sets, const std::vector<int>& labels) {
  Groups expected(1);
  unsigned int groups = 0;
  const auto size = static_cast<int>(labels.size());
  for (int a = 0; a < size; ++a) {
    const int label = labels[static_cast<std::size_t>(a)];
    const auto count = static_cast<unsigned int>(std::count(labels.begin(), labels.end(), label));
    ASSERT_EQ(sets.Count(a), count) << a;
    ASSERT_EQ(sets.IsSingleton(a), count == 1) << a;
    ASSERT_EQ(sets.IsID(a), sets.FindID(a) == a) << a;
    std::vector<int> related;
    for (int b = 0; b < size; ++b) {
      ASSERT_EQ(sets.Related(a, b), label == labels[static_cast<std::size_t>(b)]) << a << ' ' << b;
      if (sets.FindID(a) == sets.FindID(b)) related.push_back(b);
    }
    ASSERT_EQ(related.size(), count) << a;
    if (!sets.IsID(a)) continue;
    ++groups;
    if (count == 1) continue;
    expected[0].push_back(a);
    expected.push_back(related);
  }
  ASSERT_EQ(sets.NumGroups(true), groups);
  ASSERT_EQ(sets.NumGroups(false), expected[0].size());
  Groups found = SubsetsOf(sets);
  for (std::size_t k = 1; k < found.size(); ++k) std::sort(found[k].begin(), found[k].end());
  ASSERT_EQ(found, expected);
}

}  // namespace

TEST(UnionFind, JoinsAsANaiveOne) {
  std::mt19937 engine(1);
  for (int round = 0; round < 60; ++round) {
    const int size = 1 + static_cast<int>(engine() % 40);
    QZUnionFind sets(static_cast<unsigned int>(size));
    std::vector<int> labels(static_cast<std::size_t>(size));
    std::iota(labels.begin(), labels.end(), 0);
    for (int join = 0; join < size; ++join) {
      const int a = static_cast<int>(engine()) & 0xFFFF, b = static_cast<int>(engine()) & 0xFFFF;
      sets.Union(a % size, b % size);
      NaiveUnion(labels, a % size, b % size);
      if (join % 8 == 0 || join + 1 == size) ExpectSame(sets, labels);
    }
  }
}

TEST(UnionFind, TheRootOfTheLargerGroupStaysRoot) {
  QZUnionFind sets(6);
  for (const auto& [a, b, root] : {std::tuple(1, 2, 1), {3, 2, 1}, {5, 4, 5}, {4, 3, 1}}) {
    sets.Union(a, b);
    EXPECT_EQ(sets.FindID(a), root) << a << ' ' << b;
    EXPECT_EQ(sets.FindID(b), root) << a << ' ' << b;
  }
}

TEST(UnionFind, SubsetsComeInTheOrderThatTheSortLeaves) {
  QZUnionFind sets(9), none(3), empty(0);
  for (const auto& [a, b] : {std::pair(7, 8), {7, 5}, {1, 3}, {1, 6}, {0, 4}}) sets.Union(a, b);
  // Worked out by hand: the elements 0 1 3 4 5 6 7 8 with the roots 0 1 1 0 7 1 7 7.
  EXPECT_EQ(SubsetsOf(sets), (Groups{{0, 1, 7}, {0, 4}, {3, 1, 6}, {7, 5, 8}}));
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
  for (QZUnionFind each : {copy, sameSize, other}) EXPECT_EQ(SubsetsOf(each), (Groups{{0}, {1, 0}}));
}
