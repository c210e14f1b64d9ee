#include "qz/dataflow/range.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "tests/system/cli/messages.h"

namespace QZDataFlow {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kMax = std::numeric_limits<double>::max();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::string Show(const QZRange& range) {
  return std::to_string(range.low) + " " + std::to_string(range.high) + " " + range.GetInclusivityString();
}

const char kDefault[] = "-inf inf []";

TEST(Range, BoundsAreKeptOrRefusedWithAMessage) {
  const struct {
    std::optional<double> low, high;
    unsigned int inclusivity;
    const char *shown, *message;
  } cases[] = {
      {0.5, 2.0, 2, "0.500000 2.000000 [)", ""},
      {1.0, 1.0, 1, "1.000000 1.000000 ()", ""},
      {std::nullopt, 5.0, 3, "-inf 5.000000 (]", ""},
      {-5.0, std::nullopt, 1, "-5.000000 inf ()", ""},
      {std::nullopt, std::nullopt, 2, kDefault, ""},
      {3.0, 2.0, 1, kDefault, "Invalid QZRange specified, with low value > high value: (3,2) will default initialize"},
      {0.1, -1e22, 0, kDefault,
       "Invalid QZRange specified, with low value > high value: (0.1,-1e+22) will default initialize"},
      {1.0, 2.0, 4, "1.000000 2.000000 []", "Invalid QZRange inclusivity specified: 4"},
      {kNaN, 2.0, 1, kDefault, "Invalid value for constructing an QZRange. Lower bound cannot be NaN"},
      {kNaN, kNaN, 9, kDefault, "Invalid value for constructing an QZRange. Lower bound cannot be NaN"},
      {1.0, kNaN, 1, kDefault, "Invalid value for constructing an QZRange. Upper bound cannot be NaN"},
  };
  Messages messages;
  for (const auto& [low, high, inclusivity, shown, message] : cases) {
    EXPECT_EQ(Show(QZRange(low, high, inclusivity)), shown);
    EXPECT_EQ(messages.Take(), *message == '\0' ? "" : std::string("Warning: ") + message + "\n") << shown;
  }
}

TEST(Range, VectorsAreCheckedInTheirOwnWords) {
  const struct {
    std::vector<double> bounds;
    const char *shown, *message;
  } cases[] = {
      {{0.5, 2.0, 2.9}, "0.500000 2.000000 [)", ""},
      {{0.5, 2.0, -1.0}, "0.500000 2.000000 []", "Invalid QZRange inclusivity specified: 4294967295"},
      {{0.5, 2.0, 1e300}, "0.500000 2.000000 []", "Invalid QZRange inclusivity specified: 4294967295"},
      {{0.5, 2.0, kNaN}, "0.500000 2.000000 []", "Invalid QZRange inclusivity specified: 4294967295"},
      {{}, kDefault, "Invalid vector for constructing an QZRange. Must have a length of 3."},
      {{kNaN, kNaN, 0}, kDefault, "Invalid vector for constructing an QZRange. Lower bound cannot be NaN"},
      {{1, kNaN, 0}, kDefault, "Invalid vector for constructing an QZRange. Upper bound cannot be NaN"},
      {{2, 1, 0}, kDefault, "Invalid QZRange specified, with low value > high value: (2,1) will default initialize"},
  };
  Messages messages;
  for (const auto& [bounds, shown, message] : cases) {
    const QZRange range(bounds);
    EXPECT_EQ(Show(range), shown);
    EXPECT_EQ(messages.Take(), *message == '\0' ? "" : std::string("Warning: ") + message + "\n") << shown;
    EXPECT_EQ(QZRange(range.GetAsVector()), range);
  }
}

TEST(Range, InclusivityHasFourNames) {
  Messages messages;
  for (const char* name : {"[]", "()", "[)", "(]"})
    EXPECT_EQ(QZRange(0.0, 1.0, QZRange::CheckedInclusivity(name)).GetInclusivityString(), name);
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(QZRange::CheckedInclusivity("[[ "), 0U);
  EXPECT_EQ(messages.Take(), "Warning: Invalid QZRange inclusivity-string specified: [[ \n");
}

TEST(Range, TellsWhatItSays) {
  const struct {
    double low, high;
    std::array<bool, 4> told;  // unbounded below, unbounded above, empty, valid
  } cases[] = {{0, 1, {false, false, false, true}},    {1, 0, {false, false, false, false}},
               {-kMax, 1, {true, false, false, true}}, {-kInfinity, kMax, {true, true, true, false}},
               {kNaN, 1, {true, false, false, false}}, {kMax, kMax, {false, true, false, true}}};
  for (const auto& [low, high, told] : cases) {
    QZRange range;
    range.low = low;
    range.high = high;
    EXPECT_EQ((std::array{range.IsUnboundedLow(), range.IsUnboundedHigh(), range.IsEmpty(), range.IsValid()}), told)
        << low << ' ' << high;
  }
}

TEST(Range, EmptyOnesAreEqualAndOthersByAllMembers) {
  QZRange wide, range(0.0, 1.0, 1);
  wide.low = -kMax;
  wide.inclusivity = 3;
  EXPECT_EQ(QZRange(), wide);
  EXPECT_EQ(range, QZRange(0.0, 1.0, 1));
  for (const QZRange& other : {QZRange(0.0, 1.0, 2), QZRange(0.5, 1.0, 1), QZRange(0.0, 2.0, 1), QZRange()}) {
    EXPECT_NE(range, other) << Show(other);
  }
}

}  // namespace
}  // namespace QZDataFlow
