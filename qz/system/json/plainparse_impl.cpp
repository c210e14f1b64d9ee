#include "qz/system/json/plainparse_impl.h"

#include <cstdint>
#include <limits>
#include <string_view>

namespace QZSystem::JSONImpl {

namespace {

// It descends with the text, and so not far. What nests deeper is for the parser that doesn't descend.
constexpr int kMaxDepth = 16;

rapidjson::SizeType SizeOf(std::string_view text) { return static_cast<rapidjson::SizeType>(text.size()); }

}  // namespace

template <class Document>
bool PlainParse<Document>::operator()(Document& document) {
  done = Value(document, 0);
  scan.SkipSpace();
  return done = done && scan.AtEnd();
}

template <class Document>
bool PlainParse<Document>::Value(Document& document, int depth) {
  scan.SkipSpace();
  switch (scan.Peek()) {
    case '"':
      return String(document);
    case '{':
      return depth < kMaxDepth && Object(document, depth + 1);
    case '[':
      return depth < kMaxDepth && Array(document, depth + 1);
    case 't':
      return scan.Literal("true") && document.Bool(true);
    case 'f':
      return scan.Literal("false") && document.Bool(false);
    case 'n':
      return scan.Null() && document.Null();
    default:
      return Number(document);
  }
}

template <class Document>
bool PlainParse<Document>::Object(Document& document, int depth) {
  rapidjson::SizeType count = 0;
  document.StartObject();
  if (!scan.Literal('{')) return false;
  if (Token('}')) return document.EndObject(count);
  do {
    std::string_view key;
    scan.SkipSpace();
    if (!scan.String(key, room)) return false;
    document.Key(key.data(), SizeOf(key), true);
    if (!Token(':') || !Value(document, depth)) return false;
    ++count;
  } while (Token(','));
  return scan.Literal('}') && document.EndObject(count);
}

template <class Document>
bool PlainParse<Document>::Array(Document& document, int depth) {
  rapidjson::SizeType count = 0;
  document.StartArray();
  if (!scan.Literal('[')) return false;
  if (Token(']')) return document.EndArray(count);
  do {
    if (!Value(document, depth)) return false;
    ++count;
  } while (Token(','));
  return scan.Literal(']') && document.EndArray(count);
}

template <class Document>
bool PlainParse<Document>::String(Document& document) {
  std::string_view text;
  return scan.String(text, room) && document.String(text.data(), SizeOf(text), true);
}

/// As the reader of rapidjson tells it: in the smallest of four integer types, those with a sign for negative numbers.
template <class Document>
bool PlainParse<Document>::Number(Document& document) {
  PlainNumber number;
  if (!scan.Number(number)) return false;
  if (!number.isInteger) return document.Double(number.value);
  const auto value = static_cast<std::int64_t>(number.magnitude);
  if (number.isNegative) {
    const bool isInt = -value >= std::numeric_limits<int>::min();
    return isInt ? document.Int(static_cast<int>(-value)) : document.Int64(-value);
  }
  const bool isUnsigned = number.magnitude <= std::numeric_limits<unsigned>::max();
  return isUnsigned ? document.Uint(static_cast<unsigned>(number.magnitude)) : document.Uint64(number.magnitude);
}

template class PlainParse<rapidjson::Document>;
template class PlainParse<PooledDocument>;

}  // namespace QZSystem::JSONImpl
