#include "qz/system/json/textwriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "qz/system/json/limits.h"
#include "qz/system/json/write.h"

namespace QZSystem {
namespace {

std::string ByLibrary(double value) {
  rapidjson::StringBuffer buffer;
  QZJSONWriter writer(buffer);
  writer.Double(value);
  return buffer.GetString();
}

std::string ByLibrary(const std::string& text) {
  rapidjson::StringBuffer buffer;
  QZJSONWriter writer(buffer);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  return buffer.GetString();
}

template <class Put>
std::string Text(Put put) {
  QZJSONTextWriter out;
  put(out);
  return out.Take();
}

void ExpectAsLibrary(double value) {
  ASSERT_EQ(Text([&](QZJSONTextWriter& out) { out.Double(value); }), ByLibrary(value));
}

TEST(JSONTextWriter, DoublesAreWrittenAsTheLibraryDoes) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double value : {0.0, -0.0, 1.0, -2.5, 0.5, 1e-6, 5e-7, 1e-7, 123456.789, 999999999.999999, 1e9, 1e21, 1e22,
                             5e-324, 1.7976931348623157e308, 0.1 + 0.2, kInfinity, -kInfinity, std::nan("")}) {
    ASSERT_NO_FATAL_FAILURE(ExpectAsLibrary(value));
  }
  for (int exponent = -24; exponent < 32; ++exponent) {
    const double power = std::ldexp(1.0, exponent);
    for (const double value : {power, std::nextafter(power, 0.0), std::nextafter(power, kInfinity)}) {
      ASSERT_NO_FATAL_FAILURE(ExpectAsLibrary(value));
    }
  }
}

// Decimals of few digits take another road than doubles of many digits; neighbours lie on the border.
TEST(JSONTextWriter, DecimalsAndTheirNeighboursAreWrittenAsTheLibraryDoes) {
  std::mt19937_64 random(11);
  for (int i = 0; i < 100000; ++i) {
    const std::uint64_t digits = random() % (std::uint64_t{1} << (random() % 53));
    const double value = static_cast<double>(digits) / std::pow(10.0, static_cast<double>(random() % 9));
    ASSERT_NO_FATAL_FAILURE(ExpectAsLibrary(-value));
    ASSERT_NO_FATAL_FAILURE(ExpectAsLibrary(std::nextafter(value, 0.0)));
    ASSERT_NO_FATAL_FAILURE(ExpectAsLibrary(std::nextafter(value, 1e300)));
  }
}

TEST(JSONTextWriter, StringsAreWrittenAsTheLibraryDoes) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = "some longer text " + std::string(1, static_cast<char>(byte)) + "x";
    EXPECT_EQ(Text([&](QZJSONTextWriter& out) { out.String(text); }), ByLibrary(text)) << byte;
  }
  EXPECT_EQ(Text([](QZJSONTextWriter& out) { out.String(""); }), "\"\"");
}

TEST(JSONTextWriter, OtherTokensStandAsTheyAre) {
  const std::string text = Text([](QZJSONTextWriter& out) {
    out.Open("{\"a\":[", 2);
    out.Int(std::numeric_limits<long>::min());
    out.Raw(',');
    out.Unsigned(4294967295U);
    out.Raw(',');
    out.Bool(true);
    out.Raw(',');
    const auto here = out.Here();
    out.Open("[");
    out.Bool(false);
    out.Rewind(here);
    out.Null();
    out.Raw(',');
    out.Document("{\"b\":[]}");
    out.Close("]}", 2);
  });
  EXPECT_EQ(text, "{\"a\":[-9223372036854775808,4294967295,true,null,{\"b\":[]}]}");
}

TEST(JSONTextWriter, DocumentsCanBeKeptToOneLine) {
  QZJSONTextWriter out;
  out.Document("{\r\n}");
  out.KeepToOneLine();
  out.Document("{\r\n}");
  EXPECT_EQ(out.View(), "{\r\n}{  }");
  EXPECT_EQ(out.Take(), "{\r\n}{  }");
  out.Document("\n");
  EXPECT_EQ(out.Take(), "\n");
}

TEST(JSONTextWriter, BracketsAreCountedAlsoInsideDocuments) {
  const std::string open(static_cast<std::size_t>(kMaxJSONDepth) - 1, '[');
  const struct {
    const char* document;
    bool tooDeep;
  } cases[] = {{"[]", false},    {"[[]]", true}, {"{}{}", false}, {"[\"[[\\\"[\"]", false},
               {"}}]]{{", true}, {"1", false}};
  for (const auto& [document, tooDeep] : cases) {
    QZJSONTextWriter out;
    out.Open(open, open.size());
    out.Document(document);
    EXPECT_EQ(out.IsTooDeep(), tooDeep) << document;
  }
  QZJSONTextWriter out;
  for (int i = 0; i < 5; ++i) out.Open(open, open.size()), out.Close("", open.size());
  EXPECT_FALSE(out.IsTooDeep());
  out.Open("[" + open + "[", open.size() + 2);
  EXPECT_TRUE(out.IsTooDeep());
}

}  // namespace
}  // namespace QZSystem
