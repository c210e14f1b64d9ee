#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <string>

#include "qz/system/frame/names.h"

namespace QZSystem {

/// What a member reader found: `value` holds the member when `found` is set and `error` isn't.
template <class T>
struct QZJSONAttr {
  bool found = false;
  bool error = false;
  T value{};
};

/// Parses JSON text whose top-level value is an object. All JSON that the system reads goes through here.
///
///     rapidjson::Document document;
///     if (!JSONParseHelper(document, text)) return false;
///     const QZJSONAttr<std::string> name = GetJSONStringAttr(document, "name", true);
///     if (!name.error) Use(name.value);
///
/// `NaN`, `Inf`, `Infinity` and their negatives are numbers; each number becomes the double nearest to its text. On
/// text that isn't JSON, whose brackets nest deeper than 1024, or that is longer than 2,000,000,000 bytes the result is
/// false after the warning "JSON: parse error offset %d: %s"; after another top-level value, "JSON: Top level document
/// must be an object". The document is then null or that value. The stack that a call takes doesn't depend on the text.
/// Safe from any thread.
[[nodiscard]] bool JSONParseHelper(rapidjson::Document& document, const char* text);
/// The same for `size` bytes. A NUL among them ends nothing: it is an error, as any other character out of place.
[[nodiscard]] bool JSONParseHelper(rapidjson::Document& document, const char* text, std::size_t size);
[[nodiscard]] bool JSONParseHelper(rapidjson::Document& document, const std::string& text);

/// What a value is expected to be.
enum class QZJSONKind { Object, Array, String, Boolean, Integer, Unsigned, Double };

/// Whether `value` is of that kind: an integer fits the 32 bits of `int` or `unsigned int` and is written without
/// fraction and exponent, a double is any number.
bool QZIsJSONKind(const rapidjson::Value& value, QZJSONKind kind);
/// Gives the warning that a member `key` of another kind gets from its reader, see below.
void QZWarnJSONKind(QZJSONKind kind, const char* key);

/// Read the member `key` of the object `object`, which REQUIRES that it is one. Of several members of that name the
/// first counts. Absent and `required`: the warning "JSON: missing required attribute, key: %s" and `error`. Of another
/// kind: `found`, `error` and the warning "JSON: must be an object type, key: %s", "JSON: must be an array type, key:
/// %s" or "JSON: expects type of: %s, key: %s" with "string", "boolean", "integer", "unsigned" or "Double". A pointer
/// lives as long as the object stays as it is.
QZJSONAttr<rapidjson::Value*> GetJSONObjectAttr(rapidjson::Value& object, const char* key, bool required = false);
QZJSONAttr<rapidjson::Value*> GetJSONArrayAttr(rapidjson::Value& object, const char* key, bool required = false);
QZJSONAttr<std::string> GetJSONStringAttr(rapidjson::Value& object, const char* key, bool required = false);
QZJSONAttr<bool> GetJSONBoolAttr(rapidjson::Value& object, const char* key, bool required = false);
/// A number that fits the 32 bits of the type and is written without fraction and exponent.
QZJSONAttr<int> GetJSONIntAttr(rapidjson::Value& object, const char* key, bool required = false);
QZJSONAttr<unsigned int> GetJSONUnsignedAttr(rapidjson::Value& object, const char* key, bool required = false);
/// Any number.
QZJSONAttr<double> GetJSONDoubleAttr(rapidjson::Value& object, const char* key, bool required = false);

}  // namespace QZSystem
