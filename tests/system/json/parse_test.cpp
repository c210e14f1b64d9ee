#include "qz/system/json/parse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "qz/system/json/check.h"
#include "qz/system/json/guardedparse_impl.h"
#include "qz/system/json/plainparse_impl.h"
#include "qz/system/json/write.h"
#include "tests/system/cli/messages.h"
#include "tests/system/json/deepdata.h"
#include "tests/system/qzb/smallstack.h"

namespace QZSystem {
namespace {

using JSONImpl::Outcome;

struct NullHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, NullHandler> {};

Outcome Guarded(const std::string& text) {
  NullHandler handler;
  return JSONImpl::GuardedParse(text.data(), text.size(), handler);
}

/// What the library's own recursive parser makes of the text, with NaN and infinities allowed.
Outcome Plain(const std::string& text) {
  NullHandler handler;
  rapidjson::Reader reader;
  rapidjson::StringStream stream(text.c_str());
  reader.Parse<rapidjson::kParseNanAndInfFlag>(stream, handler);
  return {reader.GetParseErrorCode(), reader.GetErrorOffset()};
}

/// Whether a token begins at `offset` that the library alone takes for a number, such as NaN.2, NInf or Inf1e1.
bool IsOddNumber(const std::string& text, std::size_t offset) {
  const std::string characters = "-+.0123456789aefinItyN";
  std::string token = text.substr(offset, text.find_first_not_of(characters, offset) - offset);
  if (token.front() == '-') token.erase(0, 1);
  return (token[0] == 'N' || token[0] == 'I') && token != "NaN" && token != "Inf" && token != "Infinity";
}

/// The text of a value, with the kinds that its numbers are of, in arrays, too.
std::string KindsOf(const rapidjson::Value& value) {
  std::string kinds = QZJSONText(value) + (value.IsInt() ? "i" : "") + (value.IsUint() ? "u" : "") +
                      (value.IsInt64() ? "I" : "") + (value.IsUint64() ? "U" : "") + (value.IsDouble() ? "d" : "");
  for (rapidjson::SizeType i = 0; value.IsArray() && i < value.Size(); ++i) kinds += KindsOf(value[i]);
  return kinds;
}

/// What the quick parse takes is what the guarded one makes of the text. Returns whether it took it.
bool ExpectQuickIsGuarded(const std::string& text) {
  rapidjson::Document quick, guarded;
  JSONImpl::PlainParse<rapidjson::Document> parse(text.data(), text.size());
  quick.Populate(parse);
  if (!parse.IsDone()) return false;
  auto guard = [&text](rapidjson::Document& document) {
    return JSONImpl::GuardedParse(text.data(), text.size(), document).code == rapidjson::kParseErrorNone;
  };
  EXPECT_EQ(Guarded(text).code, rapidjson::kParseErrorNone) << text;
  guarded.Populate(guard);
  EXPECT_EQ(KindsOf(quick), KindsOf(guarded)) << text;
  return true;
}

void ExpectPlain(const std::string& text) {
  ExpectQuickIsGuarded(text);
  const Outcome guarded = Guarded(text);
  const Outcome plain = Plain(text);
  if (guarded.code == rapidjson::kParseErrorValueInvalid && IsOddNumber(text, guarded.offset)) return;
  ASSERT_EQ(guarded.code, plain.code) << text;
  ASSERT_EQ(guarded.offset, plain.offset) << text;
}

std::string ParseMessage(const std::string& text) {
  Messages messages;
  rapidjson::Document document;
  const bool parsed = JSONParseHelper(document, text);
  const std::string message = messages.Take();
  EXPECT_EQ(parsed, message.empty()) << text;
  EXPECT_EQ(JSONCheckHelper(text), parsed) << text;
  EXPECT_EQ(messages.Take(), message) << text;
  return message;
}

std::string Repeat(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

const std::string& Sample() {
  static const std::string text =
      R"( {"name" : "a\"\\\/\b\u00e9\ud83d\ude00é","list":[1,-2, 3.25e-2,true , false,null,[],{}],)"
      R"("big":-9223372036854775808,"words":[NaN,-Inf,Infinity],"x":{"y":18446744073709551616}} )";
  return text;
}

TEST(JSONParse, EveryShortTextEndsAsInThePlainParser) {
  const std::string alphabet = "{}[],:\"\\1-.eN ";
  std::size_t count = 1;
  for (std::size_t length = 0; length <= 4; ++length, count *= alphabet.size()) {
    for (std::size_t i = 0; i < count; ++i) {
      std::string text;
      for (std::size_t rest = i; text.size() < length; rest /= alphabet.size())
        text += alphabet[rest % alphabet.size()];
      ASSERT_NO_FATAL_FAILURE(ExpectPlain(text));
    }
  }
}

TEST(JSONParse, EveryCutAndEveryFlipEndsAsInThePlainParser) {
  const std::string& sample = Sample();
  ASSERT_EQ(Guarded(sample).code, rapidjson::kParseErrorNone);
  for (std::size_t i = 0; i <= sample.size(); ++i) ASSERT_NO_FATAL_FAILURE(ExpectPlain(sample.substr(0, i)));
  for (std::size_t i = 0; i < sample.size(); ++i) {
    for (int byte = 1; byte < 256; ++byte) {
      std::string text = sample;
      text[i] = static_cast<char>(byte);
      ASSERT_NO_FATAL_FAILURE(ExpectPlain(text));
    }
  }
}

TEST(JSONParse, UsualTextsAreTakenQuickly) {
  for (const std::string& text :
       {std::string("{}"), std::string(" [ ] "), std::string("[-0,0,-0.0,1e5,-1.5E-2,0.1,123456789.123456]"),
        std::string("[2147483647,2147483648,4294967295,4294967296,-2147483648,-2147483649,999999999999999999]"),
        Repeat("[", 16) + Repeat("]", 16)}) {
    EXPECT_TRUE(ExpectQuickIsGuarded(text)) << text;
  }
  for (const char* text : {"[9223372036854775808]", "[01]", "[1.]", "[NaN.2]", "[Inf]", "\"a\x01\"", "[1,]", "[1 2]",
                           "{1:2}", "{\"a\" 1}", "{\"a\":1 \"b\":2}", "[1]]", "[tru]", "[1e999]", "{}\f"}) {
    EXPECT_FALSE(ExpectQuickIsGuarded(text)) << text;
  }
  EXPECT_FALSE(ExpectQuickIsGuarded(Sample()));
  EXPECT_FALSE(ExpectQuickIsGuarded(Repeat("[", 17) + Repeat("]", 17)));
}

TEST(JSONParse, MessagesTellOffsetAndReason) {
  const std::string deep = Repeat("[", 1023);
  const std::pair<std::string, std::string> cases[] = {
      {"{}", ""},
      {"", "JSON: parse error offset 0: The document is empty."},
      {"]", "JSON: parse error offset 0: Invalid value."},
      {"{} x", "JSON: parse error offset 3: The document root must not be followed by other values."},
      {std::string("{}\0x", 4), "JSON: parse error offset 2: The document root must not be followed by other values."},
      {std::string("{\"a\0\":1}", 8), "JSON: parse error offset 3: Missing a closing quotation mark in string."},
      {"{\"a\":1e999}", "JSON: parse error offset 5: Number too big to be stored in double."},
      {"{\"a\":NaN.2e2}", "JSON: parse error offset 5: Invalid value."},
      {"{\"a\":NaInf}", "JSON: parse error offset 5: Invalid value."},
      {"[1.5]", "JSON: Top level document must be an object"},
      {"{\"a\":" + deep + Repeat("]", 1023) + "}", ""},
      {"{\"a\":" + deep + "[", "JSON: parse error offset 1028: Terminate parsing due to Handler error."},
      {"{\"a\":" + deep + "{", "JSON: parse error offset 1028: Terminate parsing due to Handler error."},
      {"{\"a\":NaN.1," + deep + "[", "JSON: parse error offset 5: Invalid value."},
      {"{\"a\" " + deep + "[", "JSON: parse error offset 5: Missing a colon after a name of object member."},
      {"{\"a\":[" + Repeat("[],", 5000) + "1]}", ""},
  };
  for (const auto& [text, message] : cases) {
    EXPECT_EQ(ParseMessage(text), message.empty() ? "" : "Warning: " + message + "\n") << text.substr(0, 100);
  }
}

TEST(JSONParse, LongExponentsAreTamedAndStringsLeftAlone) {
  const std::pair<std::string, double> cases[] = {
      {"0.00000000001e-2147483639", 0.0},
      {"-5E-2147483648", -0.0},
      {"123e-00000000000000000002", 1.23},
      {"4.9e-324", std::numeric_limits<double>::denorm_min()},
      {"0." + std::string(400, '0') + "1e401", 1.0},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
  };
  for (const auto& [number, value] : cases) {
    const std::string text = R"({"s":"\"1e-99999999999","n":)" + number + "}";
    rapidjson::Document document;
    ASSERT_TRUE(JSONParseHelper(document, text)) << text;
    EXPECT_STREQ(document["s"].GetString(), "\"1e-99999999999") << text;
    EXPECT_EQ(document["n"].GetDouble(), value) << text;
    EXPECT_EQ(std::signbit(document["n"].GetDouble()), std::signbit(value)) << text;
  }
}

TEST(JSONParse, EveryDoubleComesBackFromItsText) {
  std::mt19937_64 random(7);
  std::vector<double> values{0.1, 5e-324, 2.2250738585072014e-308, 1e22, 9007199254740993.0, -0.0};
  while (values.size() < 20000) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isfinite(value)) values.push_back(value);
  }
  std::string list;
  for (const double value : values) list += (list.empty() ? "" : ",") + QZJSONText(rapidjson::Value(value));
  rapidjson::Document read;
  ASSERT_TRUE(JSONParseHelper(read, "{\"list\":[" + list + "]}"));
  for (rapidjson::SizeType i = 0; i < values.size(); ++i) ASSERT_EQ(read["list"][i].GetDouble(), values[i]);
}

TEST(JSONParse, DepthTakesNoStack) {
  OnSmallStack([] {
    Messages messages;
    const std::string whole = "{\"a\":" + Repeat("[{\"b\":", 511) + "[]" + Repeat("}]", 511) + "}";
    rapidjson::Document document;
    EXPECT_TRUE(JSONParseHelper(document, whole));
    EXPECT_EQ(QZJSONText(document), whole);
    EXPECT_FALSE(JSONCheckHelper(Repeat("[", 100000)));
    EXPECT_EQ(messages.Take(), "Warning: JSON: parse error offset 1024: Terminate parsing due to Handler error.\n");
  });
}

TEST(JSONText, IsCompactAndKeepsOrderAndWords) {
  const std::pair<const char*, const char*> cases[] = {
      {"{ }", "{}"},
      {R"({"b" : [ ], "a": {"c":[ 1, [2,{ }],"x" ] }, "b":null})", R"({"b":[],"a":{"c":[1,[2,{}],"x"]},"b":null})"},
      {R"({"n":[NaN, Inf, -Infinity, 1.0, 1e30, -0.0, 18446744073709551615]})",
       R"({"n":[NaN,Infinity,-Infinity,1.0,1e30,-0.0,18446744073709551615]})"},
      {R"({"s":"\u00e9\n\u0001\/\"","a\u0000b":true})", "{\"s\":\"\xc3\xa9\\n\\u0001/\\\"\",\"a\\u0000b\":true}"},
  };
  for (const auto& [text, compact] : cases) {
    rapidjson::Document document;
    ASSERT_TRUE(JSONParseHelper(document, text)) << text;
    EXPECT_EQ(QZJSONText(document), compact) << text;
  }
}

/// "found error" and the value where there is one, and the message.
std::string ReadAs(const std::string& kind, rapidjson::Value& object, const char* key, bool required) {
  Messages messages;
  const auto read = [&](auto get, auto text) {
    const auto attr = get(object, key, required);
    const std::string value = attr.found && !attr.error ? text(attr.value) : std::string();
    return std::string(attr.found ? "found " : "") + (attr.error ? "error " : "") + value + messages.Take();
  };
  const auto number = [](auto value) { return std::to_string(value); };
  const auto nested = [](rapidjson::Value* value) { return QZJSONText(*value); };
  if (kind == "object") return read(GetJSONObjectAttr, nested);
  if (kind == "array") return read(GetJSONArrayAttr, nested);
  if (kind == "string") return read(GetJSONStringAttr, [](const std::string& value) { return value; });
  if (kind == "bool") return read(GetJSONBoolAttr, number);
  if (kind == "int") return read(GetJSONIntAttr, number);
  if (kind == "unsigned") return read(GetJSONUnsignedAttr, number);
  return read(GetJSONDoubleAttr, number);
}

TEST(JSONMember, ReadersTellFoundErrorValueAndMessage) {
  rapidjson::Document object;
  ASSERT_TRUE(JSONParseHelper(object, R"({"o":{"a":1},"l":[2],"s":"x\u0000y","t":true,"min":-2147483648,
      "max":2147483647,"over":2147483648,"umax":4294967295,"one":1.0,"nul":null,"twice":1,"twice":"second"})"));
  const struct {
    const char *kind, *key, *expected;
  } cases[] = {
      {"object", "o", "found {\"a\":1}"},
      {"object", "l", "found error Warning: JSON: must be an object type, key: l\n"},
      {"array", "l", "found [2]"},
      {"array", "o", "found error Warning: JSON: must be an array type, key: o\n"},
      {"string", "t", "found error Warning: JSON: expects type of: string, key: t\n"},
      {"bool", "t", "found 1"},
      {"bool", "nul", "found error Warning: JSON: expects type of: boolean, key: nul\n"},
      {"int", "min", "found -2147483648"},
      {"int", "max", "found 2147483647"},
      {"int", "over", "found error Warning: JSON: expects type of: integer, key: over\n"},
      {"int", "one", "found error Warning: JSON: expects type of: integer, key: one\n"},
      {"int", "twice", "found 1"},
      {"unsigned", "umax", "found 4294967295"},
      {"unsigned", "min", "found error Warning: JSON: expects type of: unsigned, key: min\n"},
      {"double", "max", "found 2147483647.000000"},
      {"double", "s", "found error Warning: JSON: expects type of: Double, key: s\n"},
  };
  for (const auto& [kind, key, expected] : cases) EXPECT_EQ(ReadAs(kind, object, key, true), expected) << key;
  EXPECT_EQ(ReadAs("string", object, "s", true), "found " + std::string("x\0y", 3));
}

TEST(JSONMember, AbsentIsAnErrorOnlyWhenRequired) {
  rapidjson::Document object;
  object.SetObject();
  EXPECT_EQ(ReadAs("int", object, "k", true), "error Warning: JSON: missing required attribute, key: k\n");
  EXPECT_EQ(ReadAs("int", object, "k", false), "");
}

}  // namespace
}  // namespace QZSystem
