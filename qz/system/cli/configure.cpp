#include "qz/system/cli/configure.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "qz/system/cli/configureblock_impl.h"
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
constexpr char kInvalidKeyword[] = "Probable invalid keyword in interface configuration file\n  line : %s";
constexpr char kUnknownLine[] = "Configuring interface.  Unable to parse line\n  line : %s";

/// Categories nest no deeper below the root, whoever walks the tree.
constexpr unsigned int kMaxDepth = 256;

constexpr std::string_view kWhiteSpace = " \t\n";

/// The number of interfaces from this one up to `top`, which doesn't count; no more than the limit need be told apart.
unsigned int StepsBelow(const QZInterface* itf, const QZInterface* top) {
  unsigned int steps = 0;
  for (; itf != nullptr && itf != top && steps <= kMaxDepth; itf = itf->Parent()) ++steps;
  return steps;
}

/// Reads a text into an interface. The categories that are open stand on a stack of its own, so no text can exhaust
/// that of the thread.
class Reader {
 public:
  Reader(QZInterface& root, const ConfigureSource& lines) : source(lines) {
    levels.push_back({&root, StepsBelow(&root, nullptr) - 1});
  }

  bool Read() {
    while (NextLine()) {
      if (line.words.empty() || line.IsComment()) continue;
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

  bool NextLine() { return std::exchange(held, false) || source.Read(line); }

  bool TakeItem() {
    const std::string_view keyword = line.words.front();
    QZInterface& itf = *levels.back().itf;
    if (keyword == "!BRIEF") return itf.SetBrief(line.Brief());
    if (keyword == "!DETAIL") return TakeDetail(itf);
    if (keyword == "!PARAMETER" && line.words.size() > 1) return TakeParameter(itf);
    if (keyword == "!CATEGORY" && line.words.size() > 1) return TakeCategory();
    QZThrow.Error(line.IsKeyword() ? kInvalidKeyword : kUnknownLine, std::string(line.text).c_str());
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
      held = line.IsKeyword();
      if (held) return true;
      itf.AddDetail(std::string(line.text));
    }
    return true;
  }

  bool TakeParameter(QZInterface& itf) {
    const std::string key(line.words[1]);
    if (!block.Read(source)) {
      QZThrow.Error(kUnterminated, key.c_str());
      return false;
    }
    if (block.listIsBad) {
      QZThrow.Error(kListWord, key.c_str());
      return false;
    }
    QZParameter* parameter = block.type != nullptr ? itf.AddParameter(std::string(block.type->words[1])) : nullptr;
    if (parameter == nullptr) {
      QZThrow.Error(kUnknownType, key.c_str());
      return false;
    }
    parameter->SetName(key);
    parameter->SetOrderPriority(line.Order());
    parameter->SetIsList(block.isList);
    FillParameter(*parameter, block);
    return true;
  }

  bool TakeCategory() {
    SplitQuotedName();
    const std::string name(line.words[1]);
    QZInterface& itf = *levels.back().itf;
    QZInterface* category = NoteName(name) ? nullptr : itf.GetInterface(name);
    const unsigned int depth = levels.back().depth + (category != nullptr ? StepsBelow(category, &itf) : 1);
    if (depth > kMaxDepth) {
      QZThrow.Error(kSubcategory);
      SkipCategory();
      return true;
    }
    if (category == nullptr) category = itf.AddInterface();
    category->SetName(name);
    category->SetOrderPriority(line.Order());
    levels.push_back({category, depth});
    return true;
  }

  /// Notes the name of a category, and tells whether none of the tree has had it so far, which saves nearly every one a
  /// walk over the tree.
  bool NoteName(const std::string& name) {
    if (names.empty())
      for (const QZInterface& category : QZIter<QZInterface>(levels.front().itf->GetInterfaces(true)))
        names.insert(category.GetName());
    return names.insert(name).second;
  }

  /// Makes the name of a category in quotes one word of the line. Faults are told, and the line is taken as well as it
  /// can be, so that the "!END" of the category finds its beginning.
  void SplitQuotedName() {
    const auto quotes = std::count(line.text.begin(), line.text.end(), '"');
    if (quotes == 0) return;
    if (quotes != 2) QZThrow.Error(kBadLine, std::string(line.text).c_str(), kQuoteCount);
    std::vector<std::string_view> pieces;
    QZStringTokenize(pieces, line.text, "\"", true);
    if (pieces.size() > 3) QZThrow.Error(kBadLine, std::string(line.text).c_str(), kTooManyQuotes);
    if (pieces.size() < 2 || pieces.size() > 3) return;
    line.words.resize(1);
    line.words.push_back(pieces[1]);
    if (pieces.size() == 2) return;
    std::vector<std::string_view> behind;
    QZStringTokenize(behind, pieces[2], kWhiteSpace, true);
    if (behind.size() > 1) QZThrow.Error(kBadLine, std::string(line.text).c_str(), kWordsBehindName);
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

  ConfigureSource source;
  ConfigureLine line;
  bool held = false;  ///< the line is to be read again
  std::vector<Level> levels;
  ConfigureBlock block;
  std::unordered_set<std::string> names;  ///< of the categories, once there was one to look up
};

}  // namespace

bool QZConfigure(QZInterface& itf, const unsigned char* text) {
  assert(text != nullptr);
  return Reader(itf, ConfigureSource(reinterpret_cast<const char*>(text))).Read();
}

bool QZConfigure(QZInterface& itf, qzistream& in) { return Reader(itf, ConfigureSource(in)).Read(); }

std::string GetStringAfterFirstWord(const std::string& line) {
  const std::size_t word = line.find_first_not_of(' ');
  const std::size_t gap = line.find(' ', word);
  const std::size_t rest = line.find_first_not_of(' ', gap);
  if (word == std::string::npos || gap == std::string::npos || rest == std::string::npos) return {};
  return line.substr(rest, line.find_last_not_of(' ') - rest + 1);
}

}  // namespace QZSystem
