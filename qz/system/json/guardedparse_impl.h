#pragma once

#include <rapidjson/reader.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "qz/platform/numbertext.h"
#include "qz/system/json/limits.h"
#include "qz/system/json/plainscan_impl.h"
#include "qz/system/json/plaintext_impl.h"

/// The one place where rapidjson reads text. What its release 1.1.0 does wrong stops here: its recursion goes as deep
/// as the text, it takes tokens such as `NaN.2e2` for numbers, it computes with exponents that overflow, it rounds
/// twice, and it passes over what stands behind a NUL.
namespace QZSystem::JSONImpl {

/// The offset and the reason of a failed parse; the reason is kParseErrorNone for one that succeeded.
struct Outcome {
  rapidjson::ParseErrorCode code = rapidjson::kParseErrorNone;
  std::size_t offset = 0;
};

/// A rapidjson stream over bytes that needn't end with a NUL. Its end reads as one.
class TextStream {
 public:
  using Ch = char;

  TextStream(const char* text, std::size_t size) : begin(text), current(text), end(text + size) {}

  Ch Peek() const { return current == end ? '\0' : *current; }
  Ch Take() { return current == end ? '\0' : *current++; }
  std::size_t Tell() const { return static_cast<std::size_t>(current - begin); }
  bool AtEnd() const { return current == end; }
  /// Goes past the bytes that stand for themselves in a string.
  std::string_view TakePlain() {
    const char* const first = current;
    current = FindSpecial(first, end);
    return {first, static_cast<std::size_t>(current - first)};
  }
  /// The number that was read last. What may stand before a number isn't a character of one.
  std::string_view LastNumber() const;

  // For writing in place, which isn't done.
  Ch* PutBegin() { return nullptr; }
  void Put(Ch) {}
  std::size_t PutEnd(Ch*) { return 0; }

 private:
  const char* begin;
  const char* current;
  const char* end;
};

/// UTF-8 that rapidjson's reader takes as it stands; a type of its own, so that runs of plain bytes can be copied in
/// one piece.
struct AnyUTF8 : rapidjson::UTF8<> {};

/// How a token of rapidjson's numbers is to be taken.
enum class NumberForm { Digits, Word, Invalid };
NumberForm FormOf(std::string_view token);

/// Reads a number of a usual form, in a fraction of the time. False for any other.
inline bool ReadPlainDouble(std::string_view token, double& value) {
  PlainScan scan(token);
  return scan.Double(value) && scan.AtEnd();
}

/// Hands what the reader finds on to `Handler`, until the brackets nest too deep or a number isn't one.
template <class Handler>
class Guard {
 public:
  Guard(TextStream& source, Handler& inner) : text(source), handler(inner) {}

  bool FoundInvalidNumber() const { return invalidNumber; }

  bool Null() { return handler.Null(); }
  bool Bool(bool value) { return handler.Bool(value); }
  bool Int(int value) { return handler.Int(value); }
  bool Uint(unsigned value) { return handler.Uint(value); }
  bool Int64(std::int64_t value) { return handler.Int64(value); }
  bool Uint64(std::uint64_t value) { return handler.Uint64(value); }
  bool Double(double value) {
    const std::string_view token = text.LastNumber();
    const NumberForm form = FormOf(token);
    invalidNumber = form == NumberForm::Invalid;
    if (form == NumberForm::Digits && !ReadPlainDouble(token, value)) QZReadNumber(token, value);
    return !invalidNumber && handler.Double(value);
  }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
  bool String(const char* value, rapidjson::SizeType size, bool copy) { return handler.String(value, size, copy); }
  bool Key(const char* value, rapidjson::SizeType size, bool copy) { return handler.Key(value, size, copy); }
  bool StartObject() { return ++depth <= kMaxJSONDepth && handler.StartObject(); }
  bool EndObject(rapidjson::SizeType count) {
    --depth;
    return handler.EndObject(count);
  }
  bool StartArray() { return ++depth <= kMaxJSONDepth && handler.StartArray(); }
  bool EndArray(rapidjson::SizeType count) {
    --depth;
    return handler.EndArray(count);
  }

 private:
  TextStream& text;
  Handler& handler;
  int depth = 0;
  bool invalidNumber = false;
};

/// Whether the text has an exponent of more digits than rapidjson computes with, perhaps inside a string.
bool HasLongExponent(const char* text, std::size_t size);
/// The text with each such exponent, outside strings, replaced by one of as many characters and the same effect.
std::string TameExponents(const char* text, std::size_t size);

/// What the reader takes at once for the longest string of usual text.
inline constexpr std::size_t kReaderRoom = 1024;

/// The parse itself, of text without long exponents.
template <class Handler>
Outcome ParseTame(const char* text, std::size_t size, Handler& handler) {
  TextStream stream(text, size);
  Guard<Handler> guard(stream, handler);
  rapidjson::GenericReader<AnyUTF8, rapidjson::UTF8<>> reader(nullptr, kReaderRoom);
  reader.template Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNanAndInfFlag>(stream, guard);
  Outcome outcome{reader.GetParseErrorCode(), reader.GetErrorOffset()};
  if (!reader.HasParseError()) {
    if (!stream.AtEnd()) outcome = {rapidjson::kParseErrorDocumentRootNotSingular, stream.Tell()};
  } else if (guard.FoundInvalidNumber()) {
    outcome.code = rapidjson::kParseErrorValueInvalid;
  } else if (outcome.code == rapidjson::kParseErrorDocumentEmpty && stream.Peek() != '\0') {
    // The recursive parser, whose words these are, sees an invalid value where this one sees nothing.
    outcome.code = rapidjson::kParseErrorValueInvalid;
  }
  return outcome;
}

/// Parses `size` bytes, and sends what it finds to `handler` as rapidjson's reader does. The stack that it takes
/// doesn't depend on the text. Reason and offset are those of rapidjson's recursive parser with NaN and infinities
/// allowed, apart from what is refused here.
template <class Handler>
Outcome GuardedParse(const char* text, std::size_t size, Handler& handler) {
  if (size > kMaxJSONSize) return {rapidjson::kParseErrorTermination, kMaxJSONSize};
  if (!HasLongExponent(text, size)) return ParseTame(text, size, handler);
  const std::string tame = TameExponents(text, size);
  return ParseTame(tame.data(), tame.size(), handler);
}

/// Gives the warning of a failed parse, and tells whether it succeeded.
bool Report(const Outcome& outcome);
/// Gives the warning of a document that isn't an object, and returns `isObject`.
bool ReportTopLevel(bool isObject);

}  // namespace QZSystem::JSONImpl

namespace rapidjson {

/// How the reader copies a string: up to the next byte that means something else.
template <>
struct Transcoder<QZSystem::JSONImpl::AnyUTF8, UTF8<>> {
  template <class Output>
  static bool Transcode(QZSystem::JSONImpl::TextStream& in, Output& out) {
    const std::string_view plain = in.TakePlain();
    std::memcpy(out.Push(static_cast<SizeType>(plain.size())), plain.data(), plain.size());
    return true;
  }
  /// For a reader that looks at the encoding, which this one doesn't.
  template <class Output>
  static bool Validate(QZSystem::JSONImpl::TextStream& in, Output& out) {
    return Transcode(in, out);
  }
};

}  // namespace rapidjson
