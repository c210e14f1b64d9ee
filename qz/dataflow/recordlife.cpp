// How the inside of a record is copied, emptied and destroyed.

#include <utility>

#include "qz/dataflow/datarecord_impl.h"
#include "qz/dataflow/keptrecords_impl.h"

namespace QZDataFlow {

namespace {

/// Destroys decoded objects and children. They may be records that keep others, and so on to any depth: so that no
/// destructor runs inside another, a record that is about to die hands over what it keeps first. Moving the nodes of
/// the maps takes no memory.
class Dismantling {
 public:
  void Take(QZRecordImpl::ChildCache& from) { children.merge(from); }
  void Take(QZRecordImpl::Cache& from) { objects.merge(from); }

  void Run() {
    while (!children.empty() || !objects.empty()) {
      if (!children.empty()) {
        for (auto& child : children.begin()->second) {
          if (child.second.use_count() == 1) TakeFrom(*child.second);
        }
        children.erase(children.begin());
      } else {
        QZRecordImpl::CacheEntry& entry = objects.begin()->second;
        if (entry.value.use_count() == 1)
          ForEachKeptRecord(entry, [this](const QZRecord& record) { TakeFrom(record); });
        objects.erase(objects.begin());
      }
    }
  }

 private:
  void TakeFrom(const QZRecord& record) {
    // A record that was moved from has nothing.
    QZRecordImpl* const impl = QZRecordImpl::Peek(record);
    if (impl != nullptr) impl->HandOver(*this);
  }

  std::multimap<unsigned int, QZRecordImpl::Children> children;
  std::multimap<unsigned int, QZRecordImpl::CacheEntry> objects;
};

}  // namespace

template <class Taker>
void QZRecordImpl::HandOver(Taker& taker) {
  if (!childCache.empty()) taker.Take(childCache);
  if (!cache.empty()) taker.Take(cache);
}

QZRecordImpl::QZRecordImpl(QZRecordImpl& other, bool withSourceID)
    : lastRead(other.lastRead),
      block(other.block),
      storedSize(other.storedSize),
      wasted(other.wasted),
      slots(other.slots),
      strays(other.strays),
      recordMeta(other.recordMeta),
      children(other.children),
      childCache(other.childCache),
      cache(other.cache),
      unknownSections(other.unknownSections) {
  other.FreezeList();
  UseList(other.shared);
  verbatim = other.verbatim && (withSourceID || !HasSourceID());
  if (!withSourceID && HasSourceID()) recordMeta.RemoveAttribute(kRecordSourceID);
  UnloadCache();
  ClearCache();
}

QZRecordImpl::~QZRecordImpl() {
  ClearChildCache();
  ClearCache();
}

void QZRecordImpl::ClearChildCache() {
  if (childCache.empty()) return;
  Dismantling dismantling;
  dismantling.Take(childCache);
  dismantling.Run();
}

void QZRecordImpl::ClearCache() {
  if (cache.empty()) return;
  Dismantling dismantling;
  dismantling.Take(cache);
  dismantling.Run();
}

void QZRecordImpl::Clear() {
  ClearForReading();
  if (shared) UseList(nullptr);
  slots.clear();
}

void QZRecordImpl::ClearMore() {
  ClearChildCache();
  ClearCache();
  strays.clear();
  recordMeta.Clear();
  children.clear();
  unknownSections.clear();
}

void QZRecordImpl::SetRecordMeta(const QZRecordMeta& meta) {
  recordMeta = meta;
  verbatim = false;
}

}  // namespace QZDataFlow
