#include "qz/system/json/plainscan_impl.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "qz/system/json/parse.h"
#include "tests/system/cli/messages.h"

namespace QZSystem {
namespace {

using JSONImpl::PlainScan;

/// The bits of a double, so that zeros with a sign and NaN compare.
std::string Bits(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return std::to_string(bits);
}

/// What the parse entry makes of a token as a member of that kind; "no" when it isn't one.
std::string Parsed(const std::string& kind, const std::string& token) {
  Messages messages;
  rapidjson::Document document;
  if (!JSONParseHelper(document, "{\"a\":" + token + "}")) return "no";
  if (document.MemberCount() != 1) return "no";
  const rapidjson::Value& value = document["a"];
  if (kind == "int" && value.IsInt()) return std::to_string(value.GetInt());
  if (kind == "double" && value.IsNumber()) return Bits(value.GetDouble());
  if (kind == "bool" && value.IsBool()) return value.GetBool() ? "true" : "false";
  if (kind == "string" && value.IsString()) return std::string(value.GetString(), value.GetStringLength());
  return "no";
}

/// What the scan makes of it; "no" when it leaves it to the parse entry.
std::string Scanned(const std::string& kind, const std::string& token) {
  const std::string text = token + "}";
  PlainScan scan(text);
  std::string result = "no";
  std::string room;
  std::string_view view;
  long number;
  double real;
  bool flag;
  if (kind == "int" && scan.Int(number)) result = std::to_string(number);
  if (kind == "double" && scan.Double(real)) result = Bits(real);
  if (kind == "bool" && scan.Bool(flag)) result = flag ? "true" : "false";
  if (kind == "string" && scan.String(view, room)) result = std::string(view);
  return result != "no" && scan.Literal('}') && scan.AtEnd() ? result : "no";
}

TEST(JSONPlainScan, TakesUsualFormsAsTheParseEntryDoes) {
  const struct {
    const char *kind, *token;
  } cases[] = {
      {"int", "0"},
      {"int", "-0"},
      {"int", "7"},
      {"int", "-2147483648"},
      {"int", "2147483647"},
      {"double", "0"},
      {"double", "-0"},
      {"double", "-0.0"},
      {"double", "-0e5"},
      {"double", "0.1"},
      {"double", "-464.643672"},
      {"double", "123456789012345"},
      {"double", "1234567890123456"},
      {"double", "9007199254740993"},
      {"double", "0.30000000000000004"},
      {"double", "18446744073709551617"},
      {"double", "1e22"},
      {"double", "-1.5E-07"},
      {"double", "2.5e+3"},
      {"double", "123456789012345678901234567890.12345e-99"},
      {"double", "NaN"},
      {"double", "Infinity"},
      {"double", "-Infinity"},
      {"bool", "true"},
      {"bool", "false"},
      {"string", "\"\""},
      {"string", "\"abc\""},
      {"string", "\"a quite long text without escapes\xc3\xa9\""},
      {"string", R"("a\"b\\\n\u00e9\ud83d\ude00")"},
  };
  for (const auto& [kind, token] : cases) {
    EXPECT_NE(Scanned(kind, token), "no") << token;
    EXPECT_EQ(Scanned(kind, token), Parsed(kind, token)) << token;
  }
}

TEST(JSONPlainScan, LeavesEverythingElseToTheParseEntry) {
  const struct {
    const char *kind, *token;
  } cases[] = {
      {"int", ""},
      {"int", "-"},
      {"int", "+1"},
      {"int", "01"},
      {"int", "1.0"},
      {"int", "1e2"},
      {"int", "1E2"},
      {"int", "2147483648"},
      {"int", "-2147483649"},
      {"int", "99999999999"},
      {"int", "null"},
      {"double", ""},
      {"double", "-"},
      {"double", "01"},
      {"double", "-01.5"},
      {"double", "1."},
      {"double", ".5"},
      {"double", "1e"},
      {"double", "1e+"},
      {"double", "1e308"},
      {"double", "1e-400"},
      {"double", "1e999"},
      {"double", "0x1"},
      {"double", "12345678901234567890123456789012345678901"},
      {"double", "NaN.5"},
      {"double", "NaNe1"},
      {"double", "Inf"},
      {"double", "--1"},
      {"double", "\"1\""},
      {"bool", "tru"},
      {"bool", "1"},
      {"bool", "truee"},
      {"string", "\""},
      {"string", "\"a"},
      {"string", "\"a\n\""},
      {"string", R"("\x")"},
      {"string", R"("\ud800")"},
      {"string", R"("a\")"},
      {"string", "abc"},
  };
  for (const auto& [kind, token] : cases) EXPECT_EQ(Scanned(kind, token), "no") << token;
}

TEST(JSONPlainScan, EveryNumberItTakesIsThatOfTheParseEntry) {
  std::mt19937 random(17);
  const auto digits = [&](unsigned most) {
    std::string text;
    for (auto left = random() % most; left > 0; --left) text += static_cast<char>('0' + random() % 10);
    return text;
  };
  int taken = 0;
  for (int i = 0; i < 20000; ++i) {
    std::string token = random() % 2 ? "-" : "";
    token += random() % 4 == 0 ? "0" : digits(20);
    if (random() % 2) token += "." + digits(20);
    if (random() % 4 == 0) token += (random() % 2 ? "e" : "E-") + digits(4);
    const std::string scanned = Scanned("double", token);
    taken += scanned != "no";
    ASSERT_TRUE(scanned == "no" || scanned == Parsed("double", token)) << token;
    const std::string whole = Scanned("int", token);
    ASSERT_TRUE(whole == "no" || whole == Parsed("int", token)) << token;
  }
  EXPECT_GT(taken, 10000);
}

TEST(JSONPlainScan, EndsInWhiteSpaceOnly) {
  for (const char* text : {"", " \n\r\t"}) EXPECT_TRUE(PlainScan(text).AtEnd()) << text;
  for (const std::string& text : {std::string("x"), std::string(" x"), std::string("\f"), std::string(1, 0)}) {
    EXPECT_FALSE(PlainScan(text).AtEnd()) << text;
  }
}

}  // namespace
}  // namespace QZSystem
