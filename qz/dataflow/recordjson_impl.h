#pragma once

#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/datarecord_impl.h"
#include "qz/system/json/parse.h"
#include "qz/system/json/textwriter.h"

/// The two directions of the record documents. The forms of a document and its values are those of docs/record-json.md.
namespace QZDataFlow {

/// The records that may stand inside each other in a document, the outermost counted; the same for both directions.
inline constexpr int kMaxRecordDepth = 256;

/// Writes the document of a record that stands at the level `level`, 1 being the outermost.
void WriteRecordJSON(QZJSONTextWriter& out, const QZRecord& record, int level);

/// Reads a document at that level into the record. False at what makes QZRecordFromJSON false.
bool ReadRecordJSON(QZRecord& record, rapidjson::Value& document, int level);

}  // namespace QZDataFlow
