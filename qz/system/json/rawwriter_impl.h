#pragma once

#include <cassert>
#include <cstring>
#include <string_view>

#include "qz/system/json/number_impl.h"
#include "qz/system/json/plaintext_impl.h"
#include "qz/system/json/write.h"

namespace QZSystem::JSONImpl {

/// Puts ready tokens into rapidjson's writer, and notes there that a token came, so that the writer goes on as after
/// one of its own. It reaches what derived classes may reach, since the writer comes from outside. REQUIRES: an array
/// or object is open. One thread at a time.
class RawWriter : public QZJSONWriter {
 public:
  /// A string or a key, as the writer's own.
  static void String(QZJSONWriter& writer, std::string_view value) {
    if (FindSpecial(value.data(), value.data() + value.size()) != value.data() + value.size()) {
      writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
      return;
    }
    char* const at = Begin(writer, value.size() + 2);
    at[0] = '"';
    std::memcpy(at + 1, value.data(), value.size());
    at[value.size() + 1] = '"';
  }

  /// A string as it stands in a document: the first `size` bytes of those that are given, all of which are copied.
  template <std::size_t kRoom>
  static void Quoted(QZJSONWriter& writer, const char (&bytes)[kRoom], std::size_t size) {
    std::memcpy(Begin(writer, kRoom), bytes, kRoom);
    Buffer(writer).Pop(kRoom - size);
  }

  /// A number, as the writer's own.
  static void Double(QZJSONWriter& writer, double value) {
    char* const at = Begin(writer, kDoubleRoom);
    Buffer(writer).Pop(static_cast<std::size_t>(at + kDoubleRoom - PutDouble(value, at)));
  }

  /// The text of a value as it stands, whatever its bytes; null for none.
  static void Raw(QZJSONWriter& writer, std::string_view text) {
    if (text.empty()) text = "null";
    std::memcpy(Begin(writer, text.size()), text.data(), text.size());
  }

  /// The bytes so far.
  static std::size_t Size(QZJSONWriter& writer) { return Buffer(writer).GetSize(); }
  /// The arrays and objects that are open.
  static std::size_t OpenBrackets(QZJSONWriter& writer) {
    return (writer.*(&RawWriter::level_stack_)).GetSize() / sizeof(Level);
  }

 private:
  static rapidjson::StringBuffer& Buffer(QZJSONWriter& writer) { return *(writer.*(&RawWriter::os_)); }

  /// Room for a token, behind the comma or colon that goes before it.
  static char* Begin(QZJSONWriter& writer, std::size_t size) {
    assert(OpenBrackets(writer) > 0);
    Level& level = *(writer.*(&RawWriter::level_stack_)).template Top<Level>();
    const bool isFirst = level.valueCount == 0;
    char* const at = Buffer(writer).Push(isFirst ? size : size + 1);
    const bool isMemberValue = !level.inArray && level.valueCount % 2 != 0;
    ++level.valueCount;
    if (isFirst) return at;
    *at = isMemberValue ? ':' : ',';
    return at + 1;
  }
};

}  // namespace QZSystem::JSONImpl
