#pragma once

#include <string_view>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/system/json/parse.h"

namespace QZDataFlow {

// The documents of one stream mostly differ in their values alone. Of a document that was read, the thread remembers
// the text around the values; where the next one has the same, its values are all that is read, and the record gets
// them in its stored form at once. Whatever doesn't fit is left to the parse, which gives the same record.

/// Reads the document into a record that holds nothing, if it is like one of those remembered. False leaves the record
/// as it was.
bool ReadLikeBefore(QZRecordImpl& impl, std::string_view text);

/// Remembers the document that was just read into a record that held nothing before. `document` is its parsed form.
void RememberDocument(QZRecordImpl& impl, const rapidjson::Value& document, std::string_view text);

}  // namespace QZDataFlow
