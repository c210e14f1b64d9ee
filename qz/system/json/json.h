#pragma once

#include <rapidjson/document.h>

#include <string>

#include "qz/system/data/base.h"
#include "qz/system/json/write.h"

/// Attached data as JSON, and back.
///
///     const std::string text = QZBaseToJSON(molecule);
///     QZContainer copy;
///     if (!QZJSONToBase(copy, text)) return false;  // a warning tells why
///
/// A document is an object with a member for each name. JSON knows fewer types than attached data does; the member
/// "qzhint" tells which numbers are `int` or `float`, and which arrays are several values of one name. Classes travel
/// by a handler (jsonhandler.h), as nested objects with a "type" of their own. docs/generic-json.md tells the format.
/// These functions keep no state; what holds for the objects holds for them: one thread at a time.
namespace QZSystem {

/// JSON text that nobody interpreted: what the reader stores where it knows no type, and the writer puts back as it
/// stands.
///
///     base.SetData("style", JSONString("{\"line\":{\"width\":2}}"));
///
/// Const operations may run in parallel; a change needs exclusive access.
class JSONString {
 public:
  JSONString() = default;
  /// Keeps `jsonText`, which REQUIRES to be one JSON value for the documents that it is written into to be JSON.
  explicit JSONString(const std::string& jsonText) : text(jsonText) {}

  const std::string& GetText() const { return text; }

 private:
  std::string text;
};

extern template class QZBaseDataT<JSONString>;

/// The "type" of a document, and the "version" that is written.
inline constexpr char ContainerType[] = "container";
inline constexpr char JSONVersion[] = "0.91";

/// The keys that the format keeps for itself, sorted. The key of a value whose name is one of them, leading underscores
/// apart, has an underscore more than the name.
inline constexpr const char* const qzbase_xlist[] = {"qzhint", "type", "version"};
inline constexpr unsigned long qzbase_nxlist = 3;

/// The bit of a flavor that has keys and strings written by QZEscapeJSON. Containers inside are written without it.
inline constexpr unsigned int QZJSONEscaped = 0x800;

/// The document of the attached data. The values stand in the order of their tags, those of one tag in their own order,
/// as one array. Names that the toolkit keeps for itself aren't written, the empty name isn't either. A value of a
/// class without a handler, one that is nested more than 256 levels deep, and raw text that would take the document
/// past 1024 open brackets are left out with the warning "JSON: Can not write object with key: %s, no handler for
/// internal generic data type: %p".
[[nodiscard]] std::string QZBaseToJSON(const QZBase& base, unsigned int flavor = 0);

/// Replaces the attached data by that of a document. False, with `base` as it was, for text that isn't a JSON object or
/// that has a "type" which isn't a string. From there on the present data are gone, and a false result, after a warning
/// or a value that doesn't fit one that is there, leaves what had been read by then. A document without "type" is read
/// whatever its version, one of the type "container" needs a "version" that compatibleJSONVersion takes, and any other
/// is read by the handler of its type, or else refused with "JSON: Unrecognized type: %s".
///
/// Objects that no handler reads become a JSONString, with a warning; so do objects that are nested more than 256
/// levels deep. Every key becomes a tag for the life of the process.
bool QZJSONToBase(QZBase& base, const std::string& text);

/// Writes the members of a document, hints included, into the object that is open in `writer`: for the `Write` of a
/// handler, which has written the members of its own. `xlist` is a sorted list of the `nxlist` keys that these take,
/// "qzhint" among them, or null for none.
void QZGenBaseDataJSON(QZJSONWriter& writer, const QZBase& base, const char* const* xlist, unsigned long nxlist,
                       unsigned int flavor);

/// Reads the members of a document into `base`, on top of what it holds, and passes over those in `xlist`: for the
/// `Read` of a handler. False when `value` is no object, or where the document can't be read further; what was read
/// before stays.
bool QZParseBaseDataJSON(QZBase& base, rapidjson::Value& value, const char* const* xlist, unsigned long nxlist);

/// Whether documents of that version can be read: those whose first part, before the first dot, is "0". Otherwise the
/// warning "JSON: document version %s, not compatible with current reader version: %s".
[[nodiscard]] bool compatibleJSONVersion(const std::string& version);

/// Replaces each "<" by "&lt;" and each ">" by "&gt;", for text that goes into HTML, or the other way round, and
/// returns the string. Nothing else changes. The reader of documents leaves the escapes as they are.
std::string& QZEscapeJSON(std::string& text);
std::string& QZUnescapeJSON(std::string& text);

}  // namespace QZSystem
