#include "qz/system/cli/systemnamespace.h"

#include <gtest/gtest.h>

#include "interface_testing.h"
#include "qz/system/cli/parameter_concrete.h"

namespace QZSystem {
namespace {

const QZNamespaceInterface constants("Shape", QZNamespaceInterface::Constants,
                                     {{"Ball", 1, "round"}, {"Box", 4}, {"Cube", 4, "an even box"}});
const QZNamespaceInterface flags("Colour", QZNamespaceInterface::Flags, {{"Red", 1, "warm"}, {"Blue", 4}});
// Any number but 1 makes flags; a name may hold the bar, a value may be 0 or shared, and a name may be empty.
const QZNamespaceInterface odd("Odd", 0, {{"none", 0}, {"a", 1}, {"b", 4}, {"ab", 5}, {"a|x", 16}, {"", 32}, {"c", 6}});

/// The messages, which a second look brings again.
Told Warned(const std::string& message, int times) {
  return message.empty() ? Told() : Told(static_cast<std::size_t>(times), "Warning: " + message);
}

TEST(Namespace, TurnsWordsIntoNumbers) {
  const std::string shape = " is not a valid Shape expression primitive!";
  const std::string colour = " is not a valid Colour expression primitive!";
  const struct {
    const QZNamespaceInterface& table;
    const char* text;
    unsigned int value;
    std::string told;
  } cases[] = {{constants, "Ball", 1, ""},
               {constants, "Cube", 4, ""},
               {constants, "ball", 77, "ball" + shape},
               {constants, "Ball|Box", 77, "Ball|Box" + shape},
               {flags, "Blue||Red|", 5, ""},
               {flags, "|", 0, ""},
               {flags, "Red|red", 77, "red" + colour},
               {flags, "Red| Blue", 77, " Blue" + colour},
               {flags, "x|y", 77, "x" + colour},
               {odd, "a|x", 16, ""},
               {odd, "b|a|x", 77, "x is not a valid Odd expression primitive!"},
               {odd, "none|a", 1, ""},
               {odd, "c|a", 7, ""}};
  CapturedMessages messages;
  for (const auto& each : cases) {
    EXPECT_EQ(each.table.GetValue(each.text, 77), each.value) << each.text;
    EXPECT_EQ(each.table.IsValid(each.text), each.told.empty()) << each.text;
    EXPECT_EQ(messages.Take(), Warned(each.told, 2)) << each.text;
  }
}

TEST(Namespace, TurnsNumbersIntoWords) {
  const QZNamespaceInterface empty("Empty", 1, {}), emptyFlags("Empty", 2, {});
  const struct {
    const QZNamespaceInterface& table;
    unsigned int value;
    const char* name;
    const char* told;
  } cases[] = {{constants, 4, "Box", ""},
               {constants, 5, "?", "5 is not a valid Shape constant!"},
               {constants, 4294967295U, "?", "-1 is not a valid Shape constant!"},
               {flags, 4, "Blue", ""},
               {flags, 7, "Red|Blue", ""},
               {flags, 0, "?", "0 is not a valid Colour value!"},
               {flags, 10, "?", "10 is not a valid Colour value!"},
               {odd, 0, "none", ""},
               {odd, 5, "ab", ""},
               {odd, 7, "a|b|ab|c", ""},
               {odd, 34, "", ""},
               {empty, 1, "?", "1 is not a valid Empty constant!"},
               {emptyFlags, 1, "?", "1 is not a valid Empty value!"}};
  CapturedMessages messages;
  for (const auto& each : cases) {
    EXPECT_EQ(each.table.GetName(each.value, "?"), each.name) << each.value;
    EXPECT_EQ(messages.Take(), Warned(each.told, 1)) << each.value;
  }
}

TEST(Namespace, ExplainsItsWordsAndMakesThemLegal) {
  QZStringParameter shape("-shape");
  EXPECT_TRUE(QZAddLegalValues(&shape, &constants, true));
  EXPECT_EQ(Joined(shape.GetLegalValues()), "Ball|Box|Cube");
  EXPECT_EQ(Joined(shape.GetDetail()), " \n\tBall         - round\n\tCube         - an even box\n");
  QZStringParameter colour("-colour");
  EXPECT_TRUE(QZAddLegalValues(&colour, &flags, true));
  EXPECT_TRUE(colour.IsLegalString("Red|Blue"));
  EXPECT_EQ(Joined(colour.GetLegalValues()), "");
  EXPECT_EQ(Joined(colour.GetDetail()),
            "Primitive expressions :\n\tRed          - warm\n\tBlue        \n\n\tCombined expressions :\n"
            "\tCreated by combining primitive tokens with | \n");
  QZStringParameter longer("-longer");
  const QZNamespaceInterface table("T", 1, {{"TwelveLetter", 1, "x"}, {"ThirteenLetter", 2, "y"}});
  EXPECT_TRUE(QZAddLegalValues(&longer, &table, false));
  EXPECT_EQ(Joined(longer.GetDetail()), "");
  QZAddDetails(&longer, &table);
  EXPECT_EQ(Joined(longer.GetDetail()), " \n\tTwelveLetter - x\n\tThirteenLetter - y\n");
}

TEST(Namespace, BuildsParametersInOneCall) {
  QZInterface itf;
  const QZParameter* list = QZCreateParam(itf, "int", "-n", "-number", "how many", 3);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list, itf.GetParameter("-number"));
  EXPECT_EQ(list->ClassID() + list->GetName() + list->GetBrief(), "int-nhow many");
  EXPECT_EQ(list->GetVisibility(), 0U);
  EXPECT_TRUE(list->GetIsList());
  const QZParameter* range = QZCreateParamWithRange(itf, "float", "-f", "", "a share", "0", "1");
  ASSERT_NE(range, nullptr);
  EXPECT_TRUE(range->IsLegalString("0.5") && !range->IsLegalString("2"));
  EXPECT_EQ(Joined(range->GetAliases()), "");
  EXPECT_FALSE(range->GetIsList());
  EXPECT_EQ(QZCreateStringParam(itf, "-s", "-t", "a text")->ClassID(), "string");

  CapturedMessages messages;
  EXPECT_EQ(QZCreateParam(itf, "nokind", "-x", "-y", "", 0), nullptr);
  EXPECT_EQ(messages.Take().back(), "Warning: QZInterfaceImpl::AddParamter.  Unknown classid nokind");
  EXPECT_EQ(QZCreateParamWithRange(itf, "nokind", "-x", "-y", "", "0", "1"), nullptr);
  EXPECT_EQ(itf.GetParameter("-x"), nullptr);
}

}  // namespace
}  // namespace QZSystem
