#pragma once

#include "qz/dataflow/metadata.h"
#include "qz/system/json/parse.h"
#include "qz/system/json/textwriter.h"

namespace QZDataFlow {

/// Writes the document of the metadata, an object with up to two members: "options", the names of the options, and
/// "attributes", a pair of name and value for each attribute.
void WriteFieldMetaJSON(QZJSONTextWriter& out, const QZFieldMeta& meta);

/// Reads such an object into the metadata, as QZFieldMetaFromJSON does.
void ReadFieldMetaJSON(QZFieldMeta& meta, rapidjson::Value& object);

}  // namespace QZDataFlow
