// Binary streams of records. A record that was read in one piece is made of its parts, read again, turned to JSON, and
// comes out the same each time.
#include "fuzz/fuzzing.h"
#include "qz/dataflow.h"
#include "qz/dataflow/recordjson.h"

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

using Bytes = std::vector<unsigned char>;

// Decodes each value under the type of its field and under all others.
void touchValues(const QZRecord& record) {
  for (const QZFieldBase& field : record.GetFields()) {
    const std::string& name = field.GetName();
    (void)record.GetValue(QZField<long>(name));
    (void)record.GetValue(QZField<std::string>(name));
    (void)record.GetValue(QZField<double>(name));
    (void)record.GetValue(QZField<Bytes>(name));
    (void)record.GetValue(QZField<bool>(name));
    (void)record.GetValue(QZField<QZRange>(name));
    (void)record.GetValue(QZField<QZJSONObject>(name));
    (void)record.GetValue(QZField<QZLinkObject>(name));
    (void)record.GetValue(QZField<QZRecord>(name));
    (void)record.GetValue(QZVectorField<long>(name));
    (void)record.GetValue(QZVectorField<std::string>(name));
    (void)record.GetValue(QZVectorField<double>(name));
    (void)record.GetValue(QZVectorField<Bytes>(name));
    (void)record.GetValue(QZVectorField<bool>(name));
    (void)record.GetValue(QZVectorField<QZRecord>(name));
    (void)record.GetChildRecords(field);
  }
}

// The bytes of the record, put together from its parts: setting its metadata makes it forget what it was read from.
Bytes rebuilt(const QZRecord& record) {
  QZRecord copy;
  copy = record;
  copy.SetRecordMeta(copy.GetRecordMeta());
  return copy.ToBytes();
}

// The first document may say less than the bytes did: a value that can't be decoded, a second value of an option. From
// then on nothing is lost.
void goThroughDocuments(const QZRecord& record) {
  const std::string document = QZRecordToJSON(record);
  if (document.empty()) return;
  QZRecord first, second;
  Require(QZRecordFromJSON(first, document));
  const std::string again = QZRecordToJSON(first);
  Require(QZRecordFromJSON(second, again));
  Require(QZRecordToJSON(second) == again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  BytesStream in(data, size);
  BytesStream undecoded(data, size);
  QZRecord record;
  for (;;) {
    const Bytes before = record.ToBytes();
    const Bytes stored = QZReadRecordBytes(undecoded);
    const bool whole = QZReadRecord(record, in, "binary");
    Require(in.tell() == undecoded.tell());
    if (stored.empty()) {
      Require(!whole && record.ToBytes() == before);
      return 0;
    }
    // What the record before it left behind changes nothing.
    QZRecord fresh;
    Require(fresh.FromBytes(stored) == whole);
    const Bytes bytes = record.ToBytes();
    Require(fresh.ToBytes() == bytes && rebuilt(record) == bytes);
    if (!whole) return 0;

    QZRecord again;
    Require(again.FromBytes(bytes));
    Require(again.ToBytes() == bytes && rebuilt(again) == bytes);

    touchValues(record);
    Require(record.ToBytes() == bytes);
    goThroughDocuments(record);
  }
}
