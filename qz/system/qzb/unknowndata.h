#pragma once

#include <string>
#include <vector>

#include "qz/platform/stream.h"
#include "qz/system/data/base.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// The payload of an item that nobody could read, kept as it came.
///
///     for (QZBaseData& value : QZIter(object.GetDataIter()))
///       if (const auto* unknown = QZBaseImpl::As<QZUnknownQZBData>(&value)) bytes += unknown->data.size();
///
/// Attached to an object under the name of the value that it stands for, it is written back as it came; under
/// QZUnknownQZBDataTagName() it is what a whole item was, and isn't written. Const operations may run in parallel; a
/// change needs exclusive access.
struct QZUnknownQZBData {
  QZUnknownQZBData() = default;

  /// Reads `length` bytes. Where fewer are there, or no room for them, the object is left without data. `itemTag` is
  /// the name of the item and `itemCode` its raw code byte; `readAs` the identity of the class that was to be read.
  QZUnknownQZBData(qzistream& in, const void* readAs, unsigned long length, const char* itemTag,
                   unsigned char itemCode);

  /// Whether it holds data.
  explicit operator bool() const { return !data.empty(); }

  std::vector<char> data;
  const void* type = nullptr;
  std::string tag;
  unsigned char code = 0;
};

/// "QZUnknownQZBData": the name under which an item is attached that nobody could read.
[[nodiscard]] const char* QZUnknownQZBDataTagName();

/// Add unknown data to an object under that name; to anything else than a QZBase they do nothing.
void QZAttachData(const QZUnknownQZBData& unknown, QZBase& object);
void QZAttachData(const QZUnknownQZBData& unknown, QZBase* object);
void QZAttachData(const QZUnknownQZBData& unknown, ...);

extern template class QZBaseDataT<QZUnknownQZBData>;

}  // namespace QZSystem
