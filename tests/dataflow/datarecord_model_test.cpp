// Records beside the plain maps that they mean: long sequences of operations, and damaged bytes.

#include <gtest/gtest.h>

#include <random>

#include "bytes.h"
#include "recordmodel.h"

namespace {

using namespace RecordTesting;

void ExpectSame(const Bytes& has, const Bytes& wanted, const std::string& trace) {
  if (has != wanted) ADD_FAILURE() << Hex(has) << "\nwanted\n" << Hex(wanted) << '\n' << trace;
}

class Pair {
 public:
  explicit Pair(unsigned int seed) : random(seed) {}

  std::size_t Below(std::size_t n) { return random() % n; }
  template <class T>
  const T& OneOf(const std::vector<T>& from) {
    return from[Below(from.size())];
  }

  TestField SomeField() {
    static const std::vector<std::string> names{"a", "b", "c", "longer name of a field", "d", ""};
    static const std::vector<std::string> types{"Int",   "Int", "String",  "Record", "Record",
                                                "w:Int", "Mol", "a:b:Int", ""};
    QZFieldMeta meta;
    if (Below(4) == 0)
      meta.SetOption(OneOf<unsigned int>({0x04000001, 0x05010001, 0x08010001, 0x08020003, 0x06000001}));
    if (Below(6) == 0) meta.SetAttribute(0x02000001, std::string("text"));
    if (Below(8) == 0) meta.SetAttribute(0x09000001, 0.5).SetAttribute(0x06020002, 300);
    return TestField(MakeField(OneOf(names), OneOf(types), meta, Below(20) == 0, Below(4) == 0), Below(8) == 0);
  }
  Bytes SomeBytes() {
    Bytes bytes(Below(12) == 0 ? Below(20000) : Below(5));
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
    return bytes;
  }
  std::string SomeKey() { return OneOf<std::string>({"x", "y", "", "z"}); }

  /// Does the same small thing to both.
  std::string Step(QZRecord& record, RecordModel& model, int depth) {
    const TestField field = SomeField();
    const std::string name = ' ' + field.GetName() + ':' + field.GetTypeName() + (field.byMeta ? " by meta " : " ") +
                             testing::PrintToString(field.GetMeta().GetOptions());
    switch (Below(depth > 0 ? 24 : 12)) {
      case 0:
        record.AddField(field);
        model.AddField(field);
        return "AddField" + name;
      case 1:
        EXPECT_EQ(record.DeleteField(field), model.DeleteField(field));
        return "DeleteField" + name;
      case 2:
      case 3:
      case 4:
      case 5: {
        const Bytes bytes = SomeBytes();
        EXPECT_EQ(record.SetBytes(field, bytes), model.SetBytes(field, bytes));
        return "SetBytes" + name;
      }
      case 6:
        EXPECT_EQ(record.SetBytes(field, std::nullopt), model.SetBytes(field, std::nullopt));
        return "SetNull" + name;
      case 7:
        EXPECT_EQ(record.ClearValue(field), model.ClearValue(field));
        return "ClearValue" + name;
      case 8:
        record.SetSourceID("source");
        model.recordMeta.SetAttribute(0x01000001, std::string("source"));
        return "SetSourceID";
      case 9: {
        Bytes bytes;
        record.ToBytes(bytes);
        EXPECT_TRUE(record.FromBytes(bytes));
        EXPECT_TRUE(model.FromBytes(model.ToBytes()));
        return "round trip";
      }
      case 10: {
        // Changes of the same kind of record once more: lists of fields are found again.
        QZRecord next(record);
        record = std::move(next);
        model = RecordModel(model);
        return "copy";
      }
      case 11:
        if (Below(10) != 0) return "";
        record.Clear();
        model = RecordModel();
        return "Clear";
      case 12:
        record.Flush();
        model.Flush();
        return "Flush";
      case 13: {
        QZRecord copy;
        copy = record;
        record = copy;
        RecordModel same;
        same = model;
        model = same;
        return "assign";
      }
      case 14:
      case 15: {
        QZRecord child;
        RecordModel childModel;
        Steps(child, childModel, depth - 1);
        const std::string key = SomeKey();
        EXPECT_EQ(record.AddChildRecord(field, key, child), model.AddChild(field, key, childModel));
        return "AddChildRecord" + name;
      }
      case 16:
      case 17: {
        const std::string key = SomeKey();
        QZRecord* const child = record.GetChildRecord(field, key);
        RecordModel* const childModel = model.GetChild(field, key);
        EXPECT_EQ(child == nullptr, childModel == nullptr);
        if (child != nullptr) Steps(*child, *childModel, depth - 1);
        return "GetChildRecord" + name;
      }
      case 18: {
        const std::string key = SomeKey();
        EXPECT_EQ(record.DeleteChildRecord(field, key), model.DeleteChild(field, key));
        return "DeleteChildRecord" + name;
      }
      case 19:
        EXPECT_EQ(record.DeleteChildRecords(field), model.DeleteChildren(field));
        return "DeleteChildRecords" + name;
      case 20:
        EXPECT_EQ(record.HasChildRecords(field), model.HasChildren(field));
        return "HasChildRecords" + name;
      case 21: {
        EXPECT_EQ(record.GetChildBytes(field), model.ChildBytes(field));
        return "GetChildBytes" + name;
      }
      case 22: {
        const TestField kept(MakeField(field.GetName(), "Record"), false);
        auto child = std::make_shared<QZRecord>();
        auto childModel = std::make_shared<RecordModel>();
        Steps(*child, *childModel, depth - 1);
        EXPECT_EQ(record.AddToCache(kept, child), model.AddToCache(kept, childModel));
        return "AddToCache" + name;
      }
      default: {
        const TestField kept(MakeField(field.GetName(), "Record"), false);
        const std::shared_ptr<void> child = record.CheckCache(kept);
        RecordModel* const childModel = model.Cached(kept);
        EXPECT_EQ(child == nullptr, childModel == nullptr);
        if (child && childModel != nullptr) Steps(*static_cast<QZRecord*>(child.get()), *childModel, depth - 1);
        record.MarkCacheDirty(kept);
        model.MarkDirty(kept);
        return "MarkCacheDirty" + name;
      }
    }
  }
  void Steps(QZRecord& record, RecordModel& model, int depth) {
    for (std::size_t left = Below(6); left > 0; --left) Step(record, model, depth);
  }

  /// What the two say about a field.
  void CompareField(const QZRecord& record, RecordModel& model, const TestField& field, const std::string& trace) {
    for (const bool strict : {false, true})
      EXPECT_EQ(record.CheckField(field, strict), model.CheckField(field, strict)) << trace;
    EXPECT_EQ(record.HasValue(field), model.HasValue(field)) << trace;
    EXPECT_EQ(record.IsNA(field), model.IsNA(field)) << trace;
    EXPECT_EQ(static_cast<int>(record.GetFieldIdx(field)), model.Idx(field)) << trace;
    if (Below(2) == 0) return;  // this writes back what is decoded
    Bytes bytes;
    const std::optional<Bytes> wanted = model.GetBytes(field);
    EXPECT_EQ(record.GetBytes(bytes, field), wanted.has_value()) << trace;
    EXPECT_EQ(bytes, wanted.value_or(Bytes())) << trace;
  }
  void CompareWhole(const QZRecord& record, RecordModel& model, const std::string& trace) {
    std::multimap<unsigned int, std::string> names;
    for (const auto& [name, entry] : model.fields) names.emplace(entry.idx, name);
    std::vector<std::string> wanted, has;
    for (const auto& each : names) wanted.push_back(each.second);
    for (const QZFieldBase& field : record.GetFields()) has.push_back(field.GetName());
    EXPECT_EQ(has, wanted) << trace;
    if (Below(3) != 0) return;  // this writes back everything
    ExpectSame(record.ToBytes(), model.ToBytes(), trace);
  }

  std::mt19937 random;
};

TEST(RecordModel, SequencesOfOperationsAgree) {
  for (unsigned int seed = 0; seed < 400 && !testing::Test::HasFailure(); ++seed) {
    Pair pair(seed);
    QZRecord record;
    RecordModel model;
    std::string trace = "seed " + std::to_string(seed);
    for (int step = 0; step < 60 && !testing::Test::HasFailure(); ++step) {
      trace += '\n' + pair.Step(record, model, 2);
      pair.CompareField(record, model, pair.SomeField(), trace);
      pair.CompareWhole(record, model, trace);
    }
    ExpectSame(record.ToBytes(), model.ToBytes(), trace);
  }
}

/// Damage of one kind at a random place.
void Damage(Bytes& bytes, Pair& pair) {
  const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(pair.Below(bytes.size()));
  const auto any = static_cast<unsigned char>(pair.Below(256));
  const std::size_t kind = pair.Below(5);
  if (kind == 0) *at = static_cast<unsigned char>(*at ^ (1u << any % 8));
  if (kind == 1) *at = any;
  if (kind == 2) *at = pair.OneOf<unsigned char>({0x00, 0x01, 0x7F, 0x80, 0x81, 0x88, 0x89, 0xFF});
  if (kind == 3) bytes.insert(at, any);
  if (kind == 4) bytes.erase(at);
}

/// A record's sections as they are, some left out, repeated or in another order: lengths stay right.
Bytes Reorder(const Bytes& bytes, Pair& pair) {
  QZReadBuffer outer(bytes), content;
  std::string name;
  EXPECT_TRUE(outer.Unwrap(name, content));
  std::vector<Bytes> sections;
  while (content.IsValid()) {
    const unsigned char* const begin = content.Position();
    QZReadBuffer section;
    if (!content.Unwrap(name, section)) break;
    sections.emplace_back(begin, content.Position());
  }
  QZWriteBuffer out("record.v1");
  for (std::size_t left = sections.size() + pair.Below(3); left > 0; --left) out.Append(pair.OneOf(sections));
  Bytes result;
  out.CopyWrapped(result, true);
  return result;
}

TEST(RecordModel, DamagedBytesReadAlike) {
  for (unsigned int seed = 0; seed < 3000 && !testing::Test::HasFailure(); ++seed) {
    Pair pair(seed);
    QZRecord record, other;
    RecordModel model, otherModel;
    for (int step = 0; step < 12; ++step) {
      pair.Step(record, model, 1);
      pair.Step(other, otherModel, 1);
    }
    const Bytes whole = record.ToBytes();
    Bytes bytes = pair.Below(3) == 0 ? Reorder(whole, pair) : whole;
    if (pair.Below(3) != 0) Damage(bytes, pair);
    // The record has read something of the kind before.
    EXPECT_TRUE(record.FromBytes(pair.Below(2) == 0 ? whole : other.ToBytes()));
    std::string trace = "seed " + std::to_string(seed);
    if (bytes.size() < 1000) trace += " bytes " + Hex(bytes);
    EXPECT_EQ(record.FromBytes(bytes), model.FromBytes(bytes)) << trace;
    ExpectSame(record.ToBytes(), model.ToBytes(), trace);
    for (int step = 0; step < 8 && !testing::Test::HasFailure(); ++step) {
      trace += '\n' + pair.Step(record, model, 1);
      pair.CompareField(record, model, pair.SomeField(), trace);
      ExpectSame(record.ToBytes(), model.ToBytes(), trace);
    }
  }
}

}  // namespace
