#include "qz/system/json/parse.h"

#include <cassert>
#include <cstring>

#include "qz/system/frame/error.h"
#include "qz/system/json/check.h"
#include "qz/system/json/guardedparse_impl.h"
#include "qz/system/json/plainparse_impl.h"

namespace QZSystem {

namespace {

constexpr char kMissing[] = "JSON: missing required attribute, key: %s";
constexpr char kNotObject[] = "JSON: must be an object type, key: ";
constexpr char kNotArray[] = "JSON: must be an array type, key: ";
constexpr char kNotString[] = "JSON: expects type of: string, key: ";
constexpr char kNotBool[] = "JSON: expects type of: boolean, key: ";
constexpr char kNotInt[] = "JSON: expects type of: integer, key: ";
constexpr char kNotUnsigned[] = "JSON: expects type of: unsigned, key: ";
constexpr char kNotDouble[] = "JSON: expects type of: Double, key: ";

/// Fills a document, in the way of its Populate.
class DocumentParse {
 public:
  DocumentParse(const char* bytes, std::size_t count) : text(bytes), size(count) {}

  template <class Document>
  bool operator()(Document& handler) {
    outcome = JSONImpl::GuardedParse(text, size, handler);
    return outcome.code == rapidjson::kParseErrorNone;
  }

  JSONImpl::Outcome outcome;

 private:
  const char* text;
  std::size_t size;
};

/// Notes whether the top-level value is an object, and drops everything.
class CheckHandler {
 public:
  bool IsObject() const { return isObject; }

  bool Null() { return Value(); }
  bool Bool(bool) { return Value(); }
  bool Int(int) { return Value(); }
  bool Uint(unsigned) { return Value(); }
  bool Int64(std::int64_t) { return Value(); }
  bool Uint64(std::uint64_t) { return Value(); }
  bool Double(double) { return Value(); }
  bool String(const char*, rapidjson::SizeType, bool) { return Value(); }
  bool Key(const char*, rapidjson::SizeType, bool) { return true; }
  bool StartObject() {
    if (isFirst) isObject = true;
    return Value();
  }
  bool EndObject(rapidjson::SizeType) { return true; }
  bool StartArray() { return Value(); }
  bool EndArray(rapidjson::SizeType) { return true; }

 private:
  bool Value() {
    isFirst = false;
    return true;
  }

  bool isFirst = true;
  bool isObject = false;
};

/// Reads the member of that kind with `get`.
template <class T, class Get>
QZJSONAttr<T> ReadMember(rapidjson::Value& object, const char* key, bool required, QZJSONKind kind, Get get) {
  assert(object.IsObject());
  QZJSONAttr<T> attr;
  const auto member = object.FindMember(key);
  if (member == object.MemberEnd()) {
    attr.error = required;
    if (required) QZThrow.Warning(kMissing, key);
    return attr;
  }
  attr.found = true;
  attr.error = !QZIsJSONKind(member->value, kind);
  if (attr.error) {
    QZWarnJSONKind(kind, key);
  } else {
    attr.value = get(member->value);
  }
  return attr;
}

template <class Document>
bool Parse(Document& document, const char* text, std::size_t size) {
  document.SetNull();
  JSONImpl::PlainParse<Document> plain(text, size);
  if (size <= kMaxJSONSize) document.Populate(plain);
  if (plain.IsDone()) return JSONImpl::ReportTopLevel(document.IsObject());
  DocumentParse parse(text, size);
  document.Populate(parse);
  return JSONImpl::Report(parse.outcome) && JSONImpl::ReportTopLevel(document.IsObject());
}

}  // namespace

bool JSONParseHelper(rapidjson::Document& document, const char* text, std::size_t size) {
  return Parse(document, text, size);
}

bool JSONParseHelper(rapidjson::Document& document, const char* text) {
  return JSONParseHelper(document, text, std::strlen(text));
}

bool JSONParseHelper(rapidjson::Document& document, const std::string& text) {
  return JSONParseHelper(document, text.data(), text.size());
}

bool JSONImpl::ParsePooled(PooledDocument& document, const std::string& text) {
  return Parse(document, text.data(), text.size());
}

bool JSONCheckHelper(const std::string& text) {
  CheckHandler handler;
  return JSONImpl::Report(JSONImpl::GuardedParse(text.data(), text.size(), handler)) &&
         JSONImpl::ReportTopLevel(handler.IsObject());
}

bool QZIsJSONKind(const rapidjson::Value& value, QZJSONKind kind) {
  switch (kind) {
    case QZJSONKind::Object:
      return value.IsObject();
    case QZJSONKind::Array:
      return value.IsArray();
    case QZJSONKind::String:
      return value.IsString();
    case QZJSONKind::Boolean:
      return value.IsBool();
    case QZJSONKind::Integer:
      return value.IsInt();
    case QZJSONKind::Unsigned:
      return value.IsUint();
    default:
      return value.IsNumber();
  }
}

void QZWarnJSONKind(QZJSONKind kind, const char* key) {
  static constexpr const char* kInOrder[] = {kNotObject, kNotArray,    kNotString, kNotBool,
                                             kNotInt,    kNotUnsigned, kNotDouble};
  QZThrow.Warning(kInOrder[static_cast<std::size_t>(kind)] + std::string(key));
}

QZJSONAttr<rapidjson::Value*> GetJSONObjectAttr(rapidjson::Value& object, const char* key, bool required) {
  return ReadMember<rapidjson::Value*>(object, key, required, QZJSONKind::Object, [](auto& value) { return &value; });
}

QZJSONAttr<rapidjson::Value*> GetJSONArrayAttr(rapidjson::Value& object, const char* key, bool required) {
  return ReadMember<rapidjson::Value*>(object, key, required, QZJSONKind::Array, [](auto& value) { return &value; });
}

QZJSONAttr<std::string> GetJSONStringAttr(rapidjson::Value& object, const char* key, bool required) {
  return ReadMember<std::string>(object, key, required, QZJSONKind::String, [](const auto& value) {
    return std::string(value.GetString(), value.GetStringLength());
  });
}

QZJSONAttr<bool> GetJSONBoolAttr(rapidjson::Value& object, const char* key, bool required) {
  return ReadMember<bool>(object, key, required, QZJSONKind::Boolean,
                          [](const auto& value) { return value.GetBool(); });
}

QZJSONAttr<int> GetJSONIntAttr(rapidjson::Value& object, const char* key, bool required) {
  return ReadMember<int>(object, key, required, QZJSONKind::Integer, [](const auto& value) { return value.GetInt(); });
}

QZJSONAttr<unsigned int> GetJSONUnsignedAttr(rapidjson::Value& object, const char* key, bool required) {
  return ReadMember<unsigned int>(object, key, required, QZJSONKind::Unsigned,
                                  [](const auto& value) { return value.GetUint(); });
}

QZJSONAttr<double> GetJSONDoubleAttr(rapidjson::Value& object, const char* key, bool required) {
  return ReadMember<double>(object, key, required, QZJSONKind::Double,
                            [](const auto& value) { return value.GetDouble(); });
}

}  // namespace QZSystem
