#include "qz/system/json/write.h"

#include <vector>

namespace QZSystem {

namespace {

/// An array or object that is open, and what of it is still to be written.
struct Open {
  const rapidjson::Value* value;
  rapidjson::SizeType next;
};

bool IsNested(const rapidjson::Value& value) { return value.IsArray() || value.IsObject(); }

/// Writes the start of an array or object and opens it, or a plain value whole.
void Begin(QZJSONWriter& writer, const rapidjson::Value& value, std::vector<Open>& open) {
  if (!IsNested(value)) {
    value.Accept(writer);
    return;
  }
  value.IsArray() ? writer.StartArray() : writer.StartObject();
  open.push_back({&value, 0});
}

/// Writes the next part of an object or array, or its end.
void Continue(QZJSONWriter& writer, std::vector<Open>& open) {
  const rapidjson::Value& value = *open.back().value;
  const rapidjson::SizeType next = open.back().next++;
  if (value.IsArray() && next < value.Size()) {
    Begin(writer, value[next], open);
  } else if (value.IsObject() && next < value.MemberCount()) {
    const auto& member = *(value.MemberBegin() + static_cast<std::ptrdiff_t>(next));
    member.name.Accept(writer);
    Begin(writer, member.value, open);
  } else {
    value.IsArray() ? writer.EndArray() : writer.EndObject();
    open.pop_back();
  }
}

}  // namespace

std::string QZJSONText(const rapidjson::Value& value) {
  rapidjson::StringBuffer buffer;
  QZJSONWriter writer(buffer);
  std::vector<Open> open;
  Begin(writer, value, open);
  while (!open.empty()) Continue(writer, open);
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace QZSystem
