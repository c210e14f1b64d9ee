#pragma once

#include <memory>
#include <string>
#include <utility>

#include "qz/system/qzb/item_impl.h"
#include "qz/system/qzb/nesting_impl.h"
#include "qz/system/qzb/objectstream.h"
#include "qz/system/qzb/payload_impl.h"
#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/unknowndata.h"

/// Reading whole items into objects, and the readers that most classes need.
///
///     handler.SetReadFxn(QZBasePODReadFxn<Cell>(), false);
///     Cell cell;
///     while (QZBinaryRead(in, cell, handler) == QZBReturn::Success) use(cell);
///
/// One thread at a time.
namespace QZSystem {

/// Reads one item, from its tag on, with the first reader of the handler that has its tag and the type `T`, and returns
/// what that returns. Code 6: no tag, as at the end of the stream; 8: the stream ends behind the tag; 9: no length. If
/// nobody reads the item, a `QZBase` gets it as `QZUnknownQZBData` under QZUnknownQZBDataTagName(), any other object
/// nothing, and the code is 0, or 9 if the stream ends before the item does.
template <class T>
[[nodiscard]] unsigned int QZBinaryRead(qzistream& in, T& object, const QZBinaryIOHandlerBase& handler) {
  const FoundItem item = FindItem(in, QZGetDataType<T>(), handler);
  if (item.status != QZBReturn::Success) return item.status;
  if (item.reader) return static_cast<const QZReadFxn<T>&>(*item.reader)(in, object, item.length, handler);
  QZAttachData(*item.unknown, &object);
  return QZBReturn::Success;
}

/// Reads the attached data of a `T`, a class that derives from QZBase, from items named "QZBasePOD". Const operations
/// may run in parallel; a change needs exclusive access.
template <class T>
class QZBasePODReadFxn : public QZReadFxn<T> {
 public:
  [[nodiscard]] const char* GetTag() const override { return "QZBasePOD"; }
  [[nodiscard]] const void* GetType() const override { return QZGetDataType<T>(); }
  [[nodiscard]] QZBasePODReadFxn* CreateCopy() const override { return new QZBasePODReadFxn(*this); }

  unsigned int operator()(qzistream& in, T& object, unsigned long length,
                          const QZBinaryIOHandlerBase& handler) const override {
    return QZBReadQZBase(in, object, length, handler);
  }
};

/// Reads a value of class `T` that was attached to an object, and attaches it: the counterpart of `QZBaseQZBWriteFxn`.
/// Const operations may run in parallel; a change needs exclusive access.
template <class T>
class QZBaseQZBReadFxn : public QZReadFxn<QZBase> {
 public:
  explicit QZBaseQZBReadFxn(std::string itemTag) : tag(std::move(itemTag)) {}

  [[nodiscard]] const char* GetTag() const override { return tag.c_str(); }
  [[nodiscard]] const void* GetType() const override { return QZGetDataType<QZBase>(); }
  [[nodiscard]] QZBaseQZBReadFxn* CreateCopy() const override { return new QZBaseQZBReadFxn(*this); }

  /// The payload is the name of the value and the item of the object. A name alone stands for a default-constructed
  /// `T`; a payload without a name adds nothing and gives 0.
  unsigned int operator()(qzistream& in, QZBase& object, unsigned long length,
                          const QZBinaryIOHandlerBase& handler) const override;

 private:
  std::string tag;
};

/// Reads a payload as a sequence of items, each into the same object: by the readers for `U`, which is `T` or a base of
/// it. Stops at the first code other than 0, and at groups that stand more than 256 deep in one another with code 2.
/// Const operations may run in parallel; a change needs exclusive access.
template <class T, class U>
class QZGroupReadFxn : public QZReadFxn<T> {
 public:
  explicit QZGroupReadFxn(std::string itemTag) : tag(std::move(itemTag)) {}

  [[nodiscard]] const char* GetTag() const override { return tag.c_str(); }
  [[nodiscard]] const void* GetType() const override { return QZGetDataType<T>(); }
  [[nodiscard]] QZGroupReadFxn* CreateCopy() const override { return new QZGroupReadFxn(*this); }

  unsigned int operator()(qzistream& in, T& object, unsigned long length,
                          const QZBinaryIOHandlerBase& handler) const override;

 private:
  std::string tag;
};

template <class T>
unsigned int QZBaseQZBReadFxn<T>::operator()(qzistream& in, QZBase& object, unsigned long length,
                                             const QZBinaryIOHandlerBase& handler) const {
  if (length == 0) return QZBReturn::Success;
  const auto payload = std::make_unique<NamedPayload>(in, length);
  if (payload->status != QZBReturn::Success || !payload->hasName) return payload->status;
  auto value = std::make_unique<T>();
  if (!payload->isNameAlone) payload->status = QZBinaryRead<T>(payload->bytes.Stream(), *value, handler);
  if (payload->status == QZBReturn::Success) object.AddData<T>(QZGetTag(payload->name), std::move(*value));
  return payload->status;
}

template <class T, class U>
unsigned int QZGroupReadFxn<T, U>::operator()(qzistream& in, T& object, unsigned long length,
                                              const QZBinaryIOHandlerBase& handler) const {
  const NestingLevel level(GroupDepth());
  if (!level.IsAllowed()) return QZBReturn::CheckFailed;
  Payload payload(in, length);
  if (!payload.IsWhole()) return QZBReturn::IncorrectSize;
  qzistream& items = payload.Stream();
  unsigned int status = QZBReturn::Success;
  while (status == QZBReturn::Success && !items.eof()) status = QZBinaryRead<U>(items, object, handler);
  return status;
}

}  // namespace QZSystem
