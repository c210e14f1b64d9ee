#include "tools/common/widenumber.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "qz/system.h"

namespace QZTools {

namespace {

using Value = rapidjson::Value;

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

// Only ten digits in a row can be such a number, and not those of a fraction or before one. Few lines have them.
bool hasLongDigits(const std::string& text) {
  constexpr std::ptrdiff_t longest = 10;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end; ++at) {
    if (!isDigit(*at)) continue;
    const char* const begin = at;
    while (at < end && isDigit(*at)) ++at;
    const bool isFraction = begin > text.data() && begin[-1] == '.';
    const bool hasFraction = at < end && (*at == '.' || *at == 'e' || *at == 'E');
    if (at - begin >= longest && !isFraction && !hasFraction) return true;
  }
  return false;
}

bool isWide(const Value& value) {
  if (value.IsInt()) return false;
  if (value.IsInt64() || value.IsUint64()) return true;
  // More digits than 64 bits hold arrive as a double without fraction.
  return value.IsDouble() && std::abs(value.GetDouble()) > std::numeric_limits<std::int32_t>::max();
}

const Value* member(const Value& object, const char* key) {
  if (!object.IsObject()) return nullptr;
  const auto found = object.FindMember(key);
  return found == object.MemberEnd() ? nullptr : &found->value;
}

std::string wideInRecord(const Value& record);

std::string wideInValue(const std::string& type, const Value& value) {
  const bool isInt = type == "Int" || type == "IntVec";
  const auto wide = [&](const Value& each) {
    if (isInt) return isWide(each) ? std::string("-") : std::string();
    return wideInRecord(each);
  };
  if (!isInt && type != "Record" && type != "RecordVec") return {};
  if (!value.IsArray()) return wide(value);
  for (const Value& each : value.GetArray()) {
    std::string found = wide(each);
    if (!found.empty()) return found;
  }
  return {};
}

std::string wideInField(const Value& field) {
  const Value* const name = member(field, "name");
  const Value* const type = member(field, "type");
  if (!name || !name->IsString() || !type || !type->IsString()) return {};
  std::string typeName = type->GetString();
  typeName.erase(0, typeName.rfind(':') + 1);
  std::string found;
  if (const Value* const value = member(field, "value")) found = wideInValue(typeName, *value);
  const Value* const children = member(field, "child");
  if (found.empty() && children && children->IsObject()) {
    for (const auto& child : children->GetObject()) {
      found = wideInRecord(child.value);
      if (!found.empty()) break;
    }
  }
  if (found.empty()) return {};
  return found == "-" ? std::string(name->GetString()) : std::string(name->GetString()) + "." + found;
}

std::string wideInRecord(const Value& record) {
  const Value* const fields = member(record, "fields");
  if (!fields || !fields->IsArray()) return {};
  for (const Value& field : fields->GetArray()) {
    std::string found = wideInField(field);
    if (!found.empty()) return found;
  }
  return {};
}

}  // namespace

std::string FindWideNumber(const std::string& document) {
  if (!hasLongDigits(document)) return {};
  rapidjson::Document parsed;
  return QZSystem::JSONParseHelper(parsed, document.c_str()) ? wideInRecord(parsed) : std::string();
}

}  // namespace QZTools
