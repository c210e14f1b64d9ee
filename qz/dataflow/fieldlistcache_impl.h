#pragma once

#include <memory>
#include <string>

#include "qz/dataflow/fieldlist_impl.h"
#include "qz/dataflow/readbuffer.h"

namespace QZDataFlow {

/// What this thread remembers of field lists: which stored form gave which list, and which change of a list led to
/// which other. So records that are read or built alike share their lists, and a list is made once.
///
/// Each thread has a table of its own, of a fixed number of places, and takes no lock. It holds small lists only. Late
/// in the end of a thread the table is gone: nothing is found then, and nothing kept.
namespace FieldListCache {

using List = std::shared_ptr<const FieldList>;

/// The list of a section "fields" with this content, whose fields have no metadata; null when none is remembered.
List FindFields(QZByteSlice content);
void KeepFields(const List& list);

/// The list that `from` becomes by the items of all fields in a section "meta".
List FindMeta(const FieldList* from, QZByteSlice items);
void KeepMeta(const List& from, const List& to);

/// The list that `from` becomes when the field is put under its name with this index, and its place there; `same`
/// decides whether the field found there is that field.
List FindPut(const FieldList* from, const std::string& name, unsigned int idx, const QZFieldBase& field,
             bool (*same)(const QZFieldBase&, const QZFieldBase&), std::size_t& pos);
void KeepPut(const List& from, const List& to, std::size_t pos);

/// The list that `from` becomes without the field of that name.
List FindRemoval(const FieldList* from, const std::string& name);
void KeepRemoval(const List& from, const List& to, const std::string& name);

/// The most fields of a list that is kept.
inline constexpr std::size_t kMostFields = 64;

}  // namespace FieldListCache

}  // namespace QZDataFlow
