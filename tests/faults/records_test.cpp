// Records, their bytes, their documents and streams of both.
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "qz/dataflow.h"
#include "qz/dataflow/recordjson.h"
#include "tests/faults/faults.h"

using namespace QZDataFlow;
using namespace QZSystem;

namespace {

using Bytes = std::vector<unsigned char>;

const QZField<long> number("number");
const QZField<double> mass("mass", QZFieldMeta().SetOption(QZMeta::GetValue("Units.Mass.Da")));
const QZField<std::string> name("a name that is too long for the string itself");
const QZField<Bytes> blob("blob");
const QZField<bool> flag("flag");
const QZField<QZRange> range("range");
const QZField<QZJSONObject> object("object");
const QZField<QZRecord> nested("nested");
const QZVectorField<long> numbers("numbers");
const QZVectorField<std::string> names("names");
const QZVectorField<QZRecord> list("list");

const std::string longName(100, 'x');

QZRecord small(long value) {
  QZRecord record;
  record.SetValue(number, value);
  record.SetValue(name, longName);
  return record;
}

QZRecord sample() {
  QZRecord record = small(1);
  record.SetValue(mass, 0.25);
  record.SetValue(blob, Bytes(70, 3));
  record.SetValue(flag, true);
  record.SetValue(range, QZRange(0.0, 1.0, 2));
  record.SetValue(object, QZJSONObject("{\"depth\":[3,\"" + longName + "\"]}"));
  record.SetValue(nested, small(2));
  record.SetValue(numbers, std::vector<long>{1, -300, 70000});
  record.SetValue(names, std::vector<std::optional<std::string>>{"one", std::nullopt, longName});
  record.SetValue(list, std::vector<QZRecord>{small(3), small(4)});
  record.AddChildRecord(number, "first", small(5));
  record.AddChildRecord(number, "second", small(6));
  record.SetSourceID(longName);
  return record;
}

const Bytes& sampleBytes() {
  static const Bytes bytes = sample().ToBytes();
  return bytes;
}

// Whatever has happened to a record, its stored form is one, and it can be read again.
void expectSound(QZRecord& record) {
  const Bytes bytes = record.ToBytes();
  QZRecord again;
  EXPECT_TRUE(again.FromBytes(bytes));
  EXPECT_TRUE(again.ToBytes() == bytes);
  record.Flush();
  EXPECT_TRUE(record.FromBytes(sampleBytes()));
  EXPECT_TRUE(record.ToBytes() == sampleBytes());
}

void bytesAreRead(Attempt& attempt) {
  QZRecord record = small(7);
  record.GetChildRecord(number, "child")->SetValue(flag, true);
  const bool read = attempt([&] { return record.FromBytes(sampleBytes()) && record.FromBytes(sampleBytes()); });
  EXPECT_TRUE(!read || record.ToBytes() == sampleBytes());
  expectSound(record);
}

void damagedBytesAreRead(Attempt& attempt) {
  const Bytes half(sampleBytes().begin(), sampleBytes().begin() + static_cast<long>(sampleBytes().size() / 2));
  QZRecord record;
  attempt([&] {
    // Fields that were never met before, in an order that isn't that of a writer.
    qzosstream text;
    for (int i = 0; i != 20; ++i) text << i;
    return !record.FromBytes(half);
  });
  expectSound(record);
}

void valuesAreRead(Attempt& attempt) {
  QZRecord record;
  ASSERT_TRUE(record.FromBytes(sampleBytes()));
  bool same = false;
  const bool done = attempt([&] {
    same = record.GetValue(number) == 1 && record.GetValue(name) == longName && record.GetValue(mass) == 0.25;
    same = same && record.GetValue(blob).size() == 70 && record.GetValue(flag) && record.GetValue(range).high == 1.0;
    same = same && !record.GetValue(object).GetText().empty() && record.GetValue(nested).GetValue(number) == 2;
    same = same && record.GetValue<int>(numbers).size() == 3 && record.GetValue(names).size() == 3;
    same = same && record.GetValue(list).size() == 2 && record.GetChildRecords(number).size() == 2;
    for (const QZFieldBase& field : record.GetFields()) same = same && !record.GetBytes(field).empty();
    return true;
  });
  EXPECT_TRUE(!done || same);
  EXPECT_TRUE(record.ToBytes() == sampleBytes());
  expectSound(record);
}

void valuesAreSet(Attempt& attempt) {
  QZRecord record;
  const bool done = attempt([&] {
    record = sample();
    return true;
  });
  EXPECT_TRUE(!done || record.ToBytes() == sampleBytes());
  expectSound(record);
}

void fieldsAreChanged(Attempt& attempt) {
  QZRecord record = sample();
  const bool done = attempt([&] {
    record.AddField(QZField<std::string>("added", QZFieldMeta(mass.GetMeta()).SetAttribute(0x06020002, 3)));
    record.AddField(QZField<double>("number"));
    record.DeleteField(mass);
    record.SetValue(name, std::nullopt);
    record.ClearValue(names);
    record.SetBytes(blob, Bytes(5000, 4));
    record.SetRecordMeta(QZRecordMeta().SetAttribute(0x01000002, longName));
    return true;
  });
  EXPECT_TRUE(!done || (!record.HasField(mass) && record.IsNA(name) && !record.HasValue(names)));
  expectSound(record);
}

void recordsAreCopied(Attempt& attempt) {
  QZRecord record = sample();
  record.GetChildRecord(number, "first")->SetValue(flag, true);
  record.AddToCache(nested, std::make_shared<QZRecord>(small(8)));
  QZRecord copy = small(1), moved = small(2);
  const bool done = attempt([&] {
    const QZRecord second(record);
    copy = second;
    copy = *copy.GetChildRecord(number, "first");
    QZRecord passing(copy);
    moved = std::move(passing);
    copy = record;
    return true;
  });
  EXPECT_TRUE(!done || (copy.ToBytes() == record.ToBytes() && moved.GetValue(flag)));
  expectSound(record);
  expectSound(copy);
  expectSound(moved);
}

void childrenAreChanged(Attempt& attempt) {
  QZRecord record = sample();
  std::map<std::string, QZRecord> children;
  const bool done = attempt([&] {
    record.GetChildRecord(number, "third")->SetValue(flag, true);
    record.GetChildRecord(mass, "inner")->GetChildRecord(number, "none");
    record.DeleteChildRecord(number, "first");
    record.UnloadChildCache();
    record.AddChildRecord(number, "fourth", small(9));
    children = record.GetChildRecords(number);
    return record.SetChildren(mass, children) && record.HasChildRecords(mass);
  });
  EXPECT_TRUE(!done || record.GetChildRecords(mass).size() == 3);
  // The key of a child stands in it only while it is written.
  if (attempt.IsForGood()) record.UnloadChildCache();
  for (const char* const key : {"first", "second", "third", "fourth"})
    EXPECT_FALSE(record.GetChildRecord(number, key)->HasField(QZField<std::string>("__qz__key"))) << key;
  expectSound(record);
}

void decodedValuesAreKept(Attempt& attempt) {
  QZRecord record = sample();
  auto inner = std::make_shared<QZRecord>(small(10));
  const bool done = attempt([&] {
    record.AddToCache(nested, inner);
    record.AddToCache(QZField<std::string>("kept"), std::make_shared<std::string>(longName));
    record.AddToCache(list, QZVectorFieldType<QZRecord>::GetCopyForCache(std::vector<QZRecord>{small(11)}));
    inner->SetValue(mass, 2.0);
    record.MarkCacheDirty(nested, true);
    record.ToBytes();
    record.Flush();
    return true;
  });
  EXPECT_TRUE(!done || record.GetValue(nested).GetValue(mass) == 2.0);
  EXPECT_TRUE(!done || record.GetValue(QZField<std::string>("kept")) == longName);
  expectSound(record);
}

void streamIsPassedOn(Attempt& attempt) {
  qzosstream source;
  for (long i = 0; i != 3; ++i) QZWriteRecord(source, small(i), "binary");
  QZWriteRecord(source, sample(), "binary");
  QZRecord record;
  qzosstream binary, json;
  long count = 0;
  const bool done = attempt([&] {
    qzisstream in;
    in.set(source.str());
    for (; QZReadRecord(record, in, "binary"); ++count) {
      record.SetValue(flag, false);
      if (!QZWriteRecord(binary, record, "binary") || !QZWriteRecord(json, record, "json")) return false;
    }
    in.set(json.str());
    for (QZRecord fresh; QZReadRecord(fresh, in, "json"); fresh.Clear()) ++count;
    qzisstream undecoded;
    undecoded.set(binary.str());
    while (!QZReadRecordBytes(undecoded).empty()) ++count;
    return true;
  });
  EXPECT_TRUE(!done || count == 12) << count;
  expectSound(record);
}

void fileIsPassedOn(Attempt& attempt) {
  static const std::string content = [] {
    qzosstream out;
    for (long i = 0; i != 700; ++i) QZWriteRecord(out, small(i), "binary");
    return out.str();
  }();
  static const TemporaryFile source(content);
  const TemporaryFile target("old");
  const bool done = attempt([&] {
    qzifstream in;
    in.open(source.Path());
    QZFileReplacement out(target.Path());
    QZRecord record;
    while (QZReadRecord(record, in, "binary")) QZWriteRecord(out.Out(), record, "binary");
    return !in.failed() && out.Commit();
  });
  EXPECT_TRUE(target.Content() == (done ? content : "old"));
}

void documentIsWritten(Attempt& attempt) {
  const QZRecord record = sample();
  static const std::string expected = QZRecordToJSON(record);
  std::string document;
  const bool done = attempt([&] {
    document = QZRecordToJSON(record);
    return !document.empty();
  });
  EXPECT_TRUE(!done || document == expected);
  EXPECT_EQ(QZRecordToJSON(record), expected);
}

void documentIsRead(Attempt& attempt) {
  static const std::string document = QZRecordToJSON(sample());
  QZRecord record;
  const bool done = attempt([&] { return QZRecordFromJSON(record, document); });
  EXPECT_TRUE(!done || QZRecordToJSON(record) == document);
  expectSound(record);
}

void wrongDocumentsAreRead(Attempt& attempt) {
  const std::string start = R"({"version":[1,0],"fields":[{"name":"a","type":)";
  QZRecord record;
  attempt([&] {
    bool read = QZRecordFromJSON(record, start + R"("Int","idx":1,"value":"no number"}]})");
    read = QZRecordFromJSON(record, start + R"("IntVec","idx":1,"value":[1,2,"three"]}]})") && read;
    read = QZRecordFromJSON(record, start + R"("Blob","idx":1,"value":"~\"~"}]})") && read;
    read = QZRecordFromJSON(record, start + R"("Unknown","idx":1,"value":{}},{"idx":2}]})") && read;
    return read && !QZRecordFromJSON(record, std::string(2000, '[')) && !QZRecordFromJSON(record, start);
  });
  expectSound(record);
}

void metadataIsChanged(Attempt& attempt) {
  const std::string document =
      R"({"options":["Units.Mass.Da"],"attributes":[["Display.Values.Precision",3],["Limits.Lower",0.5]]})";
  QZFieldMeta meta;
  std::string text;
  const bool done = attempt([&] {
    if (!QZFieldMetaFromJSON(meta, document)) return false;
    text = QZFieldMetaToJSON(meta);
    QZFieldMeta copy(meta);
    copy.AddRelation(QZMeta::GetValue("Relations.ErrorsFor"), mass);
    copy.Merge(meta);
    meta = copy;
    return meta.GetRelatedFields().size() == 1;
  });
  EXPECT_TRUE(!done || meta.HasOption(QZMeta::GetValue("Units.Mass.Da")));
  meta.SetOption(QZMeta::GetValue("Units.Mass.Da"));
  EXPECT_EQ(meta.GetOptions().size(), 1u);
}

const Road roads[] = {
    {"BytesAreRead", bytesAreRead},
    {"DamagedBytesAreRead", damagedBytesAreRead},
    {"ValuesAreRead", valuesAreRead},
    {"ValuesAreSet", valuesAreSet},
    {"FieldsAreChanged", fieldsAreChanged},
    {"RecordsAreCopied", recordsAreCopied},
    {"ChildrenAreChanged", childrenAreChanged},
    {"DecodedValuesAreKept", decodedValuesAreKept},
    {"StreamIsPassedOn", streamIsPassedOn},
    {"DocumentIsWritten", documentIsWritten},
    {"DocumentIsRead", documentIsRead},
    {"WrongDocumentsAreRead", wrongDocumentsAreRead},
    {"MetadataIsChanged", metadataIsChanged},
};
const Road callRoads[] = {{"FileIsPassedOn", fileIsPassedOn}};
const Road firstUses[] = {{"BytesAreRead", [](Attempt& attempt) {
                             // Made by hand: the library is untouched so far.
                             const Bytes bytes = {9,   'r', 'e', 'c', 'o', 'r', 'd', '.', 'v', '1', 33,  7,   'v', 'e',
                                                  'r', 's', 'i', 'o', 'n', 4,   3,   '1', '.', '0', 6,   'f', 'i', 'e',
                                                  'l', 'd', 's', 9,   1,   'a', 1,   3,   'I', 'n', 't', 0x84};
                             QZRecord record;
                             attempt([&] {
                               static_cast<void>(record.FromBytes(bytes));
                               record.SetValue(mass, 1.0);
                               record.GetChildRecord(mass, "child")->SetValue(flag, true);
                               return !record.ToBytes().empty() && !QZRecordToJSON(record).empty();
                             });
                             record.SetValue(number, 5);
                             expectSound(record);
                           }}};

INSTANTIATE_TEST_SUITE_P(Records, Roads,
                         testing::Combine(testing::ValuesIn(roads),
                                          testing::Values(Fails::Allocation, Fails::AllocationsFrom)),
                         NameOfCase);
INSTANTIATE_TEST_SUITE_P(RecordCalls, Roads,
                         testing::Combine(testing::ValuesIn(callRoads),
                                          testing::Values(Fails::Allocation, Fails::Call, Fails::CallsFrom)),
                         NameOfCase);
INSTANTIATE_TEST_SUITE_P(Records, FirstUses,
                         testing::Combine(testing::ValuesIn(firstUses), testing::Values(Fails::Allocation)),
                         NameOfCase);

}  // namespace
