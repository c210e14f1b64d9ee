#include "tools/common/celltype.h"

#include <gtest/gtest.h>

#include "tools/common/fieldstats.h"
#include "tools/common/tool.h"

using namespace QZTools;

namespace {

TEST(CellType, IsTheNarrowestThatLosesNothing) {
  const struct {
    std::vector<const char*> cells;
    const char* type;
  } cases[] = {
      {{"1", "-2", "+3"}, "Int"},
      {{"9223372036854775807", "-9223372036854775808"}, "Int"},
      {{"1", "2.5"}, "Float"},
      {{"1e9", "-.5", "nan", "Infinity"}, "Float"},
      {{"true", "FALSE"}, "Bool"},
      {{"true", "1"}, "String"},
      {{"9223372036854775808"}, "String"},
      {{"1.5", "9223372036854775808"}, "String"},
      {{"007"}, "String"},
      {{"0.5", "00.5"}, "String"},
      {{"0", "-0"}, "Int"},
      {{"nan(1)"}, "String"},
      {{" 1"}, "String"},
      {{}, "String"},
  };
  for (const auto& each : cases) {
    TypeGuess guess;
    std::string shown;
    for (const char* cell : each.cells) {
      guess.See(cell);
      shown += std::string(cell) + " ";
    }
    EXPECT_EQ(CellTypeName(guess.Type()), each.type) << shown;
  }
}

TEST(NumberStats, MatchesTheTextbook) {
  NumberStats stats;
  for (double value : {2.0, 4.0, 4.0, 4.0, 5.0, 5.0, 7.0, 9.0}) stats.Add(value);
  EXPECT_EQ(stats.Count(), 8U);
  EXPECT_DOUBLE_EQ(stats.Mean(), 5);
  EXPECT_DOUBLE_EQ(stats.Deviation(), 2.1380899352993952);
  EXPECT_EQ(stats.Least(), 2);
  EXPECT_EQ(stats.Greatest(), 9);
  EXPECT_EQ(stats.Histogram(7), "▃ █▆ ▃▃");
  EXPECT_FALSE(stats.IsLogarithmic());
}

TEST(NumberStats, CountsByTheLogarithmOverManyDecades) {
  NumberStats stats;
  for (double value : {1e-6, 1e-3, 1.0, 1e3, 1e6}) stats.Add(value);
  EXPECT_TRUE(stats.IsLogarithmic());
  EXPECT_EQ(stats.Histogram(5), "█████");
}

TEST(TextStats, KeepsTheMostFrequentOfMoreTextsThanFit) {
  TextStats stats;
  for (int i = 0; i < 30000; ++i) {
    stats.Add("rare " + std::to_string(i));
    if (i % 3 == 0) stats.Add("common");
  }
  EXPECT_TRUE(stats.IsCut());
  EXPECT_LE(stats.Distinct(), 10000U);
  const auto top = stats.MostFrequent(1);
  ASSERT_EQ(top.size(), 1U);
  EXPECT_EQ(top[0].first, "common");
  EXPECT_GE(top[0].second, 10000U);
}

TEST(NearWords, AreNamedNearestFirst) {
  const std::vector<std::string> names = {"half_life", "mass", "mass_number", "spin"};
  EXPECT_EQ(NearWords("half_lif", names), (std::vector<std::string>{"half_life"}));
  EXPECT_EQ(NearWords("MASS", names), (std::vector<std::string>{"mass", "mass_number"}));
  EXPECT_TRUE(NearWords("zebra", names).empty());
}

}  // namespace
