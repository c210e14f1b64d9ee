#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <string>

#include "qz/system/json/plainscan_impl.h"

namespace QZSystem::JSONImpl {

/// Fills a rapidjson document from text whose values have the usual forms, as the parse entry would, in half the time.
///
///     PlainParse parse(text, size);
///     document.Populate(parse);
///     if (!parse.IsDone()) ...  // text for the guarded parser: perhaps an error, perhaps an unusual form
///
/// It gives no messages. One thread at a time.
class PlainParse {
 public:
  /// `text` stays the caller's.
  PlainParse(const char* text, std::size_t size) : scan({text, size}) {}

  /// For Populate. False where the text has to be parsed anew in the other way.
  bool operator()(rapidjson::Document& document);
  bool IsDone() const { return done; }

 private:
  bool Value(rapidjson::Document& document, int depth);
  bool Object(rapidjson::Document& document, int depth);
  bool Array(rapidjson::Document& document, int depth);
  bool String(rapidjson::Document& document);
  bool Number(rapidjson::Document& document);
  bool Token(char character) {
    scan.SkipSpace();
    return scan.Literal(character);
  }

  PlainScan scan;
  std::string room;
  bool done = false;
};

}  // namespace QZSystem::JSONImpl
