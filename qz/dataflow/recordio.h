#pragma once

#include <string>
#include <vector>

#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/names.h"
#include "qz/platform/stream.h"

/// A file of records is records one after the other, with nothing before, between or behind them. The format "binary",
/// or "qzb", has their stored form, the format "json" one document on each line.
///
///     QZRecord record;
///     while (QZReadRecord(record, in, "binary")) {
///       if (record.GetValue(mass) > 100.0) QZWriteRecord(out, record, "json");
///     }
///     if (!in.eof()) qzerr << "damaged at byte " << in.tell() << qzendl;
///
/// One thread at a time for a record and for a stream.
namespace QZDataFlow {

/// Puts the record on the stream. True once the stream was given the bytes; whether it took them, it tells itself.
/// False, with nothing written, for another format, and for a record that has no JSON form because it nests too deep.
bool QZWriteRecord(qzostream& out, const QZRecord& record, const std::string& format);

/// Takes the next record off the stream. False at the end of the stream, where the record stays as it was, for what
/// isn't a record, and for another format.
///
/// In the format "binary" the record is cleared before it is read, and gets what QZRecordFromBytes makes of the bytes.
/// A record that reaches beyond the end of the stream, or whose name is longer than any, gives the warning "Read length
/// invalid, file is possibly corrupted. Stopping read", false, and the record as it was. In the format "json" the
/// fields of the document are added to those the record has.
[[nodiscard]] bool QZReadRecord(QZRecord& record, qzistream& in, const std::string& format);

/// Takes the next record in its stored form off the stream, undecoded, to be passed on. Empty at the end of the stream,
/// for a record without a name, and, with that warning, for a damaged one.
[[nodiscard]] std::vector<unsigned char> QZReadRecordBytes(qzistream& in);

}  // namespace QZDataFlow
