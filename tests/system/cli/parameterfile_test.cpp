#include "qz/system/cli/parameterfile.h"

#include <gtest/gtest.h>

#include "interface_testing.h"
#include "qz/platform/memorystream.h"

namespace QZSystem {
namespace {

constexpr char kText[] =
    "!PARAMETER -names\n!TYPE string\n!LIST true\n!END\n"
    "!PARAMETER -in\n!TYPE string\n!ALIAS -i\n!END\n"
    "!PARAMETER -format\n!TYPE string\n!LEGAL_VALUE csv\n!LEGAL_VALUE txt\n!END\n"
    "!PARAMETER -ints\n!TYPE int\n!LIST true\n!LEGAL_RANGE 0 50\n!END\n"
    "!PARAMETER -mode\n!TYPE const\n!LEGAL_VALUE 1\n!LEGAL_VALUE fast\n!END\n"
    "!PARAMETER -files\n!TYPE file\n!LIST true\n!END\n"
    "!PARAMETER -matrix\n!TYPE stringEx\n!LIST true\n!LEGAL_VALUE unit\n!END\n";

class ParameterFile : public ::testing::Test {
 protected:
  ParameterFile() : itf(kText) {}

  bool Read(const std::string& text, bool overwrite = false, unsigned int level = QZErrorLevel::Warning) {
    qzisstream in;
    in.set(text);
    const bool good = QZParseParameterFile(itf, in, overwrite, level);
    told = messages.Take();
    return good;
  }

  void Reset() {
    for (QZParameter& parameter : QZIter(itf.GetParameters(true))) parameter.ClearValues();
  }

  CapturedMessages messages;
  QZInterface itf;
  Told told;
};

TEST_F(ParameterFile, Lines) {
  const std::pair<const char*, const char*> cases[] = {
      {"#comment\n\n  \t\n-in a\n", "-in=a"},
      {"  # -in a\n-I\t  b", "-in=b"},
      {"-format  'csv'\n-names   'first name' second\n", "-names=first name|second -format=csv"},
      {"'-in' \"a b\"", "-in=a b"},
      {"-in 'a b\"", "-in=a b"},
      {"-in 'a\"\n", "-in=a"},
      {"-in ''\n", "-in="},
      {"-in '\n", "-in='"},
      {"-in 'it''s'", "-in=it''s"},
      {"'' -in a\n'# not' a key\n", ""},
      {"-in a\r\n", "-in=a\r"},
      {"-in a\n-in b c\n-i c\n", "-in=a"},
      {"-ints 1 2\n-ints 3\n", "-ints=1|2"},
      {"-mode FAST\n", "-mode=FAST"}};
  for (const auto& [text, values] : cases) {
    Reset();
    EXPECT_TRUE(Read(text)) << text;
    EXPECT_EQ(told, Told{}) << text;
    EXPECT_EQ(ValuesOf(itf), values) << text;
  }
}

TEST_F(ParameterFile, FaultsAreToldAndTheReadingGoesOn) {
  const auto illegal = [](const std::string& value, const std::string& key, const std::string& limits) {
    return value + " is not a legal setting for parameter " + key + " (specified in parameter file)\n  Legal " + limits;
  };
  const auto several = [](const std::string& key) {
    return "Problem in parameter file with key " + key + ".  Key is followed by multiple values.";
  };
  const auto load = [](const std::string& file) {
    return "Unable to load parameter -files listed in parameter file, check that " + file + " is a valid setting";
  };
  const std::string formats = "value : csv\n  Legal value : txt", range = "Range : 0 to 50", good = "/proc/self/status";
  const std::string noMatrix = "-matrix file /nonexistent does not exist or is empty.";
  const struct {
    std::string text, values;
    Told told;
  } cases[] = {
      {"word 1", "", {"Unknown parameter word in parameter file (begin comment lines with #)"}},
      {"-IN", "", {"In parameter file key -IN is not followed by a value"}},
      {"-mode slow", "", {illegal("slow", "-mode", "value : 1\n  Legal value : fast")}},
      {"-in a b c", "-in=a", {several("-in")}},
      {"-Format a b", "", {illegal("a", "-Format", formats), several("-Format")}},
      {"-ints 1 60 2 x 3", "-ints=1|2|3", {illegal("60", "-ints", range), illegal("x", "-ints", range)}},
      // Each value is told before the next is looked at.
      {"-matrix /nonexistent unit x",
       "-matrix=unit",
       {noMatrix, illegal("/nonexistent", "-matrix", "value : unit"), "-matrix file x does not exist or is empty.",
        illegal("x", "-matrix", "value : unit")}},
      // A file that doesn't load spoils what is behind it, on the next line too.
      {"-files " + good + " /nonexistent " + good, "", {load("/nonexistent"), load(good)}},
      {"-files /nonexistent\n-files " + good + " x", "", {load("/nonexistent"), load(good), load("x")}},
  };
  for (const auto& [text, values, faults] : cases) {
    Reset();
    EXPECT_FALSE(Read(text + "\n-names last\n")) << text;
    Told expected;
    for (const std::string& fault : faults) expected.push_back("Warning: " + fault);
    EXPECT_EQ(told, expected) << text;
    EXPECT_EQ(ValuesOf(itf), "-names=last" + (values.empty() ? "" : " " + values)) << text;
  }
}

TEST_F(ParameterFile, OverwriteAddsBehindThePresentValues) {
  EXPECT_TRUE(Read("-ints 1\n-in a\n"));
  EXPECT_TRUE(Read("-ints 2 3\n", true));
  EXPECT_FALSE(Read("-ints 99 4\n-in b c\n", true, QZErrorLevel::Error));
  EXPECT_EQ(told, (Told{"Error: 99 is not a legal setting for parameter -ints (specified in parameter file)"
                        "\n  Legal Range : 0 to 50",
                        "Error: Problem in parameter file with key -in.  Key is followed by multiple values."}));
  EXPECT_EQ(ValuesOf(itf), "-in=a|b -ints=1|2|3|4");
}

TEST_F(ParameterFile, ALongLineIsLoadedOnce) {
  std::string text = "-ints";
  for (int i = 0; i < 200000; ++i) text += i % 2 == 0 ? " 7" : " 70";
  EXPECT_FALSE(Read(text));
  EXPECT_EQ(told.size(), 100000U);
  EXPECT_TRUE(itf.GetParameter("-ints")->GetHasValue(99999));
  EXPECT_FALSE(itf.GetParameter("-ints")->GetHasValue(100000));
}

TEST_F(ParameterFile, DamageIsToldByLine) {
  const std::string good = "#c\n-in      data.txt\n-format  'csv'\n-names   'first name' second\n-ints 1 2 3\n";
  for (std::size_t i = 0; i < good.size(); ++i) {
    Reset();
    const bool cutIsGood = Read(good.substr(0, i));
    EXPECT_EQ(cutIsGood, told.empty()) << i;
    for (const char flip : {'\x01', '\x0A', '\x20', '\x80', '\xFF'}) {
      std::string damaged = good;
      damaged[i] = static_cast<char>(damaged[i] ^ flip);
      Reset();
      const bool damagedIsGood = Read(damaged);
      EXPECT_EQ(damagedIsGood, told.empty()) << damaged;
      // What stands on other lines arrives.
      if (i + 1 >= good.find("-ints")) continue;
      EXPECT_EQ(Joined(itf.GetParameter("-ints")->GetStringValues()), "1|2|3") << damaged;
    }
  }
}

}  // namespace
}  // namespace QZSystem
