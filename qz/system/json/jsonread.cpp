#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "qz/system/frame/error.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/json/json.h"
#include "qz/system/json/json_impl.h"
#include "qz/system/json/jsonhandler.h"
#include "qz/system/json/parse.h"

namespace QZSystem::JSONImpl {

namespace {

using rapidjson::Value;

constexpr char kNull[] = "JSON: Null value ignored, key: %s";
constexpr char kEmptyArray[] = "JSON: Empty array ignored, key: %s";
constexpr char kOutOfRange[] = "JSON: Numeric value out of range for integer, key: %s, ignoring hint";
constexpr char kHeterogenous[] = "JSON: Heterogenous array of data found, key: %s, expected type: %s";
constexpr char kKept[] = "JSON: Can not read JSON %s with key: %s, stored as JSONString";

constexpr char kObject[] = "object";
constexpr char kArray[] = "array";
constexpr char kObjects[] = "array of objects";
constexpr char kString[] = "string";
constexpr char kNumber[] = "number";
constexpr char kBoolean[] = "boolean";

constexpr char kHints[] = "qzhint";
constexpr char kType[] = "type";

constexpr double kIntMin = -2147483648.0;
constexpr double kIntMax = 2147483647.999;

/// The objects that are being read on this thread, each inside the one before.
thread_local int objectDepth = 0;

std::string_view Text(const Value& string) { return {string.GetString(), string.GetStringLength()}; }

/// Stores values as SetData does, but in constant time, where that looks at all values for each.
class ValueStore {
 public:
  explicit ValueStore(QZBase& object) : base(object) { Update(); }

  template <class T>
  bool Set(unsigned int tag, T value);
  template <class T>
  bool Add(unsigned int tag, T value) {
    base.AddData<T>(tag, std::move(value));
    Note(tag);
    return true;
  }

  QZBase& Object() const { return base; }
  /// The last value before a handler works on the object. The handler is called in between and not from here: each
  /// frame counts 256 times.
  struct Mark {
    const QZBaseData* last;
    unsigned int tag;
  };
  [[gnu::noinline]] Mark BeforeHandler() const;
  /// Notes what the handler did.
  [[gnu::noinline]] void AfterHandler(const Mark& mark);

 private:
  QZBaseData* Find(unsigned int tag);
  void Update();
  void Note(unsigned int tag);
  QZBaseData* Last() const;

  QZBase& base;
  unsigned int count = 0;
  /// The tags mostly rise, since the writer sorts them. From the first on that doesn't, the place of each is kept.
  unsigned int greatest = 0;
  std::unique_ptr<std::unordered_map<unsigned int, unsigned int>> places;
};

template <class T>
bool ValueStore::Set(unsigned int tag, T value) {
  QZBaseData* const present = Find(tag);
  if (!present) return Add<T>(tag, std::move(value));
  auto* const holder = QZBaseImpl::As<T>(present);
  if (!holder) return QZBaseImpl::CheckTypeWarning();
  holder->GetData() = std::move(value);
  return true;
}

ValueStore::Mark ValueStore::BeforeHandler() const {
  const QZBaseData* const last = Last();
  return {last, last ? last->GetTag() : 0};
}

/// If the last value isn't at its place any more, the handler has deleted values, and all are looked at anew.
void ValueStore::AfterHandler(const Mark& mark) {
  const QZBaseData* const present = Last();
  if (present != mark.last || (present && present->GetTag() != mark.tag)) {
    count = 0;
    greatest = 0;
    places.reset();
  }
  Update();
}

/// The last value that has been noted, or null.
QZBaseData* ValueStore::Last() const {
  if (count == 0) return nullptr;
  QZIter values(base.GetDataIter());
  *values.Get() += count - 1;
  return values ? &*values : nullptr;
}

/// Notes the values behind those that have been.
void ValueStore::Update() {
  QZIter values(base.GetDataIter());
  *values.Get() += count;
  for (; values; ++values) Note(values->GetTag());
}

/// The first value of the tag, or null.
QZBaseData* ValueStore::Find(unsigned int tag) {
  if (count == 0 || tag > greatest) return nullptr;
  if (!places) {
    places = std::make_unique<std::unordered_map<unsigned int, unsigned int>>();
    count = 0;
    Update();
  }
  const auto found = places->find(tag);
  if (found == places->end()) return nullptr;
  QZIter values(base.GetDataIter());
  *values.Get() += found->second;
  if (values && values->GetTag() == tag) return &*values;
  // A handler has deleted values, so the places are wrong.
  QZIter all(base.GetDataIter(tag));
  return all ? &*all : nullptr;
}

void ValueStore::Note(unsigned int tag) {
  greatest = std::max(greatest, tag);
  if (places) places->emplace(tag, count);
  ++count;
}

/// The hints of a document by their keys. Of several members of one key the first counts.
class Hints {
 public:
  /// Null for none.
  explicit Hints(const Value* object);

  const Value* Find(std::string_view key) const;

 private:
  std::vector<const Value::Member*> members;
};

Hints::Hints(const Value* object) {
  if (!object) return;
  members.reserve(object->MemberCount());
  for (const Value::Member& member : object->GetObject()) members.push_back(&member);
  const auto isBefore = [](const auto* a, const auto* b) { return Text(a->name) < Text(b->name); };
  if (!std::is_sorted(members.begin(), members.end(), isBefore)) {
    std::stable_sort(members.begin(), members.end(), isBefore);
  }
}

const Value* Hints::Find(std::string_view key) const {
  const auto isBefore = [](const auto* member, std::string_view wanted) { return Text(member->name) < wanted; };
  const auto place = std::lower_bound(members.begin(), members.end(), key, isBefore);
  return place != members.end() && Text((*place)->name) == key ? &(*place)->value : nullptr;
}

/// What the hint of a key tells.
struct Hint {
  bool isInt = false, isFloat = false, isMulti = false;
};

/// A number as an int: cut towards zero, and the nearest where it doesn't fit.
int NearestInt(double value) {
  if (std::isnan(value)) return 0;
  if (value <= kIntMin) return std::numeric_limits<int>::min();
  if (value >= kIntMax) return std::numeric_limits<int>::max();
  return static_cast<int>(value);
}

/// Reads the members of one object. What isn't on the way down into another object is never inlined, so that the frames
/// of 256 levels fit on a small stack.
class ObjectReader {
 public:
  ObjectReader(QZBase& base, const Value* hintObject, const ReservedKeys& reserved)
      : store(base), hints(hintObject), keys(reserved) {
    ++objectDepth;
  }
  ~ObjectReader() { --objectDepth; }
  ObjectReader(const ObjectReader&) = delete;
  ObjectReader& operator=(const ObjectReader&) = delete;

  bool ReadMember(const Value& key, Value& value);

 private:
  const char* NameOf(const Value& key) const;
  [[gnu::noinline]] bool ReadHint(const Value& key, Hint& hint) const;
  [[gnu::noinline]] bool ReadNumber(const Value& key, const Value& number);
  bool ReadObject(const Value& key, Value& object);
  bool ReadArray(const Value& key, Value& array);
  [[gnu::noinline]] bool ReadNumbers(const Value& key, const Value& array, const Hint& hint);
  template <class Is, class Get>
  [[gnu::noinline]] bool ReadElements(const Value& key, const Value& array, bool multi, const char* expected, Is is,
                                      Get get);
  bool ReadObjects(const Value& key, Value& array, bool multi);
  [[gnu::noinline]] void Keep(const Value& key, const Value& value, const char* kind);

  ValueStore store;
  Hints hints;
  const ReservedKeys& keys;
};

/// False where the document can't be read further.
bool ObjectReader::ReadMember(const Value& key, Value& value) {
  if (keys.Has(Text(key))) return true;
  switch (value.GetType()) {
    case rapidjson::kNullType:
      QZThrow.Warning(kNull, key.GetString());
      return true;
    case rapidjson::kTrueType:
    case rapidjson::kFalseType:
      return store.Set<bool>(QZGetTag(NameOf(key)), value.GetBool());
    case rapidjson::kStringType:
      return store.Set<std::string>(QZGetTag(NameOf(key)), std::string(Text(value)));
    case rapidjson::kNumberType:
      return ReadNumber(key, value);
    case rapidjson::kObjectType:
      return ReadObject(key, value);
    default:
      return ReadArray(key, value);
  }
}

/// The name that a key stands for: without the underscore that the writer put in front. A name ends at a NUL.
const char* ObjectReader::NameOf(const Value& key) const {
  const std::string_view text = Text(key);
  const bool isExtended = !text.empty() && text.front() == '_' && keys.foundExtendedTag(text.substr(1));
  return key.GetString() + (isExtended ? 1 : 0);
}

bool ObjectReader::ReadHint(const Value& key, Hint& hint) const {
  const Value* const found = hints.Find(Text(key));
  if (!found) return true;
  if (!found->IsString()) {
    QZWarnJSONKind(QZJSONKind::String, key.GetString());
    return false;
  }
  const std::string_view letters = Text(*found);
  const auto has = [letters](char letter) { return letters.find(letter) != std::string_view::npos; };
  hint = {has('i'), has('f'), has('m')};
  return true;
}

bool ObjectReader::ReadNumber(const Value& key, const Value& number) {
  Hint hint;
  if (!ReadHint(key, hint)) return false;
  const unsigned int tag = QZGetTag(NameOf(key));
  const double value = number.GetDouble();
  if (hint.isInt) {
    if (value >= kIntMin && value <= kIntMax && store.Set<int>(tag, static_cast<int>(value))) return true;
    QZThrow.Warning(kOutOfRange, key.GetString());
  } else if (hint.isFloat) {
    if (store.Set<float>(tag, static_cast<float>(value))) return true;
  }
  return store.Set<double>(tag, value);
}

/// The handler for the type of an object, or null; false for a type that isn't a string.
[[gnu::noinline]] bool HandlerOf(Value& object, QZJSONHandlerBase*& handler) {
  const QZJSONAttr<std::string> type = GetJSONStringAttr(object, kType);
  if (type.found && objectDepth < kMaxObjectDepth) handler = QZGetJSONHandlerByType(type.value);
  return !type.error;
}

bool ObjectReader::ReadObject(const Value& key, Value& object) {
  QZJSONHandlerBase* handler = nullptr;
  if (!HandlerOf(object, handler)) return false;
  const ValueStore::Mark mark = store.BeforeHandler();
  const bool isRead = handler && handler->Read(store.Object(), NameOf(key), object);
  if (handler) store.AfterHandler(mark);
  if (!isRead) Keep(key, object, kObject);
  return true;
}

void ObjectReader::Keep(const Value& key, const Value& value, const char* kind) {
  QZThrow.Warning(kKept, kind, key.GetString());
  store.Set<JSONString>(QZGetTag(NameOf(key)), JSONString(QZJSONText(value)));
}

bool ObjectReader::ReadArray(const Value& key, Value& array) {
  if (array.Empty()) {
    QZThrow.Warning(kEmptyArray, key.GetString());
    return true;
  }
  Hint hint;
  if (!ReadHint(key, hint)) return false;
  switch (array[0].GetType()) {
    case rapidjson::kStringType:
      return ReadElements(
          key, array, hint.isMulti, kString, [](const Value& each) { return each.IsString(); },
          [](const Value& each) { return std::string(Text(each)); });
    case rapidjson::kNumberType:
      return ReadNumbers(key, array, hint);
    case rapidjson::kTrueType:
    case rapidjson::kFalseType:
      return ReadElements(
          key, array, hint.isMulti, kBoolean, [](const Value& each) { return each.IsBool(); },
          [](const Value& each) { return each.GetBool(); });
    case rapidjson::kObjectType:
      return ReadObjects(key, array, hint.isMulti);
    default:
      Keep(key, array, kArray);
      return true;
  }
}

bool ObjectReader::ReadNumbers(const Value& key, const Value& array, const Hint& hint) {
  const auto read = [&](auto get) {
    const auto isNumber = [](const Value& each) { return each.IsNumber(); };
    return ReadElements(key, array, hint.isMulti, kNumber, isNumber, get);
  };
  if (hint.isInt) return read([](const Value& each) { return NearestInt(each.GetDouble()); });
  if (hint.isFloat) return read([](const Value& each) { return static_cast<float>(each.GetDouble()); });
  return read([](const Value& each) { return each.GetDouble(); });
}

/// An array as one vector, or as several values of the tag.
template <class Is, class Get>
bool ObjectReader::ReadElements(const Value& key, const Value& array, bool multi, const char* expected, Is is,
                                Get get) {
  using Element = decltype(get(array));
  const unsigned int tag = QZGetTag(NameOf(key));
  std::vector<Element> all;
  if (!multi) all.reserve(array.Size());
  for (const Value& each : array.GetArray()) {
    if (!is(each)) {
      QZThrow.Warning(kHeterogenous, key.GetString(), expected);
      return false;
    }
    if (!multi) {
      all.push_back(get(each));
    } else if (&each == array.Begin()) {
      store.Set<Element>(tag, get(each));
    } else {
      store.Add<Element>(tag, get(each));
    }
  }
  if (!multi) store.Set<std::vector<Element>>(tag, std::move(all));
  return true;
}

/// The handler for the type that all elements have, or null; false for a type that isn't a string.
[[gnu::noinline]] bool HandlerOfAll(Value& array, QZJSONHandlerBase*& handler) {
  std::string type;
  bool isOne = true;
  for (Value& each : array.GetArray()) {
    QZJSONAttr<std::string> found;
    if (each.IsObject()) found = GetJSONStringAttr(each, kType);
    if (found.error) return false;
    if (&each == array.Begin()) type = found.value;
    if (!found.found || found.value != type) isOne = false;
  }
  if (isOne && objectDepth < kMaxObjectDepth) handler = QZGetJSONHandlerByType(type);
  return true;
}

bool ObjectReader::ReadObjects(const Value& key, Value& array, bool multi) {
  QZJSONHandlerBase* handler = nullptr;
  if (!HandlerOfAll(array, handler)) return false;
  const ValueStore::Mark mark = store.BeforeHandler();
  const bool isRead = handler && handler->VRead(store.Object(), NameOf(key), array, multi);
  if (handler) store.AfterHandler(mark);
  if (!isRead) Keep(key, array, kObjects);
  return true;
}

}  // namespace

bool parseQZBase(QZBase& base, Value& value, const ReservedKeys& keys) {
  const QZJSONAttr<Value*> hints = GetJSONObjectAttr(value, kHints);
  if (hints.error) return false;
  ObjectReader reader(base, hints.value, keys);
  for (auto& member : value.GetObject()) {
    if (!reader.ReadMember(member.name, member.value)) return false;
  }
  return true;
}

}  // namespace QZSystem::JSONImpl
