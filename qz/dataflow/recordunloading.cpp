#include "qz/dataflow/recordunloading_impl.h"

#include <atomic>
#include <utility>

#include "qz/dataflow/childrecords_impl.h"
#include "qz/dataflow/fieldtypehandler.h"
#include "qz/dataflow/keptrecords_impl.h"

namespace QZDataFlow {

namespace {

std::atomic<std::uint64_t> lastRun{0};

const QZFieldTypeHandler* FindHandler(const QZFieldBase& field) {
  const QZFieldKind kind = QZGetFieldKind(field.GetType());
  if (kind != QZFieldKind::Other) return Types::GetBuiltIn(kind);
  return QZFieldTypeHandlerRegistry::GetInstance().GetHandler(field.GetType());
}

using RecordList = std::vector<std::optional<QZRecord>>;

void Append(ByteBlock& out, QZByteSlice bytes) { out.Append(bytes.data, bytes.size); }

bool IsChanged(const QZRecordImpl::CacheEntry& entry) { return !entry.clean && entry.value; }

}  // namespace

void RecordUnloading::All(const QZRecord& record) {
  QZRecordImpl& impl = QZRecordImpl::Of(record);
  if (impl.HasDecoded()) RecordUnloading({&impl, &record, true, std::nullopt, nullptr, false, {}}).Run();
}

void RecordUnloading::ChildRecords(const QZRecord& record, const QZFieldBase& field) {
  QZRecordImpl& impl = QZRecordImpl::Of(record);
  if (impl.childCache.empty()) return;
  RecordUnloading({&impl, &record, false, std::nullopt, field.IsValid() ? &field : nullptr, false, {}}).Run();
}

void RecordUnloading::Value(QZRecordImpl& impl, unsigned int idx) {
  RecordUnloading({&impl, nullptr, true, idx, nullptr, false, {}}).Run();
}

void RecordUnloading::Values(QZRecordImpl& impl) {
  RecordUnloading({&impl, nullptr, true, std::nullopt, nullptr, false, {}}).Run();
}

RecordUnloading::RecordUnloading(Step first) : run(++lastRun) { steps.push_back(std::move(first)); }

void RecordUnloading::Run() {
  while (!steps.empty()) {
    Step& step = steps.back();
    if (step.entered) {
      Leave(step);
      steps.pop_back();
    } else if (step.impl->unloadingRun == run) {
      steps.pop_back();
    } else {
      Enter(step);
    }
  }
}

void RecordUnloading::Enter(Step& step) {
  step.entered = true;
  step.impl->unloadingRun = run;
  if (step.record != nullptr && !step.impl->childCache.empty()) CallHooks(step);
  AddNested(step);
  // The step itself may move now.
  steps.insert(steps.end(), std::make_move_iterator(found.rbegin()), std::make_move_iterator(found.rend()));
  found.clear();
}

/// What the hooks do to the decoded children goes into the bytes. The decoded children are then again what they were.
void RecordUnloading::CallHooks(Step& step) {
  step.kept = step.impl->childCache;
  if (step.field != nullptr) {
    step.record->FixChildCache(*step.field);
    step.only = step.record->GetFieldIdx(*step.field);
    return;
  }
  for (const QZFieldBase& field : step.record->GetFields()) step.record->FixChildCache(field);
}

void RecordUnloading::AddNested(const Step& step) {
  const auto add = [this](const QZRecord& record) { AddRecord(record); };
  if (step.withValues) {
    for (const auto& entry : step.impl->cache) {
      if (IsChanged(entry.second) && (!step.only || entry.first == *step.only)) ForEachKeptRecord(entry.second, add);
    }
  }
  if (step.record != nullptr) {
    for (const auto& children : step.impl->childCache) {
      if (step.only && children.first != *step.only) continue;
      for (const auto& child : children.second) {
        if (child.second) add(*child.second);
      }
    }
  }
}

void RecordUnloading::AddRecord(const QZRecord& record) {
  QZRecordImpl& impl = QZRecordImpl::Of(record);
  if (impl.HasDecoded() && impl.unloadingRun != run)
    found.push_back({&impl, &record, true, std::nullopt, nullptr, false, {}});
}

void RecordUnloading::Leave(Step& step) {
  QZRecordImpl& impl = *step.impl;
  if (step.record != nullptr && !impl.childCache.empty()) {
    for (std::size_t pos = 0; pos < impl.Fields().Size(); ++pos) {
      const unsigned int idx = impl.Fields().Idx(pos);
      if ((!step.only || idx == *step.only) && impl.childCache.count(idx) != 0) StoreChildren(impl, idx);
    }
  }
  if (!step.kept.empty()) impl.childCache.swap(step.kept);
  if (!step.withValues) return;
  for (auto& entry : impl.cache) {
    if (IsChanged(entry.second) && (!step.only || entry.first == *step.only))
      StoreObject(impl, entry.first, entry.second);
  }
}

void RecordUnloading::StoreChildren(QZRecordImpl& impl, unsigned int idx) {
  ByteBlock list;
  std::size_t count = 0;
  for (const auto& [key, child] : impl.childCache[idx]) {
    if (!child || child->IsEmpty()) continue;
    QZRecordImpl& stored = QZRecordImpl::Of(*child);
    // The child has the field of its key only while it is written, also when memory runs out over that.
    try {
      SetChildKey(*child, key);
      Append(list, stored.Encode(false));
      child->DeleteField(ChildKeyField());
    } catch (...) {
      child->DeleteField(ChildKeyField());
      throw;
    }
    ++count;
  }
  if (count == 0) {
    impl.EraseChildBytes(idx);
    return;
  }
  ByteBlock bytes;
  bytes.AppendInt(count);
  bytes.Append(list.data(), list.size());
  impl.StoreChildBytes(idx, bytes.data(), bytes.size());
}

void RecordUnloading::StoreObject(QZRecordImpl& impl, unsigned int idx, QZRecordImpl::CacheEntry& entry) {
  const std::size_t pos = impl.Fields().FindIdx(idx);
  if (pos == FieldList::npos) return;
  ByteBlock bytes;
  if (entry.kind == QZFieldKind::Record) {
    Append(bytes, QZRecordImpl::Of(*static_cast<const QZRecord*>(entry.value.get())).Encode());
  } else if (entry.kind == QZFieldKind::RecordVec) {
    const auto& records = *static_cast<const RecordList*>(entry.value.get());
    bytes.AppendInt(records.size());
    for (const auto& record : records) {
      if (record) {
        Append(bytes, QZRecordImpl::Of(*record).Encode());
      } else {
        *bytes.Extend(1) = BufferImpl::kNone;
      }
    }
  } else {
    const QZFieldTypeHandler* const handler = FindHandler(impl.Fields().At(pos));
    if (handler == nullptr) return;
    const std::vector<unsigned char> made = handler->PtrToBytes(entry.value.get());
    bytes.Append(made.data(), made.size());
  }
  impl.StoreValue(pos, bytes.data(), bytes.size());
  entry.clean = true;
}

}  // namespace QZDataFlow
