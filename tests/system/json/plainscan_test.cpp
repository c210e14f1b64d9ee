#include "qz/system/json/plainscan_impl.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

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
  if (!JSONParseHelper(document, "{\"a\":" + token + "}") || document.MemberCount() != 1) return "no";
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

struct Tokens {
  const char* kind;
  std::vector<std::string> tokens;
};

TEST(JSONPlainScan, TakesUsualFormsAsTheParseEntryDoes) {
  const Tokens cases[] = {
      {"int", {"0", "-0", "7", "-2147483648", "2147483647"}},
      {"double",
       {"0", "-0", "-0.0", "-0e5", "0.1", "-464.643672", "123456789012345", "1234567890123456", "9007199254740993",
        "0.30000000000000004", "18446744073709551617", "1e22", "-1.5E-07", "2.5e+3",
        "123456789012345678901234567890.12345e-99", "NaN", "Infinity", "-Infinity"}},
      {"bool", {"true", "false"}},
      {"string",
       {R"("")", R"("abc")", "\"a quite long text without escapes\xc3\xa9\"", R"("a\"b\\\n\u00e9\ud83d\ude00")"}}};
  for (const auto& [kind, tokens] : cases) {
    for (const std::string& token : tokens) {
      EXPECT_NE(Scanned(kind, token), "no") << token;
      EXPECT_EQ(Scanned(kind, token), Parsed(kind, token)) << token;
    }
  }
}

TEST(JSONPlainScan, LeavesEverythingElseToTheParseEntry) {
  const Tokens cases[] = {
      {"int", {"", "-", "+1", "01", "1.0", "1e2", "1E2", "2147483648", "-2147483649", "99999999999", "null"}},
      {"double",
       {"", "-", "01", "-01.5", "1.", ".5", "1e", "1e+", "1e308", "1e-400", "0x1",
        "12345678901234567890123456789012345678901", "NaN.5", "NaNe1", "Inf", "--1", "\"1\""}},
      {"bool", {"tru", "1", "truee"}},
      {"string", {"\"", "\"a", "\"a\n\"", R"("\x")", R"("\ud800")", R"("a\")", "abc"}}};
  for (const auto& [kind, tokens] : cases) {
    for (const std::string& token : tokens) EXPECT_EQ(Scanned(kind, token), "no") << kind << " " << token;
  }
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
    std::string token = std::string(random() % 2 ? "-" : "") + (random() % 4 == 0 ? "0" : digits(20));
    if (random() % 2) token += "." + digits(20);
    if (random() % 4 == 0) token += (random() % 2 ? "e" : "E-") + digits(4);
    for (const char* kind : {"double", "int"}) {
      const std::string scanned = Scanned(kind, token);
      taken += scanned != "no";
      ASSERT_TRUE(scanned == "no" || scanned == Parsed(kind, token)) << token;
    }
  }
  EXPECT_GT(taken, 10000);
}

}  // namespace
}  // namespace QZSystem
