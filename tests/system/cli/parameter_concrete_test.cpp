#include "qz/system/cli/parameter_concrete.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <thread>

#include "tests/system/cli/interface_testing.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

template <class Kind, class Value>
void expectKind(const std::string& word, const std::string& refusals) {
  Kind p("-p");
  EXPECT_EQ(Kind::StaticClassID(), word);
  EXPECT_EQ(std::unique_ptr<QZParameter>(p.CreateCopy())->ClassID(), word);
  EXPECT_EQ(p.TypedParameterTypeID(), QZGetDataType<QZTypedParameter<Value>>()) << word;
  EXPECT_EQ(p.FactoryTypeID(), QZGetDataType<Kind>()) << word;
  std::string refused;
  if (!p.AddLegalValue("1")) refused += "v";
  if (!p.AddIllegalValue("1")) refused += "V";
  if (!p.AddLegalRange("1", "2")) refused += "r";
  if (!p.AddIllegalRange("1", "2")) refused += "R";
  EXPECT_EQ(refused, refusals) << word;
}

TEST(ParameterKinds, KnowTheirWordsAndWhatTheyRefuse) {
  expectKind<QZFloatParameter, float>("float", "");
  expectKind<QZDoubleParameter, double>("double", "");
  expectKind<QZIntParameter, int>("int", "");
  expectKind<QZUIntParameter, unsigned int>("unsigned", "");
  expectKind<QZBoolParameter, bool>("bool", "vVrR");
  expectKind<QZStringParameter, std::string>("string", "rR");
  expectKind<QZConstParameter, unsigned int>("const", "");
  expectKind<QZBitParameter, unsigned int>("bit", "");
  expectKind<QZFileParameter, qzisstream>("file", "vVrR");
  expectKind<QZParamFileParameter, qzisstream>("param_file", "vVrR");
  expectKind<QZStringExtParameter, std::string>("stringEx", "rR");
}

TEST(ConstParameter, TheConstructorDeclaresAKeywordAndTheDefault) {
  QZConstParameter p("-c", 3, "Three");
  EXPECT_THAT(List(p.GetDefaults()), ElementsAre(3U));
  EXPECT_EQ(p.GetStringDefault() + p.GetPrettyDefault(), "3three");
  EXPECT_THAT(List(p.GetLegalValues()), ElementsAre("3", "three"));
  EXPECT_EQ(p.GetKeyIndex("THREE"), 3U);
  EXPECT_EQ(p.GetKeyIndex("four"), 9999U);
}

TEST(ConstParameter, AValueIsANumberOrAKeywordInAnyCase) {
  QZConstParameter p("-c");
  ASSERT_TRUE(p.AddLegalEntry(1, "a") && p.AddLegalEntry(2, "b"));
  const struct {
    const char* text;
    bool valid, legal;
  } cases[] = {{"A", true, true},   {"1", true, true},  {"3", true, false},   {"7", true, false},
               {"c", false, false}, {"", false, false}, {"a,b", false, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(p.IsValidString(c.text), c.valid) << c.text;
    EXPECT_EQ(p.IsLegalString(c.text), c.legal) << c.text;
  }
  EXPECT_TRUE(p.SetStringValue("B") && p.AddStringValue("1") && p.Load());
  EXPECT_THAT(List(p.GetValues()), ElementsAre(2, 1));
  EXPECT_THAT(List(p.GetStringValues()), ElementsAre("B", "1"));
}

TEST(ConstParameter, TypedWritesTakeKeywordsAndStoreNumbers) {
  QZConstParameter p("-c");
  ASSERT_TRUE(p.AddLegalEntry(1, "a") && p.AddLegalEntry(2, "b"));
  EXPECT_TRUE(p.SetValue("B") && p.AddValue("a") && p.SetDefault("b") && p.AddDefault("A") && p.AddValue(2));
  EXPECT_FALSE(p.SetValue("c") || p.AddValue("") || p.SetValue(3) || p.SetDefault("1"));
  EXPECT_THAT(List(p.GetStringValues()), ElementsAre("2", "1", "2"));
  EXPECT_THAT(List(p.GetStringDefaults()), ElementsAre("2", "1"));
}

TEST(ConstParameter, ANewWordNamesTheFirstNumberWithoutAKeyword) {
  QZConstParameter p("-c");
  EXPECT_FALSE(p.AddLegalValue("red"));
  EXPECT_TRUE(p.AddLegalValue("1") && p.AddLegalValue("2") && p.AddLegalValue("red") && p.AddLegalValue("green"));
  EXPECT_FALSE(p.AddLegalValue("blue"));
  EXPECT_TRUE(p.AddLegalValue("RED"));
  EXPECT_TRUE(p.AddLegalValue("5"));
  EXPECT_FALSE(p.AddLegalValue("Blue"));
  EXPECT_EQ(p.GetKeyIndex("green"), 2U);
  EXPECT_THAT(List(p.GetLegalValues()), ElementsAre("1", "2", "red", "green", "RED", "5"));
  EXPECT_FALSE(p.AddLegalValue("cyan")) << "5 has the keyword Blue, though no lookup finds it";
}

TEST(ConstParameter, PrettyFormsAreKeywords) {
  QZConstParameter p("-c");
  p.AddLegalValue("4");
  EXPECT_THAT(List(p.GetPrettyLegalValues()), ElementsAre("4"));
  p.AddLegalEntry(2, "zinc");
  p.AddLegalEntry(2, "iron");
  EXPECT_THAT(List(p.GetPrettyLegalValues()), ElementsAre("iron", "zinc"));
  p.SetDefault(2);
  p.AddDefault(4);
  p.AddStringDefault("ZINC");
  const Texts pretty = {p.GetPrettyDefault(0), p.GetPrettyDefault(1), p.GetPrettyDefault(2), p.GetPrettyDefault(3)};
  EXPECT_THAT(pretty, ElementsAre("iron", "4", "ZINC", ""));
}

TEST(ConstParameter, AKeywordIsNoIllegalNumber) {
  Messages messages;
  QZConstParameter p("-c", 1, "red");
  EXPECT_TRUE(p.AddIllegalValue("red"));
  EXPECT_TRUE(p.SetValue(1));
  EXPECT_EQ(messages.Take(), "Warning: Cannot interpret illegal value red, of parameter -c\n");
}

class BitParameter : public testing::Test {
 protected:
  BitParameter() {
    p.AddLegalEntry(1, "a");
    p.AddLegalEntry(2, "b");
    p.AddLegalEntry(4, "c");
  }
  QZBitParameter p{"-b"};
};

TEST_F(BitParameter, KeywordsCombineByOr) {
  for (const auto& [text, known, combined] :
       {std::tuple{"a,C", true, 5U}, {"", true, 0U}, {",b,,b,", true, 2U}, {"a,x", false, 1U}, {"a c", false, 0U}}) {
    unsigned int mask = 99;
    EXPECT_EQ(p.GetMask(text, mask), known) << text;
    EXPECT_EQ(mask, combined) << text;
    EXPECT_EQ(p.IsLegalString(text), known) << text;
  }
}

TEST_F(BitParameter, AMaskWithAKnownBitIsValid) {
  for (const auto& [mask, valid] : {std::pair{0U, false}, {8U, false}, {9U, true}, {7U, true}}) {
    EXPECT_EQ(p.IsValidMask(mask), valid) << mask;
    EXPECT_EQ(p.IsLegalString(std::to_string(mask)), valid) << mask;
    EXPECT_EQ(p.SetValue(mask), valid) << mask;
  }
}

TEST_F(BitParameter, ACombinationBecomesLegalWhenItIsWritten) {
  EXPECT_FALSE(p.IsLegal(3));
  EXPECT_TRUE(p.SetValue(3) && p.AddValue("b,c") && p.SetDefault("A") && p.AddDefault(7));
  EXPECT_THAT(List(p.GetValues()), ElementsAre(3, 6));
  EXPECT_THAT(List(p.GetStringDefaults()), ElementsAre("1", "7"));
  EXPECT_THAT(List(p.GetLegalValues()), ElementsAre("1", "a", "2", "b", "4", "c", "3", "6", "7"));
  EXPECT_EQ(p.GetPrettyDefault(0) + p.GetPrettyDefault(1), "a7");
  p.AddIllegalValue("5");
  EXPECT_FALSE(p.SetValue(5));
  EXPECT_THAT(List(p.GetValues()), ElementsAre(3, 6));
}

class FileKinds : public testing::Test {
 protected:
  FileKinds() {
    std::string room = testing::TempDir() + "qzparamXXXXXX";
    folder = mkdtemp(room.data());
    write("full", "one\ntwo\n");
    write("empty", "");
  }
  ~FileKinds() override { std::system(("rm -rf " + folder).c_str()); }
  void write(const std::string& name, const std::string& text) const { std::ofstream(path(name)) << text; }
  std::string path(const std::string& name) const { return folder + "/" + name; }
  static std::string contents(const QZTypedParameter<qzisstream>& p, unsigned int i) {
    qzisstream stream;
    std::string text;
    if (p.GetValue(stream, i)) stream.getbuffer(text);
    return text;
  }

  std::string folder;
  Messages messages;
};

TEST_F(FileKinds, AFileIsReadWholeWhenItIsLoaded) {
  QZFileParameter p("-f");
  EXPECT_TRUE(p.SetStringValue(path("full")) && !p.IsSet(0) && p.Load());
  write("full", "changed");
  EXPECT_EQ(contents(p, 0), "one\ntwo\n");
  EXPECT_TRUE(p.AddStringValue(path("full")) && p.Load());
  EXPECT_EQ(contents(p, 0) + contents(p, 1), "changedchanged");
  qzisstream own;
  own.set("own");
  EXPECT_TRUE(p.AddValue(own));  // which has no text
  EXPECT_EQ(contents(p, 2) + p.GetStringValue(2), "own");
  EXPECT_FALSE(p.SetStringValues(path("full")));
  const QZFileParameter copy(p);
  p.ClearValues();
  std::string line;
  for (unsigned int i = 0; i < 2; ++i) {  // each reader gets a stream of its own
    qzisstream stream;
    EXPECT_TRUE(copy.GetValue(stream, 1) && stream.getline(line));
    EXPECT_EQ(line, "changed");
  }
}

TEST_F(FileKinds, WhatCantBeReadFailsToLoadAndLeavesNothingSet) {
  for (const std::string& name : {path("empty"), path("missing"), folder, std::string(), std::string("/dev/null")}) {
    QZFileParameter p("-f");
    EXPECT_TRUE(p.SetStringValue(path("full")) && p.Load() && p.AddStringValue(name));
    EXPECT_TRUE(p.SetStringDefault(path("full")));
    EXPECT_FALSE(p.Load()) << name;
    EXPECT_FALSE(p.GetHasValue(0)) << name;
    EXPECT_FALSE(p.GetHasDefault(0)) << "the defaults are not loaded when the values fail";
  }
  EXPECT_EQ(messages.Take(), "");
}

TEST_F(FileKinds, ASourceWithoutASizeIsReadToItsEnd) {
  const std::string pipe = path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string text(100000, 'p');
  QZFileParameter p("-f");
  p.SetStringValue(pipe);
  std::thread writer([&] { std::ofstream(pipe) << text; });
  EXPECT_TRUE(p.Load());
  writer.join();
  EXPECT_EQ(contents(p, 0), text);
  EXPECT_TRUE(p.SetStringValue("/proc/self/status") && p.Load());
  EXPECT_EQ(contents(p, 0).compare(0, 5, "Name:"), 0);
}

TEST_F(FileKinds, AnExtendedStringIsALegalValueOrElseAFile) {
  QZStringExtParameter p("-m", "any text");
  p.AddLegalValue("unit*");
  const struct {
    std::string text;
    bool legal;
    const char* value;
  } cases[] = {{"UNITY", true, "UNITY"}, {path("full"), true, "one\ntwo\n"}, {path("empty"), false, ""}};
  for (const auto& c : cases) {
    EXPECT_EQ(p.IsLegalString(c.text), c.legal) << c.text;
    EXPECT_EQ(messages.Take(), c.legal ? "" : "Warning: -m file " + c.text + " does not exist or is empty.\n");
    EXPECT_TRUE(p.SetStringValue(c.text)) << "text writes test validity alone";
    EXPECT_EQ(p.LoadValue(), c.legal) << c.text;
    std::string value;
    p.GetValue(value);
    EXPECT_EQ(value, c.value) << c.text;
    EXPECT_EQ(messages.Take(), "");
  }
}

TEST_F(FileKinds, AnExtendedStringWithoutLegalValuesIsItself) {
  QZStringExtParameter p("-m");
  std::string value;
  EXPECT_TRUE(p.IsLegalString(path("full")) && p.SetStringValue(path("full")) && p.Load() && p.GetValue(value));
  EXPECT_EQ(value, path("full"));
  EXPECT_TRUE(p.AddIllegalValue("no") && !p.IsLegalString("NO"));
}

}  // namespace
}  // namespace QZSystem
