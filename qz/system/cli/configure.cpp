#include "qz/system/cli/configure.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <deque>
#include <string_view>
#include <utility>
#include <vector>

#include "qz/platform/memorystream.h"
#include "qz/system/frame/error.h"
#include "qz/system/text/qzstring.h"

// The language. A line is split at blanks, tabs and line feeds into words; its first word says what it is.
//
//     text      := item* [ "!END" ]
//     item      := comment | blank | brief | detail | category | parameter
//     brief     := "!BRIEF" word*
//     detail    := "!DETAIL" NEWLINE free-line*
//     category  := "!CATEGORY" name [ order ] NEWLINE item* "!END"
//     parameter := "!PARAMETER" key [ order ] NEWLINE entry* "!END"
//
// A name is one word, or a text in double quotes. A comment is a line whose first word begins with "#". Free lines go
// on to a line whose first word begins with "!", and in a parameter to one whose first word is one of its keywords.

namespace QZSystem {

namespace {

constexpr char kBadLine[] = "Error parsing line\n%s\n%s";
constexpr char kQuoteCount[] = "Invalid number of double quotes";
constexpr char kWordsBehindName[] = "a single word does not follow the quoted category name";
constexpr char kTooManyQuotes[] = "too many quotes";
constexpr char kSubcategory[] = "Problem configuring subcategory";
constexpr char kUnterminated[] = "Configure.  !PARAMETER %s is unterminated (by !END)";
constexpr char kListWord[] = "configuring parameter %s : !LIST must be followed by true or false";
constexpr char kUnknownType[] = "Unknown or unspecified type for parameter %s";
constexpr char kParameterLine[] = "Problem parsing interface configuration file or parameter %s\n  line : %s";
constexpr char kVisibilityWord[] = "Unknown keyword, %s, passed to !VISIBILITY";
constexpr char kIllegalDefault[] = "!DEFAULT value of %s is not a legal setting for parameter %s";
constexpr char kInvalidKeyword[] = "Probable invalid keyword in interface configuration file\n  line : %s";
constexpr char kUnknownLine[] = "Configuring interface.  Unable to parse line\n  line : %s";

/// Categories nest no deeper below the root, whoever walks the tree.
constexpr unsigned int kMaxDepth = 256;

constexpr std::string_view kWhiteSpace = " \t\n";
constexpr std::size_t kAnyCount = 0;
constexpr std::size_t kNoLimit = 1000000;

using Words = std::vector<std::string_view>;

enum class Keyword {
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
  kElement,
  kNone
};

struct Entry {
  std::string_view word;
  Keyword keyword;
  std::size_t words;  ///< on the line, with the keyword
};

/// The keywords of a parameter, the frequent ones first.
constexpr std::array<Entry, 19> kEntries{{
    {"!LEGAL_VALUE", Keyword::kLegalValue, 2},
    {"!DEFAULT", Keyword::kDefault, 2},
    {"!BRIEF", Keyword::kBrief, kAnyCount},
    {"!TYPE", Keyword::kType, kAnyCount},
    {"!END", Keyword::kEnd, kAnyCount},
    {"!SIMPLE", Keyword::kSimple, 2},
    {"!REQUIRED", Keyword::kRequired, 2},
    {"!LIST", Keyword::kList, kAnyCount},
    {"!LEGAL_RANGE", Keyword::kLegalRange, 3},
    {"!ALIAS", Keyword::kAlias, 2},
    {"!DETAIL", Keyword::kDetail, kAnyCount},
    {"!KEYLESS", Keyword::kKeyless, 2},
    {"!VISIBILITY", Keyword::kVisibility, 2},
    {"!INPUT", Keyword::kInput, 2},
    {"!OUTPUT", Keyword::kOutput, 2},
    {"!ILLEGAL_VALUE", Keyword::kIllegalValue, 2},
    {"!ILLEGAL_RANGE", Keyword::kIllegalRange, 3},
    {"!COMMAND", Keyword::kCommand, kAnyCount},
    {"!ELEMENT", Keyword::kElement, kAnyCount},
}};

constexpr Entry kNoEntry{{}, Keyword::kNone, kAnyCount};

const Entry& EntryOf(const Words& words) {
  if (words.empty()) return kNoEntry;
  const auto* found = std::find_if(kEntries.begin(), kEntries.end(),
                                   [&words](const Entry& entry) { return entry.word == words.front(); });
  return found != kEntries.end() ? *found : kNoEntry;
}

/// A line of a parameter's block.
struct Line {
  std::string text;
  Words words;  ///< of the text
};

bool IsComment(const Words& words) { return !words.empty() && words.front().front() == '#'; }

bool IsKeywordLine(const Words& words) { return !words.empty() && words.front().front() == '!'; }

/// The words behind the first, each followed by one blank.
std::string BriefOf(const Words& words) {
  std::string brief;
  for (std::size_t i = 1; i < words.size(); ++i) brief.append(words[i]) += ' ';
  return brief;
}

/// The third of exactly three words as a number, else 0.
int OrderOf(const Words& words) {
  int order = 0;
  if (words.size() == 3 && !QZStringToNumber(words[2], order, 10)) order = 0;
  return order;
}

/// The number of interfaces from this one up to `top`, which doesn't count; no more than the limit need be told apart.
unsigned int StepsBelow(const QZInterface* itf, const QZInterface* top) {
  unsigned int steps = 0;
  for (; itf != nullptr && itf != top && steps <= kMaxDepth; itf = itf->Parent()) ++steps;
  return steps;
}

// ---------------------------------------------------------------------------------------------- a parameter's block

/// Fills one parameter from the lines of its block.
class BlockReader {
 public:
  BlockReader(QZParameter& target, const std::deque<Line>& blockLines, std::size_t lineCount)
      : parameter(target), lines(blockLines), count(lineCount), key(target.GetName()) {}

  void Read() {
    while (at < count) {
      const Line& line = lines[at++];
      if (!IsComment(line.words) && !Take(line)) QZThrow.Error(kParameterLine, key.c_str(), line.text.c_str());
    }
    CheckDefaults();
  }

 private:
  bool Take(const Line& line) {
    if (line.words.empty()) return true;
    const Entry& entry = EntryOf(line.words);
    if (entry.words != kAnyCount && entry.words != line.words.size()) return false;
    if (entry.words == kAnyCount) return TakeFree(entry.keyword, line);
    const std::string word(line.words[1]);
    return entry.words == 2 ? TakeWord(entry.keyword, word)
                            : TakeRange(entry.keyword, word, std::string(line.words[2]));
  }

  bool TakeFree(Keyword keyword, const Line& line) {
    switch (keyword) {
      case Keyword::kEnd:
      case Keyword::kType:
      case Keyword::kList:
        return true;
      case Keyword::kBrief:
        return parameter.SetBrief(BriefOf(line.words));
      case Keyword::kDetail:
        return TakeDetail();
      case Keyword::kElement:
        return TakeRest(line, &QZParameter::SetElement);
      case Keyword::kCommand:
        return TakeRest(line, &QZParameter::SetCommand);
      default:
        return false;
    }
  }

  bool TakeWord(Keyword keyword, const std::string& word) {
    switch (keyword) {
      case Keyword::kAlias:
        return parameter.AddAlias(word);
      case Keyword::kDefault:
        return TakeDefault(word);
      case Keyword::kRequired:
        return TakeBool(word, [this](bool on) { return parameter.SetRequired(on); });
      case Keyword::kSimple:
        return TakeBool(word, [this](bool on) { return parameter.SetVisibility(on ? 0 : 1); });
      case Keyword::kVisibility:
        return TakeVisibility(word);
      case Keyword::kKeyless:
        return TakeUnsigned(word, &QZParameter::SetKeyless);
      case Keyword::kInput:
        return TakeUnsigned(word, &QZParameter::SetInput);
      case Keyword::kOutput:
        return TakeBool(word, [this](bool on) { return parameter.SetOutput(on); });
      case Keyword::kLegalValue:
        return parameter.AddLegalValue(word);
      case Keyword::kIllegalValue:
        return parameter.AddIllegalValue(word);
      default:
        return false;
    }
  }

  bool TakeRange(Keyword keyword, const std::string& from, const std::string& to) {
    return keyword == Keyword::kLegalRange ? parameter.AddLegalRange(from, to) : parameter.AddIllegalRange(from, to);
  }

  bool TakeDefault(const std::string& word) {
    return (parameter.GetIsList() ? parameter.AddStringDefault(word) : parameter.SetStringDefault(word)) &&
           parameter.LoadDefault();
  }

  template <class Set>
  bool TakeBool(const std::string& word, const Set& set) {
    bool on = false;
    return QZStringToNumber(word, on) && set(on);
  }

  bool TakeUnsigned(const std::string& word, bool (QZParameter::*set)(unsigned int)) {
    unsigned int number = 0;
    return QZStringToNumber(word, number, 10) && (parameter.*set)(number);
  }

  bool TakeVisibility(const std::string& word) {
    const std::string lower = QZStringLower(word);
    if (lower == "simple") return parameter.SetVisibility(0);
    if (lower == "normal") return parameter.SetVisibility(1);
    if (lower == "hidden") return parameter.SetVisibility(2);
    QZThrow.Error(kVisibilityWord, lower.c_str());
    return true;
  }

  bool TakeRest(const Line& line, bool (QZParameter::*set)(const std::string&)) {
    // From the keyword on: a tab in front of it is no part of the first word.
    const auto start = static_cast<std::size_t>(line.words.front().data() - line.text.data());
    const std::string rest = GetStringAfterFirstWord(line.text.substr(start));
    return !rest.empty() && (parameter.*set)(rest);
  }

  /// The lines up to the next keyword, without the indentation that all of them share.
  bool TakeDetail() {
    const std::size_t first = at;
    std::size_t indent = kNoLimit;
    for (; at < count && EntryOf(lines[at].words).keyword == Keyword::kNone; ++at)
      if (!lines[at].words.empty()) indent = std::min(indent, lines[at].text.find_first_not_of(' '));
    for (std::size_t i = first; i < at; ++i) {
      const std::string& text = lines[i].text;
      parameter.AddDetail(text.size() < indent ? text : text.substr(indent));
    }
    return true;
  }

  void CheckDefaults() const {
    for (const std::string& text : QZIter<const std::string>(parameter.GetStringDefaults()))
      if (!parameter.IsLegalString(text)) QZThrow.Warning(kIllegalDefault, text.c_str(), parameter.GetName().c_str());
  }

  QZParameter& parameter;
  const std::deque<Line>& lines;
  const std::size_t count;
  const std::string key;
  std::size_t at = 0;
};

// ------------------------------------------------------------------------------------------------------- the levels

/// Reads a text into an interface. The categories that are open stand on a stack of its own, so no text can exhaust
/// that of the thread.
class Reader {
 public:
  Reader(QZInterface& root, qzistream& source) : in(source) {
    levels.push_back({&root, StepsBelow(&root, nullptr) - 1});
  }

  bool Read() {
    while (NextLine()) {
      if (line.words.empty() || IsComment(line.words)) continue;
      if (line.words.front() == "!END") {
        levels.pop_back();
        if (levels.empty()) return true;
      } else if (!TakeItem() && !EndFailedLevel()) {
        return false;
      }
    }
    return true;
  }

 private:
  struct Level {
    QZInterface* itf;
    unsigned int depth;
  };

  bool NextLine() { return std::exchange(held, false) || ReadLine(line); }

  bool ReadLine(Line& next) {
    if (!in.getline(next.text)) return false;
    return QZStringTokenize(next.words, next.text, kWhiteSpace, true);
  }

  bool TakeItem() {
    const std::string_view keyword = line.words.front();
    QZInterface& itf = *levels.back().itf;
    if (keyword == "!BRIEF") return itf.SetBrief(BriefOf(line.words));
    if (keyword == "!DETAIL") return TakeDetail(itf);
    if (keyword == "!PARAMETER" && line.words.size() > 1) return TakeParameter(itf);
    if (keyword == "!CATEGORY" && line.words.size() > 1) return TakeCategory();
    QZThrow.Error(IsKeywordLine(line.words) ? kInvalidKeyword : kUnknownLine, line.text.c_str());
    return false;
  }

  /// The level at hand has failed: the one above tells so and goes on. False at the root.
  bool EndFailedLevel() {
    levels.pop_back();
    if (levels.empty()) return false;
    QZThrow.Error(kSubcategory);
    return true;
  }

  bool TakeDetail(QZInterface& itf) {
    while (NextLine()) {
      held = IsKeywordLine(line.words);
      if (held) return true;
      itf.AddDetail(line.text);
    }
    return true;
  }

  bool TakeParameter(QZInterface& itf) {
    const std::string key(line.words[1]);
    const int order = OrderOf(line.words);
    if (!CollectBlock()) {
      QZThrow.Error(kUnterminated, key.c_str());
      return false;
    }
    bool isList = false;
    if (!FindIsList(isList)) {
      QZThrow.Error(kListWord, key.c_str());
      return false;
    }
    QZParameter* parameter = AddParameter(itf);
    if (parameter == nullptr) {
      QZThrow.Error(kUnknownType, key.c_str());
      return false;
    }
    parameter->SetName(key);
    parameter->SetOrderPriority(order);
    parameter->SetIsList(isList);
    BlockReader(*parameter, block, blockSize).Read();
    return true;
  }

  /// The lines up to "!END", that one included. The entries of the block keep their storage for the next parameter.
  bool CollectBlock() {
    for (blockSize = 0;; ++blockSize) {
      if (blockSize == block.size()) block.emplace_back();
      Line& next = block[blockSize];
      if (!ReadLine(next)) return false;
      if (EntryOf(next.words).keyword == Keyword::kEnd) break;
    }
    ++blockSize;
    return true;
  }

  bool FindIsList(bool& isList) const {
    for (std::size_t i = 0; i < blockSize; ++i) {
      const Words& words = block[i].words;
      if (words.size() == 2 && words[0] == "!LIST" && !QZStringToNumber(words[1], isList)) return false;
    }
    return true;
  }

  QZParameter* AddParameter(QZInterface& itf) const {
    for (std::size_t i = 0; i < blockSize; ++i) {
      const Words& words = block[i].words;
      if (words.size() == 2 && words[0] == "!TYPE") return itf.AddParameter(std::string(words[1]));
    }
    return nullptr;
  }

  bool TakeCategory() {
    SplitQuotedName();
    const std::string name(line.words[1]);
    QZInterface& itf = *levels.back().itf;
    QZInterface* category = itf.GetInterface(name);
    const unsigned int depth = levels.back().depth + (category != nullptr ? StepsBelow(category, &itf) : 1);
    if (depth > kMaxDepth) {
      QZThrow.Error(kSubcategory);
      SkipCategory();
      return true;
    }
    if (category == nullptr) category = itf.AddInterface();
    category->SetName(name);
    category->SetOrderPriority(OrderOf(line.words));
    levels.push_back({category, depth});
    return true;
  }

  /// Makes the name of a category in quotes one word of the line. Faults are told, and the line is taken as well as it
  /// can be, so that the "!END" of the category finds its beginning.
  void SplitQuotedName() {
    const auto quotes = std::count(line.text.begin(), line.text.end(), '"');
    if (quotes == 0) return;
    if (quotes != 2) QZThrow.Error(kBadLine, line.text.c_str(), kQuoteCount);
    Words pieces;
    QZStringTokenize(pieces, line.text, "\"", true);
    if (pieces.size() > 3) QZThrow.Error(kBadLine, line.text.c_str(), kTooManyQuotes);
    if (pieces.size() < 2 || pieces.size() > 3) return;
    line.words.resize(1);
    line.words.push_back(pieces[1]);
    if (pieces.size() == 2) return;
    Words behind;
    QZStringTokenize(behind, pieces[2], kWhiteSpace, true);
    if (behind.size() > 1) QZThrow.Error(kBadLine, line.text.c_str(), kWordsBehindName);
    if (behind.size() == 1) line.words.push_back(behind.front());
  }

  /// Passes over the body of a category up to its "!END", with the parameters and categories in it.
  void SkipCategory() {
    bool inParameter = false;
    for (std::size_t open = 1; open > 0 && NextLine();) {
      if (line.words.empty()) continue;
      const std::string_view keyword = line.words.front();
      if (keyword == "!END") {
        if (!std::exchange(inParameter, false)) --open;
      } else if (!inParameter && line.words.size() > 1) {
        inParameter = keyword == "!PARAMETER";
        if (keyword == "!CATEGORY") ++open;
      }
    }
  }

  qzistream& in;
  Line line;
  bool held = false;  ///< the line is to be read again
  std::vector<Level> levels;
  std::deque<Line> block;
  std::size_t blockSize = 0;
};

}  // namespace

bool QZConfigure(QZInterface& itf, const unsigned char* text) {
  assert(text != nullptr);
  const char* chars = reinterpret_cast<const char*>(text);
  qzisstream in;
  in.set(chars, std::strlen(chars), false);
  return QZConfigure(itf, in);
}

bool QZConfigure(QZInterface& itf, qzistream& in) { return Reader(itf, in).Read(); }

std::string GetStringAfterFirstWord(const std::string& line) {
  const std::size_t word = line.find_first_not_of(' ');
  const std::size_t gap = line.find(' ', word);
  const std::size_t rest = line.find_first_not_of(' ', gap);
  if (word == std::string::npos || gap == std::string::npos || rest == std::string::npos) return {};
  return line.substr(rest, line.find_last_not_of(' ') - rest + 1);
}

}  // namespace QZSystem
