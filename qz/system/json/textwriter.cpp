#include "qz/system/json/textwriter.h"

#include <rapidjson/writer.h>

#include <algorithm>
#include <charconv>
#include <new>

#include "qz/system/json/bracketdepth_impl.h"
#include "qz/system/json/number_impl.h"
#include "qz/system/json/plaintext_impl.h"

namespace QZSystem {

namespace {

constexpr std::size_t kIntegerRoom = 24;

/// The text writer as a stream of rapidjson.
struct Sink {
  using Ch = char;
  void Put(char character) { out.Raw(character); }
  void Flush() {}
  QZJSONTextWriter& out;
};

/// The form of a string in rapidjson, without what its writer does around it.
class StringWriter : public rapidjson::Writer<Sink> {
 public:
  using rapidjson::Writer<Sink>::Writer;
  using rapidjson::Writer<Sink>::WriteString;
};

}  // namespace

QZJSONTextWriter::QZJSONTextWriter()
    : buffer(new char[kFirstRoom]), cursor(buffer.get()), end(buffer.get() + kFirstRoom) {}

void QZJSONTextWriter::Grow(std::size_t size) {
  const std::size_t used = Size();
  if (size > ~std::size_t{0} / 4 - used) throw std::bad_alloc();
  const std::size_t larger = 2 * (used + size);
  std::unique_ptr<char[]> fresh(new char[larger]);
  std::memcpy(fresh.get(), buffer.get(), used);
  buffer = std::move(fresh);
  cursor = buffer.get() + used;
  end = buffer.get() + larger;
}

void QZJSONTextWriter::Document(std::string_view document) {
  if (depth + JSONImpl::BracketDepth(document) > kMaxDepth) tooDeep = true;
  Raw(document);
  if (!oneLine) return;
  const auto isLineEnd = [](char c) { return c == '\n' || c == '\r'; };
  std::replace_if(cursor - document.size(), cursor, isLineEnd, ' ');
}

void QZJSONTextWriter::String(std::string_view value) {
  const char* const valueEnd = value.data() + value.size();
  if (JSONImpl::FindSpecial(value.data(), valueEnd) == valueEnd) {
    char* const at = Room(value.size() + 2);
    at[0] = '"';
    std::copy(value.begin(), value.end(), at + 1);
    at[value.size() + 1] = '"';
  } else {
    Sink sink{*this};
    StringWriter(sink).WriteString(value.data(), static_cast<rapidjson::SizeType>(value.size()));
  }
}

void QZJSONTextWriter::Int(long value) {
  char* const at = Room(kIntegerRoom);
  cursor = std::to_chars(at, at + kIntegerRoom, value).ptr;
}

void QZJSONTextWriter::Double(double value) { cursor = JSONImpl::PutDouble(value, Room(JSONImpl::kDoubleRoom)); }

void QZJSONTextWriter::Rewind(Mark mark) {
  cursor = buffer.get() + mark.size;
  depth = mark.depth;
}

std::string QZJSONTextWriter::TakeFrom(Mark mark) {
  std::string taken(buffer.get() + mark.size, Size() - mark.size);
  Rewind(mark);
  return taken;
}

std::string QZJSONTextWriter::Take() {
  std::string taken(buffer.get(), Size());
  cursor = buffer.get();
  depth = 0;
  tooDeep = false;
  oneLine = false;
  return taken;
}

}  // namespace QZSystem
