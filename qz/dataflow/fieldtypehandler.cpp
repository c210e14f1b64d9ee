#include "qz/dataflow/fieldtypehandler.h"

#include <cassert>
#include <utility>

#include "qz/system/frame/error.h"

namespace QZDataFlow {

namespace {

constexpr char kNoWrappedHandler[] = "No wrapped handler for %s";
constexpr char kTheHandlers[] = "Here are the handlers I have:";

}  // namespace

std::string QZFieldTypeHandler::BytesToJSON(const std::vector<unsigned char>&) const { return {}; }

std::vector<unsigned char> QZFieldTypeHandler::JSONToBytes(const std::string&) const { return {}; }

std::vector<unsigned char> QZFieldTypeHandler::PtrToBytes(const void*) const { return {}; }

// A registry itself outlives every static object, so that a late caller finds an empty one; what it owns goes at exit.
// The maps are emptied before the handlers go, since a handler's destructor may look here.
QZFieldTypeHandlerRegistry& QZFieldTypeHandlerRegistry::GetInstance() {
  static auto* const registry = new QZFieldTypeHandlerRegistry;
  struct AtExit {
    ~AtExit() {
      registry->priorities.clear();
      const auto gone = std::exchange(registry->handlers, {});
    }
  };
  static const AtExit atExit;
  return *registry;
}

void QZFieldTypeHandlerRegistry::RegisterHandler(QZFieldTypeHandler* handler, int priority) {
  assert(handler != nullptr);
  std::unique_ptr<QZFieldTypeHandler> owner(handler);
  const std::string name = handler->GetName();
  const auto present = priorities.find(name);
  const bool isBetter = present == priorities.end() ? priority >= 0 : priority > present->second;
  if (!isBetter) return;
  auto& place = handlers[name];
  priorities[name] = priority;
  place = std::move(owner);
}

QZFieldTypeHandler* QZFieldTypeHandlerRegistry::GetHandler(const std::string& name) const {
  const auto found = handlers.find(name);
  return found == handlers.end() ? nullptr : found->second.get();
}

QZWrappedFieldTypeHandlerRegistry& QZWrappedFieldTypeHandlerRegistry::GetInstance() {
  static auto* const registry = new QZWrappedFieldTypeHandlerRegistry;
  struct AtExit {
    ~AtExit() { const auto gone = std::exchange(registry->handlers, {}); }
  };
  static const AtExit atExit;
  return *registry;
}

void QZWrappedFieldTypeHandlerRegistry::RegisterHandler(QZWrappedFieldTypeHandler* handler) {
  assert(handler != nullptr);
  std::unique_ptr<QZWrappedFieldTypeHandler> owner(handler);
  handlers[handler->GetName()] = std::move(owner);
}

QZWrappedFieldTypeHandler* QZWrappedFieldTypeHandlerRegistry::GetHandler(const std::string& name) const {
  const auto found = handlers.find(name);
  if (found != handlers.end()) return found->second.get();
  QZThrow.Warning(kNoWrappedHandler, name.c_str());
  QZThrow.Warning(kTheHandlers);
  for (const auto& entry : handlers) QZThrow.Warning(entry.first);
  return nullptr;
}

bool QZWrappedFieldTypeHandlerRegistry::HasHandler(const std::string& name) const { return handlers.count(name) != 0; }

}  // namespace QZDataFlow
