#pragma once

#include <cstring>
#include <string_view>

#include "qz/system/json/number_impl.h"
#include "qz/system/json/plaintext_impl.h"
#include "qz/system/json/write.h"

namespace QZSystem::JSONImpl {

/// Puts ready tokens into rapidjson's writer, which takes care of commas and colons and notes that a token came, as for
/// its own. It reaches what derived classes may reach, since the writer comes from outside. One thread at a time.
class RawWriter : public QZJSONWriter {
 public:
  /// A string or a key, as the writer's own.
  static void String(QZJSONWriter& writer, std::string_view value) {
    if (FindSpecial(value.data(), value.data() + value.size()) != value.data() + value.size()) {
      writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
      return;
    }
    char* const at = Begin(writer, rapidjson::kStringType).Push(value.size() + 2);
    at[0] = '"';
    std::memcpy(at + 1, value.data(), value.size());
    at[value.size() + 1] = '"';
  }

  /// A number, as the writer's own.
  static void Double(QZJSONWriter& writer, double value) {
    rapidjson::StringBuffer& buffer = Begin(writer, rapidjson::kNumberType);
    char* const at = buffer.Push(kDoubleRoom);
    buffer.Pop(static_cast<std::size_t>(at + kDoubleRoom - PutDouble(value, at)));
  }

  /// The text of a value as it stands, whatever its bytes; null for none.
  static void Raw(QZJSONWriter& writer, std::string_view text) {
    if (text.empty()) text = "null";
    char* const at = Begin(writer, rapidjson::kObjectType).Push(text.size());
    std::memcpy(at, text.data(), text.size());
  }

  /// The bytes so far.
  static std::size_t Size(QZJSONWriter& writer) { return Buffer(writer).GetSize(); }
  /// The arrays and objects that are open.
  static std::size_t OpenBrackets(QZJSONWriter& writer) {
    return (writer.*(&RawWriter::level_stack_)).GetSize() / sizeof(Level);
  }

 private:
  static rapidjson::StringBuffer& Buffer(QZJSONWriter& writer) { return *(writer.*(&RawWriter::os_)); }
  static rapidjson::StringBuffer& Begin(QZJSONWriter& writer, rapidjson::Type type) {
    (writer.*(&RawWriter::Prefix))(type);
    return Buffer(writer);
  }
};

}  // namespace QZSystem::JSONImpl
