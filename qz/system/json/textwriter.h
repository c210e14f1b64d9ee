#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "qz/system/json/limits.h"

namespace QZSystem {

/// Writes JSON token by token, in the forms of QZJSONWriter, for a document whose shape its writer knows beforehand.
///
///     QZJSONTextWriter out;
///     out.Open("{\"mass\":[", 2);
///     out.Double(1.0);
///     out.Close("]}", 2);
///     text = out.Take();  // {"mass":[1.0]}
///
/// The caller puts brackets, commas and colons, and says how many brackets it opens and closes. A document that has
/// more of them open than one may be read with is TooDeep from then on. One thread at a time.
class QZJSONTextWriter {
 public:
  QZJSONTextWriter();
  QZJSONTextWriter(const QZJSONTextWriter&) = delete;
  QZJSONTextWriter& operator=(const QZJSONTextWriter&) = delete;

  /// Puts the text as it stands.
  void Raw(std::string_view text) {
    if (!text.empty()) std::memcpy(Room(text.size()), text.data(), text.size());
  }
  void Raw(char character) { *Room(1) = character; }
  /// Puts text that opens, or closes, that many brackets.
  void Open(std::string_view text, std::size_t brackets = 1) {
    depth += brackets;
    if (depth > kMaxDepth) tooDeep = true;
    Raw(text);
  }
  void Close(std::string_view text, std::size_t brackets = 1) {
    depth -= brackets;
    Raw(text);
  }
  /// Puts a whole value that is JSON text already. Its brackets are counted.
  void Document(std::string_view text);
  /// From now on the line ends in such text, where they mean no more than blanks, are put as blanks.
  void KeepToOneLine() { oneLine = true; }

  void String(std::string_view text);
  void Int(long value);
  void Unsigned(unsigned int value) { Int(static_cast<long>(value)); }
  void Double(double value);
  void Bool(bool value) { Raw(value ? std::string_view("true") : std::string_view("false")); }
  void Null() { Raw(std::string_view("null")); }

  /// A place in the text, with the brackets that are open there.
  struct Mark {
    std::size_t size, depth;
  };
  Mark Here() const { return {Size(), depth}; }
  /// Takes back what was put behind the mark, and gives it.
  void Rewind(Mark mark);
  std::string TakeFrom(Mark mark);
  /// Puts text that was taken back, up to that mark.
  void Restore(std::string_view text, Mark mark) {
    depth = mark.depth;
    Raw(text);
  }

  /// Notes that the document nests deeper than its reader allows.
  void SetTooDeep() { tooDeep = true; }
  bool IsTooDeep() const { return tooDeep; }
  /// The text so far, until the next change.
  std::string_view View() const { return {buffer.get(), Size()}; }
  /// The text. The writer is as a new one then.
  std::string Take();

 private:
  static constexpr std::size_t kFirstRoom = 1024;
  static constexpr std::size_t kMaxDepth = kMaxJSONDepth;

  std::size_t Size() const { return static_cast<std::size_t>(cursor - buffer.get()); }
  /// Room for that many characters, which count as put.
  char* Room(std::size_t size) {
    if (static_cast<std::size_t>(end - cursor) < size) Grow(size);
    char* const room = cursor;
    cursor += size;
    return room;
  }
  void Grow(std::size_t size);

  std::unique_ptr<char[]> buffer;
  char* cursor;
  char* end;
  std::size_t depth = 0;
  bool tooDeep = false;
  bool oneLine = false;
};

}  // namespace QZSystem
