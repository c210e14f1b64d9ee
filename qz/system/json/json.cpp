// A document, as docs/generic-json.md tells it:
//
//   {"type":"container","version":"0.91",KEY:VALUE,...,"qzhint":{KEY:HINT,...}}
//
// KEY is a name, with "_" in front where the name is one of "qzhint", "type" and "version" behind any number of
// underscores. HINT is a string in which "i" stands for numbers that are int, "f" for float, and "m" for an array that
// is several values of one name; "qzhint" is absent when there are none. A nested container is such an object again.
#include "qz/system/json/json.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "qz/system/frame/error.h"
#include "qz/system/json/json_impl.h"
#include "qz/system/json/jsonhandler.h"
#include "qz/system/json/parse.h"
#include "qz/system/json/plainparse_impl.h"
#include "qz/system/json/rawwriter_impl.h"

namespace QZSystem {

template class QZBaseDataT<JSONString>;

namespace {

constexpr char kBadVersion[] = "JSON: document version %s, not compatible with current reader version: %s";
constexpr char kUnknownType[] = "JSON: Unrecognized type: %s";

constexpr char kType[] = "type";
constexpr char kVersion[] = "version";

constexpr std::string_view kReadable = "0";

// What most documents fit into, as text and as a tree.
constexpr std::size_t kTextRoom = 2048;
constexpr std::size_t kTreeRoom = 4096;
constexpr std::size_t kStackRoom = 3072;

struct Escape {
  char character;
  std::string_view text;
};
constexpr Escape kEscapes[] = {{'<', "&lt;"}, {'>', "&gt;"}};

}  // namespace

namespace JSONImpl {

bool ReservedKeys::IsListed(std::string_view key) const {
  return std::any_of(first, first + count, [key](const char* each) { return key == each; });
}

ReservedKeys DocumentKeys() { return {qzbase_xlist, qzbase_nxlist}; }

void genQZBaseVersioned(QZJSONWriter& writer, const QZBase& base, unsigned int flavor) {
  RawWriter::String(writer, kVersion);
  RawWriter::String(writer, JSONVersion);
  genQZBase(writer, base, DocumentKeys(), flavor);
}

bool parseQZBaseValid(QZBase& base, rapidjson::Value& value) {
  {
    const QZJSONAttr<std::string> version = GetJSONStringAttr(value, kVersion, true);
    if (version.error || !compatibleJSONVersion(version.value)) return false;
  }
  return parseQZBase(base, value, DocumentKeys());
}

}  // namespace JSONImpl

std::string QZBaseToJSON(const QZBase& base, unsigned int flavor) {
  rapidjson::CrtAllocator allocator;
  rapidjson::StringBuffer buffer(&allocator, kTextRoom);
  QZJSONWriter writer(buffer, &allocator);
  writer.StartObject();
  JSONImpl::RawWriter::String(writer, kType);
  JSONImpl::RawWriter::String(writer, ContainerType);
  JSONImpl::genQZBaseVersioned(writer, base, flavor);
  writer.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize());
}

bool QZJSONToBase(QZBase& base, const std::string& text) {
  alignas(std::max_align_t) char treeRoom[kTreeRoom];
  alignas(std::max_align_t) char stackRoom[kStackRoom];
  rapidjson::MemoryPoolAllocator<> treePool(treeRoom, sizeof treeRoom), stackPool(stackRoom, sizeof stackRoom);
  JSONImpl::PooledDocument document(&treePool, kStackRoom / 2, &stackPool);
  if (!JSONImpl::ParsePooled(document, text)) return false;
  const QZJSONAttr<std::string> type = GetJSONStringAttr(document, kType);
  if (type.error) return false;
  base.Clear();
  if (!type.found) return JSONImpl::parseQZBase(base, document, JSONImpl::DocumentKeys());
  if (type.value == ContainerType) return JSONImpl::parseQZBaseValid(base, document);
  if (QZJSONHandlerBase* handler = QZGetJSONHandlerByType(type.value)) return handler->Read(base, type.value, document);
  QZThrow.Warning(kUnknownType, type.value.c_str());
  return false;
}

void QZGenBaseDataJSON(QZJSONWriter& writer, const QZBase& base, const char* const* xlist, unsigned long nxlist,
                       unsigned int flavor) {
  JSONImpl::genQZBase(writer, base, {xlist, nxlist}, flavor);
}

bool QZParseBaseDataJSON(QZBase& base, rapidjson::Value& value, const char* const* xlist, unsigned long nxlist) {
  return value.IsObject() && JSONImpl::parseQZBase(base, value, {xlist, nxlist});
}

bool compatibleJSONVersion(const std::string& version) {
  if (version.substr(0, version.find('.')) == kReadable) return true;
  QZThrow.Warning(kBadVersion, version.c_str(), JSONVersion);
  return false;
}

std::string& QZEscapeJSON(std::string& text) {
  std::string escaped;
  for (const char character : text) {
    std::size_t i = 0;
    while (i < std::size(kEscapes) && kEscapes[i].character != character) ++i;
    i < std::size(kEscapes) ? escaped.append(kEscapes[i].text) : escaped.append(1, character);
  }
  text.swap(escaped);
  return text;
}

std::string& QZUnescapeJSON(std::string& text) {
  std::string plain;
  for (std::string_view rest = text; !rest.empty();) {
    std::size_t i = 0;
    while (i < std::size(kEscapes) && rest.substr(0, kEscapes[i].text.size()) != kEscapes[i].text) ++i;
    const bool isEscape = i < std::size(kEscapes);
    plain += isEscape ? kEscapes[i].character : rest.front();
    rest.remove_prefix(isEscape ? kEscapes[i].text.size() : 1);
  }
  text.swap(plain);
  return text;
}

}  // namespace QZSystem
