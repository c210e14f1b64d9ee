#pragma once

#include <string>

#include "qz/dataflow/base85.h"
#include "qz/dataflow/datarecord.h"
#include "qz/dataflow/metadata.h"
#include "qz/dataflow/names.h"

/// Records as JSON documents, for tools that can't read the stored form.
///
///     const std::string text = QZRecordToJSON(record);
///     QZRecord same;
///     if (!QZRecordFromJSON(same, text)) return false;
///
/// A document has the source ID and the fields with their types, metadata, child records and values; it has neither the
/// other metadata of the record, nor `readonly`, nor sections that the record carries without knowing them. One thread
/// at a time for a record, const operations included.
namespace QZDataFlow {

/// The document, without white space. A field that has no value is written with the default of its type, which it comes
/// back with. A record of more than 256 levels of records, or whose document has more than 1024 brackets open at a
/// time, isn't written: the text is empty, after the warning "JSON: record nests too deep to be written".
std::string QZRecordToJSON(const QZRecord& record);

/// Adds the fields of a document to those of the record, which isn't cleared. False for text that JSONParseHelper
/// refuses, without the array "version" of two elements, with a "source id" that isn't a string or "fields" that aren't
/// an array, and at a field that isn't an object; what was read up to there stays. A field whose name, type or index is
/// missing or of the wrong kind is passed over. A value of the wrong kind, or one that holds records of more than 256
/// levels, makes its field null. Each of these gives a warning, except a "version" of another length and a field that
/// isn't an object. The indices of the document aren't used: each field takes the next one.
[[nodiscard]] bool QZRecordFromJSON(QZRecord& record, const std::string& text);

/// The document of the metadata alone: `{}` when it is empty.
std::string QZFieldMetaToJSON(const QZFieldMeta& meta);

/// Adds the options of such a document, and replaces the values of each key that it has attributes of, in metadata that
/// is emptied first when `clear` is set. Unknown names are passed over; elements of the wrong kind too, with the
/// warning "JSON: expects type of: string, key: options" or "attributes". False, with `meta` as it was, only for text
/// that JSONParseHelper refuses.
[[nodiscard]] bool QZFieldMetaFromJSON(QZFieldMeta& meta, const std::string& text, bool clear = true);

}  // namespace QZDataFlow
