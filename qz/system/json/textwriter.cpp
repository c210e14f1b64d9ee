#include "qz/system/json/textwriter.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "qz/system/json/limits.h"
#include "qz/system/json/number_impl.h"

namespace QZSystem {

namespace {

constexpr std::size_t kIntegerRoom = 24;

bool IsOpening(char c) { return c == '{' || c == '['; }
bool IsClosing(char c) { return c == '}' || c == ']'; }

/// Whether a string stands as it is between its quotes.
bool IsPlain(std::string_view text) {
  const auto needsEscape = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\'; };
  bool any = false;
  for (const char c : text) any |= needsEscape(c);
  return !any;
}

/// The brackets that are open at most at a time, outside strings.
std::size_t DepthOf(std::string_view text) {
  std::size_t depth = 0, deepest = 0;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      if (c == '\\') ++i;
      inString = c != '"';
    } else if (c == '"') {
      inString = true;
    } else if (IsOpening(c)) {
      deepest = std::max(deepest, ++depth);
    } else if (IsClosing(c) && depth > 0) {
      --depth;
    }
  }
  return deepest;
}

}  // namespace

void QZJSONTextWriter::Raw(std::string_view text) {
  if (!text.empty()) std::memcpy(Room(text.size()), text.data(), text.size());
}

void QZJSONTextWriter::Deepen(std::size_t brackets) {
  if (depth + brackets > static_cast<std::size_t>(kMaxJSONDepth)) tooDeep = true;
}

void QZJSONTextWriter::Open(std::string_view text) {
  const auto brackets = static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsOpening));
  Deepen(brackets);
  depth += brackets;
  Raw(text);
}

void QZJSONTextWriter::Close(std::string_view text) {
  depth -= static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsClosing));
  Raw(text);
}

void QZJSONTextWriter::Document(std::string_view text) {
  Deepen(DepthOf(text));
  Raw(text);
}

void QZJSONTextWriter::String(std::string_view text) {
  if (IsPlain(text)) {
    char* const at = Room(text.size() + 2);
    at[0] = '"';
    std::copy(text.begin(), text.end(), at + 1);
    at[text.size() + 1] = '"';
  } else {
    tokens.WriteString(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  }
}

void QZJSONTextWriter::Int(long value) {
  char* const at = Room(kIntegerRoom);
  GiveBack(static_cast<std::size_t>(at + kIntegerRoom - std::to_chars(at, at + kIntegerRoom, value).ptr));
}

void QZJSONTextWriter::Unsigned(unsigned int value) { Int(static_cast<long>(value)); }

void QZJSONTextWriter::Double(double value) {
  char* const at = Room(JSONImpl::kDoubleRoom);
  GiveBack(static_cast<std::size_t>(at + JSONImpl::kDoubleRoom - JSONImpl::PutDouble(value, at)));
}

void QZJSONTextWriter::Rewind(Mark mark) {
  GiveBack(buffer.GetSize() - mark.size);
  depth = mark.depth;
}

std::string QZJSONTextWriter::Take() {
  std::string text(buffer.GetString(), buffer.GetSize());
  buffer.Clear();
  depth = 0;
  tooDeep = false;
  return text;
}

}  // namespace QZSystem
