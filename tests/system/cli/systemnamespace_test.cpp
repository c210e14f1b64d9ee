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

TEST(Namespace, TurnsWordsIntoNumbers) {
  const struct {
    const QZNamespaceInterface& table;
    const char* text;
    unsigned int value;
    const char* unknown;
  } cases[] = {
      {constants, "Ball", 1, nullptr},
      {constants, "Cube", 4, nullptr},
      {constants, "ball", 77, "ball"},
      {constants, "", 77, ""},
      {constants, "Ball|Box", 77, "Ball|Box"},
      {flags, "Red", 1, nullptr},
      {flags, "Red|Blue", 5, nullptr},
      {flags, "Blue||Red|", 5, nullptr},
      {flags, "", 0, nullptr},
      {flags, "|", 0, nullptr},
      {flags, "Red|red", 77, "red"},
      {flags, "Red| Blue", 77, " Blue"},
      {flags, "x|y", 77, "x"},
      {odd, "a|x", 16, nullptr},
      {odd, "b|a|x", 77, "x"},
      {odd, "none|a", 1, nullptr},
      {odd, "c|a", 7, nullptr},
  };
  CapturedMessages messages;
  for (const auto& each : cases) {
    EXPECT_EQ(each.table.GetValue(each.text, 77), each.value) << each.text;
    EXPECT_EQ(each.table.IsValid(each.text), each.unknown == nullptr) << each.text;
    Told wanted;
    const std::string table = &each.table == &constants ? "Shape" : &each.table == &flags ? "Colour" : "Odd";
    if (each.unknown != nullptr)
      wanted.assign(2, "Warning: " + std::string(each.unknown) + " is not a valid " + table + " expression primitive!");
    EXPECT_EQ(messages.Take(), wanted) << each.text;
  }
}

TEST(Namespace, TurnsNumbersIntoWords) {
  const struct {
    const QZNamespaceInterface& table;
    unsigned int value;
    const char* name;
    const char* told;
  } cases[] = {
      {constants, 1, "Ball", nullptr},
      {constants, 4, "Box", nullptr},
      {constants, 5, "?", "Warning: 5 is not a valid Shape constant!"},
      {constants, 4294967295U, "?", "Warning: -1 is not a valid Shape constant!"},
      {flags, 4, "Blue", nullptr},
      {flags, 5, "Red|Blue", nullptr},
      {flags, 7, "Red|Blue", nullptr},
      {flags, 0, "?", "Warning: 0 is not a valid Colour value!"},
      {flags, 10, "?", "Warning: 10 is not a valid Colour value!"},
      {odd, 0, "none", nullptr},
      {odd, 5, "ab", nullptr},
      {odd, 7, "a|b|ab|c", nullptr},
      {odd, 2, "?", "Warning: 2 is not a valid Odd value!"},
      {odd, 34, "", nullptr},
      {QZNamespaceInterface("Empty", 1, {}), 1, "?", "Warning: 1 is not a valid Empty constant!"},
      {QZNamespaceInterface("Empty", 2, {}), 1, "?", "Warning: 1 is not a valid Empty value!"},
  };
  CapturedMessages messages;
  for (const auto& each : cases) {
    EXPECT_EQ(each.table.GetName(each.value, "?"), each.name) << each.value;
    EXPECT_EQ(messages.Take(), each.told != nullptr ? Told{each.told} : Told()) << each.value;
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
  // The table's own entries, in its order.
  std::string words;
  for (const QZNamespacePrim& each : QZIter(flags.GetPrimitives())) words += each.name + each.detail + " ";
  EXPECT_EQ(words, "Redwarm Blue ");
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
