#pragma once

#include <optional>
#include <vector>

#include "qz/dataflow/datarecord_impl.h"

namespace QZDataFlow {

/// Calls `use` with each record that the object of a cache entry is or holds.
template <class Use>
void ForEachKeptRecord(const QZRecordImpl::CacheEntry& entry, Use use) {
  if (!entry.value) return;
  if (entry.kind == QZFieldKind::Record) {
    use(*static_cast<const QZRecord*>(entry.value.get()));
  } else if (entry.kind == QZFieldKind::RecordVec) {
    for (const auto& record : *static_cast<const std::vector<std::optional<QZRecord>>*>(entry.value.get())) {
      if (record) use(*record);
    }
  }
}

}  // namespace QZDataFlow
