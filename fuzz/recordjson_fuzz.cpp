// Documents of records: what is read goes to a document and back unchanged, and to bytes and back.
#include "fuzz/fuzzing.h"
#include "qz/dataflow.h"

using namespace QZSystem;
using namespace QZDataFlow;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Silence silence;
  const std::string text = TextOf(data, size);
  QZFieldMeta meta;
  if (QZFieldMetaFromJSON(meta, text, true)) {
    QZFieldMeta again;
    Require(QZFieldMetaFromJSON(again, QZFieldMetaToJSON(meta), true));
    Require(QZFieldMetaToJSON(again) == QZFieldMetaToJSON(meta));
  }
  QZRecord record;
  if (!QZRecordFromJSON(record, text)) return 0;
  const std::vector<unsigned char> bytes = record.ToBytes();
  QZRecord fromBytes;
  Require(fromBytes.FromBytes(bytes));
  Require(fromBytes.ToBytes() == bytes);
  const std::string document = QZRecordToJSON(record);
  if (document.empty()) return 0;
  QZRecord second;
  Require(QZRecordFromJSON(second, document));
  const std::string documentOfSecond = QZRecordToJSON(second);
  QZRecord third;
  Require(QZRecordFromJSON(third, documentOfSecond));
  Require(QZRecordToJSON(third) == documentOfSecond);
  return 0;
}
