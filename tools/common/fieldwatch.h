#pragma once

#include <string>
#include <vector>

#include "qz/dataflow.h"

namespace QZTools {

/// The fields of the records of a stream, fetched anew only where a record has others than the one before it, as few
/// have.
///
///     FieldWatch watch;
///     if (watch.See(record)) prepare(watch.Fields());
///
/// One thread at a time.
class FieldWatch {
 public:
  /// Looks at a record. True where it is the first one, or its fields, their order, types or metadata, or the metadata
  /// of the record aren't those of the record before.
  bool See(const QZDataFlow::QZRecord& record);

  /// What See gave for the last record.
  bool Changed() const { return changed; }

  /// The fields of the last record, in the order of their index.
  const std::vector<QZDataFlow::QZFieldBase>& Fields() const { return fields; }

  /// The sections of the last record's stored form that this version doesn't know.
  unsigned long UnknownSections() const { return unknownSections; }

  /// Whether the last record has child records.
  bool HasChildren() const { return hasChildren; }

 private:
  std::vector<QZDataFlow::QZFieldBase> fields;
  std::vector<unsigned char> bytes;
  std::string description;
  std::string lastDescription;
  unsigned long unknownSections = 0;
  bool hasChildren = false;
  bool any = false;
  bool changed = false;
};

}  // namespace QZTools
