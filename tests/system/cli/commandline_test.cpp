#include "qz/system/cli/commandline.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "interface_testing.h"
#include "qz/system/cli/configure.h"

namespace QZSystem {
namespace {

using Args = std::vector<std::string>;

constexpr char kText[] = R"(
!PARAMETER -in
  !TYPE string
  !KEYLESS 1
  !DEFAULT none
!END
!PARAMETER -out
  !TYPE string
  !KEYLESS 2
!END
!CATEGORY more
  !PARAMETER -number
    !ALIAS -n
    !TYPE int
    !LEGAL_VALUE 7
    !LEGAL_RANGE 1 5
    !ILLEGAL_VALUE 3
    !ILLEGAL_RANGE 4 5
  !END
  !PARAMETER -ints
    !TYPE int
    !LIST true
    !LEGAL_RANGE 0 99
  !END
  !PARAMETER -flag
    !TYPE bool
  !END
  !PARAMETER -mode
    !TYPE const
    !LEGAL_VALUE 1
    !LEGAL_VALUE fast
  !END
  !PARAMETER -file
    !TYPE file
  !END
  !PARAMETER -param
    !TYPE param_file
  !END
!END
)";

/// A file that stands as long as the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& contents)
      : name(::testing::TempDir() + "qz_" + ::testing::UnitTest::GetInstance()->current_test_info()->name()) {
    std::ofstream(name) << contents;
  }
  ~TemporaryFile() { std::remove(name.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  const std::string& Name() const { return name; }

 private:
  std::string name;
};

class CommandLine : public ::testing::Test {
 protected:
  explicit CommandLine(const std::string& text = kText) : itf(text.c_str()) {}

  bool Parse(const Args& args, unsigned int level = QZErrorLevel::Error) {
    Arguments arguments(args);
    const bool good = QZParseCommandLine(itf, arguments.Count(), arguments.Values(), nullptr, level, false);
    told = messages.Take();
    return good;
  }

  void Reset() {
    for (QZParameter& parameter : QZIter(itf.GetParameters(true))) parameter.ClearValues();
  }

  struct Case {
    Args args;
    std::string values;
    std::string told;  ///< the one message, or none for success
  };

  void Check(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
      Reset();
      const std::string line = ::testing::PrintToString(c.args);
      EXPECT_EQ(Parse(c.args), c.told.empty()) << line;
      EXPECT_EQ(ValuesOf(itf), c.values) << line;
      EXPECT_EQ(told, c.told.empty() ? Told{} : Told{"Error: " + c.told}) << line;
    }
  }

  CapturedMessages messages;
  QZInterface itf;
  Told told;
};

TEST_F(CommandLine, KeysAndValues) {
  Check({
      {{}, "", ""},
      {{"-in", "a"}, "-in=a", ""},
      {{"-IN", "-out", "-N", "2"}, "-in=-out -number=2", ""},
      {{"-in"}, "", "Parameter -in on the command line is not followed by a value"},
      {{"-n", "1", "-Number", "2"}, "-number=1", "-number is specified twice on the command line"},
      {{"-n", "-n"},
       "",
       "-n is not a legal setting for parameter -n (specified on command line)\n  Legal value : 7"
       "\n  Legal Range : 1 to 5\n  Illegal value : 3\n  Illegal Range : 4 to 5"},
      {{"-mode", "FAST"}, "-mode=FAST", ""},
      {{"-Mode", "slow"},
       "",
       "slow is not a legal setting for parameter -Mode (specified on command line)\n  Legal value : fast"},
      {{"-file", "/nonexistent/file"}, "", "Problem loading parameter -file with setting /nonexistent/file"},
      {{"-in", ""}, "-in=", ""},
  });
}

TEST_F(CommandLine, BooleansNeedNoValue) {
  Check({
      {{"-flag"}, "-flag=true", ""},
      {{"-flag", "-in", "a"}, "-in=a -flag=true", ""},
      {{"-flag", "false"}, "-flag=false", ""},
      {{"-flag", "ON", "word"}, "-in=word -flag=ON", ""},
      {{"-flag", "word"}, "-in=word -flag=true", ""},
      {{"-flag", "-flag"}, "-flag=true", "-flag is specified twice on the command line"},
  });
}

TEST_F(CommandLine, ListsTakeWhatIsLegal) {
  Check({
      {{"-ints", "1", "2", "3", "-flag"}, "-flag=true -ints=1|2|3", ""},
      {{"-ints", "1,2 3"}, "-ints=1|2|3", ""},
      {{"-ints", "1,2", "3"}, "-ints=1|2|3", ""},
      {{"-ints", "1", "2", "word"}, "-in=word -ints=1|2", ""},
      {{"-ints", "1", "100", "2"}, "-in=100 -out=2 -ints=1", ""},
      {{"-ints", "1", "-flag", "-ints", "2"}, "-flag=true -ints=1|2", ""},
      {{"-ints", "1", "-flag", "-ints", "2,3"}, "-flag=true -ints=2|3", ""},
      {{"-ints", "1,100"},
       "",
       "1,100 is not a legal setting for parameter -ints (specified on command line)\n  Legal Range : 0 to 99"},
  });
}

TEST_F(CommandLine, WordsGoToTheKeylessParameters) {
  Check({
      {{"a"}, "-in=a", ""},
      {{"a", "b"}, "-in=a -out=b", ""},
      {{"-n", "1", "a"}, "-in=a -number=1", ""},
      {{"-in", "a", "b"}, "-in=a -out=b", ""},
      {{"--unset", "--unset-nosuch"}, "-in=--unset -out=--unset-nosuch", ""},
      {{"a", "-n", "1"}, "", "Unknown parameter, a, on command line"},
      {{"a", "b", "c"}, "", "Unknown argument a on command line (too many arguments to be keyless)"},
      {{"-out", "a", "b", "c"},
       "-in=b -out=a",
       "Unknown argument b on command line.  There are too many arguments to be keyless (one or more keyless "
       "parameters "
       "are explicitly specified)"},
      {{"-nosuch", "x"}, "-in=-nosuch -out=x", ""},
  });
  EXPECT_FALSE(Parse({"a", "b", "-n"}));
  EXPECT_EQ(told,
            (Told{"Error: Unknown parameter, a, on command line", "Error: Unknown parameter, b, on command line"}));
}

TEST_F(CommandLine, FailuresComeAtTheGivenLevel) {
  EXPECT_FALSE(Parse({"-in"}, QZErrorLevel::Warning));
  EXPECT_EQ(told, Told{"Warning: Parameter -in on the command line is not followed by a value"});
}

TEST_F(CommandLine, UnsetComesLastAndBringsTheDefaultBack) {
  const TemporaryFile file("-in fromfile\n-out fromfile\n");
  EXPECT_TRUE(Parse({"-param", file.Name(), "--unset-IN", "-n", "2", "--unset-n"}));
  EXPECT_EQ(ValuesOf(itf), "-out=fromfile -param=" + file.Name());
  EXPECT_TRUE(itf.GetParameter("-in")->GetHasDefault(0));
  EXPECT_EQ(told, Told{});
}

TEST_F(CommandLine, AParameterFileFillsWhatTheCommandLineLeft) {
  const TemporaryFile file("-in fromfile\n-out fromfile\n-number nonsense\n");
  EXPECT_TRUE(Parse({"-n", "1", "-param", file.Name(), "word"}));
  EXPECT_EQ(ValuesOf(itf), "-in=word -out=fromfile -number=1 -param=" + file.Name());
}

TEST_F(CommandLine, ABadParameterFileFails) {
  const TemporaryFile file("-nosuch 1\n-in a\n");
  EXPECT_FALSE(Parse({"-param", file.Name()}));
  EXPECT_EQ(told, (Told{"Error: Unknown parameter -nosuch in parameter file (begin comment lines with #)",
                        "Error: Problem parsing parameter file"}));
  EXPECT_EQ(ValuesOf(itf), "-in=a -param=" + file.Name());
}

TEST_F(CommandLine, RequiredParametersAndRequirements) {
  itf.GetParameter("-out")->SetRequired(true);
  EXPECT_FALSE(Parse({"a"}));
  EXPECT_EQ(told, Told{"Error: Missing required parameter -out"});
  Reset();
  EXPECT_TRUE(Parse({"a", "b"}));
  Reset();
  Arguments arguments({"a", "b"});
  EXPECT_FALSE(QZParseCommandLine(itf, nullptr, arguments.Count(), arguments.Values(),
                                  Bytes("!REQUIREMENT\n!OPTION -n\n!ERROR_MSG\nGive -n\n!END\n"), 4, false));
  EXPECT_EQ(messages.Take(), Told{"Warning: Missing requirements:\nGive -n\n"});
}

class KeylessList : public CommandLine {
 protected:
  KeylessList()
      : CommandLine(
            "!PARAMETER -one\n!TYPE int\n!KEYLESS 1\n!END\n"
            "!PARAMETER -rest\n!TYPE int\n!LIST true\n!KEYLESS 2\n!LEGAL_RANGE 0 50\n!END\n"
            "!PARAMETER -x\n!TYPE bool\n!END\n") {}
};

TEST_F(KeylessList, TakesAllWordsThatAreLeft) {
  const std::string keyless = " is not a legal setting for the keyless parameter -";
  Check({
      {{"1"}, "-one=1", ""},
      {{"1", "2", "3", "4"}, "-one=1 -rest=2|3|4", ""},
      {{"-one", "1", "2", "3"}, "-one=1 -rest=2|3", ""},
      {{"-rest", "1", "2", "word"}, "-rest=1|2", "word" + keyless + "one specified on the command line"},
      {{"-rest", "9", "-x", "5", "6", "7"}, "-one=5 -rest=9|6|7 -x=true", ""},
      {{"1", "2", "60", "3"}, "-one=1 -rest=2", "60" + keyless + "rest specified on the command line"},
      {{"1", "60"}, "-one=1", "60" + keyless + "rest specified on the command line"},
  });
}

TEST(CommandLineKeyless, NoneAtAll) {
  CapturedMessages messages;
  QZInterface itf("!PARAMETER -a\n!TYPE int\n!END\n");
  Arguments arguments({"x", "y"});
  EXPECT_FALSE(QZParseCommandLine(itf, arguments.Count(), arguments.Values(), nullptr, 5, false));
  EXPECT_EQ(messages.Take(),
            (Told{"Error: Unknown argument on command line x", "Error: Unknown argument on command line y"}));
}

TEST(CommandLineKeyless, AFileThatDoesNotLoadEndsTheWords) {
  const TemporaryFile file("contents");
  CapturedMessages messages;
  QZInterface itf("!PARAMETER -f\n!TYPE file\n!LIST true\n!KEYLESS 1\n!END\n");
  Arguments arguments({file.Name(), "/nonexistent/a", file.Name(), "/nonexistent/b"});
  EXPECT_FALSE(QZParseCommandLine(itf, arguments.Count(), arguments.Values(), nullptr, 5, false));
  EXPECT_EQ(messages.Take(), Told{"Error: Problem loading keyless parameter -f with setting /nonexistent/a"});
  EXPECT_EQ(Joined(itf.GetParameter("-f")->GetStringValues()), file.Name() + "|/nonexistent/a");
  EXPECT_FALSE(itf.GetParameter("-f")->GetHasValue(0));
}

TEST(CommandLineKeyless, TakesParameterFiles) {
  const TemporaryFile file("-n 5");
  CapturedMessages messages;
  QZInterface itf("!PARAMETER -f\n!TYPE param_file\n!LIST true\n!KEYLESS 1\n!END\n!PARAMETER -n\n!TYPE int\n!END\n");
  Arguments arguments({file.Name(), file.Name()});
  EXPECT_TRUE(QZParseCommandLine(itf, arguments.Count(), arguments.Values(), nullptr, 5, false));
  EXPECT_EQ(itf.GetParameter("-n")->GetStringValue(0), "5");
}

TEST(CommandLineKeyless, NumbersMustRunFromOneAndListsStandLast) {
  const auto parameter = [](const std::string& name, int number, bool list = false) {
    return "!PARAMETER " + name + "\n!TYPE int\n!KEYLESS " + std::to_string(number) + "\n!LIST " +
           (list ? "true" : "false") + "\n!END\n";
  };
  struct Case {
    std::string text, order;
    Told told;
  };
  for (const Case& c : {
           Case{"", "", {}},
           Case{parameter("-b", 2, true) + parameter("-a", 1) + parameter("-c", 0), "-a -b", {}},
           Case{parameter("-a", 2), "-a", {"Error: Missing keyless parameter 1, have keyless parameter 2 (-a)"}},
           Case{parameter("-a", 1) + parameter("-b", 3),
                "-a -b",
                {"Error: Missing keyless parameter 2, have keyless parameter 1 (-a) and 3 (-b)"}},
           Case{parameter("-a", 1) + parameter("-b", 1),
                "-a -b",
                {"Error: Missing keyless parameter 2, have keyless parameter 1 (-a) and 1 (-b)"}},
           Case{parameter("-a", 1, true) + parameter("-b", 2) + parameter("-c", 3, true),
                "-a -b -c",
                {"Error: If a keyless parameter is also a list type parameter it must be the last keyless entry.\n"
                 "Parameter -a is violating this rule (-c is after it)"}},
       }) {
    CapturedMessages messages;
    QZInterface itf(c.text.c_str());
    std::vector<QZParameter*> keyless(3);
    EXPECT_EQ(GetKeylessParameters(itf, keyless), c.told.empty()) << c.text;
    EXPECT_EQ(messages.Take(), c.told) << c.text;
    std::string order;
    for (const QZParameter* each : keyless) order += (order.empty() ? "" : " ") + each->GetName();
    EXPECT_EQ(order, c.order) << c.text;
    Arguments arguments({"--version"});
    if (c.told.empty()) continue;
    EXPECT_FALSE(QZParseCommandLine(itf, arguments.Count(), arguments.Values(), nullptr, 5, false)) << c.text;
  }
}

TEST(CommandLineKeys, TheFirstOfTheWalkHasTheKeyWhereverItsTwinStands) {
  CapturedMessages messages;
  QZInterface itf(
      "!PARAMETER -b\n!TYPE int\n!ALIAS -A\n!END\n!PARAMETER -a\n!TYPE int\n!END\n"
      "!CATEGORY c\n!PARAMETER -B\n!TYPE int\n!END\n!END\n");
  for (int i = 0; i < 200; ++i) itf.AddParameter("int")->SetName("-X" + std::to_string(i));
  Arguments arguments({"-a", "1", "-x199", "2"});
  EXPECT_TRUE(QZParseCommandLine(itf, arguments.Count(), arguments.Values(), nullptr, 5, false));
  EXPECT_EQ(ValuesOf(itf), "-b=1 -X199=2");
}

TEST(CommandLineExit, VersionAndHelpEndTheProcessWithStatusZero) {
  const auto parse = [](const Args& args, const char* version, bool help) {
    Arguments arguments(args);
    QZInterface itf(kText);
    QZParseCommandLine(itf, version, arguments.Count(), arguments.Values(), nullptr, 5, help);
    std::exit(7);
  };
  const ::testing::ExitedWithCode success(0);
  EXPECT_EXIT((dup2(2, 1), parse({"-n", "1", "--version"}, "1.2.3", false)), success, "^1\\.2\\.3\n$");
  EXPECT_EXIT((dup2(2, 1), parse({"--version"}, nullptr, true)), success, "^version not set\n$");
  EXPECT_EXIT(parse({"--help"}, nullptr, true), success, "Additional help functions:");
  EXPECT_EXIT(parse({"--help"}, nullptr, false), ::testing::ExitedWithCode(7), "");
}

TEST(CommandLineExit, AProcessThatIsEndingKeepsItsStatus) {
  const auto fail = [] {
    std::atexit([] {
      Arguments version({"--version"}), help({"--help"}), bad({"-n"});
      QZInterface itf(kText);
      for (Arguments* each : {&version, &help}) QZParseCommandLine(itf, each->Count(), each->Values());
      const QZInterface entered(kText, help.Count(), help.Values()), refused(kText, bad.Count(), bad.Values());
      QZInterface none("");
      QZParseCommandLineLW(none, version.Count(), version.Values());
      qzerr << "done" << qzendl;
    });
    QZThrow.Fatal("over");
  };
  EXPECT_EXIT(fail(), ::testing::ExitedWithCode(1), "done\n$");
}

TEST(CommandLineExit, TheOneLineEntry) {
  const auto enter = [](const std::string& text, const Args& args, bool strict) {
    QZThrow.SetStrict(strict);
    Arguments arguments(args);
    const QZInterface itf(text.c_str(), arguments.Count(), arguments.Values());
    qzerr << "values " << ValuesOf(itf) << "\n";
    std::exit(7);
  };
  const std::string needed = std::string("!BRIEF Does it\n") + "!PARAMETER -a\n!TYPE int\n!REQUIRED true\n!END\n";
  const ::testing::ExitedWithCode refused(1);
  const ::testing::ExitedWithCode through(7);
  EXPECT_EXIT(enter(kText, {"-n", "2", "x"}, true), through, "^values -in=x -number=2\n$");
  EXPECT_EXIT(enter(kText, {"--help", "all"}, true), ::testing::ExitedWithCode(0), "Complete parameter list");
  EXPECT_EXIT(enter(needed, {}, true), ::testing::ExitedWithCode(0), "^No arguments specified on the command line\n");
  EXPECT_EXIT(enter(kText, {"-n"}, false), refused,
              "^Warning: Parameter -n on the command line is not followed by a value\n$");
  EXPECT_EXIT(enter(kText, {"-n"}, true), refused,
              "^Fatal: Parameter -n on the command line is not followed by a value\n$");
  EXPECT_EXIT(enter("what", {"-n"}, false), through,
              "^Warning: Configuring interface.  Unable to parse line\n  line : what\n"
              "Warning: Problem configuring QZInterface!\nvalues \n$");
}

// --------------------------------------------------------------------------------------------------- light-weight

constexpr char kSwitches[] =
    "!PARAMETER -a\n!TYPE bool\n!DEFAULT false\n!ALIAS -x\n!END\n"
    "!PARAMETER -b\n!TYPE bool\n!DEFAULT false\n!END\n"
    "!PARAMETER -C\n!TYPE bool\n!DEFAULT false\n!END\n"
    "!PARAMETER -first\n!TYPE int\n!KEYLESS 1\n!END\n"
    "!PARAMETER -r\n!TYPE int\n!KEYLESS 2\n!LIST true\n!END\n";

class LightCommandLine : public ::testing::Test {
 protected:
  bool Parse(QZInterface& itf, const Args& args, const unsigned char* requirements = nullptr) {
    Arguments arguments(args);
    const bool good = QZParseCommandLineLW(itf, arguments.Count(), arguments.Values(), requirements, 4);
    told = messages.Take();
    return good;
  }

  CapturedMessages messages;
  Told told;
};

TEST_F(LightCommandLine, SwitchesAndPositionalArguments) {
  const std::string byKey = " is a keyless parameter, do not specify it with a key";
  struct Case {
    Args args;
    std::string values;
    Told told;
  };
  for (const Case& c : {
           Case{{}, "", {}},
           Case{{"-a", "-B"}, "-a=true -b=true", {}},
           Case{{"-abc"}, "-a=true -b=true -C=true", {}},
           Case{{"-aa", "-X"}, "-a=true", {}},
           Case{{"-azb"}, "-a=true -b=true", {"Unknow switch -z (specified as part of group -azb)"}},
           Case{{"-z", "1"}, "-first=1", {"Unknow switch -z"}},
           Case{{"--"}, "", {"Unknow switch --"}},
           Case{{"-a", "-"}, "-a=true", {" - is not a valid command line arg"}},
           Case{{"-first", "1"}, "-first=1", {"-first" + byKey}},
           Case{{"-ar"}, "-a=true", {"-ar" + byKey, "switch -r is not a boolean parameter"}},
           Case{{"1", "-a", "2"}, "-first=1 -r=2", {"Invalid command line argument -a"}},
           Case{{"x", "2", "y", "3"}, "-r=2|3", {"Invalid command line argument x", "Invalid command line argument y"}},
           Case{{"", "2"}, "-r=2", {"Invalid command line argument "}},
       }) {
    QZInterface itf(kSwitches);
    const std::string line = ::testing::PrintToString(c.args);
    EXPECT_EQ(Parse(itf, c.args), c.told.empty()) << line;
    Told expected;
    for (const std::string& text : c.told) expected.push_back("Warning: " + text);
    EXPECT_EQ(told, expected) << line;
    EXPECT_EQ(ValuesOf(itf), c.values) << line;
  }
}

TEST_F(LightCommandLine, AFileThatDoesNotLoadSpoilsTheListFromThereOn) {
  const TemporaryFile file("contents");
  QZInterface itf("!PARAMETER -f\n!TYPE file\n!KEYLESS 1\n!LIST true\n!END\n");
  EXPECT_FALSE(Parse(itf, {"/nonexistent/a", file.Name(), "/nonexistent/b"}));
  const std::string invalid = "Warning: Invalid command line argument ";
  EXPECT_EQ(told, (Told{invalid + "/nonexistent/a", invalid + file.Name(), invalid + "/nonexistent/b"}));
}

TEST_F(LightCommandLine, TooManyArguments) {
  QZInterface none("!PARAMETER -a\n!TYPE bool\n!DEFAULT false\n!END\n");
  EXPECT_FALSE(Parse(none, {"-a", "1"}));
  EXPECT_EQ(told, Told{"Warning: Too many arguments on the command line"});
  QZInterface one("!PARAMETER -f\n!TYPE int\n!KEYLESS 1\n!END\n");
  EXPECT_FALSE(Parse(one, {"1", "2"}));
  EXPECT_EQ(told, Told{"Warning: Too many arguments on the command line"});
  EXPECT_EQ(ValuesOf(one), "-f=1");
}

TEST_F(LightCommandLine, ChecksWhatIsRequired) {
  QZInterface itf("!PARAMETER -f\n!TYPE int\n!KEYLESS 1\n!REQUIRED true\n!END\n");
  EXPECT_FALSE(Parse(itf, {}));
  EXPECT_EQ(told, Told{"Warning: Missing required parameter -f"});
  EXPECT_TRUE(Parse(itf, {"1"}, Bytes("!REQUIREMENT\n!OPTION -f 1\n!END\n")));
  EXPECT_FALSE(Parse(itf, {"2"}, Bytes("!REQUIREMENT\n!OPTION -f 1\n!END\n")));
  EXPECT_EQ(told, Told{"Warning: Missing requirements:\n"});
}

TEST_F(LightCommandLine, KeylessFaultsAreToldAndTheParseGoesOn) {
  QZInterface itf("!PARAMETER -f\n!TYPE int\n!KEYLESS 2\n!END\n");
  EXPECT_FALSE(Parse(itf, {"1"}));
  EXPECT_EQ(told, Told{"Error: Missing keyless parameter 1, have keyless parameter 2 (-f)"});
  EXPECT_EQ(ValuesOf(itf), "-f=1");
}

TEST_F(LightCommandLine, RefusesInterfacesBeyondIt) {
  const std::string start = "Error: ParseCommandLineLW : ";
  const std::string character = "\n non-keyless bool parameters must have a - followed by a single character as a key ";
  struct Case {
    std::string body;
    Told told;
  };
  for (const Case& c : {
           Case{"-p\n!TYPE int\n", {start + "\n All non-keyless parameter keys must be booleans (-p is not)"}},
           Case{"-p\n!TYPE param_file\n",
                {start + "does not support parameter files (-p)",
                 start + "\n All non-keyless parameter keys must be booleans (-p is not)"}},
           Case{"-p\n!TYPE bool\n",
                {start + "bool parameters must have a default value of false (-p does not have a default value)"}},
           Case{"-p\n!TYPE bool\n!DEFAULT true\n",
                {start + "bool parameters must have a default value of false (-p does has a default value of true)"}},
           Case{"-pq\n!TYPE bool\n!DEFAULT false\n", {start + character + "(-pq does not)"}},
           Case{"-p\n!TYPE bool\n!DEFAULT false\n!ALIAS -q\n!ALIAS -long\n",
                {start + character + "(an alias of -p, -long, does not)"}},
       }) {
    QZInterface itf(("!PARAMETER " + c.body + "!END\n!PARAMETER -z\n!TYPE int\n!KEYLESS 1\n!END\n").c_str());
    EXPECT_FALSE(Parse(itf, {"1"})) << c.body;
    EXPECT_EQ(told, c.told) << c.body;
    EXPECT_EQ(ValuesOf(itf), "") << c.body;
  }
  QZInterface keylessFile("!PARAMETER -p\n!TYPE param_file\n!KEYLESS 1\n!END\n");
  EXPECT_TRUE(Parse(keylessFile, {}));
  EXPECT_EQ(told, Told{start + "does not support parameter files (-p)"});
}

TEST(LightCommandLineExit, Version) {
  const auto parse = [](const Args& args) {
    QZInterface itf(kSwitches);
    Arguments arguments(args);
    QZParseCommandLineLW(itf, "4.5", arguments.Count(), arguments.Values(), nullptr, 4);
    std::exit(7);
  };
  EXPECT_EXIT((dup2(2, 1), parse({"-a", "--version"})), ::testing::ExitedWithCode(0), "^4\\.5\n$");
  EXPECT_EXIT(parse({"1", "--version"}), ::testing::ExitedWithCode(7), "Invalid command line argument --version");
}

// --------------------------------------------------------------------------------------------------------- damage

TEST_F(CommandLine, SurvivesDamagedArguments) {
  const Args good = {"-n", "2", "-ints", "1,2", "3", "-flag", "yes", "-mode", "fast", "--unset-n", "-in", "a", "word"};
  QZInterface light(kSwitches);
  for (std::size_t i = 0; i < good.size(); ++i)
    for (std::size_t k = 0; k <= good[i].size(); ++k)
      for (const char flip : {'\x00', '\x01', '\x20', '\x80', '\xFF'}) {
        Args damaged = good;
        if (flip == 0)
          damaged[i].resize(k);
        else if (k < good[i].size())
          damaged[i][k] = static_cast<char>(good[i][k] ^ flip);
        Reset();
        const bool parsed = Parse(damaged);
        EXPECT_EQ(parsed, told.empty()) << ::testing::PrintToString(damaged);
        Arguments arguments(damaged);
        QZParseCommandLineLW(light, arguments.Count(), arguments.Values(), nullptr, 4);
        messages.Take();
      }
}

}  // namespace
}  // namespace QZSystem
