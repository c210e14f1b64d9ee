#include "qz/dataflow/recordjsonframe_impl.h"

#include <gtest/gtest.h>

#include <cstring>

#include "qz/dataflow/recordjson.h"
#include "tests/dataflow/bytes.h"
#include "tests/system/cli/messages.h"

namespace QZDataFlow {
namespace {

const char kAll[] =
    R"({"version":[1,0],"source id":"s \"1\"","fields":[)"
    R"({"name":"zeta","type":"Int","idx":1,"value":-7},)"
    R"({"name":"real","type":"Float","idx":3,"meta":{"options":["Units.Time.s"],"attributes":[["Limits.Lower",0.5]]},"value":0.25},)"
    R"({"name":"text","type":"String","idx":4,"nullable":true,"value":"a text of some length"},)"
    R"({"name":"b","type":"Bool","idx":5,"value":true},)"
    R"({"name":"none","type":"Blob","idx":6,"value":null},)"
    R"({"name":"ints","type":"IntVec","idx":7,"value":[1,null,-300]},)"
    R"({"name":"reals","type":"FloatVec","idx":8,"value":[0.5,null,1e-7]},)"
    R"({"name":"flags","type":"BoolVec","idx":9,"value":[true,null,false]},)"
    R"({"name":"texts","type":"StringVec","idx":10,"value":["x",null,"y\n"]}]})";

/// What a new record gets from a text: its bytes, and the warnings without their offsets.
std::string Read(const std::string& text) {
  Messages messages;
  QZRecord record;
  const bool read = QZRecordFromJSON(record, text);
  std::string told = messages.Take();
  told = told.substr(0, told.find("offset")) + (told.find(": ", told.find("offset")) == std::string::npos ? "" : "!");
  return (read ? "true " : "false ") + Hex(record.ToBytes()) + told;
}

/// The same on the road that every document can take: none that begins with a blank is like one before.
std::string ReadByParse(const std::string& text) { return Read(" " + text); }

bool IsLikeBefore(const std::string& text) {
  QZRecord record;
  return ReadLikeBefore(QZRecordImpl::Of(record), text);
}

/// Has the document remembered. After many that were of no use, only one in a while is.
void Remember(const std::string& text) {
  for (int i = 0; i < 100 && !IsLikeBefore(text); ++i) static_cast<void>(Read(text));
  ASSERT_TRUE(IsLikeBefore(text));
}

TEST(RecordJSONFrame, DocumentsThatLookAlikeAreReadAlike) {
  const std::string first = Read(kAll);
  ASSERT_NO_FATAL_FAILURE(Remember(kAll));
  EXPECT_EQ(first, ReadByParse(kAll));
  EXPECT_EQ(Read(kAll), first);
  const struct {
    const char *from, *to;
    bool alike;
  } cases[] = {
      {"-7}", "2147483647}", true},
      {"-7}", "null}", true},
      {"-7}", "2147483648}", false},
      {"0.25", "NaN", true},
      {"0.25", "1e400", false},
      {"a text", "\\u00e9\\\"", true},
      {"a text", "\\q", false},
      {"\"value\":true", "\"value\":false", true},
      {"\"value\":true", "\"value\":1", false},
      {"[1,null,-300]", "[]", true},
      {"[1,null,-300]", "[1,]", false},
      {"[1,null", "[1 ,null", false},
      {"1e-7", "\"x\"", false},
      {"null}", "\"00\"}", false},
      {R"("s \"1\"")", "null", false},
      {"\"idx\":3", "\"idx\":2", false},
      {"Units.Time.s", "Units.Time.ms", false},
      {"]}]}", "]}]}\n \t", true},
      {"]}]}", "]}]},", false},
      {"\"idx\":10,", "\"idx\":10,\"child\":{},", false},
  };
  for (const auto& [from, to, alike] : cases) {
    std::string text = kAll;
    ASSERT_NE(text.find(from), std::string::npos) << from;
    text.replace(text.find(from), std::strlen(from), to);
    EXPECT_EQ(IsLikeBefore(text), alike) << text;
    EXPECT_EQ(Read(text), ReadByParse(text)) << text;
  }
}

TEST(RecordJSONFrame, DamageIsToldAsByTheParse) {
  const std::string text = kAll;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::vector<std::string> damaged{text.substr(0, i)};
    for (const int mask : {1, 2, 16, 32}) {
      damaged.push_back(text);
      damaged.back()[i] = static_cast<char>(text[i] ^ mask);
    }
    ASSERT_NO_FATAL_FAILURE(Remember(text));
    for (const std::string& each : damaged) ASSERT_EQ(Read(each), ReadByParse(each)) << each;
  }
}

TEST(RecordJSONFrame, ManyShapesKeepApart) {
  for (int shape = 0; shape < 180; ++shape) {
    std::string fields;
    for (int i = 0; i <= shape % 7; ++i) {
      fields += std::string(i == 0 ? "" : ",") + R"({"name":"f)" + std::to_string(i * 100 + shape % 60) +
                R"(","type":"Int","idx":)" + std::to_string(i + 1) + ",\"value\":" + std::to_string(shape) + "}";
    }
    const std::string text = R"({"version":[1,0],"fields":[)" + fields + "]}";
    QZRecord record;
    ASSERT_TRUE(QZRecordFromJSON(record, text));
    ASSERT_EQ(Read(text), ReadByParse(text));
    ASSERT_EQ(QZRecordToJSON(record), text);
  }
}

TEST(RecordJSONFrame, OnlyARecordThatHoldsNothingIsReplaced) {
  const QZField<long> field("own");
  ASSERT_NO_FATAL_FAILURE(Remember(kAll));
  QZRecord withField, withMeta, withUnknown;
  withField.SetValue(field, 5);
  ASSERT_TRUE(QZRecordFromJSON(withField, kAll));
  EXPECT_EQ(withField.GetValue(field), 5);
  EXPECT_EQ(withField.GetFields().size(), 10U);
  withMeta.SetRecordMeta(QZRecordMeta().SetAttribute(0x01000002, "note"));
  ASSERT_TRUE(QZRecordFromJSON(withMeta, kAll));
  EXPECT_EQ(withMeta.GetRecordMeta().GetStrAttribute(0x01000002), "note");
  const std::vector<unsigned char> unknown = FromHex("09 72 65 63 6F 72 64 2E 76 31 06 01 78 03 02 61 62");
  ASSERT_TRUE(withUnknown.FromBytes(unknown));
  ASSERT_TRUE(QZRecordFromJSON(withUnknown, kAll));
  EXPECT_NE(Hex(withUnknown.ToBytes()).find("01 78 03 02 61 62"), std::string::npos);
}

// A handler that is registered between two documents may claim a type name with a colon.
TEST(RecordJSONFrame, WrappedTypesAreNotRemembered) {
  const std::string text = R"({"version":[1,0],"fields":[{"name":"a","type":"w:Int","idx":1,"value":1}]})";
  for (int i = 0; i < 100; ++i) static_cast<void>(Read(text));
  EXPECT_FALSE(IsLikeBefore(text));
}

}  // namespace
}  // namespace QZDataFlow
