// Binary streams of records: what is read goes to bytes and back unchanged, and to JSON.
#include "fuzz/fuzzing.h"
#include "qz/dataflow.h"

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

void touchValues(const QZRecord& record) {
  for (const QZFieldBase& field : record.GetFields()) {
    const std::string& name = field.GetName();
    (void)record.GetValue(QZField<double>(name));
    (void)record.GetValue(QZField<long>(name));
    (void)record.GetValue(QZField<std::string>(name));
    (void)record.GetValue(QZField<QZRange>(name));
    (void)record.GetValue(QZField<QZJSONObject>(name));
    (void)record.GetValue(QZField<QZRecord>(name));
    (void)record.GetValue(QZVectorField<long>(name));
    (void)record.GetValue(QZVectorField<std::string>(name));
    (void)record.GetValue(QZVectorField<QZRecord>(name));
    (void)record.GetChildRecords(field);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Silence silence;
  qzisstream in;
  in.set(reinterpret_cast<const char*>(data), size, false);
  QZRecord record;
  while (QZReadRecord(record, in, "binary")) {
    const std::vector<unsigned char> bytes = record.ToBytes();
    QZRecord again;
    Require(again.FromBytes(bytes));
    Require(again.ToBytes() == bytes);

    touchValues(record);
    QZRecord copy(record);
    copy.SetSourceID(record.GetSourceID());
    const std::string document = QZRecordToJSON(record);
    if (document.empty()) continue;
    QZRecord fromDocument;
    Require(QZRecordFromJSON(fromDocument, document));
    const std::string second = QZRecordToJSON(fromDocument);
    QZRecord third;
    Require(QZRecordFromJSON(third, second));
    Require(QZRecordToJSON(third) == second);
  }
  return 0;
}
