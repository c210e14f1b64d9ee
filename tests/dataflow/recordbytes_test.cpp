// The stored form of a record, byte by byte.

#include "qz/dataflow/recordbytes.h"

#include <gtest/gtest.h>

#include "bytes.h"
#include "qz/dataflow/buffer.h"
#include "recordmodel.h"

namespace {

using namespace RecordTesting;

constexpr char kHead[] = "09 72 65 63 6F 72 64 2E 76 31 ";              // "record.v1"
constexpr char kVersion[] = "07 76 65 72 73 69 6F 6E 04 03 31 2E 30 ";  // "version", "1.0"
const std::string kFields = "06 66 69 65 6C 64 73 ";                    // "fields"
constexpr char kMeta[] = "04 6D 65 74 61 ";                             // "meta"
constexpr char kData[] = "04 64 61 74 61 ";                             // "data"

std::string Text(const Bytes& bytes) { return Hex(bytes) + ' '; }

/// A record of the sections given, after the length of all of them.
Bytes Whole(const std::string& sections) {
  QZWriteBuffer out("record.v1");
  out.Append(FromHex(sections));
  Bytes bytes;
  out.CopyWrapped(bytes, true);
  return bytes;
}

/// The sections of the record that these sections are read to.
std::string Rewritten(const std::string& sections) {
  QZRecord record;
  EXPECT_TRUE(QZRecordFromBytes(record, Whole(sections))) << sections;
  const std::string text = Text(record.ToBytes());
  EXPECT_EQ(text, Text(Whole(text.substr(text.find("07 76 65 72"))))) << sections;
  return text.substr(text.find("07 76 65 72"));
}

QZRecord Example() {
  QZRecord record;
  record.SetValue(QZField<long>("count"), 7);
  record.SetValue(QZField<std::string>("name", QZFieldMeta().SetOption(0x05010002)), "x");
  record.SetSourceID("s1");
  return record;
}

const std::string& ExampleText() {
  static const std::string text = std::string(kHead) + "54 " + kVersion + kFields +
                                  "1A 05 63 6F 75 6E 74 01 03 49 6E 74 00 04 6E 61 6D 65 02 06 53 74 72 69 6E 67 00 " +
                                  kMeta + "13 02 01 84 02 00 01 05 00 00 00 01 84 01 00 00 01 02 73 31 " + kData +
                                  "06 01 01 07 02 01 78 ";
  return text;
}

TEST(RecordBytes, RecordsHaveTheseBytes) {
  QZRecord empty, nulls, order;
  nulls.SetValue(QZField<long>("n"), std::nullopt);
  nulls.SetBytes(QZField<std::string>("e"), Bytes());
  nulls.AddField(QZField<long>("without", {}, false, true));
  order.SetValue(QZField<long>("z"), 300);
  order.SetValue(QZField<bool>("a"), true);
  const struct {
    const QZRecord& record;
    std::string text;
  } cases[] = {
      {empty, std::string(kHead) + "0D " + kVersion},
      {Example(), ExampleText()},
      {nulls, std::string(kHead) + "40 " + kVersion + kFields +
                  "21 01 65 02 06 53 74 72 69 6E 67 00 01 6E 01 03 49 6E 74 00 "
                  "07 77 69 74 68 6F 75 74 03 03 49 6E 74 01 " +
                  kData + "04 02 00 01 80 "},
      {order, std::string(kHead) + "33 " + kVersion + kFields +
                  "11 01 61 02 04 42 6F 6F 6C 00 01 7A 01 03 49 6E 74 00 " + kData + "07 02 01 00 01 02 2C 01 "},
  };
  for (const auto& [record, text] : cases) {
    EXPECT_EQ(Text(record.ToBytes()), text);
    QZRecord read;
    EXPECT_TRUE(read.FromBytes(FromHex(text))) << text;
    EXPECT_EQ(Text(QZRecordToBytes(read)), text);
  }
}

TEST(RecordBytes, WhatIsReadMeansWhatWasWritten) {
  QZRecord record;
  ASSERT_TRUE(record.FromBytes(FromHex(ExampleText())));
  EXPECT_EQ(record.GetSourceID(), "s1");
  EXPECT_EQ(record.GetValue(QZField<long>("count")), 7);
  EXPECT_EQ(record.GetValue(QZField<std::string>("name")), "x");
  EXPECT_TRUE(record.GetFieldMeta("name").HasOption(0x05010002));
  EXPECT_TRUE(record.GetFieldMeta("count").IsEmpty());
  // A second record of the same kind, but without the metadata of the first.
  const std::string fields = ExampleText().substr(3 * 24, 3 * 34);
  ASSERT_TRUE(record.FromBytes(Whole(kVersion + fields + kData + "03 02 01 79 ")));
  EXPECT_TRUE(record.GetFieldMeta("name").IsEmpty() && record.GetSourceID().empty());
  EXPECT_EQ(record.GetValue(QZField<std::string>("name")), "y");
  EXPECT_FALSE(record.HasValue(QZField<long>("count")));
}

TEST(RecordBytes, CutAnywhereItIsRefused) {
  const Bytes whole = FromHex(ExampleText());
  QZRecord record = Example();
  EXPECT_FALSE(QZRecordFromBytes(record, {}));
  EXPECT_FALSE(record.IsEmpty()) << "no bytes leave it alone";
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_FALSE(record.FromBytes(Bytes(whole.data(), whole.data() + size))) << size;
  Bytes longer = whole;
  longer.push_back(1);
  EXPECT_TRUE(record.FromBytes(longer)) << "what stands behind a record is of no concern";
  EXPECT_EQ(record.ToBytes(), whole);
}

TEST(RecordBytes, AnyFlippedByteReadsAsThePlainMapsDo) {
  const Bytes whole = FromHex(ExampleText());
  QZRecord record;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const unsigned int flip : {0x01u, 0x02u, 0x10u, 0x80u, 0xFFu}) {
      Bytes bytes = whole;
      bytes[at] = static_cast<unsigned char>(bytes[at] ^ flip);
      RecordModel model;
      ASSERT_TRUE(record.FromBytes(whole));
      EXPECT_EQ(record.FromBytes(bytes), model.FromBytes(bytes)) << at << ' ' << flip;
      EXPECT_EQ(Hex(record.ToBytes()), Hex(model.ToBytes())) << at << ' ' << flip;
    }
  }
}

TEST(RecordBytes, VersionsAreNumbersOrRefused) {
  const auto reads = [](const char* version) {
    QZWriteBuffer section("version"), out("record.v1");
    section.WriteString(version);
    section.CopyWrapped(out);
    Bytes bytes;
    out.CopyWrapped(bytes);
    return QZRecord().FromBytes(bytes);
  };
  for (const char* version : {"1.0", "1", "", "text", "2.7.x", "1x.0y", " +1.-0", "2147483647.-2147483648"})
    EXPECT_TRUE(reads(version)) << version;
  for (const char* version : {"1.", ".0", ".", "a.0", "1.b", "1..2", "2147483648.0"})
    EXPECT_FALSE(reads(version)) << version;
  for (const char* damaged : {"01 80 ", "01 05 ", "02 82 10 "}) {
    QZRecord record;
    EXPECT_FALSE(record.FromBytes(Whole(std::string("07 76 65 72 73 69 6F 6E ") + damaged))) << damaged;
  }
}

TEST(RecordBytes, UnknownSectionsStayByteForByteBehindTheKnown) {
  const std::string field = kFields + "08 01 61 01 03 49 6E 74 00 ";
  for (const char* unknown : {
           "03 6E 65 77 03 02 AA BB ",    // a blob
           "03 6E 65 77 02 AA BB ",       // no blob
           "03 6E 65 77 00 ",             // nothing
           "00 00 ",                      // without a name
           "81 03 6E 65 77 82 01 00 AA "  // lengths that nobody writes
       }) {
    for (const std::string& read : {kVersion + field + unknown, unknown + std::string(kVersion) + field,
                                    kVersion + std::string(unknown) + field}) {
      EXPECT_EQ(Rewritten(read), kVersion + field + unknown);
    }
    EXPECT_EQ(Rewritten(std::string(kVersion) + unknown + unknown), std::string(kVersion) + unknown + unknown);
    QZRecord record;
    ASSERT_TRUE(record.FromBytes(Whole(kVersion + field + unknown)));
    record.SetValue(QZField<long>("a"), 5);
    EXPECT_EQ(Text(record.ToBytes()), Text(Whole(kVersion + field + kData + "03 01 01 05 " + unknown)));
  }
}

TEST(RecordBytes, FormsThatNobodyWritesAreWrittenProperly) {
  const std::string fields = kFields + "10 01 61 01 03 49 6E 74 00 01 62 02 03 49 6E 74 00 ";
  const std::string data = std::string(kData) + "06 01 01 05 02 01 06 ";
  const std::string proper = kVersion + fields + data;
  for (const std::string& form :
       {kVersion + fields + kData + "06 02 01 06 01 01 05 ",                  // another order
        kVersion + fields + kData + "07 81 01 01 05 02 01 06 ",               // a long index
        kVersion + fields + kData + "09 01 01 09 01 01 05 02 01 06 ",         // a value replaced
        kVersion + fields + kData + "09 01 01 05 02 01 06 07 01 09 ",         // a value of no field
        kVersion + fields + kData + "03 02 01 06 " + kData + "03 01 01 05 ",  // two sections
        fields + data,                                                        // without a version
        fields + kVersion + data,                                             // the version later
        kVersion + fields + kMeta + "03 01 00 00 " + data,                    // metadata without any
        kVersion + fields + kMeta + "00 " + data,                             // an empty section
        kVersion + kFields + "08 01 62 02 03 49 6E 74 00 " + kFields + "08 01 61 01 03 49 6E 74 00 " + data,
        kVersion + kFields + "10 01 62 02 03 49 6E 74 00 01 61 01 03 49 6E 74 00 " + data,
        kVersion + data + fields,  // values before their fields
        std::string("07 76 65 72 73 69 6F 6E 04 03 32 2E 37 ") + fields + data}) {
    EXPECT_EQ(Rewritten(form), proper) << form;
    QZRecord record;
    ASSERT_TRUE(record.FromBytes(Whole(proper)) && record.FromBytes(Whole(form)));
    EXPECT_EQ(Text(record.ToBytes()), Text(Whole(proper))) << form << " behind a proper one";
  }
  QZRecord record;
  ASSERT_TRUE(record.FromBytes(FromHex("03 61 62 63 0D " + std::string(kVersion))));
  EXPECT_EQ(Text(record.ToBytes()), std::string(kHead) + "0D " + kVersion);
}

TEST(RecordBytes, SharedIndicesShareTheirValue) {
  const std::string fields = kFields + "10 01 61 01 03 49 6E 74 00 01 62 01 03 49 6E 74 00 ";
  QZRecord record;
  ASSERT_TRUE(record.FromBytes(Whole(kVersion + fields + kData + "03 01 01 05 ")));
  EXPECT_EQ(record.GetValue(QZField<long>("b")), 5);
  record.SetValue(QZField<long>("a"), 6);
  EXPECT_EQ(record.GetValue(QZField<long>("b")), 6);
  record.DeleteField(QZField<long>("a"));
  EXPECT_FALSE(record.HasValue(QZField<long>("b")));
  ASSERT_TRUE(record.FromBytes(Whole(kVersion + fields + kData + "02 01 80 ")));
  EXPECT_TRUE(record.IsNA("a") && record.IsNA("b"));
}

TEST(RecordBytes, DamageInASectionLeavesWhatWasReadBefore) {
  const std::string fields = kFields + "10 01 61 01 03 49 6E 74 00 01 62 02 03 49 6E 74 00 ";
  QZRecord record;
  EXPECT_FALSE(record.FromBytes(Whole(kVersion + fields + kData + "05 01 01 05 02 7E ")));
  EXPECT_EQ(record.GetValue(QZField<long>("a")), 5);
  EXPECT_FALSE(record.HasValue(QZField<long>("b")));
  EXPECT_FALSE(record.FromBytes(Whole(std::string(kVersion) + kFields + "0A 01 61 01 03 49 6E 74 00 7F 62 ")));
  EXPECT_TRUE(record.HasField(QZField<long>("a")));
  // An index alone at the end counts as one with the marker of no value.
  EXPECT_TRUE(record.FromBytes(Whole(kVersion + fields + kData + "01 02 ")));
  EXPECT_TRUE(record.IsNA("b"));
}

TEST(RecordBytes, TypeNamesSplitByTheHandlersThereAre) {
  struct Handler : QZFieldTypeHandler {
    std::string GetName() const override { return "late:registered"; }
  };
  QZRecord record;
  const Bytes bytes =
      Whole(std::string(kVersion) + kFields + "14 01 61 01 0F 6C 61 74 65 3A 72 65 67 69 73 74 65 72 65 64 00 ");
  ASSERT_TRUE(record.FromBytes(bytes));
  EXPECT_EQ(record.GetFields().at(0).GetWrapper(), "late");
  EXPECT_EQ(record.GetFields().at(0).GetType(), "registered");
  QZFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new Handler, 0);
  ASSERT_TRUE(record.FromBytes(bytes));
  EXPECT_EQ(record.GetFields().at(0).GetType(), "late:registered");
  EXPECT_EQ(record.ToBytes(), bytes);
}

TEST(RecordBytes, RecordsAreValuesOfRecords) {
  const QZField<QZRecord> one("one");
  const QZVectorField<QZRecord> list("many");
  const QZRecord inner = Example();
  QZRecord outer, read;
  outer.SetValue(one, inner);
  outer.SetValue(list, std::vector<std::optional<QZRecord>>{inner, std::nullopt, QZRecord()});
  EXPECT_EQ(outer.GetBytes("one"), inner.ToBytes());
  ASSERT_TRUE(read.FromBytes(outer.ToBytes()));
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(read.GetValue(one).ToBytes(), inner.ToBytes()) << "reading " << time;
    const auto many = read.GetValue(list);
    EXPECT_TRUE(!many.at(1) && many.at(2)->IsEmpty());
    EXPECT_EQ(many.at(0)->GetValue(QZField<long>("count")), 7);
  }
  EXPECT_EQ(read.ToBytes(), outer.ToBytes());
}

TEST(RecordBytes, ListsOfRecordsTellMarkersFromWhatIsCutShort) {
  using List = std::vector<std::optional<QZRecord>>;
  const struct {
    const char* bytes;
    bool read;
    std::size_t count;
  } cases[] = {{"80", true, 0},     {"82 01", false, 0},    {"81 FF", false, 0},      {"02 80 89", true, 2},
               {"02 80", false, 0}, {"02 80 81", false, 1}, {"01 01 61 80", true, 1}, {"01 01 61 82 01", false, 0}};
  for (const auto& [bytes, read, count] : cases) {
    List list;
    EXPECT_EQ(QZVectorFieldType<QZRecord>::FromBytes(list, FromHex(bytes)), read) << bytes;
    EXPECT_EQ(list.size(), count) << bytes;
  }
  const Bytes whole = QZVectorFieldType<QZRecord>::ToBytes(List{Example(), std::nullopt, Example()});
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    List list;
    EXPECT_EQ(QZVectorFieldType<QZRecord>::FromBytes(list, whole.data(), size), size == whole.size()) << size;
    EXPECT_EQ(list.size(), size == whole.size() ? 3u : size > 85 ? 2u : size > 84 ? 1u : 0u) << size;
  }
}

}  // namespace
