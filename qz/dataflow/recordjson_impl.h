#pragma once

#include <cstddef>
#include <string_view>

#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/names.h"
#include "qz/system/json/textwriter.h"

namespace QZDataFlow {

/// The records that may stand inside each other in a document, the outermost counted; the same for reading and writing.
inline constexpr std::size_t kMaxRecordDepth = 256;

/// The bodies of QZRecordToJSON and QZRecordFromJSON. Writing gives false, after the warning, for a record that isn't
/// written; `out` then holds a part of the document.
[[nodiscard]] bool WriteRecordJSON(QZJSONTextWriter& out, const QZRecord& record);
[[nodiscard]] bool ReadRecordJSON(QZRecord& record, std::string_view text);

}  // namespace QZDataFlow
