#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <string>

#include "qz/system/json/plainscan_impl.h"

namespace QZSystem::JSONImpl {

/// Fills a rapidjson document from text whose values have the usual forms, as the parse entry would, in half the time.
///
///     PlainParse<rapidjson::Document> parse(text, size);
///     document.Populate(parse);
///     if (!parse.IsDone()) ...  // text for the guarded parser: perhaps an error, perhaps an unusual form
///
/// It gives no messages. One thread at a time.
template <class Document>
class PlainParse {
 public:
  /// `text` stays the caller's.
  PlainParse(const char* text, std::size_t size) : scan({text, size}) {}

  /// For Populate. False where the text has to be parsed anew in the other way.
  bool operator()(Document& document);
  bool IsDone() const { return done; }

 private:
  bool Value(Document& document, int depth);
  bool Object(Document& document, int depth);
  bool Array(Document& document, int depth);
  bool String(Document& document);
  bool Number(Document& document);
  bool Token(char character) {
    scan.SkipSpace();
    return scan.Literal(character);
  }

  PlainScan scan;
  std::string room;
  bool done = false;
};

/// A document that has its stack, too, from a pool.
using PooledDocument =
    rapidjson::GenericDocument<rapidjson::UTF8<>, rapidjson::MemoryPoolAllocator<>, rapidjson::MemoryPoolAllocator<>>;

extern template class PlainParse<rapidjson::Document>;
extern template class PlainParse<PooledDocument>;

/// The parse entry for such a document.
bool ParsePooled(PooledDocument& document, const std::string& text);

}  // namespace QZSystem::JSONImpl
