#pragma once

#include <memory>
#include <string>

#include "qz/system/data/base.h"
#include "qz/system/frame/iterbase.h"
#include "qz/system/qzb/qzbfxn.h"
#include "qz/system/qzb/qzbinit.h"

namespace QZSystem {

class QZBinaryIOImpl;

/// What a registry of readers and writers can do. All reading and writing of QZB takes one by const reference.
///
///     handler.SetReadFxn(ReadCell(), false);
///     handler.SetWriteFxn(WriteCell(), false);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZBinaryIOHandlerBase : public QZBase {
 public:
  /// Register a copy of a function behind those that are there, or, with `isDefault`, in the place of the default one.
  /// Where two read the same item into the same type, the first one counts. False, with nothing changed, for a tag of
  /// more than 1023 bytes, after the Error "Attempt to register reader function which has a tag length of > 1024
  /// bytes", or "writer", and for a default that is no `QZDefaultReadFxn` or `QZDefaultWriteFxn`.
  virtual bool SetReadFxn(const QZReadFxnBase& reader, bool isDefault) = 0;
  virtual bool SetWriteFxn(const QZWriteFxnBase& writer, bool isDefault) = 0;

  /// The functions for what nobody claims; good until they are replaced.
  [[nodiscard]] virtual const QZDefaultReadFxn& GetDefaultReadFxn() const = 0;
  [[nodiscard]] virtual const QZDefaultWriteFxn& GetDefaultWriteFxn() const = 0;

  /// Put a copy of a function in the place of the first one that has its type and the tag `name`; its own tag, if
  /// `name` is empty. False, with nothing changed, if there is none.
  virtual bool ReplaceReadFxn(const QZReadFxnBase& reader, std::string name) = 0;
  virtual bool ReplaceWriteFxn(const QZWriteFxnBase& writer, std::string name) = 0;

  /// Whether a function with this one's type and tag is registered.
  [[nodiscard]] virtual bool HasReadFxn(const QZReadFxnBase& reader) const = 0;
  [[nodiscard]] virtual bool HasWriteFxn(const QZWriteFxnBase& writer) const = 0;

  /// New iterators over the functions in the order of registration, without the default ones; the caller deletes them.
  /// They are good until the handler changes.
  [[nodiscard]] virtual QZIterBase<QZReadFxnBase>* GetReadFxns() const = 0;
  [[nodiscard]] virtual QZIterBase<QZWriteFxnBase>* GetWriteFxns() const = 0;

  /// Registers a copy of a function that writes values of one type as attached data. As SetWriteFxn.
  virtual bool SetBaseWriteFxn(const QZWriteFxn<QZBaseData>& writer) = 0;

  /// A new iterator over those functions; the caller deletes it. It is good until the handler changes.
  [[nodiscard]] virtual QZIterBase<QZWriteFxn<QZBaseData>>* GetBaseWriteFxns() const = 0;
};

/// The registry: what a program fills once and then reads and writes with.
///
///     QZBinaryIOHandler handler;
///     QZInitializeHandler(handler);                              // what other libraries have announced
///     QZInstallGenericDataHandler<Cell>(handler, "BaseCell");    // a class as attached data
///     QZBWriteQZBase(out, crystal, "QZBasePOD", handler);
///
/// A value: a copy has copies of all functions and of the attached data. A new handler knows no function but the
/// default ones. Const operations may run in parallel; a change needs exclusive access.
class QZBinaryIOHandler : public QZBinaryIOHandlerBase {
 public:
  QZBinaryIOHandler();
  QZBinaryIOHandler(const QZBinaryIOHandler& other);
  /// What a handler of any class knows, taken through its public operations.
  QZBinaryIOHandler(const QZBinaryIOHandlerBase& other);
  ~QZBinaryIOHandler() override;
  QZBinaryIOHandler& operator=(const QZBinaryIOHandler& other);

  /// Forgets all functions and attached data, and goes back to the first defaults.
  void Clear() override;
  [[nodiscard]] const void* GetDataType() const override;
  [[nodiscard]] bool IsDataType(const void* type) const override;
  [[nodiscard]] QZBinaryIOHandler* CreateCopy() const override;

  bool SetReadFxn(const QZReadFxnBase& reader, bool isDefault) override;
  bool SetWriteFxn(const QZWriteFxnBase& writer, bool isDefault) override;
  [[nodiscard]] const QZDefaultReadFxn& GetDefaultReadFxn() const override;
  [[nodiscard]] const QZDefaultWriteFxn& GetDefaultWriteFxn() const override;
  bool ReplaceReadFxn(const QZReadFxnBase& reader, std::string name) override;
  bool ReplaceWriteFxn(const QZWriteFxnBase& writer, std::string name) override;
  [[nodiscard]] bool HasReadFxn(const QZReadFxnBase& reader) const override;
  [[nodiscard]] bool HasWriteFxn(const QZWriteFxnBase& writer) const override;
  [[nodiscard]] QZIterBase<QZReadFxnBase>* GetReadFxns() const override;
  [[nodiscard]] QZIterBase<QZWriteFxnBase>* GetWriteFxns() const override;
  bool SetBaseWriteFxn(const QZWriteFxn<QZBaseData>& writer) override;
  [[nodiscard]] QZIterBase<QZWriteFxn<QZBaseData>>* GetBaseWriteFxns() const override;

 private:
  std::unique_ptr<QZBinaryIOImpl> impl;
};

}  // namespace QZSystem
