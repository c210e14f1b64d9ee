#pragma once

#include <optional>
#include <vector>

#include "qz/dataflow/byteblock_impl.h"
#include "qz/dataflow/datarecord_impl.h"

namespace QZDataFlow {

/// Turns to bytes what a record keeps decoded: objects of the value cache that were changed, and child records.
///
/// These may be records that keep others decoded, and so on to any depth. A record is turned to bytes after all those
/// inside it, by a walk that keeps its way in a list of its own and not on the stack. A record that is met again on the
/// way to itself, which only a caller's mistake can bring about, goes with the bytes it has.
class RecordUnloading {
 public:
  /// Everything of the record.
  static void All(const QZRecord& record);
  /// The decoded children of the field, or for an invalid one of all fields.
  static void ChildRecords(const QZRecord& record, const QZFieldBase& field);
  /// The changed object of the field with that index, or all such objects.
  static void Value(QZRecordImpl& impl, unsigned int idx);
  static void Values(QZRecordImpl& impl);

 private:
  // One record on the way.
  struct Step {
    QZRecordImpl* impl;
    const QZRecord* record;            // null when its children aren't to be treated
    bool withValues;                   // whether its objects are
    std::optional<unsigned int> only;  // the index of the one field to treat
    const QZFieldBase* field;          // the same field where children are concerned
    bool entered = false;
    QZRecordImpl::ChildCache kept;
  };

  explicit RecordUnloading(Step first);
  void Run();
  void Enter(Step& step);
  static void CallHooks(Step& step);
  void AddNested(const Step& step);
  void AddRecord(const QZRecord& record);
  static void Leave(Step& step);
  static void StoreChildren(QZRecordImpl& impl, unsigned int idx);
  static void StoreObject(QZRecordImpl& impl, unsigned int idx, QZRecordImpl::CacheEntry& entry);

  std::vector<Step> steps;
  std::vector<Step> found;  // those inside the record that was entered last
  std::uint64_t run;
};

}  // namespace QZDataFlow
