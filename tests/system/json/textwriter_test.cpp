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

template <class Put>
std::string Text(Put put) {
  QZJSONTextWriter out;
  put(out);
  return out.Take();
}

template <class Put>
std::string ByLibrary(Put put) {
  rapidjson::StringBuffer buffer;
  QZJSONWriter writer(buffer);
  put(writer);
  return buffer.GetString();
}

void ExpectAsLibrary(double value) {
  const auto put = [value](auto& out) { out.Double(value); };
  ASSERT_EQ(Text(put), ByLibrary(put));
}

TEST(JSONTextWriter, DoublesAreWrittenAsTheLibraryDoes) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double value : {0.0, -0.0, 1.0, -2.5, 1e-6, 5e-7, 1e-7, 999999999.999999, 1e9, 1e21, 1e22, 5e-324,
                             1.7976931348623157e308, 0.1 + 0.2, kInfinity, -kInfinity, std::nan("")})
    ASSERT_NO_FATAL_FAILURE(ExpectAsLibrary(value));
  for (int exponent = -24; exponent < 32; ++exponent) {
    const double power = std::ldexp(1.0, exponent);
    for (const double value : {power, std::nextafter(power, 0.0), std::nextafter(power, kInfinity)})
      ASSERT_NO_FATAL_FAILURE(ExpectAsLibrary(value));
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
    EXPECT_EQ(Text([&](auto& out) { out.String(text); }),
              ByLibrary([&](auto& out) { out.String(text.data(), static_cast<rapidjson::SizeType>(text.size())); }))
        << byte;
  }
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
  EXPECT_EQ(out.Take(), "{\r\n}{  }");
  out.Document("\n");
  EXPECT_EQ(out.View(), "\n");
}

TEST(JSONTextWriter, BracketsAreCountedAlsoInsideDocuments) {
  const std::string open(static_cast<std::size_t>(kMaxJSONDepth) - 1, '[');
  for (const auto& [document, tooDeep] :
       {std::pair{"[]", false}, {"[[]]", true}, {"{}{}", false}, {R"(["[[\"["])", false}, {"}}]]{{", true}}) {
    QZJSONTextWriter out;
    for (int i = 0; i < 2; ++i) out.Open(open, open.size()), out.Close("", open.size());
    out.Open(open, open.size());
    out.Document(document);
    EXPECT_EQ(out.IsTooDeep(), tooDeep) << document;
  }
}

}  // namespace
}  // namespace QZSystem
