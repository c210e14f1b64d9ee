#pragma once

#include <vector>

#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/names.h"

namespace QZDataFlow {

/// The stored form of a record, as QZRecord::ToBytes gives it.
///
///     const std::vector<unsigned char> bytes = QZRecordToBytes(record);
///     QZRecord same;
///     if (!QZRecordFromBytes(same, bytes)) return false;
///
/// One thread at a time for a record, const operations included.
[[nodiscard]] std::vector<unsigned char> QZRecordToBytes(const QZRecord& record);

/// Reads the stored form as QZRecord::FromBytes does. False for no bytes, with `record` as it was, and for bytes that
/// can't be taken apart, with what was read up to there.
[[nodiscard]] bool QZRecordFromBytes(QZRecord& record, const std::vector<unsigned char>& bytes);

}  // namespace QZDataFlow
