// Records, their bytes, their documents and streams of both.
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "qz/dataflow.h"
#include "qz/dataflow/recordjson.h"
#include "tests/faults/faults.h"
#include "tests/platform/streamtest.h"

using namespace QZDataFlow;
using namespace QZSystem;
using streamtest::Folder;

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

// A road on which the sample is changed. If that is done, the rest holds.
Road changes(const char* road, bool (*change)(QZRecord& record), bool (*isChanged)(QZRecord& record)) {
  return Road(road, allocations, [=](Attempt& attempt) {
    QZRecord record = sample();
    const bool done = attempt([&] { return change(record); });
    EXPECT_TRUE(!done || isChanged(record));
    expectSound(record);
  });
}

const Road bytesAreRead("BytesAreRead", allocations, [](Attempt& attempt) {
  QZRecord record = small(7);
  record.GetChildRecord(number, "child")->SetValue(flag, true);
  const bool read = attempt([&] { return record.FromBytes(sampleBytes()) && record.FromBytes(sampleBytes()); });
  EXPECT_TRUE(!read || record.ToBytes() == sampleBytes());
  expectSound(record);
  const Bytes half(sampleBytes().begin(), sampleBytes().begin() + static_cast<long>(sampleBytes().size() / 2));
  attempt([&] { return !record.FromBytes(half); });
  expectSound(record);
});

// Made by hand: the library is untouched so far.
const Road firstRecordIsRead("FirstRecordIsRead", firstUse, [](Attempt& attempt) {
  const char bytes[] =
      "\x09record.v1\x21\x07version\4\3"
      "1.0\6fields\x09\1a\1\3Int\x84";
  QZRecord record;
  attempt([&] {
    static_cast<void>(record.FromBytes(Bytes(bytes, bytes + sizeof bytes - 1)));
    record.SetValue(mass, 1.0);
    record.GetChildRecord(mass, "child")->SetValue(flag, true);
    return !record.ToBytes().empty() && !QZRecordToJSON(record).empty();
  });
  record.SetValue(number, 5);
  expectSound(record);
});

const Road valuesAreRead = changes(
    "ValuesAreRead",
    [](QZRecord& record) {
      bool same = record.FromBytes(sampleBytes()) && record.GetValue(number) == 1 && record.GetValue(name) == longName;
      same = same && record.GetValue(mass) == 0.25 && record.GetValue(blob).size() == 70 && record.GetValue(flag);
      same = same && record.GetValue(range).high == 1.0 && !record.GetValue(object).GetText().empty();
      same = same && record.GetValue(nested).GetValue(number) == 2 && record.GetValue<int>(numbers).size() == 3;
      same = same && record.GetValue(names).size() == 3 && record.GetValue(list).size() == 2;
      for (const QZFieldBase& field : record.GetFields()) same = same && !record.GetBytes(field).empty();
      return same && record.GetChildRecords(number).size() == 2;
    },
    [](QZRecord& record) { return record.ToBytes() == sampleBytes(); });

const Road valuesAreSet = changes(
    "ValuesAreSet", [](QZRecord& record) { return record = sample(), true; },
    [](QZRecord& record) { return record.ToBytes() == sampleBytes(); });

const Road fieldsAreChanged = changes(
    "FieldsAreChanged",
    [](QZRecord& record) {
      record.AddField(QZField<std::string>("added", QZFieldMeta(mass.GetMeta()).SetAttribute(0x06020002, 3)));
      record.AddField(QZField<double>("number"));
      record.DeleteField(mass);
      record.SetValue(name, std::nullopt);
      record.ClearValue(names);
      record.SetBytes(blob, Bytes(5000, 4));
      record.SetRecordMeta(QZRecordMeta().SetAttribute(0x01000002, longName));
      return true;
    },
    [](QZRecord& record) { return !record.HasField(mass) && record.IsNA(name) && !record.HasValue(names); });

const Road decodedValuesAreKept = changes(
    "DecodedValuesAreKept",
    [](QZRecord& record) {
      auto inner = std::make_shared<QZRecord>(small(10));
      record.AddToCache(nested, inner);
      record.AddToCache(QZField<std::string>("kept"), std::make_shared<std::string>(longName));
      record.AddToCache(list, QZVectorFieldType<QZRecord>::GetCopyForCache(std::vector<QZRecord>{small(11)}));
      inner->SetValue(mass, 2.0);
      record.MarkCacheDirty(nested, true);
      record.ToBytes();
      record.Flush();
      return true;
    },
    [](QZRecord& record) {
      return record.GetValue(nested).GetValue(mass) == 2.0 && record.GetValue(QZField<std::string>("kept")) == longName;
    });

const Road recordsAreCopied("RecordsAreCopied", allocations, [](Attempt& attempt) {
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
});

const Road childrenAreChanged("ChildrenAreChanged", allocations, [](Attempt& attempt) {
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
});

const Road streamIsPassedOn("StreamIsPassedOn", allocations, [](Attempt& attempt) {
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
});

const Road fileIsPassedOn("FileIsPassedOn", calls, [](Attempt& attempt) {
  static const std::string content = [] {
    qzosstream out;
    for (long i = 0; i != 700; ++i) QZWriteRecord(out, small(i), "binary");
    return out.str();
  }();
  static const Folder folder;
  static const std::string source = folder.File("source", content);
  const std::string target = folder.File("target", "old");
  const bool done = attempt([&] {
    qzifstream in;
    in.open(source);
    QZFileReplacement out(target);
    QZRecord record;
    while (QZReadRecord(record, in, "binary")) QZWriteRecord(out.Out(), record, "binary");
    return !in.failed() && out.Commit();
  });
  EXPECT_TRUE(streamtest::Content(target) == (done ? content : "old"));
});

const Road documentIsWritten("DocumentIsWritten", allocations, [] { return QZRecordToJSON(sample()); });

const Road documentIsRead = changes(
    "DocumentIsRead",
    [](QZRecord& record) {
      static const std::string document = QZRecordToJSON(record);
      return QZRecordFromJSON(record, document);
    },
    [](QZRecord& record) { return QZRecordToJSON(record) == QZRecordToJSON(sample()); });

const Road wrongDocumentsAreRead("WrongDocumentsAreRead", allocations, [](Attempt& attempt) {
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
});

const Road metadataIsChanged("MetadataIsChanged", allocations, [](Attempt& attempt) {
  const std::string document =
      R"({"options":["Units.Mass.Da"],"attributes":[["Display.Values.Precision",3],["Limits.Lower",0.5]]})";
  QZFieldMeta meta;
  const bool done = attempt([&] {
    if (!QZFieldMetaFromJSON(meta, document)) return false;
    QZFieldMeta copy(meta);
    copy.AddRelation(QZMeta::GetValue("Relations.ErrorsFor"), mass);
    copy.Merge(meta);
    meta = copy;
    return !QZFieldMetaToJSON(meta).empty();
  });
  EXPECT_TRUE(!done || meta.GetRelatedFields().size() == 1);
  meta.SetOption(QZMeta::GetValue("Units.Mass.Da"));
  EXPECT_EQ(meta.GetOptions().size(), 1u);
});

}  // namespace
