// Documents of records, and the texts of blobs in them. What is read goes to a document and back, and to bytes and
// back.
#include "fuzz/fuzzing.h"
#include "qz/dataflow.h"
#include "qz/dataflow/recordjson.h"

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

void goThroughMeta(const std::string& text) {
  QZFieldMeta meta, again;
  if (!QZFieldMetaFromJSON(meta, text, true)) return;
  const std::string document = QZFieldMetaToJSON(meta);
  Require(QZFieldMetaFromJSON(again, document, true));
  Require(QZFieldMetaToJSON(again) == document);
}

void goThroughBase85(const std::string& text) {
  const std::vector<unsigned char> bytes = QZBase85Decode(text);
  Require(QZBase85Decode(QZBase85Encode(bytes)) == bytes);
  const std::vector<unsigned char> itself(text.begin(), text.end());
  Require(QZBase85Decode(QZBase85Encode(itself)) == itself);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SwallowMessages();
  const std::string text = TextOf(data, size);
  goThroughMeta(text);
  goThroughBase85(text);
  QZRecord record;
  const bool read = QZRecordFromJSON(record, text);
  // Also a record of which only the first fields could be read.
  const std::vector<unsigned char> bytes = record.ToBytes();
  QZRecord fromBytes;
  Require(fromBytes.FromBytes(bytes));
  Require(fromBytes.ToBytes() == bytes);
  if (!read) return 0;

  const std::string document = QZRecordToJSON(record);
  Require(QZRecordToJSON(fromBytes) == document);
  // Text that was too deep to be a value is null by now; a document that is too deep can't be written.
  if (document.empty()) return 0;
  QZRecord second, third;
  Require(QZRecordFromJSON(second, document));
  const std::string again = QZRecordToJSON(second);
  Require(QZRecordFromJSON(third, again));
  Require(QZRecordToJSON(third) == again);
  return 0;
}
