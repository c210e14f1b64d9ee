#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qz/platform/stream.h"
#include "qz/system/frame/names.h"

namespace QZSystem {

/// The keywords inside the description of a parameter.
enum class EntryKeyword {
  kNone,
  kEnd,
  kType,
  kList,
  kAlias,
  kBrief,
  kDetail,
  kDefault,
  kRequired,
  kSimple,
  kVisibility,
  kKeyless,
  kInput,
  kOutput,
  kLegalValue,
  kLegalRange,
  kIllegalValue,
  kIllegalRange,
  kCommand,
  kElement
};

/// What a line of the configuration language begins with, as an entry of a parameter.
struct ConfigureEntry {
  static constexpr std::size_t kAnyCount = 0;

  std::string_view word;
  EntryKeyword keyword;
  std::size_t words;  ///< that the line must have, with the keyword
};

/// A line of the configuration language without its line feed, and the words in it.
class ConfigureLine {
 public:
  ConfigureLine() { words.reserve(16); }
  ConfigureLine(const ConfigureLine&) = delete;
  ConfigureLine& operator=(const ConfigureLine&) = delete;

  std::string_view text;
  std::vector<std::string_view> words;
  /// What the first word says inside a parameter; of the keyword kNone for other lines.
  const ConfigureEntry* entry = nullptr;

  bool IsComment() const { return !words.empty() && words.front().front() == '#'; }
  bool IsKeyword() const { return !words.empty() && words.front().front() == '!'; }
  /// The words behind the first, each followed by one blank. Lives until the next call.
  const std::string& Brief();
  /// The third of exactly three words as a number, else 0.
  int Order() const;

 private:
  friend class ConfigureSource;

  /// Finds the line that starts here and its words, and returns where it ends: at a line feed or at the end.
  const char* Scan(const char* start, const char* end);

  std::string copy;   ///< the text, if its source doesn't keep it
  std::string brief;  ///< storage
};

/// Where lines come from: a text in memory, which they are views of, or a stream, of which they are copies. A line that
/// is read into again keeps its storage.
class ConfigureSource {
 public:
  explicit ConfigureSource(std::string_view text) : at(text.data()), end(at + text.size()) {}
  explicit ConfigureSource(qzistream& in) : stream(&in) {}

  /// Reads the next line; false, with the line as it was or empty, when there is none.
  bool Read(ConfigureLine& line);

 private:
  qzistream* stream = nullptr;
  const char* at = nullptr;
  const char* end = nullptr;
};

}  // namespace QZSystem
