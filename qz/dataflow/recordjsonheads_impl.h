#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "qz/dataflow/fieldlist_impl.h"
#include "qz/dataflow/fieldtype.h"
#include "qz/system/json/textwriter.h"

namespace QZDataFlow {

/// Writes the members of a field that don't depend on its value, from "name" to "nullable".
void WriteFieldHead(QZJSONTextWriter& out, const QZFieldBase& field, unsigned int idx);

/// What the document of a record says of its fields apart from their values, in the order of their indices.
struct FieldHead {
  std::size_t pos;       // the place in the list
  QZFieldKind kind;      // of the value
  std::string text;      // all from the bracket before the field to its value, for a built-in type with the key "value"
  std::size_t headSize;  // of it without that key, before which the child records stand
};
using FieldHeads = std::vector<FieldHead>;

/// The heads of a list. The thread remembers them for the lists that it has met last, since records of one stream have
/// the same fields. Null for a list that may still change, is too large, or has a type name
/// with a colon: a handler that is registered later may claim the whole name.
std::shared_ptr<const FieldHeads> FindFieldHeads(const FieldList& fields);

}  // namespace QZDataFlow
