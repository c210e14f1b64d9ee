#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qz/system/qzb/item_impl.h"
#include "qz/system/qzb/objectstream.h"
#include "qz/system/qzb/payload_impl.h"
#include "qz/system/qzb/qzb.h"
#include "qz/system/qzb/qzbrfxn.h"

/// Writing whole objects as items, and the writers that most classes need.
///
///     handler.SetWriteFxn(QZBasePODWriteFxn(), false);
///     QZInstallGenericDataHandler<Cell>(handler, "BaseCell");
///     if (!QZBinaryWrite(out, cell, handler)) return false;
///
/// One thread at a time.
namespace QZSystem {

/// Writes an object with the first writer of the handler for the type `T`, else with the default writer, which writes
/// nothing and gives true. False if the object can't be written; a failure of the stream shows in the stream.
template <class T>
bool QZBinaryWrite(qzostream& out, const T& object, const QZBinaryIOHandlerBase& handler) {
  const QZWriteFxnBase* const writer = FindWriter(handler, QZGetDataType<T>());
  if (!writer) return handler.GetDefaultWriteFxn()(out, handler);
  return static_cast<const QZWriteFxn<T>&>(*writer)(out, object, handler);
}

/// Writes the attached data of an object as an item named "QZBasePOD". Const operations may run in parallel; a change
/// needs exclusive access.
class QZBasePODWriteFxn : public QZWriteFxn<QZBase> {
 public:
  [[nodiscard]] const char* GetTag() const override;
  [[nodiscard]] const void* GetType() const override;
  [[nodiscard]] QZBasePODWriteFxn* CreateCopy() const override;
  bool operator()(qzostream& out, const QZBase& object, const QZBinaryIOHandlerBase& handler) const override;
};

/// Writes a value of class `T` that is attached to an object. Const operations may run in parallel; a change needs
/// exclusive access.
template <class T>
class QZBaseQZBWriteFxn : public QZWriteFxn<QZBaseData> {
 public:
  explicit QZBaseQZBWriteFxn(std::string itemTag) : tag(std::move(itemTag)) {}

  [[nodiscard]] const char* GetTag() const override { return tag.c_str(); }
  [[nodiscard]] const void* GetType() const override { return QZGetDataType<T>(); }
  [[nodiscard]] QZBaseQZBWriteFxn* CreateCopy() const override { return new QZBaseQZBWriteFxn(*this); }

  /// An item whose payload is the name of the value and what QZBinaryWrite<T> writes of it; nothing for a value of
  /// another type. False, with nothing written, if the object or a name can't be written.
  bool operator()(qzostream& out, const QZBaseData& value, const QZBinaryIOHandlerBase& handler) const override;

 private:
  std::string tag;
};

/// Writes what several writers write of an object as one item, compressed or not. Const operations may run in parallel;
/// a change needs exclusive access.
template <class T>
class QZCollectWriteFxn : public QZWriteFxn<T> {
 public:
  /// With `compressed`, the content goes through QZCompress with that format name; "gz" is one.
  QZCollectWriteFxn(bool compressed, std::string formatName, std::string itemTag)
      : compress(compressed), format(std::move(formatName)), tag(std::move(itemTag)) {}
  QZCollectWriteFxn(const QZCollectWriteFxn& other);
  QZCollectWriteFxn& operator=(const QZCollectWriteFxn&) = delete;

  /// Adds a copy of a writer behind those that are there.
  void AddWriteFxn(const QZWriteFxn<T>& writer) { writers.emplace_back(writer.CreateCopy()); }

  [[nodiscard]] const char* GetTag() const override { return tag.c_str(); }
  [[nodiscard]] const void* GetType() const override { return QZGetDataType<T>(); }
  [[nodiscard]] QZCollectWriteFxn* CreateCopy() const override { return new QZCollectWriteFxn(*this); }

  /// False, with nothing written, if one of the writers fails or the content can't be compressed; nothing and true, if
  /// none of them writes anything.
  bool operator()(qzostream& out, const T& object, const QZBinaryIOHandlerBase& handler) const override;

 private:
  bool compress;
  std::string format;
  std::string tag;
  std::vector<std::unique_ptr<QZWriteFxn<T>>> writers;
};

/// Writes an item: tag, length, content. False, with nothing written, for a tag that can't be, or 4 GiB of content.
bool QZBWriteItem(qzostream& out, const char* tag, std::string_view content);

/// Teaches a handler to carry a `T` as attached data, in items of that name: with a `QZBaseQZBWriteFxn<T>` as base
/// writer and a `QZBaseQZBReadFxn<T>` as reader. Both need a writer and a reader for `T` itself. False if the handler
/// refuses the tag.
template <class T>
bool QZInstallGenericDataHandler(QZBinaryIOHandlerBase& handler, const char* tag) {
  return handler.SetBaseWriteFxn(QZBaseQZBWriteFxn<T>(tag)) && handler.SetReadFxn(QZBaseQZBReadFxn<T>(tag), false);
}

template <class T>
bool QZBaseQZBWriteFxn<T>::operator()(qzostream& out, const QZBaseData& value,
                                      const QZBinaryIOHandlerBase& handler) const {
  if (value.GetDataType() != QZBaseDataT<T>::DataType()) return true;
  const auto body = std::make_unique<BodyStream>();
  return QZBWriteTag(*body, QZGetTag(value.GetTag())) &&
         QZBinaryWrite<T>(*body, static_cast<const QZBaseDataT<T>&>(value).GetData(), handler) &&
         QZBWriteItem(out, tag.c_str(), body->Bytes());
}

template <class T>
QZCollectWriteFxn<T>::QZCollectWriteFxn(const QZCollectWriteFxn& other)
    : QZWriteFxn<T>(other), compress(other.compress), format(other.format), tag(other.tag) {
  for (const auto& writer : other.writers) AddWriteFxn(*writer);
}

/// Writes the content of a QZCollectWriteFxn as an item.
bool WriteCollected(qzostream& out, const char* tag, std::string_view content, const std::string* format);

template <class T>
bool QZCollectWriteFxn<T>::operator()(qzostream& out, const T& object, const QZBinaryIOHandlerBase& handler) const {
  const auto body = std::make_unique<BodyStream>();
  for (const auto& writer : writers) {
    if (!(*writer)(*body, object, handler)) return false;
  }
  return WriteCollected(out, tag.c_str(), body->Bytes(), compress ? &format : nullptr);
}

}  // namespace QZSystem
