#include "qz/system/cli/parameterfile.h"

#include <gtest/gtest.h>

#include "interface_testing.h"
#include "qz/platform/memorystream.h"

namespace QZSystem {
namespace {

constexpr char kText[] = R"(
!PARAMETER -in
  !TYPE string
  !ALIAS -i
!END
!PARAMETER -format
  !TYPE string
  !LEGAL_VALUE csv
  !LEGAL_VALUE txt
!END
!PARAMETER -names
  !TYPE string
  !LIST true
!END
!PARAMETER -ints
  !TYPE int
  !LIST true
  !LEGAL_RANGE 0 50
!END
!PARAMETER -mode
  !TYPE const
  !LEGAL_VALUE 1
  !LEGAL_VALUE fast
!END
!PARAMETER -files
  !TYPE file
  !LIST true
!END
!PARAMETER -matrix
  !TYPE stringEx
  !LIST true
  !LEGAL_VALUE unit
!END
)";

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
  struct Case {
    std::string text, values;
  };
  for (const Case& c : {
           Case{"", ""},
           Case{"#comment\n\n  \t\n-in a\n", "-in=a"},
           Case{"  # -in a\n-I\t  b", "-in=b"},
           Case{"-in      data.txt\n-format  'csv'\n-names   'first name' second\n",
                "-in=data.txt -format=csv -names=first name|second"},
           Case{"'-in' \"a b\"", "-in=a b"},
           Case{"-in 'a b\"", "-in=a b"},
           Case{"-in 'a\"\n", "-in=a"},
           Case{"-in ''\n", "-in="},
           Case{"-in '\n", "-in='"},
           Case{"-in 'it''s'", "-in=it''s"},
           Case{"-in a'b\n", "-in=a'b"},
           Case{"'' -in a\n'# not' a key\n", ""},
           Case{"-in a\r\n", "-in=a\r"},
           Case{"-in a\n-in b\n-i c\n", "-in=a"},
           Case{"-in a\n-in b c\n", "-in=a"},
           Case{"-ints 1 2\n-ints 3\n", "-ints=1|2"},
           Case{"-mode FAST\n", "-mode=FAST"},
       }) {
    Reset();
    EXPECT_TRUE(Read(c.text)) << c.text;
    EXPECT_EQ(told, Told{}) << c.text;
    EXPECT_EQ(ValuesOf(itf), c.values) << c.text;
  }
}

TEST_F(ParameterFile, FaultsAreToldAndTheReadingGoesOn) {
  const auto illegal = [](const std::string& value, const std::string& key, const std::string& limits) {
    return value + " is not a legal setting for parameter " + key + " (specified in parameter file)" + limits;
  };
  const std::string range = "\n  Legal Range : 0 to 50";
  const std::string several = "Problem in parameter file with key -in.  Key is followed by multiple values.";
  const std::string load = "Unable to load parameter -files listed in parameter file, check that ";
  struct Case {
    std::string text, values;
    Told told;
  };
  for (const Case& c : {
           Case{"-nosuch 1", "", {"Unknown parameter -nosuch in parameter file (begin comment lines with #)"}},
           Case{"word", "", {"Unknown parameter word in parameter file (begin comment lines with #)"}},
           Case{"-IN", "", {"In parameter file key -IN is not followed by a value"}},
           Case{"-format xml", "", {illegal("xml", "-format", "\n  Legal value : csv\n  Legal value : txt")}},
           Case{"-mode slow", "", {illegal("slow", "-mode", "\n  Legal value : 1\n  Legal value : fast")}},
           Case{"-in a b c", "-in=a", {several}},
           Case{"-Format a b",
                "",
                {illegal("a", "-Format", "\n  Legal value : csv\n  Legal value : txt"),
                 "Problem in parameter file with key -Format.  Key is followed by multiple values."}},
           Case{"-ints 1 60 2 x 3", "-ints=1|2|3", {illegal("60", "-ints", range), illegal("x", "-ints", range)}},
           Case{"-files /nonexistent/a /nonexistent/b",
                "",
                {load + "/nonexistent/a is a valid setting", load + "/nonexistent/b is a valid setting"}},
       }) {
    Reset();
    EXPECT_FALSE(Read(c.text + "\n-names last\n")) << c.text;
    Told expected;
    for (const std::string& text : c.told) expected.push_back("Warning: " + text);
    EXPECT_EQ(told, expected) << c.text;
    EXPECT_EQ(itf.GetParameter("-names")->GetStringValue(0), "last") << c.text;
    itf.GetParameter("-names")->ClearValues();
    EXPECT_EQ(ValuesOf(itf), c.values) << c.text;
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

TEST_F(ParameterFile, AFileThatDoesNotLoadSpoilsTheListFromThereOn) {
  EXPECT_FALSE(Read("-files /proc/self/status /nonexistent/a /proc/self/status"));
  const std::string load = "Warning: Unable to load parameter -files listed in parameter file, check that ";
  EXPECT_EQ(told, (Told{load + "/nonexistent/a is a valid setting", load + "/proc/self/status is a valid setting"}));
  EXPECT_FALSE(itf.GetParameter("-files")->GetHasValue(0));
  EXPECT_EQ(Joined(itf.GetParameter("-files")->GetStringValues()),
            "/proc/self/status|/nonexistent/a|/proc/self/status");
}

TEST_F(ParameterFile, AFileThatDidNotLoadSpoilsTheNextLineToo) {
  EXPECT_FALSE(Read("-files /nonexistent/a\n-files /proc/self/status /nonexistent/b\n"));
  const std::string load = "Warning: Unable to load parameter -files listed in parameter file, check that ";
  EXPECT_EQ(told, (Told{load + "/nonexistent/a is a valid setting", load + "/proc/self/status is a valid setting",
                        load + "/nonexistent/b is a valid setting"}));
}

TEST_F(ParameterFile, EachValueIsToldBeforeTheNextIsLookedAt) {
  EXPECT_FALSE(Read("-matrix /nonexistent/a unit /nonexistent/b\n-files /nonexistent/a x /nonexistent/b\n"));
  const auto missing = [](const std::string& name) {
    return "Warning: -matrix file " + name + " does not exist or is empty.";
  };
  const auto illegal = [](const std::string& name) {
    return "Warning: " + name +
           " is not a legal setting for parameter -matrix (specified in parameter file)\n  Legal value : unit";
  };
  const std::string load = "Warning: Unable to load parameter -files listed in parameter file, check that ";
  EXPECT_EQ(told, (Told{missing("/nonexistent/a"), illegal("/nonexistent/a"), missing("/nonexistent/b"),
                        illegal("/nonexistent/b"), load + "/nonexistent/a is a valid setting",
                        load + "x is a valid setting", load + "/nonexistent/b is a valid setting"}));
  EXPECT_EQ(ValuesOf(itf), "-matrix=unit");
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
