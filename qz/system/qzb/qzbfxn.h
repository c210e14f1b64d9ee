#pragma once

#include "qz/platform/stream.h"
#include "qz/system/data/basedata.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

class QZBinaryIOHandlerBase;

/// Base of the functions that read items, as objects that a handler can copy and tell apart by their item's name and by
/// the type that they fill. What derives from `QZReadFxn<T>` reads.
///
///     class ReadCell : public QZReadFxn<Cell> {
///      public:
///       const char* GetTag() const override { return "Cell"; }
///       const void* GetType() const override { return QZGetDataType<Cell>(); }
///       ReadCell* CreateCopy() const override { return new ReadCell(*this); }
///       unsigned int operator()(qzistream& in, Cell& cell, unsigned long length,
///                               const QZBinaryIOHandlerBase& handler) const override;
///     };
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZReadFxnBase {
 public:
  virtual ~QZReadFxnBase() = default;

  /// The name of the item that it reads.
  [[nodiscard]] virtual const char* GetTag() const = 0;

  /// The identity of the type that it fills: QZGetDataType<T>() for a `QZReadFxn<T>`. A `QZReadFxn<QZBase>` answers
  /// QZGetDataType<QZBase>() and adds data to an object of any class.
  [[nodiscard]] virtual const void* GetType() const = 0;

  /// A new function object of the same class; the caller deletes it.
  [[nodiscard]] virtual QZReadFxnBase* CreateCopy() const = 0;

 protected:
  QZReadFxnBase() = default;
  QZReadFxnBase(const QZReadFxnBase&) = default;
  QZReadFxnBase& operator=(const QZReadFxnBase&) = default;
};

/// Base of the functions that write items; all else as in `QZReadFxnBase`. What derives from `QZWriteFxn<T>` writes.
///
///     handler.SetWriteFxn(WriteCell(), false);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZWriteFxnBase {
 public:
  virtual ~QZWriteFxnBase() = default;

  /// The name of the item that it writes.
  [[nodiscard]] virtual const char* GetTag() const = 0;

  /// The identity of the type that it writes: QZGetDataType<T>() for a `QZWriteFxn<T>`, and for a base writer that of
  /// the values that it takes.
  [[nodiscard]] virtual const void* GetType() const = 0;

  /// A new function object of the same class; the caller deletes it.
  [[nodiscard]] virtual QZWriteFxnBase* CreateCopy() const = 0;

 protected:
  QZWriteFxnBase() = default;
  QZWriteFxnBase(const QZWriteFxnBase&) = default;
  QZWriteFxnBase& operator=(const QZWriteFxnBase&) = default;
};

/// Reads an item into a `T`.
template <class T>
class QZReadFxn : public QZReadFxnBase {
 public:
  [[nodiscard]] QZReadFxn* CreateCopy() const override = 0;

  /// Reads the payload, `length` bytes from where the stream stands, and returns a code of QZBReturn. The length is
  /// what the stream claims: an override compares it with what is there before it makes room.
  virtual unsigned int operator()(qzistream& in, T& object, unsigned long length,
                                  const QZBinaryIOHandlerBase& handler) const = 0;
};

/// Writes a `T` as an item. A `QZWriteFxn<QZBaseData>` is a base writer, which gets the holder of a value.
template <class T>
class QZWriteFxn : public QZWriteFxnBase {
 public:
  [[nodiscard]] QZWriteFxn* CreateCopy() const override = 0;

  /// Writes tag, length and payload; nothing, for nothing to write. False if the object can't be written.
  virtual bool operator()(qzostream& out, const T& object, const QZBinaryIOHandlerBase& handler) const = 0;
};

/// The function for items that nobody claims.
class QZDefaultReadFxn : public QZReadFxnBase {
 public:
  [[nodiscard]] QZDefaultReadFxn* CreateCopy() const override = 0;

  /// Takes a payload of `length` bytes of an item of the given name, and returns a code of QZBReturn.
  virtual unsigned int operator()(qzistream& in, unsigned long length, const char* tag,
                                  const QZBinaryIOHandlerBase& handler) const = 0;
};

/// The function for objects that nobody writes.
class QZDefaultWriteFxn : public QZWriteFxnBase {
 public:
  [[nodiscard]] QZDefaultWriteFxn* CreateCopy() const override = 0;

  /// Writes in the place of such an object.
  virtual bool operator()(qzostream& out, const QZBinaryIOHandlerBase& handler) const = 0;
};

/// The default reader of a new handler: it passes over the payload and returns 0.
class QZDefaultReader : public QZDefaultReadFxn {
 public:
  [[nodiscard]] const char* GetTag() const override;
  [[nodiscard]] const void* GetType() const override;
  [[nodiscard]] QZDefaultReader* CreateCopy() const override;
  unsigned int operator()(qzistream& in, unsigned long length, const char* tag,
                          const QZBinaryIOHandlerBase& handler) const override;
};

/// The default writer of a new handler: it writes nothing and returns true.
class QZDefaultWriter : public QZDefaultWriteFxn {
 public:
  [[nodiscard]] const char* GetTag() const override;
  [[nodiscard]] const void* GetType() const override;
  [[nodiscard]] QZDefaultWriter* CreateCopy() const override;
  bool operator()(qzostream& out, const QZBinaryIOHandlerBase& handler) const override;
};

}  // namespace QZSystem
