#include "qz/system/cli/parameter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <memory>

#include "qz/system/cli/parameter_concrete.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

template <class T>
std::vector<std::remove_const_t<T>> list(QZIterBase<T>* iter) {
  std::vector<std::remove_const_t<T>> all;
  for (T& each : QZIter(iter)) all.push_back(each);
  return all;
}

// Everything that a parameter tells about itself.
std::string describe(const QZParameter& p) {
  std::string all = p.ClassID() + '|' + p.GetName() + '|' + p.GetBrief() + '|' + p.GetElement() + '|' + p.GetCommand();
  for (long number : {long{p.GetRequired()}, long{p.GetKeyless()}, long{p.GetVisibility()}, long{p.GetOrderPriority()},
                      long{p.GetInput()}, long{p.GetOutput()}, long{p.GetIsList()}})
    all += ' ' + std::to_string(number);
  for (const Texts& texts : {list(p.GetAliases()), list(p.GetDetail()), list(p.GetStringValues()),
                             list(p.GetStringDefaults()), list(p.GetLegalValues()), list(p.GetIllegalValues())})
    all += '|' + testing::PrintToString(texts);
  all += testing::PrintToString(list(p.GetLegalRanges())) + testing::PrintToString(list(p.GetIllegalRanges()));
  for (unsigned int i = 0; i < 3; ++i) all += p.GetHasValue(i) ? " v" : " -";
  for (unsigned int i = 0; i < 3; ++i) all += p.GetHasDefault(i) ? " d" : " -";
  return all;
}

TEST(Parameter, NameAndAliasesAreOneWord) {
  const struct {
    const char* text;
    const char* word;
  } cases[] = {{"-in", "-in"}, {" \t-in \n", "-in"}, {"-in -out", nullptr},
               {"", nullptr},  {" \n", nullptr},     {"-in\r", "-in\r"}};
  for (const auto& c : cases) {
    QZIntParameter p("-before");
    EXPECT_EQ(p.SetName(c.text), c.word != nullptr) << c.text;
    EXPECT_EQ(p.GetName(), c.word != nullptr ? c.word : "-before") << c.text;
    EXPECT_EQ(p.AddAlias(c.text), c.word != nullptr) << c.text;
    EXPECT_EQ(list(p.GetAliases()), c.word != nullptr ? Texts{c.word} : Texts()) << c.text;
  }
}

TEST(Parameter, ACopyHoldsEverythingAndIsItsOwn) {
  QZIntParameter p(" -n ", 3);
  EXPECT_TRUE(p.AddAlias("-count") && p.SetBrief("how many") && p.SetElement("e") && p.SetCommand("c") &&
              p.AddDetail("one") && p.AddDetail("") && p.SetRequired(true) && p.SetKeyless(2) && p.SetVisibility(7) &&
              p.SetOrderPriority(-1) && p.SetInput(4) && p.SetOutput(true) && p.SetIsList(true));
  EXPECT_TRUE(p.AddLegalValue("1") && p.AddIllegalValue("2") && p.AddLegalRange("0", "inf") &&
              p.AddIllegalRange("10", "5") && p.SetValue(1) && p.AddValue(3));
  const std::string whole = describe(p);
  EXPECT_EQ(whole,
            "int|-n|how many|e|c 1 2 7 -1 4 1 1|{ \"-count\" }|{ \"one\", \"\" }|{ \"1\", \"3\" }|{ \"3\" }|{ \"1\" }|"
            "{ \"2\" }{ (\"0\", \"inf\") }{ (\"10\", \"5\") } v v - d - -");
  const std::unique_ptr<QZParameter> copy(p.CreateCopy());
  EXPECT_EQ(describe(*copy), whole);
  copy->ClearValues();
  copy->AddAlias("-more");
  EXPECT_EQ(describe(p), whole);
  EXPECT_EQ(describe(QZIntParameter()), "int|||| 0 0 1 0 0 0 0|{}|{}|{}|{}|{}|{}{}{} - - - - - -");
}

TEST(Parameter, TextCountsAsSetOnlyWhenLoaded) {
  QZIntParameter p("-n");
  EXPECT_FALSE(p.SetStringValue("five"));
  EXPECT_TRUE(p.SetStringValue("5"));
  EXPECT_FALSE(p.IsSet(0));
  EXPECT_TRUE(p.AddStringValue(" 6") && p.Load());
  EXPECT_THAT(list(p.GetValues()), ElementsAre(5, 6));
  EXPECT_TRUE(p.SetStringValue("7") && p.SetStringDefault("1") && p.AddStringDefault("2"));
  EXPECT_THAT(list(p.GetStringValues()), ElementsAre("7"));
  EXPECT_THAT(list(p.GetSettings()), ElementsAre(5, 6));
  EXPECT_TRUE(p.Load());
  EXPECT_THAT(list(p.GetSettings()), ElementsAre(7));
  EXPECT_TRUE(p.ClearValues());
  EXPECT_THAT(list(p.GetSettings()), ElementsAre(1, 2));
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
  EXPECT_THAT(list(p.GetStringValues()), ElementsAre("b" + longText));
  EXPECT_TRUE(p.SetValue(*(++QZIter(p.GetValues()))));
  EXPECT_THAT(list(p.GetValues()), ElementsAre("b" + longText));
  EXPECT_TRUE(p.SetDefault(*(++QZIter(p.GetDefaults()))));
  EXPECT_TRUE(p.SetStringDefault(*QZIter(p.GetStringDefaults())));
  EXPECT_THAT(list(p.GetStringDefaults()), ElementsAre("b" + longText));
}

TEST(Parameter, ATypedWriteLeavesItsText) {
  EXPECT_EQ(QZFloatParameter("-x", 0.25F).GetStringDefault(0), "0.250000");
  EXPECT_EQ(QZDoubleParameter("-x", -1.5).GetStringDefault(0), "-1.500000000000");
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
  EXPECT_THAT(list(p.GetValues()), ElementsAre(2, 3));
  EXPECT_THAT(list(p.GetStringDefaults()), ElementsAre("1"));
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
    EXPECT_EQ(list(p.GetValues()), c.values.empty() ? std::vector<int>{-1} : c.values) << c.text;
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

template <class Kind>
void expectBadLimit(const Texts& limits, const std::string& text, bool legal, const std::string& message) {
  Messages messages;
  Careless<Kind> p("-p");
  limit(p, limits);
  EXPECT_EQ(p.IsLegalString(text), legal) << text << testing::PrintToString(limits);
  EXPECT_EQ(messages.Take(), message);
}

TEST(ParameterLimits, ALimitThatCantBeReadIsToldAndCountsAsZeroOrAsABar) {
  const std::string value = "Warning: Cannot interpret ";
  const std::string range = "Warning: Invalid ";
  expectBadLimit<QZIntParameter>({"!v", "x"}, "0", false, value + "illegal value x, of parameter -p\n");
  expectBadLimit<QZIntParameter>({"!v", "x"}, "1", true, value + "illegal value x, of parameter -p\n");
  expectBadLimit<QZIntParameter>({"v", "x"}, "0", true, value + "legal value x, of parameter -p\n");
  expectBadLimit<QZIntParameter>({"v", "x"}, "1", false, value + "legal value x, of parameter -p\n");
  expectBadLimit<QZIntParameter>({"!r", "1", "x"}, "9", false, range + "illegal range for parameter -p is (1 to x)\n");
  expectBadLimit<QZIntParameter>({"!r", "x", "inf"}, "9", false,
                                 range + "illegal range for parameter -p is (x to inf)\n");
  expectBadLimit<QZIntParameter>({"r", "Inf", "1", "r", "0", "9"}, "9", false,
                                 range + "legal range for parameter -p is (Inf to 1)\n");
  expectBadLimit<QZDoubleParameter>({"r", "-inf", "inf"}, "0", false,
                                    range + "legal range for parameter -p is (-inf to inf)\n");
}

TEST(ParameterLimits, OnlyTheEndsOfALegalRangeGoUntested) {
  QZIntParameter p("-n");
  EXPECT_TRUE(p.AddLegalRange("0", "inf"));
  EXPECT_FALSE(p.AddIllegalRange("0", "inf") || p.AddIllegalRange("-inf", "0"));
  EXPECT_FALSE(p.AddLegalValue("x") || p.AddIllegalValue("x"));
  EXPECT_THAT(list(p.GetIllegalRanges()), IsEmpty());
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
  const struct {
    const char* name;
    int order;
    unsigned int keyless;
  } cases[] = {{"-b", 0, 2}, {"-a", 0, 2}, {"-z", -5, 1}, {"-B", 0, 0}, {"-c", 3, 1}};
  std::vector<QZParameter*> all;
  for (const auto& c : cases) {
    all.push_back(&parameters.emplace_back(c.name));
    all.back()->SetOrderPriority(c.order);
    all.back()->SetKeyless(c.keyless);
  }
  const auto sorted = [&](const QZBinaryPredicate<QZParameter, QZParameter>& order) {
    std::string names;
    for (const QZParameter& p : QZIter<QZParameter>(
             new QZSortedIter<QZParameter>(new QZSTLIter<DerefIterGuts<std::vector<QZParameter*>>>(all), order)))
      names += p.GetName();
    return names;
  };
  EXPECT_EQ(sorted(SortItfStuff<QZParameter>()), "-z-B-a-b-c");
  EXPECT_EQ(sorted(KeylessSort()), "-B-z-c-b-a");
}

TEST(Parameter, TheTypeOfTheValuesCanBeAsked) {
  QZDoubleParameter p("-x", 1.5);
  QZParameter* base = &p;
  ASSERT_NE(QZTypedParameter<double>::From(base), nullptr);
  EXPECT_EQ(QZTypedParameter<double>::From(base)->GetStringDefault(), "1.500000000000");
  EXPECT_EQ(QZTypedParameter<float>::From(base), nullptr);
  EXPECT_EQ(QZTypedParameter<double>::From(static_cast<const QZParameter*>(nullptr)), nullptr);
}

// The place of a virtual operation in the table, by the member pointers of the Itanium C++ ABI.
template <class Operation>
std::size_t slot(Operation operation) {
  std::size_t words[2] = {};
  static_assert(sizeof operation == sizeof words);
  std::memcpy(words, &operation, sizeof words);
  return (words[0] - 1) / sizeof(void*);
}

TEST(Parameter, VirtualOperationsKeepTheirSlots) {
  using P = QZParameter;
  using T = QZTypedParameter<int>;
  const std::vector<std::size_t> slots = {slot(&P::GetPrettyLegalValues),
                                          slot(&P::GetPrettyDefault),
                                          slot(&P::SetStringValue),
                                          slot(&P::SetStringDefault),
                                          slot(&P::AddStringValue),
                                          slot(&P::AddStringDefault),
                                          slot(&P::ClearValues),
                                          slot(&P::ClearDefaults),
                                          slot(&P::SetStringValues),
                                          slot(&P::AddLegalValue),
                                          slot(&P::AddIllegalValue),
                                          slot(&P::AddLegalRange),
                                          slot(&P::AddIllegalRange),
                                          slot(&P::IsLegalString),
                                          slot(&P::IsSetToString),
                                          slot(&P::Load),
                                          slot(&P::LoadValue),
                                          slot(&P::LoadDefault),
                                          slot(&P::IsSet),
                                          slot(&P::GetHasValue),
                                          slot(&P::GetHasDefault),
                                          slot(&P::TypedParameterTypeID),
                                          slot(&P::ClassID),
                                          slot(&P::WriteValueAndDefaultBinary),
                                          slot(&P::ReadValueAndDefaultBinary),
                                          slot(&P::ValueAndDefaultBinarySize),
                                          slot(&P::CreateCopy),
                                          slot(&P::IsValidString),
                                          slot(&T::GetValue),
                                          slot(&T::GetDefault),
                                          slot(&T::GetSetting),
                                          slot(&T::AddValue),
                                          slot(&T::AddDefault),
                                          slot(&T::SetValue),
                                          slot(&T::SetDefault),
                                          slot(&T::GetValues),
                                          slot(&T::GetDefaults),
                                          slot(&T::GetSettings),
                                          slot(&T::IsLegal),
                                          slot(&T::GetTypedValue),
                                          slot(&T::GetString),
                                          slot(&T::FactoryTypeID),
                                          slot(&QZConstParameter::GetMask)};
  for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], i + 2) << "behind the two of the destructor";
}

}  // namespace
}  // namespace QZSystem
