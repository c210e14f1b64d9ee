#include "qz/system/cli/parameter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <memory>

#include "qz/system/cli/parameter_concrete.h"
#include "tests/system/cli/interface_testing.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

// Everything that a parameter tells about itself.
std::string describe(const QZParameter& p) {
  using testing::PrintToString;
  const std::vector<long> numbers = {p.GetRequired(), p.GetKeyless(), p.GetVisibility(), p.GetOrderPriority(),
                                     p.GetInput(),    p.GetOutput(),  p.GetIsList()};
  std::string all = p.GetName() + '|' + p.GetBrief() + '|' + p.GetElement() + '|' + p.GetCommand() +
                    PrintToString(numbers) + PrintToString(List(p.GetLegalRanges())) +
                    PrintToString(List(p.GetIllegalRanges()));
  for (auto* texts : {p.GetAliases(), p.GetDetail(), p.GetStringValues(), p.GetStringDefaults(), p.GetLegalValues(),
                      p.GetIllegalValues()})
    all += '|' + Joined(texts);
  return all + (p.GetHasValue(1) ? " v" : " -") + (p.GetHasDefault(0) ? " d" : " -");
}

TEST(Parameter, NameAndAliasesAreOneWord) {
  const std::pair<const char*, const char*> cases[] = {
      {"-in", "-in"}, {" \t-in \n", "-in"}, {"-in -out", nullptr}, {" \n", nullptr}, {"-in\r", "-in\r"}};
  for (const auto& [text, word] : cases) {
    QZIntParameter p("-before");
    EXPECT_EQ(p.SetName(text), word != nullptr) << text;
    EXPECT_EQ(p.GetName(), word != nullptr ? word : "-before") << text;
    EXPECT_EQ(p.AddAlias(text), word != nullptr) << text;
    EXPECT_EQ(List(p.GetAliases()), word != nullptr ? Texts{word} : Texts()) << text;
  }
}

TEST(Parameter, ACopyHoldsEverythingAndIsItsOwn) {
  QZIntParameter p(" -n ", 3);
  EXPECT_TRUE(p.AddAlias("-count") && p.SetBrief("how many") && p.SetElement("e") && p.SetCommand("c") &&
              p.AddDetail("one") && p.SetRequired(true) && p.SetKeyless(2) && p.SetVisibility(7) &&
              p.SetOrderPriority(-1) && p.SetInput(4) && p.SetOutput(true) && p.SetIsList(true));
  EXPECT_TRUE(p.AddLegalValue("1") && p.AddIllegalValue("2") && p.AddLegalRange("0", "inf") &&
              p.AddIllegalRange("10", "5") && p.SetValue(1) && p.AddValue(3));
  const std::string whole = describe(p);
  EXPECT_EQ(whole,
            "-n|how many|e|c{ 1, 2, 7, -1, 4, 1, 1 }{ (\"0\", \"inf\") }{ (\"10\", \"5\") }|-count|one|1|3|3|1|2 v d");
  const std::unique_ptr<QZParameter> copy(p.CreateCopy());
  EXPECT_EQ(describe(*copy), whole);
  copy->ClearValues();
  copy->AddAlias("-more");
  EXPECT_EQ(describe(p), whole);
  EXPECT_EQ(describe(QZIntParameter()), "|||{ 0, 0, 1, 0, 0, 0, 0 }{}{}|||||| - -");
}

TEST(Parameter, TextCountsAsSetOnlyWhenLoaded) {
  QZIntParameter p("-n");
  EXPECT_FALSE(p.SetStringValue("five"));
  EXPECT_TRUE(p.SetStringValue("5"));
  EXPECT_FALSE(p.IsSet(0));
  EXPECT_TRUE(p.AddStringValue(" 6") && p.Load());
  EXPECT_THAT(List(p.GetValues()), ElementsAre(5, 6));
  EXPECT_TRUE(p.SetStringValue("7") && p.SetStringDefault("1") && p.AddStringDefault("2"));
  EXPECT_THAT(List(p.GetStringValues()), ElementsAre("7"));
  EXPECT_THAT(List(p.GetSettings()), ElementsAre(5, 6));
  EXPECT_TRUE(p.Load());
  EXPECT_THAT(List(p.GetSettings()), ElementsAre(7));
  EXPECT_TRUE(p.ClearValues());
  EXPECT_THAT(List(p.GetSettings()), ElementsAre(1, 2));
  EXPECT_EQ(p.GetStringDefault(1) + p.GetStringDefault(7), "2");
  EXPECT_TRUE(p.IsSet(1) && !p.IsSet(2) && p.ClearDefaults() && !p.IsSet(0));
}

TEST(Parameter, AListMayBeSetToOneOfItsOwn) {
  QZStringParameter p("-s");
  const std::string longText(40, 'x');
  for (const std::string& text : {"a" + longText, "b" + longText}) {
    EXPECT_TRUE(p.AddValue(text));
    EXPECT_TRUE(p.AddDefault(text));
  }
  EXPECT_TRUE(p.SetStringValue(*(++QZIter(p.GetStringValues()))));
  EXPECT_THAT(List(p.GetStringValues()), ElementsAre("b" + longText));
  EXPECT_TRUE(p.SetValue(*(++QZIter(p.GetValues()))));
  EXPECT_THAT(List(p.GetValues()), ElementsAre("b" + longText));
  EXPECT_TRUE(p.SetDefault(*(++QZIter(p.GetDefaults()))));
  EXPECT_TRUE(p.SetStringDefault(*QZIter(p.GetStringDefaults())));
  EXPECT_THAT(List(p.GetStringDefaults()), ElementsAre("b" + longText));
}

TEST(Parameter, ATypedWriteLeavesItsText) {
  QZDoubleParameter p("-x", 1.5);
  EXPECT_EQ(QZTypedParameter<double>::From(static_cast<QZParameter*>(&p))->GetStringDefault(), "1.500000000000");
  EXPECT_EQ(QZTypedParameter<float>::From(static_cast<QZParameter*>(&p)), nullptr);
  EXPECT_EQ(QZFloatParameter("-x", 0.25F).GetStringDefault(0), "0.250000");
  EXPECT_EQ(QZIntParameter("-x", -2147483647 - 1).GetStringDefault(0), "-2147483648");
  EXPECT_EQ(QZUIntParameter("-x", 4294967295U).GetStringDefault(0), "4294967295");
  EXPECT_EQ(QZBoolParameter("-x", true).GetStringDefault(0), "true");
  EXPECT_EQ(QZStringParameter("-x", " a b ").GetStringDefault(0), " a b ");
}

TEST(Parameter, AnIllegalTypedWriteChangesNothing) {
  QZIntParameter p("-n", 1);
  p.AddIllegalValue("500");
  EXPECT_TRUE(p.SetValue(2) && p.AddValue(3));
  EXPECT_FALSE(p.SetValue(500) || p.AddValue(500) || p.SetDefault(500) || p.AddDefault(500));
  EXPECT_THAT(List(p.GetValues()), ElementsAre(2, 3));
  EXPECT_THAT(List(p.GetStringDefaults()), ElementsAre("1"));
  int value = 77;
  EXPECT_FALSE(p.GetValue(value, 2) || p.GetDefault(value, 1) || p.GetSetting(value, 2));
  EXPECT_EQ(value, 77);
  EXPECT_TRUE(p.SetStringValue("500"));
  EXPECT_FALSE(p.IsLegalString("500"));
}

TEST(Parameter, SeveralValuesInOneText) {
  const struct {
    const char* text;
    std::vector<int> values;
  } cases[] = {{"1, 2 3", {1, 2, 3}}, {"\t7\n", {7}}, {",,4,", {4}}, {"1,x", {}}, {"1 9 2", {}}, {"", {}}, {" , ", {}}};
  for (const auto& c : cases) {
    QZIntParameter p("-n");
    p.AddIllegalValue("9");
    p.SetValue(-1);
    EXPECT_EQ(p.SetStringValues(c.text), !c.values.empty()) << c.text;
    EXPECT_EQ(List(p.GetValues()), c.values.empty() ? std::vector<int>{-1} : c.values) << c.text;
  }
}

// Takes any text into its limits, so that limits that can't be read come about.
template <class Kind>
class Careless : public Kind {
 public:
  using Kind::Kind;
  bool IsValidString(const std::string&) const override { return true; }
};

// The limits as words: v is a legal value, r a legal range, !v and !r the illegal ones.
template <class Kind>
void limit(Kind& p, const Texts& words) {
  for (std::size_t i = 0; i < words.size(); i += 2) {
    if (words[i] == "v") p.AddLegalValue(words[i + 1]);
    if (words[i] == "!v") p.AddIllegalValue(words[i + 1]);
    if (words[i] == "r") p.AddLegalRange(words[i + 1], words[i + 2]);
    if (words[i] == "!r") p.AddIllegalRange(words[i + 1], words[i + 2]);
    if (words[i].back() == 'r') ++i;
  }
}

template <class Kind>
void expectLegal(const Texts& limits, const Texts& legal, const Texts& illegal) {
  Messages messages;
  Careless<Kind> p("-p");
  limit(p, limits);
  for (const std::string& text : legal) EXPECT_TRUE(p.IsLegalString(text)) << text << testing::PrintToString(limits);
  for (const std::string& text : illegal) EXPECT_FALSE(p.IsLegalString(text)) << text << testing::PrintToString(limits);
  EXPECT_EQ(messages.Take(), "") << testing::PrintToString(limits);
}

TEST(ParameterLimits, IllegalWinsOverLegalAndRangesHoldTheirEnds) {
  expectLegal<QZIntParameter>({}, {"0", "-2147483648"}, {"x", "", "1.5"});
  expectLegal<QZIntParameter>({"!r", "5", "1"}, {"0", "6"}, {"1", "3", "5"});
  expectLegal<QZIntParameter>({"v", "3", "r", "10", "20"}, {"3", "10", "20"}, {"4", "9", "21"});
  expectLegal<QZIntParameter>({"v", "3", "!r", "2", "4"}, {}, {"3", "5"});
  expectLegal<QZIntParameter>({"r", "0", "10", "!v", "5"}, {"4", "6"}, {"5", "11"});
  expectLegal<QZIntParameter>({"r", "inf", "3"}, {"3", "4"}, {"2"});
  expectLegal<QZIntParameter>({"r", "3", "inf"}, {"3", "4"}, {"2"});
  expectLegal<QZIntParameter>({"r", "-inf", "3"}, {"2", "3"}, {"4"});
  expectLegal<QZIntParameter>({"r", "3", "-inf"}, {"2", "3"}, {"4"});
  expectLegal<QZUIntParameter>({"r", "4294967295", "1"}, {"1", "4294967295"}, {"0"});
  expectLegal<QZDoubleParameter>({"v", "0.1"}, {"0.1", "1e-1"}, {"0.10000000000000002"});
  expectLegal<QZDoubleParameter>({"!r", "-inf", "0"}, {"0.5", "nan"}, {"0", "-inf"});
  expectLegal<QZFloatParameter>({"r", "0", "inf"}, {"0", "inf"}, {"-1", "nan"});
  expectLegal<QZBoolParameter>({}, {"yes", "0"}, {"maybe", ""});
}

TEST(ParameterLimits, ALimitThatCantBeReadIsToldAndCountsAsZeroOrAsABar) {
  const struct {
    Texts limits;
    const char* text;
    bool legal;
    std::string message;
  } cases[] = {
      {{"!v", "x"}, "0", false, "Cannot interpret illegal value x, of parameter -p"},
      {{"!v", "x"}, "1", true, "Cannot interpret illegal value x, of parameter -p"},
      {{"v", "x"}, "0", true, "Cannot interpret legal value x, of parameter -p"},
      {{"v", "x"}, "1", false, "Cannot interpret legal value x, of parameter -p"},
      {{"!r", "1", "x"}, "9", false, "Invalid illegal range for parameter -p is (1 to x)"},
      {{"!r", "x", "inf"}, "9", false, "Invalid illegal range for parameter -p is (x to inf)"},
      {{"r", "Inf", "1", "r", "0", "9"}, "9", false, "Invalid legal range for parameter -p is (Inf to 1)"},
      {{"r", "-inf", "inf"}, "0", false, "Invalid legal range for parameter -p is (-inf to inf)"},
  };
  for (const auto& [limits, text, legal, message] : cases) {
    Messages messages;
    Careless<QZIntParameter> p("-p");
    limit(p, limits);
    EXPECT_EQ(p.IsLegalString(text), legal) << text << testing::PrintToString(limits);
    EXPECT_EQ(messages.Take(), "Warning: " + message + "\n");
  }
}

TEST(ParameterLimits, OnlyTheEndsOfALegalRangeGoUntested) {
  QZIntParameter p("-n");
  EXPECT_TRUE(p.AddLegalRange("0", "inf"));
  EXPECT_FALSE(p.AddIllegalRange("0", "inf") || p.AddIllegalRange("-inf", "0"));
  EXPECT_FALSE(p.AddLegalValue("x") || p.AddIllegalValue("x"));
  EXPECT_THAT(List(p.GetIllegalRanges()), IsEmpty());
  EXPECT_TRUE(QZDoubleParameter("-x").AddIllegalRange("-inf", "0"));
}

TEST(ParameterLimits, TextsAreMatchedByPatternWithoutCase) {
  expectLegal<QZStringParameter>({"v", "txt", "v", "C*"}, {"TXT", "csv", "c"}, {"text", "xcsv", ""});
  expectLegal<QZStringParameter>({"!v", "*.TMP", "v", "a*"}, {"a", "A.tmpx"}, {"a.tmp", "b"});
  expectLegal<QZStringParameter>({"!v", "x"}, {"", "anything at all"}, {"X"});
}

TEST(Parameter, IsSetToStringComparesTheSettingInUse) {
  QZDoubleParameter p("-x", 3);
  EXPECT_TRUE(p.IsSetToString("3.0"));
  EXPECT_FALSE(p.IsSetToString("x"));
  p.SetStringValues("1 2");
  EXPECT_TRUE(p.IsSetToString("2e0") && p.IsSetToString("1"));
  EXPECT_FALSE(p.IsSetToString("3"));
  QZFileParameter file("-f");  // has no typed comparison: the texts of what is loaded count
  file.SetStringDefault("/proc/self/stat");
  EXPECT_FALSE(file.IsSetToString("/proc/self/stat"));
  EXPECT_TRUE(file.Load() && file.IsSetToString("/proc/self/stat") && !file.IsSetToString("/proc"));
  file.SetStringValue("/proc/self/status");
  EXPECT_TRUE(file.Load() && file.IsSetToString("/proc/self/status") && !file.IsSetToString("/proc/self/stat"));
}

TEST(Parameter, ListingsSortByPriorityThenNameAndPlacesKeepTies) {
  std::deque<QZIntParameter> parameters;
  std::vector<QZParameter*> all;
  for (const auto& [name, order, keyless] :
       {std::tuple{"-b", 0, 2U}, {"-a", 0, 2U}, {"-z", -5, 1U}, {"-B", 0, 0U}, {"-c", 3, 1U}}) {
    all.push_back(&parameters.emplace_back(name));
    all.back()->SetOrderPriority(order);
    all.back()->SetKeyless(keyless);
  }
  const auto sorted = [&](const QZBinaryPredicate<QZParameter, QZParameter>& order) {
    return Names(new QZSortedIter<QZParameter>(new QZSTLIter<DerefIterGuts<std::vector<QZParameter*>>>(all), order));
  };
  EXPECT_EQ(sorted(SortItfStuff<QZParameter>()), "-z -B -a -b -c");
  EXPECT_EQ(sorted(KeylessSort()), "-B -z -c -b -a");
}

// The place of a virtual operation in the table, by the member pointers of the Itanium C++ ABI.
template <class Operation>
std::size_t slot(Operation operation) {
  std::size_t words[2] = {};
  static_assert(sizeof operation == sizeof words);
  std::memcpy(words, &operation, sizeof words);
  return (words[0] - 1) / sizeof(void*);
}

template <class... Operations>
std::vector<std::size_t> slots(Operations... operations) {
  return {slot(operations)...};
}

TEST(Parameter, VirtualOperationsKeepTheirSlots) {
  using P = QZParameter;
  using T = QZTypedParameter<int>;
  std::size_t next = 2;  // behind the two of the destructor
  for (const std::size_t each : slots(
           &P::GetPrettyLegalValues, &P::GetPrettyDefault, &P::SetStringValue, &P::SetStringDefault, &P::AddStringValue,
           &P::AddStringDefault, &P::ClearValues, &P::ClearDefaults, &P::SetStringValues, &P::AddLegalValue,
           &P::AddIllegalValue, &P::AddLegalRange, &P::AddIllegalRange, &P::IsLegalString, &P::IsSetToString, &P::Load,
           &P::LoadValue, &P::LoadDefault, &P::IsSet, &P::GetHasValue, &P::GetHasDefault, &P::TypedParameterTypeID,
           &P::ClassID, &P::WriteValueAndDefaultBinary, &P::ReadValueAndDefaultBinary, &P::ValueAndDefaultBinarySize,
           &P::CreateCopy, &P::IsValidString, &T::GetValue, &T::GetDefault, &T::GetSetting, &T::AddValue,
           &T::AddDefault, &T::SetValue, &T::SetDefault, &T::GetValues, &T::GetDefaults, &T::GetSettings, &T::IsLegal,
           &T::GetTypedValue, &T::GetString, &T::FactoryTypeID, &QZConstParameter::GetMask))
    EXPECT_EQ(each, next++);
}

}  // namespace
}  // namespace QZSystem
