#include "qz/system/cli/commandline.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "interface_testing.h"
#include "qz/system/cli/configure.h"

namespace QZSystem {
namespace {

using Args = std::vector<std::string>;

constexpr char kText[] =
    "!PARAMETER -in\n!TYPE string\n!KEYLESS 1\n!DEFAULT none\n!END\n"
    "!PARAMETER -out\n!TYPE string\n!KEYLESS 2\n!END\n"
    "!CATEGORY more\n"
    "!PARAMETER -number\n!ALIAS -n\n!TYPE int\n!LEGAL_VALUE 7\n!LEGAL_RANGE 1 5\n!ILLEGAL_VALUE 3\n"
    "!ILLEGAL_RANGE 4 5\n!END\n"
    "!PARAMETER -ints\n!TYPE int\n!LIST true\n!LEGAL_RANGE 0 99\n!END\n"
    "!PARAMETER -flag\n!TYPE bool\n!END\n"
    "!PARAMETER -mode\n!TYPE const\n!LEGAL_VALUE 1\n!LEGAL_VALUE fast\n!END\n"
    "!PARAMETER -file\n!TYPE file\n!END\n"
    "!PARAMETER -param\n!TYPE param_file\n!END\n"
    "!END\n";

/// For the light-weight parser.
constexpr char kSwitches[] =
    "!PARAMETER -a\n!TYPE bool\n!DEFAULT false\n!ALIAS -x\n!END\n"
    "!PARAMETER -b\n!TYPE bool\n!DEFAULT false\n!END\n"
    "!PARAMETER -C\n!TYPE bool\n!DEFAULT false\n!END\n"
    "!PARAMETER -first\n!TYPE int\n!KEYLESS 1\n!END\n"
    "!PARAMETER -r\n!TYPE int\n!KEYLESS 2\n!LIST true\n!END\n";

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

using Parser = bool (*)(QZInterface& itf, int argc, char** argv);

bool Full(QZInterface& itf, int argc, char** argv) {
  return QZParseCommandLine(itf, argc, argv, nullptr, QZErrorLevel::Error, false);
}
bool Light(QZInterface& itf, int argc, char** argv) {
  return QZParseCommandLineLW(itf, argc, argv, nullptr, QZErrorLevel::Error);
}

struct Case {
  Args args;
  std::string values;
  Told errors;  ///< none for success
};

/// Gives the arguments of each case to an interface of the text.
void Check(Parser parse, const std::string& text, const std::vector<Case>& cases) {
  CapturedMessages messages;
  for (const Case& c : cases) {
    const std::string line = text + ::testing::PrintToString(c.args);
    QZInterface itf(text.c_str());
    Arguments arguments(c.args);
    EXPECT_EQ(parse(itf, arguments.Count(), arguments.Values()), c.errors.empty()) << line;
    EXPECT_EQ(ValuesOf(itf), c.values) << line;
    Told expected;
    for (const std::string& error : c.errors) expected.push_back("Error: " + error);
    EXPECT_EQ(messages.Take(), expected) << line;
  }
}

TEST(CommandLine, KeysAndValues) {
  Check(Full, kText,
        {{{}, "", {}},
         {{"-IN", "-out", "-N", "2"}, "-in=-out -number=2", {}},
         {{"-in"}, "", {"Parameter -in on the command line is not followed by a value"}},
         {{"-n", "1", "-Number", "2"}, "-number=1", {"-number is specified twice on the command line"}},
         {{"-n", "-n"},
          "",
          {"-n is not a legal setting for parameter -n (specified on command line)\n  Legal value : 7"
           "\n  Legal Range : 1 to 5\n  Illegal value : 3\n  Illegal Range : 4 to 5"}},
         {{"-mode", "FAST"}, "-mode=FAST", {}},
         {{"-Mode", "slow"},
          "",
          {"slow is not a legal setting for parameter -Mode (specified on command line)\n  Legal value : fast"}},
         {{"-file", "/nonexistent/file"}, "", {"Problem loading parameter -file with setting /nonexistent/file"}},
         {{"-in", ""}, "-in=", {}}});
}

TEST(CommandLine, BooleansNeedNoValue) {
  Check(Full, kText,
        {{{"-flag"}, "-flag=true", {}},
         {{"-flag", "-in", "a"}, "-in=a -flag=true", {}},
         {{"-flag", "ON", "word"}, "-in=word -flag=ON", {}},
         {{"-flag", "word"}, "-in=word -flag=true", {}},
         {{"-flag", "-flag"}, "-flag=true", {"-flag is specified twice on the command line"}}});
}

TEST(CommandLine, ListsTakeWhatIsLegal) {
  Check(Full, kText,
        {{{"-ints", "1,2 3"}, "-ints=1|2|3", {}},
         {{"-ints", "1,2", "3"}, "-ints=1|2|3", {}},
         {{"-ints", "1", "2", "word"}, "-in=word -ints=1|2", {}},
         {{"-ints", "1", "100", "2"}, "-in=100 -out=2 -ints=1", {}},
         {{"-ints", "1", "-flag", "-ints", "2"}, "-flag=true -ints=1|2", {}},
         {{"-ints", "1", "-flag", "-ints", "2,3"}, "-flag=true -ints=2|3", {}},
         {{"-ints", "1,100"},
          "",
          {"1,100 is not a legal setting for parameter -ints (specified on command line)\n  Legal Range : 0 to 99"}}});
}

TEST(CommandLine, WordsGoToTheKeylessParameters) {
  Check(Full, kText,
        {{{"a", "b"}, "-in=a -out=b", {}},
         {{"-n", "1", "a"}, "-in=a -number=1", {}},
         {{"-in", "a", "b"}, "-in=a -out=b", {}},
         {{"--unset", "--unset-nosuch"}, "-in=--unset -out=--unset-nosuch", {}},
         {{"a", "b", "-n"}, "", {"Unknown parameter, a, on command line", "Unknown parameter, b, on command line"}},
         {{"a", "b", "c"}, "", {"Unknown argument a on command line (too many arguments to be keyless)"}},
         {{"-out", "a", "b", "c"},
          "-in=b -out=a",
          {"Unknown argument b on command line.  There are too many arguments to be keyless (one or more keyless "
           "parameters are explicitly specified)"}}});
  Check(Full, "!PARAMETER -a\n!TYPE int\n!END\n",
        {{{"x", "y"}, "", {"Unknown argument on command line x", "Unknown argument on command line y"}}});
}

TEST(CommandLine, AKeylessListTakesAllWordsThatAreLeft) {
  const std::string keyless = " is not a legal setting for the keyless parameter -";
  Check(Full,
        "!PARAMETER -one\n!TYPE int\n!KEYLESS 1\n!END\n"
        "!PARAMETER -rest\n!TYPE int\n!LIST true\n!KEYLESS 2\n!LEGAL_RANGE 0 50\n!END\n"
        "!PARAMETER -x\n!TYPE bool\n!END\n",
        {{{"1"}, "-one=1", {}},
         {{"1", "2", "3", "4"}, "-one=1 -rest=2|3|4", {}},
         {{"-one", "1", "2", "3"}, "-one=1 -rest=2|3", {}},
         {{"-rest", "1", "2", "word"}, "-rest=1|2", {"word" + keyless + "one specified on the command line"}},
         {{"-rest", "9", "-x", "5", "6", "7"}, "-one=5 -rest=9|6|7 -x=true", {}},
         {{"1", "2", "60", "3"}, "-one=1 -rest=2", {"60" + keyless + "rest specified on the command line"}}});
}

TEST(CommandLine, AFileThatDoesNotLoadEndsTheWords) {
  const TemporaryFile file("contents");
  const std::string files = "!PARAMETER -f\n!TYPE file\n!LIST true\n!KEYLESS 1\n!END\n";
  const Args args = {file.Name(), "/nonexistent/a", file.Name(), "/nonexistent/b"};
  Check(Full, files, {{args, "", {"Problem loading keyless parameter -f with setting /nonexistent/a"}}});
  const std::string invalid = "Invalid command line argument ";
  Check(Light, files,
        {{{args.begin() + 1, args.end()}, "", {invalid + args[1], invalid + args[2], invalid + args[3]}}});
}

TEST(CommandLine, UnsetComesLastAndBringsTheDefaultBack) {
  const TemporaryFile file("-in fromfile\n-out fromfile\n");
  Check(Full, kText,
        {{{"-param", file.Name(), "--unset-IN", "-n", "2", "--unset-n"}, "-out=fromfile -param=" + file.Name(), {}}});
}

TEST(CommandLine, AParameterFileFillsWhatTheCommandLineLeft) {
  const TemporaryFile good("-in fromfile\n-out fromfile\n-number nonsense\n");
  Check(Full, kText,
        {{{"-n", "1", "-param", good.Name(), "word"}, "-in=word -out=fromfile -number=1 -param=" + good.Name(), {}}});
  const TemporaryFile bad("-nosuch 1\n-a 5\n");
  Check(Full, "!PARAMETER -f\n!TYPE param_file\n!LIST true\n!KEYLESS 1\n!END\n!PARAMETER -a\n!TYPE int\n!END\n",
        {{{bad.Name()},
          "-f=" + bad.Name() + " -a=5",
          {"Unknown parameter -nosuch in parameter file (begin comment lines with #)",
           "Problem parsing parameter file"}}});
}

TEST(CommandLine, TheFirstOfTheWalkHasTheKeyWhereverItsTwinStands) {
  std::string text =
      "!PARAMETER -b\n!TYPE int\n!ALIAS -A\n!END\n!PARAMETER -a\n!TYPE int\n!END\n"
      "!CATEGORY c\n!PARAMETER -B\n!TYPE int\n!END\n!END\n";
  for (int i = 0; i < 200; ++i) text += "!PARAMETER -X" + std::to_string(i) + "\n!TYPE int\n!END\n";
  Check(Full, text, {{{"-a", "1", "-x199", "2"}, "-b=1 -X199=2", {}}});
}

TEST(CommandLine, WhatIsRequiredIsToldAtTheGivenLevel) {
  const std::string needs = "!REQUIREMENT\n!OPTION -f 1\n!ERROR_MSG\nf is 1\n!END\n";
  const std::string unmet = "Warning: Missing requirements:\nf is 1\n";
  for (const bool isLight : {false, true}) {
    CapturedMessages messages;
    QZInterface itf("!PARAMETER -f\n!TYPE int\n!KEYLESS 1\n!REQUIRED true\n!END\n");
    const auto parse = [&](const Args& args) {
      Arguments given(args);
      return isLight
                 ? QZParseCommandLineLW(itf, given.Count(), given.Values(), Bytes(needs), QZErrorLevel::Warning)
                 : QZParseCommandLine(itf, given.Count(), given.Values(), Bytes(needs), QZErrorLevel::Warning, false);
    };
    EXPECT_FALSE(parse({}));
    EXPECT_EQ(messages.Take(), (Told{"Warning: Missing required parameter -f", unmet}));
    EXPECT_FALSE(parse({"x"}));
    EXPECT_EQ(messages.Take().front().find("Warning: "), 0U);
    EXPECT_FALSE(parse({"2"}));
    EXPECT_EQ(messages.Take(), Told{unmet});
    itf.GetParameter("-f")->ClearValues();
    EXPECT_TRUE(parse({"1"}));
  }
}

TEST(CommandLine, KeylessNumbersMustRunFromOneAndListsStandLast) {
  const auto parameter = [](const std::string& name, int number, bool list = false) {
    return "!PARAMETER " + name + "\n!TYPE int\n!KEYLESS " + std::to_string(number) + "\n!LIST " +
           (list ? "true" : "false") + "\n!END\n";
  };
  const struct {
    std::string text, order, error;
  } cases[] = {
      {"", "", ""},
      {parameter("-b", 2, true) + parameter("-a", 1) + parameter("-c", 0), "-a -b", ""},
      {parameter("-a", 2), "-a", "Missing keyless parameter 1, have keyless parameter 2 (-a)"},
      {parameter("-a", 1) + parameter("-b", 3), "-a -b",
       "Missing keyless parameter 2, have keyless parameter 1 (-a) and 3 (-b)"},
      {parameter("-a", 1) + parameter("-b", 1), "-a -b",
       "Missing keyless parameter 2, have keyless parameter 1 (-a) and 1 (-b)"},
      {parameter("-a", 1, true) + parameter("-b", 2) + parameter("-c", 3, true), "-a -b -c",
       "If a keyless parameter is also a list type parameter it must be the last keyless entry.\n"
       "Parameter -a is violating this rule (-c is after it)"},
  };
  for (const auto& [text, order, error] : cases) {
    CapturedMessages messages;
    QZInterface itf(text.c_str());
    std::vector<QZParameter*> keyless(3);
    EXPECT_EQ(GetKeylessParameters(itf, keyless), error.empty()) << text;
    EXPECT_EQ(messages.Take(), error.empty() ? Told{} : Told{"Error: " + error}) << text;
    std::string names;
    for (const QZParameter* each : keyless) names += (names.empty() ? "" : " ") + each->GetName();
    EXPECT_EQ(names, order) << text;
    if (!error.empty()) Check(Full, text, {{{}, "", {error}}});
  }
  Check(Light, parameter("-f", 2), {{{"1"}, "-f=1", {"Missing keyless parameter 1, have keyless parameter 2 (-f)"}}});
}

TEST(CommandLineExit, VersionAndHelpEndTheProcessWithStatusZero) {
  const auto parse = [](const Args& args, const char* version, bool help) {
    Arguments arguments(args);
    QZInterface itf(kText);
    QZParseCommandLine(itf, version, arguments.Count(), arguments.Values(), nullptr, 5, help);
    std::exit(7);
  };
  const ::testing::ExitedWithCode success(0), through(7);
  EXPECT_EXIT((dup2(2, 1), parse({"-n", "1", "--version"}, "1.2.3", false)), success, "^1\\.2\\.3\n$");
  EXPECT_EXIT((dup2(2, 1), parse({"--version"}, nullptr, true)), success, "^version not set\n$");
  EXPECT_EXIT(parse({"--help"}, nullptr, true), success, "Additional help functions:");
  EXPECT_EXIT(parse({"--help"}, nullptr, false), through, "");
  const auto light = [](const Args& args) {
    Arguments arguments(args);
    QZInterface itf(kSwitches);
    QZParseCommandLineLW(itf, "4.5", arguments.Count(), arguments.Values(), nullptr, 4);
    std::exit(7);
  };
  EXPECT_EXIT((dup2(2, 1), light({"-a", "--version"})), success, "^4\\.5\n$");
  EXPECT_EXIT(light({"1", "--version"}), through, "Invalid command line argument --version");
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

TEST(LightCommandLine, SwitchesAndPositionalArguments) {
  const std::string byKey = " is a keyless parameter, do not specify it with a key";
  const std::string invalid = "Invalid command line argument ";
  const std::string many = "Too many arguments on the command line";
  Check(Light, kSwitches,
        {{{}, "", {}},
         {{"-abc"}, "-a=true -b=true -C=true", {}},
         {{"-aa", "-B", "-X"}, "-a=true -b=true", {}},
         {{"-azb"}, "-a=true -b=true", {"Unknow switch -z (specified as part of group -azb)"}},
         {{"-z", "1"}, "-first=1", {"Unknow switch -z"}},
         {{"--"}, "", {"Unknow switch --"}},
         {{"-a", "-"}, "-a=true", {" - is not a valid command line arg"}},
         {{"-first", "1"}, "-first=1", {"-first" + byKey}},
         {{"-ar"}, "-a=true", {"-ar" + byKey, "switch -r is not a boolean parameter"}},
         {{"1", "-a", "2"}, "-first=1 -r=2", {invalid + "-a"}},
         {{"x", "2", "y", "3"}, "-r=2|3", {invalid + "x", invalid + "y"}},
         {{"", "2"}, "-r=2", {invalid}}});
  Check(Light, "!PARAMETER -a\n!TYPE bool\n!DEFAULT false\n!END\n", {{{"-a", "1"}, "-a=true", {many}}});
  Check(Light, "!PARAMETER -f\n!TYPE int\n!KEYLESS 1\n!END\n", {{{"1", "2"}, "-f=1", {many}}});
}

TEST(LightCommandLine, RefusesInterfacesBeyondIt) {
  const std::string start = "ParseCommandLineLW : ";
  const std::string boolean = start + "\n All non-keyless parameter keys must be booleans (-p is not)";
  const std::string value = start + "bool parameters must have a default value of false (-p do";
  const std::string character =
      start + "\n non-keyless bool parameters must have a - followed by a single character as a key ";
  const std::pair<std::string, Told> cases[] = {
      {"-p\n!TYPE int\n", {boolean}},
      {"-p\n!TYPE param_file\n", {start + "does not support parameter files (-p)", boolean}},
      {"-p\n!TYPE bool\n", {value + "es not have a default value)"}},
      {"-p\n!TYPE bool\n!DEFAULT true\n", {value + "es has a default value of true)"}},
      {"-pq\n!TYPE bool\n!DEFAULT false\n", {character + "(-pq does not)"}},
      {"-p\n!TYPE bool\n!DEFAULT false\n!ALIAS -q\n!ALIAS -long\n", {character + "(an alias of -p, -long, does not)"}},
  };
  for (const auto& [body, errors] : cases)
    Check(Light, "!PARAMETER " + body + "!END\n!PARAMETER -z\n!TYPE int\n!KEYLESS 1\n!END\n", {{{"1"}, "", errors}});
}

TEST(CommandLine, SurvivesDamagedArguments) {
  CapturedMessages messages;
  const Args good = {"-n", "2", "-ints", "1,2", "3", "-flag", "yes", "-mode", "fast", "--unset-n", "-in", "a", "word"};
  QZInterface full(kText), light(kSwitches);
  for (std::size_t i = 0; i < good.size(); ++i) {
    for (std::size_t k = 0; k <= good[i].size(); ++k) {
      for (const char flip : {'\x00', '\x01', '\x20', '\x80', '\xFF'}) {
        Args damaged = good;
        if (flip == 0)
          damaged[i].resize(k);
        else if (k < good[i].size())
          damaged[i][k] = static_cast<char>(good[i][k] ^ flip);
        for (QZParameter& parameter : QZIter(full.GetParameters(true))) parameter.ClearValues();
        Arguments arguments(damaged);
        const bool parsed = Full(full, arguments.Count(), arguments.Values());
        EXPECT_EQ(parsed, messages.Take().empty()) << ::testing::PrintToString(damaged);
        Light(light, arguments.Count(), arguments.Values());
        messages.Take();
      }
    }
  }
}

}  // namespace
}  // namespace QZSystem
