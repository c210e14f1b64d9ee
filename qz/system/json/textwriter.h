#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "qz/system/json/write.h"

namespace QZSystem {

/// Writes JSON token by token, in the forms of QZJSONWriter, for a document whose shape its writer knows beforehand.
///
///     QZJSONTextWriter out;
///     out.Open("{\"mass\":[");
///     out.Double(1.0);
///     out.Close("]}");
///     text = out.Take();  // {"mass":[1.0]}
///
/// The caller puts brackets, commas and colons. Opened brackets are counted: a document that has more of them open than
/// one may be read with is TooDeep from then on. One thread at a time.
class QZJSONTextWriter {
 public:
  QZJSONTextWriter() : buffer(nullptr, kFirstRoom), tokens(buffer) {}

  /// Puts the text as it stands. Open and Close count its brackets, which are all opening, or all closing.
  void Raw(std::string_view text);
  void Raw(char character) { buffer.Put(character); }
  void Open(std::string_view text);
  void Close(std::string_view text);
  /// Puts a whole value that is JSON text already.
  void Document(std::string_view text);

  void String(std::string_view text);
  void Int(long value);
  void Unsigned(unsigned int value);
  void Double(double value);
  void Bool(bool value) { Raw(value ? std::string_view("true") : std::string_view("false")); }
  void Null() { Raw(std::string_view("null")); }

  /// The text so far, as a place to come back to; what was put behind it then goes, and its brackets with it.
  struct Mark {
    std::size_t size, depth;
  };
  Mark Here() const { return {buffer.GetSize(), depth}; }
  void Rewind(Mark mark);

  /// Notes that the document nests deeper than its reader allows.
  void SetTooDeep() { tooDeep = true; }
  bool IsTooDeep() const { return tooDeep; }
  /// The text, which the writer gives up.
  std::string Take();

 private:
  static constexpr std::size_t kFirstRoom = 1024;

  /// The token forms of rapidjson, without what its writer does around them.
  class Tokens : public QZJSONWriter {
   public:
    using QZJSONWriter::QZJSONWriter;
    using QZJSONWriter::WriteString;
  };

  char* Room(std::size_t size) { return buffer.Push(size); }
  void GiveBack(std::size_t size) { buffer.Pop(size); }
  void Deepen(std::size_t brackets);

  rapidjson::StringBuffer buffer;
  Tokens tokens;
  std::size_t depth = 0;
  bool tooDeep = false;
};

}  // namespace QZSystem
