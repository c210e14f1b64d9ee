#include "qz/dataflow/recordjson.h"

#include <gtest/gtest.h>

#include <limits>

#include "qz/dataflow/fieldtype.h"
#include "qz/dataflow/readbuffer.h"
#include "qz/dataflow/recordbytes.h"
#include "tests/dataflow/bytes.h"
#include "tests/system/cli/messages.h"
#include "tests/system/qzb/smallstack.h"

namespace QZDataFlow {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned int kPrecision = 0x06020002;
constexpr unsigned int kAuthor = 0x02000002;
constexpr unsigned int kErrorsFor = 0x07000002;
constexpr unsigned int kLower = 0x09000001;

/// A document with these fields.
std::string Document(const std::string& fields) { return "{\"version\":[1,0],\"fields\":[" + fields + "]}"; }

/// A field "a" of that type, with a value unless its text is empty.
std::string Field(const std::string& type, const std::string& value) {
  return "{\"name\":\"a\",\"type\":\"" + type + "\",\"idx\":1" + (value.empty() ? "" : ",\"value\":" + value) + "}";
}

/// What is read from a document and written again, and the messages.
std::string Again(const std::string& document) {
  Messages messages;
  QZRecord record;
  const bool read = QZRecordFromJSON(record, document);
  return (read ? "" : "false ") + QZRecordToJSON(record) + messages.Take();
}

std::string Warning(const std::string& text) { return "Warning: " + text + "\n"; }

class MolHandler : public QZFieldTypeHandler {
 public:
  std::string GetName() const override { return "Molecule"; }
  std::string BytesToJSON(const Bytes& bytes) const override { return std::string(bytes.begin(), bytes.end()); }
  Bytes JSONToBytes(const std::string& json) const override { return Bytes(json.begin(), json.end()); }
};

class MuteHandler : public QZFieldTypeHandler {
 public:
  std::string GetName() const override { return "Mute"; }
};

// A handler of a name that is there already is dropped.
void RegisterHandlers() {
  auto& registry = QZFieldTypeHandlerRegistry::GetInstance();
  registry.RegisterHandler(new MolHandler, 0);
  registry.RegisterHandler(new MuteHandler, 0);
}

QZRecord Sample() {
  QZRecord record;
  QZFieldMeta smiles, energy;
  smiles.SetOption(0x05010002);
  energy.SetOption(0x08020007).SetAttribute(kPrecision, 3);
  record.SetSourceID("s1");
  record.SetValue(QZField<long>("count"), 7);
  record.SetValue(QZField<std::string>("name", smiles), "x");
  record.SetValue(QZField<double>("score", energy, false, true), 0.5);
  record.SetValue(QZField<Bytes>("bits"), Bytes{1, 2, 3, 4, 5});
  record.SetValue(QZField<QZRange>("span"), QZRange(0.5, 2.0, 2));
  record.SetValue(QZVectorField<long>("ids"), std::vector<std::optional<long>>{1, std::nullopt, 3});
  record.SetValue(QZField<long>("gone"), std::nullopt);
  return record;
}

const std::string& SampleText() {
  static const std::string text =
      R"({"version":[1,0],"source id":"s1","fields":[)"
      R"({"name":"count","type":"Int","idx":1,"value":7},)"
      R"({"name":"name","type":"String","idx":2,"meta":{"options":["Hints.Chem.SMILES"]},"value":"x"},)"
      R"({"name":"score","type":"Float","idx":3,"meta":{"options":["Units.Energy.kCal_per_mol"],)"
      R"("attributes":[["Display.Values.Precision",3]]},"nullable":true,"value":0.5},)"
      R"({"name":"bits","type":"Blob","idx":4,"value":"0RjUA1p"},)"
      R"({"name":"span","type":"Range","idx":5,"value":[0.5,2.0,0.0,2.0]},)"
      R"({"name":"ids","type":"IntVec","idx":6,"value":[1,null,3]},)"
      R"({"name":"gone","type":"Int","idx":7,"value":null}]})";
  return text;
}

TEST(RecordJSON, TheDocumentOfARecordAndBack) {
  const QZRecord record = Sample();
  QZRecord same;
  same = record;
  same.SetSourceID("s1");
  EXPECT_EQ(QZRecordToJSON(same), SampleText());
  QZRecord read;
  ASSERT_TRUE(QZRecordFromJSON(read, SampleText() + "\n"));
  EXPECT_EQ(QZRecordToBytes(read), QZRecordToBytes(same));
  EXPECT_EQ(QZRecordToJSON(QZRecord()), Document(""));
}

TEST(RecordJSON, ValuesOfEveryTypeComeBackAsTheyWere) {
  const std::string cases[] = {
      "Int -2147483648",
      "Float 0.1",
      "Float NaN",
      "Float -Infinity",
      R"(String "a\"\\\n\u0000é")",
      "Bool true",
      R"(Blob "")",
      "Range [null,5.0,1.0,3.0]",
      "Range [null,null,0.0,0.0]",
      R"(JSONObject {"b":[1,{"a":NaN}],"a":null})",
      "Link {}",
      "IntVec [-1,null,2147483647]",
      "FloatVec [0.5,null,NaN,1e22]",
      R"(StringVec ["",null,"x\\"])",
      "BoolVec [true,null,false]",
      R"(BlobVec ["{{",null,""])",
      R"(Record {"version":[1,0],"source id":"in","fields":[{"name":"b","type":"Int","idx":1,"value":1}]})",
      R"(RecordVec [{"version":[1,0],"fields":[]},null])",
      R"(Molecule {"atoms":[1]})",
      "vec:Int 5",
      "Nobody null"};
  RegisterHandlers();
  for (const std::string& each : cases) {
    const std::size_t blank = each.find(' ');
    const std::string document = Document(Field(each.substr(0, blank), each.substr(blank + 1)));
    EXPECT_EQ(Again(document), document);
  }
}

TEST(RecordJSON, ValuesTakeTheirOwnForm) {
  const struct {
    const char *type, *value, *written;
  } cases[] = {
      {"Int", "", "0"},
      {"Float", "3", "3.0"},
      {"Float", "4294967296", "4294967296.0"},
      {"String", "", R"("")"},
      {"Blob", "", R"("")"},
      {"Range", "", "[null,null,0.0,0.0]"},
      {"Range", "[1,2,0,1,3]", "[null,null,0.0,0.0]"},
      {"Range", "[1,2,7,1]", "[null,2.0,1.0,1.0]"},
      {"Range", "[1,2,-7,1]", "[1.0,null,-1.0,1.0]"},
      {"Range", R"([1,"x",2,2])", "[null,null,0.0,0.0]"},
      {"Range", "[3,2,0,0]", "[null,null,0.0,0.0]"},
      {"JSONObject", "", "null"},
      {"JSONObject", R"({ "a" : [ 1 ] })", R"({"a":[1]})"},
      {"IntVec", "", "[]"},
      {"IntVec", "[2147483648,4294967295,-9223372036854775808,18446744073709551615]", "[-2147483648,-1,0,-1]"},
      {"Record", "", R"({"version":[1,0],"fields":[]})"},
      {"Molecule", R"("{\"a\":1}")", R"({"a":1})"},
      {"Molecule", R"("")", "null"},
      {"Mute", "{}", "null"},
      {"Nobody", "1", "null"},
  };
  RegisterHandlers();
  for (const auto& [type, value, written] : cases) {
    const std::string again = Again(Document(Field(type, value)));
    EXPECT_EQ(again.substr(0, again.find("Warning")), Document(Field(type, written))) << type << ' ' << value;
  }
  EXPECT_EQ(Again(Document(Field("Nobody", ""))), Document(Field("Nobody", "")));
}

TEST(RecordJSON, ValuesOfTheWrongKindMakeTheFieldNull) {
  const struct {
    const char *type, *value, *message;
  } cases[] = {
      {"Int", "2147483648", "JSON: expects type of: integer, key: value"},
      {"Int", "1.0", "JSON: expects type of: integer, key: value"},
      {"Float", "\"1\"", "JSON: expects type of: Double, key: value"},
      {"String", "1", "JSON: expects type of: string, key: value"},
      {"Bool", "1", "JSON: expects type of: boolean, key: value"},
      {"Blob", "\"00 00\"", "Base85: invalid character at offset 2"},
      {"Range", "{}", "JSON: must be an array type, key: value"},
      {"JSONObject", "[]", "JSON: must be an object type, key: value"},
      {"Record", "[]", "JSON: must be an object type, key: value"},
      {"IntVec", "[1,2.0]", "JSON: expects type of: integer, key: value"},
      {"FloatVec", "[1.0,\"x\"]", "JSON: expects type of: Double, key: value"},
      {"StringVec", "[\"x\",1]", "JSON: expects type of: string, key: value"},
      {"BoolVec", "[0]", "JSON: expects type of: boolean, key: value"},
      {"BlobVec", "[[]]", "JSON: expects type of: string, key: value"},
      {"BlobVec", "[\"00\",\"~~~~~\"]", "Base85: invalid character at offset 0"},
      {"RecordVec", "[null,1]", "JSON: must be an object type, key: value"},
  };
  for (const auto& [type, value, message] : cases) {
    EXPECT_EQ(Again(Document(Field(type, value))), Document(Field(type, "null")) + Warning(message)) << value;
  }
  RegisterHandlers();
  EXPECT_EQ(Again(Document(Field("Molecule", "1"))),
            Document("") + Warning("Only objects, arrays of objects, and strings allowed for user field types"));
}

TEST(RecordJSON, WhatIsNoRecordIsRefusedAndWhatWasReadStays) {
  const std::string field = Field("Int", "1");
  const struct {
    std::string text, result;
  } cases[] = {
      {"", "false " + Document("") + Warning("JSON: parse error offset 0: The document is empty.")},
      {"[]", "false " + Document("") + Warning("JSON: Top level document must be an object")},
      {R"({"fields":[]})", "false " + Document("") + Warning("JSON: missing required attribute, key: version")},
      {R"({"version":1})", "false " + Document("") + Warning("JSON: must be an array type, key: version")},
      {R"({"version":[1]})", "false " + Document("")},
      {R"({"version":["x",{}]})", Document("")},
      {R"({"version":[9,9],"source id":1})",
       "false " + Document("") + Warning("JSON: expects type of: string, key: source id")},
      {R"({"version":[1,0],"fields":{}})",
       "false " + Document("") + Warning("JSON: must be an array type, key: fields")},
      {Document(field + ",1," + Field("String", "\"x\"")), "false " + Document(field)},
      {Document(R"({"type":"Int","idx":1})"), Document("") + Warning("JSON: missing required attribute, key: name")},
      {Document(R"({"name":"a","type":1,"idx":1})"),
       Document("") + Warning("JSON: expects type of: string, key: type")},
      {Document(R"({"name":"a","type":"Int","idx":-1})"),
       Document("") + Warning("JSON: expects type of: unsigned, key: idx")},
      {Document(R"({"name":"a","type":"","idx":1,"value":1})"), Document("")},
      {Document(R"({"name":"a","type":"Int","idx":1,"meta":[],"nullable":1,"child":1,"value":null})"),
       Document(Field("Int", "null")) + Warning("JSON: must be an object type, key: meta") +
           Warning("JSON: expects type of: boolean, key: nullable") +
           Warning("JSON: must be an object type, key: child")},
  };
  for (const auto& [text, result] : cases) EXPECT_EQ(Again(text), result) << text;
}

TEST(RecordJSON, FieldsAreAddedAndTakeTheNextIndex) {
  QZRecord record;
  const std::string two =
      R"({"name":"b","type":"Int","idx":1,"value":1},{"name":"a","type":"Int","idx":5,"nullable":false,"value":2})";
  ASSERT_TRUE(QZRecordFromJSON(record, Document(two)));
  ASSERT_TRUE(QZRecordFromJSON(record, Document(R"({"name":"b","type":"String","idx":1,"value":"x"})")));
  EXPECT_EQ(QZRecordToJSON(record), Document(R"({"name":"a","type":"Int","idx":2,"value":2},)"
                                             R"({"name":"b","type":"String","idx":3,"value":"x"})"));
  EXPECT_EQ(Again(Document(R"({"name":"a","type":"Int","idx":9,"nullable":true})")),
            Document(R"({"name":"a","type":"Int","idx":1,"nullable":true,"value":0})"));
}

TEST(RecordJSON, BytesThatDontDecodeAreTheDefault) {
  const struct {
    const char *type, *bytes, *written;
  } cases[] = {
      {"Int", "01 00 00 00 00 00 00 00 00", "0"},
      {"Float", "00", "0.0"},
      {"Range", "78", "[null,null,0.0,0.0]"},
      {"JSONObject", "5B 5D", "null"},
      {"FloatVec", "02 00 00 00 00 00 00 E0 3F", "[]"},
      {"StringVec", "02 01 61 05", "[]"},
      {"RecordVec", "05 00", "[]"},
      {"Record", "78", R"({"version":[1,0],"fields":[]})"},
  };
  Messages messages;
  for (const auto& [type, bytes, written] : cases) {
    QZRecord record;
    ASSERT_TRUE(QZRecordFromJSON(record, Document(Field(type, "null"))));
    record.SetBytes(record.GetFields().front(), FromHex(bytes));
    EXPECT_EQ(QZRecordToJSON(record), Document(Field(type, written))) << type;
  }
}

TEST(RecordJSON, ARecordThatIsDamagedInsideShowsNothingOfIt) {
  const QZField<QZRecord> field("a");
  QZRecord inner, record;
  inner.SetValue(QZField<long>("n"), 5);
  Bytes bytes = inner.ToBytes();
  bytes.at(bytes.size() - 2) = 9;  // the length of the last value
  record.SetBytes(field, bytes);
  EXPECT_EQ(QZRecordToJSON(record.GetValue(field)), Document(""));
  EXPECT_EQ(QZRecordToJSON(record), Document(Field("Record", Document(""))));
}

TEST(RecordJSON, DecodedValuesCount) {
  QZRecord record;
  const QZField<long> number("a");
  record.AddToCache(number, std::make_shared<long>(5));
  EXPECT_EQ(QZRecordToJSON(record), Document(Field("Int", "5")));
  *std::static_pointer_cast<long>(record.CheckCache(number)) = 6;
  record.MarkCacheDirty(number);
  EXPECT_EQ(QZRecordToJSON(record), Document(Field("Int", "6")));
  record.SetValue(number, std::numeric_limits<long>::min());
  EXPECT_EQ(QZRecordToJSON(record), Document(Field("Int", "-9223372036854775808"))) << "in full";
}

const char kChildren[] =
    R"({"name":"m","type":"Int","idx":8,"child":{"a":{"version":[1,0],"fields":[{"name":"n","type":"Int","idx":1,"value":1}]},)"
    R"("":{"version":[1,0],"fields":[{"name":"n","type":"Int","idx":1,"value":2}]}},"value":2})";

TEST(RecordJSON, ChildRecordsStandUnderTheirKeysAndTheFieldsOwnIndex) {
  const QZField<long> field("m"), number("n");
  QZRecord record;
  ASSERT_TRUE(QZRecordFromJSON(record, Document(kChildren)));
  EXPECT_EQ(record.GetFieldIdx(field), 1U);
  EXPECT_EQ(record.GetChildRecords(field).size(), 2U);
  EXPECT_EQ(record.GetChildRecord(field, "a")->GetValue(number), 1);
  const std::string text = QZRecordToJSON(record);
  EXPECT_EQ(text,
            Document(R"({"name":"m","type":"Int","idx":1,"child":{)"
                     R"("":{"version":[1,0],"fields":[{"name":"n","type":"Int","idx":1,"value":2}]},)"
                     R"("a":{"version":[1,0],"fields":[{"name":"n","type":"Int","idx":1,"value":1}]}},"value":2})"));
  record.GetChildRecord(field, "a")->SetValue(number, 3);
  EXPECT_NE(QZRecordToJSON(record), text) << "a child that was changed in place";
  record.SetValue(field, std::nullopt);
  EXPECT_EQ(Again(QZRecordToJSON(record)), Document(R"({"name":"m","type":"Int","idx":1,"value":null})"));
  EXPECT_EQ(
      Again(Document(R"({"name":"m","type":"Int","idx":1,"child":{"a":1},"value":2})")),
      Document(R"({"name":"m","type":"Int","idx":1,"value":2})") + Warning("JSON: must be an object type, key: child"));
}

TEST(FieldMetaJSON, NamesOptionsAndAttributes) {
  QZFieldMeta meta;
  EXPECT_EQ(QZFieldMetaToJSON(meta), "{}");
  meta.SetOptions({0x0500FFFF, 0x04000001}).AddAttribute(kErrorsFor, "b").AddAttribute(kErrorsFor, "a\n");
  meta.SetAttribute(kLower, 0.5).SetAttribute(kPrecision, -3);
  meta.AddAttributeBytes(0x02001234, {1, 'x'});
  meta.AddAttributeBytes(0x04000002, {1, 'x'});
  const std::string text =
      R"({"options":["Flags.ID",""],"attributes":[["Flags.Deprecated"],["Display.Values.Precision",-3],)"
      R"(["Relations.ErrorsFor","b"],["Relations.ErrorsFor","a\n"],["Limits.Lower",0.5]]})";
  EXPECT_EQ(QZFieldMetaToJSON(meta), text);
  QZFieldMeta read;
  ASSERT_TRUE(QZFieldMetaFromJSON(read, text, true));
  EXPECT_EQ(QZFieldMetaToJSON(read),
            R"({"options":["Flags.ID"],"attributes":[["Display.Values.Precision",-3],)"
            R"(["Relations.ErrorsFor","b"],["Relations.ErrorsFor","a\n"],["Limits.Lower",0.5]]})");
  read.Clear();
  read.AddAttributeBytes(0x02001234, {1, 'x'});
  EXPECT_EQ(QZFieldMetaToJSON(read), R"({"attributes":[]})");
}

TEST(FieldMetaJSON, AddsOptionsAndReplacesAttributes) {
  QZFieldMeta meta;
  meta.SetOptions({0x08040001, 0x04000001}).AddAttribute(kAuthor, "x").AddAttribute(kAuthor, "y");
  const std::string text = R"({"attributes":[["Annotation::Author","b"],["Annotation.Author","a"],["Limits.Lower",2]],)"
                           R"("options":["Units.Time.ms","Nothing"]})";
  ASSERT_TRUE(QZFieldMetaFromJSON(meta, text, false));
  EXPECT_EQ(QZFieldMetaToJSON(meta),
            R"({"options":["Flags.ID","Units.Time.ms"],"attributes":[["Annotation.Author","a"],)"
            R"(["Annotation.Author","b"],["Limits.Lower",2.0]]})");
  ASSERT_TRUE(QZFieldMetaFromJSON(meta, R"({"options":[]})", true));
  EXPECT_TRUE(meta.IsEmpty());
}

TEST(FieldMetaJSON, PassesOverWhatIsNoElement) {
  const struct {
    const char *text, *result, *key;
    std::size_t warnings;
  } cases[] = {
      {R"({"options":["Flags.ID",1,null,[]]})", R"({"options":["Flags.ID"]})", "options", 3},
      {R"({"attributes":[1,[],[1,2],["Limits.Lower"],["Limits.Lower","x"],["Limits.Lower",3,4]]})",
       R"({"attributes":[["Limits.Lower",3.0]]})", "attributes", 5},
      {R"({"attributes":[["Annotation.Author",1],["Display.Values.Priority",1.0],["Display.Values.Priority",1e9]]})",
       "{}", "attributes", 3},
      {R"({"attributes":[["Nothing"],["Flags.ID",{}]]})", "{}", "attributes", 0},
  };
  Messages messages;
  for (const auto& [text, result, key, warnings] : cases) {
    QZFieldMeta meta;
    EXPECT_TRUE(QZFieldMetaFromJSON(meta, text, true)) << text;
    EXPECT_EQ(QZFieldMetaToJSON(meta), result) << text;
    std::string expected;
    for (std::size_t i = 0; i < warnings; ++i)
      expected += Warning("JSON: expects type of: string, key: " + std::string(key));
    EXPECT_EQ(messages.Take(), expected) << text;
  }
  QZFieldMeta meta;
  meta.SetOption(0x04000001);
  EXPECT_TRUE(QZFieldMetaFromJSON(meta, R"({"options":1,"attributes":{}})", false));
  EXPECT_EQ(messages.Take(), Warning("JSON: must be an array type, key: options") +
                                 Warning("JSON: must be an array type, key: attributes"));
  EXPECT_FALSE(QZFieldMetaFromJSON(meta, "{", true));
  EXPECT_EQ(QZFieldMetaToJSON(meta), R"({"options":["Flags.ID"]})") << "text that isn't JSON changes nothing";
}

/// `levels` records inside each other, as the values of a type, or as children under the type "child".
std::string Nested(const std::string& type, int levels) {
  const std::string in = type == "child" ? R"(Int","idx":1,"child":{"k":)" : type + R"(","idx":1,"value":)";
  const std::string tail = type == "child" ? R"(},"value":1}]})" : type == "Record" ? "}]}" : "]}]}";
  std::string text = Document(Field("Int", "1"));
  for (int i = 1; i < levels; ++i)
    text = R"({"version":[1,0],"fields":[{"name":"a","type":")" + in + (type == "RecordVec" ? "[" : "") + text + tail;
  return text;
}

TEST(RecordJSON, RecordsNestToALimitThatReaderAndWriterShare) {
  for (const char* type : {"Record", "RecordVec", "child"}) {
    OnSmallStack([type] {
      Messages messages;
      QZRecord record;
      const std::string deepest = Nested(type, 256);
      EXPECT_TRUE(QZRecordFromJSON(record, deepest));
      EXPECT_EQ(QZRecordToJSON(record), deepest) << type;
      EXPECT_EQ(messages.Take(), "") << type;
      QZRecord outer;
      outer.SetValue(QZField<QZRecord>("o"), record);
      EXPECT_EQ(QZRecordToJSON(outer), "");
      EXPECT_EQ(messages.Take(), Warning("JSON: record nests too deep to be written")) << type;
      if (type != std::string("Record")) return;
      QZRecord tooDeep;
      EXPECT_TRUE(QZRecordFromJSON(tooDeep, Nested(type, 257)));
      EXPECT_EQ(messages.Take(), Warning("JSON: record nests too deep to be read"));
      EXPECT_NE(QZRecordToJSON(tooDeep).find(Field("Record", "null")), std::string::npos);
    });
  }
}

TEST(RecordJSON, BracketsOfTextThatStandsAsItIsCount) {
  const std::string open(1020, '['), close(1020, ']');
  const QZField<QZJSONObject> field("a");
  QZRecord record;
  record.SetValue(field, QZJSONObject("{\"b\":" + open + close + "}"));
  const std::string text = QZRecordToJSON(record);
  EXPECT_EQ(Again(text), text);
  Messages messages;
  record.SetValue(field, QZJSONObject("{\"b\":[" + open + close + "]}"));
  EXPECT_EQ(messages.Take(), "");
  EXPECT_EQ(QZRecordToJSON(record), "");
  EXPECT_EQ(messages.Take(), Warning("JSON: record nests too deep to be written"));
}

// Whatever happens to a document, reading ends, and what it gives can be written and read again.
TEST(RecordJSON, DamagedDocumentsGiveRecordsThatCanBeWritten) {
  Messages messages;
  const std::string good = SampleText();
  const std::string other =
      Document(std::string(kChildren) + R"(,{"name":"f","type":"FloatVec","idx":2,"value":[0.5,-1e-9]})");
  // The first writing loses the children of null fields.
  const auto again = [](const std::string& text) {
    QZRecord record;
    static_cast<void>(QZRecordFromJSON(record, text));
    return QZRecordToJSON(record);
  };
  for (const std::string& text : {good, other}) {
    for (std::size_t i = 0; i < 4 * text.size(); ++i) {
      std::string damaged = text;
      const std::size_t at = i / 4;
      const int flips[] = {0, 1, 32, 128};
      damaged[at] = static_cast<char>(text[at] ^ flips[i % 4]);
      if (i % 4 == 0) damaged.resize(at);
      const std::string written = again(again(damaged));
      ASSERT_FALSE(written.empty()) << damaged;
      ASSERT_EQ(again(written), written) << damaged;
    }
  }
}

}  // namespace
}  // namespace QZDataFlow
