#include "qz/system/json/jsonhandler.h"

#include <algorithm>
#include <memory>
#include <new>
#include <set>
#include <utility>
#include <vector>

#include "qz/system/data/container.h"
#include "qz/system/json/json.h"
#include "qz/system/json/json_impl.h"

namespace QZSystem {

namespace {

constexpr char kType[] = "type";

template <class Map, class Key>
QZJSONHandlerBase* Find(const Map& map, const Key& key) {
  const auto found = map.find(key);
  return found == map.end() ? nullptr : found->second;
}

// The registry of the process stands in a room of its own and never ends. It begins with the handler for containers,
// so that this is there also for an initialiser of another unit that runs before the one below.
QZJSONHandlerRegistry& MakeRegistry() {
  alignas(QZJSONHandlerRegistry) static unsigned char room[sizeof(QZJSONHandlerRegistry)];
  auto& registry = *new (room) QZJSONHandlerRegistry;
  registry.AddHandler(QZInitContainerJSONHandler());
  return registry;
}

// Its handlers go at exit. For those who come later, destructors and threads that run on, one for containers stays,
// which nothing deletes.
struct HandlersEnd {
  QZJSONHandlerRegistry& registry;
  ~HandlersEnd() {
    alignas(QZContainerJSONHandler) static unsigned char room[sizeof(QZContainerJSONHandler)];
    registry.Clear();
    registry.AddHandler(new (room) QZContainerJSONHandler);
  }
};

// Whoever looks for a handler links this unit, and with it the initialiser.
const bool isMade = (static_cast<void>(QZGetJSONHandlerRegistry()), true);

void WriteContainer(const QZContainer& container, const std::string& type, QZJSONWriter& writer, unsigned int flavor) {
  writer.StartObject();
  writer.Key(kType);
  writer.String(type.data(), static_cast<rapidjson::SizeType>(type.size()));
  JSONImpl::genQZBaseVersioned(writer, container, flavor);
  writer.EndObject();
}

}  // namespace

QZJSONHandlerRegistry::~QZJSONHandlerRegistry() { Clear(); }

// The maps are emptied before the handlers go, since a handler's destructor may look here. A pointer in several of them
// goes once.
void QZJSONHandlerRegistry::Clear() {
  std::set<QZJSONHandlerBase*> all;
  const auto take = [&all](auto& map) {
    for (const auto& entry : map) all.insert(entry.second);
    map.clear();
  };
  take(byWord);
  take(byType);
  take(byVectorType);
  for (QZJSONHandlerBase* handler : all) delete handler;
}

// All places are made before the first changes hands. A handler without a place, the new one after an allocation that
// failed or an earlier one, is deleted.
void QZJSONHandlerRegistry::AddHandler(QZJSONHandlerBase* handler) {
  if (!handler) return;
  const auto deleteUnlessHeld = [this](QZJSONHandlerBase* each) { DeleteUnlessHeld(each); };
  const std::unique_ptr<QZJSONHandlerBase, decltype(deleteUnlessHeld)> taken(handler, deleteUnlessHeld);
  const void* const dataType = handler->GetDataType();
  const void* const vectorType = handler->GetVDataType();
  QZJSONHandlerBase* noType = nullptr;
  QZJSONHandlerBase* noVectorType = nullptr;
  QZJSONHandlerBase*& word = byWord[QZGetTag(handler->GetJsonType())];
  QZJSONHandlerBase*& type = dataType ? byType[dataType] : noType;
  QZJSONHandlerBase*& vector = vectorType ? byVectorType[vectorType] : noVectorType;
  std::set<QZJSONHandlerBase*> earlier{word, type, vector};
  word = type = vector = handler;
  for (QZJSONHandlerBase* each : earlier) DeleteUnlessHeld(each);
}

void QZJSONHandlerRegistry::DeleteUnlessHeld(QZJSONHandlerBase* handler) {
  const auto holds = [handler](const auto& map) {
    return std::any_of(map.begin(), map.end(), [handler](const auto& entry) { return entry.second == handler; });
  };
  if (!holds(byWord) && !holds(byType) && !holds(byVectorType)) delete handler;
}

QZJSONHandlerBase* QZJSONHandlerRegistry::GetHandlerByType(const std::string& type) const {
  return Find(byWord, QZGetTag(type));
}

QZJSONHandlerBase* QZJSONHandlerRegistry::GetHandlerByType(const char* type) const {
  return Find(byWord, QZGetTag(type));
}

QZJSONHandlerBase* QZJSONHandlerRegistry::GetHandlerByType(const void* dataType) const {
  return Find(byType, dataType);
}

QZJSONHandlerBase* QZJSONHandlerRegistry::GetVHandlerByType(const void* vectorDataType) const {
  return Find(byVectorType, vectorDataType);
}

QZJSONHandlerRegistry& QZGetJSONHandlerRegistry() {
  static QZJSONHandlerRegistry& registry = MakeRegistry();
  static const HandlersEnd end{registry};
  return registry;
}

bool QZRegisterJSONHandler(QZJSONHandlerBase* handler) {
  QZGetJSONHandlerRegistry().AddHandler(handler);
  return true;
}

QZJSONHandlerBase* QZGetJSONHandlerByType(const std::string& type) {
  return QZGetJSONHandlerRegistry().GetHandlerByType(type);
}

QZJSONHandlerBase* QZGetJSONHandlerByType(const char* type) {
  return QZGetJSONHandlerRegistry().GetHandlerByType(type);
}

QZJSONHandlerBase* QZGetJSONHandlerByType(const void* dataType) {
  return QZGetJSONHandlerRegistry().GetHandlerByType(dataType);
}

QZJSONHandlerBase* QZGetJSONVHandlerByType(const void* vectorDataType) {
  return QZGetJSONHandlerRegistry().GetVHandlerByType(vectorDataType);
}

bool QZContainerJSONHandler::Read(QZBase& base, const std::string& key, rapidjson::Value& value) {
  QZContainer container;
  if (!value.IsObject() || !JSONImpl::parseQZBaseValid(container, value)) return false;
  return base.SetData<QZContainer>(QZGetTag(key), std::move(container));
}

bool QZContainerJSONHandler::VRead(QZBase& base, const std::string& key, rapidjson::Value& array, bool multi) {
  if (!array.IsArray()) return false;
  const unsigned int tag = QZGetTag(key);
  std::vector<QZContainer> all;
  bool isFirst = true;
  for (rapidjson::Value& element : array.GetArray()) {
    QZContainer container;
    if (!element.IsObject() || !JSONImpl::parseQZBaseValid(container, element)) return false;
    if (!multi) {
      all.push_back(std::move(container));
    } else if (std::exchange(isFirst, false)) {
      base.SetData<QZContainer>(tag, std::move(container));
    } else {
      base.AddData<QZContainer>(tag, std::move(container));
    }
  }
  if (!multi) base.SetData<std::vector<QZContainer>>(tag, std::move(all));
  return true;
}

void QZContainerJSONHandler::Write(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) {
  const QZContainer& container = static_cast<QZBaseDataT<QZContainer>*>(holder)->GetData();
  WriteContainer(container, GetJsonType(), writer, flavor);
}

void QZContainerJSONHandler::VWrite(QZBaseData* holder, QZJSONWriter& writer, unsigned int flavor) {
  writer.StartArray();
  for (const QZContainer& container : static_cast<QZBaseDataT<std::vector<QZContainer>>*>(holder)->GetData()) {
    WriteContainer(container, GetJsonType(), writer, flavor);
  }
  writer.EndArray();
}

std::string QZContainerJSONHandler::GetJsonType() const { return ContainerType; }

const void* QZContainerJSONHandler::GetDataType() const { return QZGetDataType<QZContainer>(); }

const void* QZContainerJSONHandler::GetVDataType() const { return QZGetDataType<std::vector<QZContainer>>(); }

unsigned int QZContainerJSONHandler::GetFlavor() const { return 0; }

QZJSONHandlerBase* QZInitContainerJSONHandler() { return new QZContainerJSONHandler; }

}  // namespace QZSystem
