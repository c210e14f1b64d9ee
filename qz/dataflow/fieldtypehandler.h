#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qz/dataflow/names.h"

namespace QZDataFlow {

/// What the library asks of a type of field values. A type of one's own derives from it and is registered by its name.
///
///     class MolHandler : public QZFieldTypeHandler {
///      public:
///       std::string GetName() const override { return "Mol"; }
///     };
///     QZFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new MolHandler, 0);
///
/// A handler has no state: safe from any thread, and so must be every override.
class QZFieldTypeHandler {
 public:
  virtual ~QZFieldTypeHandler() = default;

  /// The JSON text of a value's bytes. Empty, as here, stands for a type that has no JSON form; it is written as null.
  virtual std::string BytesToJSON(const std::vector<unsigned char>& bytes) const;
  /// The bytes of a value from its JSON text; a JSON string comes without its quotes. Empty here.
  virtual std::vector<unsigned char> JSONToBytes(const std::string& json) const;
  /// The bytes of the value that `value` points to, in the type's own class. Empty here, for a type whose values are
  /// never held decoded.
  virtual std::vector<unsigned char> PtrToBytes(const void* value) const;
  /// The name under which the type is stored.
  virtual std::string GetName() const = 0;
  /// Whether decoded values are worth keeping.
  virtual bool IsCacheable() const { return false; }
  /// Whether a value is plain data: numbers, text, bytes and lists of them.
  virtual bool IsPOD() const { return false; }
};

/// A handler for types inside a wrapper, which the library only stores. It has the operations of a field type, so that
/// GetName stands in the same place.
class QZWrappedFieldTypeHandler : public QZFieldTypeHandler {};

/// The types of field values that other libraries have added, by name.
///
///     const QZFieldTypeHandler* handler = QZFieldTypeHandlerRegistry::GetInstance().GetHandler("Mol");
///     if (handler != nullptr) json = handler->BytesToJSON(bytes);
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZFieldTypeHandlerRegistry {
 public:
  QZFieldTypeHandlerRegistry(const QZFieldTypeHandlerRegistry&) = delete;
  QZFieldTypeHandlerRegistry& operator=(const QZFieldTypeHandlerRegistry&) = delete;

  /// The one registry, made at first use. At exit it deletes its handlers, and is empty from then on.
  static QZFieldTypeHandlerRegistry& GetInstance();
  /// Takes over `handler`, which REQUIRES that it isn't null. It is deleted at once when its name has a handler of at
  /// least this priority, or none and the priority is negative; otherwise it takes the place of the one of its name,
  /// which is deleted. To be called before threads that read records start.
  void RegisterHandler(QZFieldTypeHandler* handler, int priority = 0);
  /// The handler of that name, or null. It belongs to the registry.
  QZFieldTypeHandler* GetHandler(const std::string& name) const;

 private:
  QZFieldTypeHandlerRegistry() = default;

  std::map<std::string, std::unique_ptr<QZFieldTypeHandler>> handlers;
  std::map<std::string, int> priorities;
};

/// The handlers for types inside a wrapper, by name.
///
///     auto& registry = QZWrappedFieldTypeHandlerRegistry::GetInstance();
///     if (registry.HasHandler("Mol")) Use(registry.GetHandler("Mol"));
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZWrappedFieldTypeHandlerRegistry {
 public:
  QZWrappedFieldTypeHandlerRegistry(const QZWrappedFieldTypeHandlerRegistry&) = delete;
  QZWrappedFieldTypeHandlerRegistry& operator=(const QZWrappedFieldTypeHandlerRegistry&) = delete;

  /// The one registry, made at first use. At exit it deletes its handlers, and is empty from then on.
  static QZWrappedFieldTypeHandlerRegistry& GetInstance();
  /// Takes over `handler`, which REQUIRES that it isn't null, and deletes an earlier one of its name.
  void RegisterHandler(QZWrappedFieldTypeHandler* handler);
  /// The handler of that name. For an unknown name null, after the warnings "No wrapped handler for %s", "Here are the
  /// handlers I have:" and one with each name.
  QZWrappedFieldTypeHandler* GetHandler(const std::string& name) const;
  bool HasHandler(const std::string& name) const;

 private:
  QZWrappedFieldTypeHandlerRegistry() = default;

  std::map<std::string, std::unique_ptr<QZWrappedFieldTypeHandler>> handlers;
};

}  // namespace QZDataFlow
