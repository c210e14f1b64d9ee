#include "qz/system/cli/configureblock_impl.h"

#include <algorithm>

#include "qz/system/cli/configure.h"
#include "qz/system/frame/error.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr char kParameterLine[] = "Problem parsing interface configuration file or parameter %s\n  line : %s";
constexpr char kVisibilityWord[] = "Unknown keyword, %s, passed to !VISIBILITY";
constexpr char kIllegalDefault[] = "!DEFAULT value of %s is not a legal setting for parameter %s";

/// Where the search for the smallest indentation starts.
constexpr std::size_t kNoIndent = 1000000;

class BlockReader {
 public:
  BlockReader(QZParameter& target, ConfigureBlock& block)
      : parameter(target),
        key(target.GetName()),
        at(block.lines.begin()),
        end(at + static_cast<std::ptrdiff_t>(block.size)) {}

  void Read() {
    while (at != end) {
      ConfigureLine& line = *at++;
      if (!line.IsComment() && !Take(line)) QZThrow.Error(kParameterLine, key.c_str(), std::string(line.text).c_str());
    }
    CheckDefaults();
  }

 private:
  bool Take(ConfigureLine& line) {
    if (line.words.empty()) return true;
    const ConfigureEntry& entry = *line.entry;
    if (entry.words != ConfigureEntry::kAnyCount && entry.words != line.words.size()) return false;
    if (entry.words == ConfigureEntry::kAnyCount) return TakeFree(entry.keyword, line);
    const std::string word(line.words[1]);
    return entry.words == 2 ? TakeWord(entry.keyword, word)
                            : TakeRange(entry.keyword, word, std::string(line.words[2]));
  }

  bool TakeFree(EntryKeyword keyword, ConfigureLine& line) {
    switch (keyword) {
      case EntryKeyword::kEnd:
      case EntryKeyword::kType:
      case EntryKeyword::kList:
        return true;
      case EntryKeyword::kBrief:
        return parameter.SetBrief(line.Brief());
      case EntryKeyword::kDetail:
        return TakeDetail();
      case EntryKeyword::kElement:
        return TakeRest(line, &QZParameter::SetElement);
      case EntryKeyword::kCommand:
        return TakeRest(line, &QZParameter::SetCommand);
      default:
        return false;
    }
  }

  bool TakeWord(EntryKeyword keyword, const std::string& word) {
    switch (keyword) {
      case EntryKeyword::kAlias:
        return parameter.AddAlias(word);
      case EntryKeyword::kDefault:
        return TakeDefault(word);
      case EntryKeyword::kRequired:
        return TakeBool(word, [this](bool on) { return parameter.SetRequired(on); });
      case EntryKeyword::kSimple:
        return TakeBool(word, [this](bool on) { return parameter.SetVisibility(on ? 0 : 1); });
      case EntryKeyword::kVisibility:
        return TakeVisibility(word);
      case EntryKeyword::kKeyless:
        return TakeUnsigned(word, &QZParameter::SetKeyless);
      case EntryKeyword::kInput:
        return TakeUnsigned(word, &QZParameter::SetInput);
      case EntryKeyword::kOutput:
        return TakeBool(word, [this](bool on) { return parameter.SetOutput(on); });
      case EntryKeyword::kLegalValue:
        return parameter.AddLegalValue(word);
      case EntryKeyword::kIllegalValue:
        return parameter.AddIllegalValue(word);
      default:
        return false;
    }
  }

  bool TakeRange(EntryKeyword keyword, const std::string& from, const std::string& to) {
    return keyword == EntryKeyword::kLegalRange ? parameter.AddLegalRange(from, to)
                                                : parameter.AddIllegalRange(from, to);
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

  bool TakeRest(ConfigureLine& line, bool (QZParameter::*set)(const std::string&)) {
    // From the keyword on: a tab in front of it is no part of the first word.
    const auto start = static_cast<std::size_t>(line.words.front().data() - line.text.data());
    const std::string rest = GetStringAfterFirstWord(std::string(line.text.substr(start)));
    return !rest.empty() && (parameter.*set)(rest);
  }

  /// The lines up to the next keyword, without the indentation that all of them share.
  bool TakeDetail() {
    const auto first = at;
    std::size_t indent = kNoIndent;
    for (; at != end && at->entry->keyword == EntryKeyword::kNone; ++at)
      if (!at->words.empty()) indent = std::min(indent, at->text.find_first_not_of(' '));
    for (auto line = first; line != at; ++line)
      parameter.AddDetail(std::string(line->text.size() < indent ? line->text : line->text.substr(indent)));
    return true;
  }

  /// Tests the texts of the defaults, loaded or not; those of the language are never empty.
  void CheckDefaults() const {
    for (unsigned int i = 0;; ++i) {
      const std::string text = parameter.GetStringDefault(i);
      if (text.empty() && !parameter.GetHasDefault(i)) return;
      if (!parameter.IsLegalString(text)) QZThrow.Warning(kIllegalDefault, text.c_str(), parameter.GetName().c_str());
    }
  }

  QZParameter& parameter;
  const std::string key;
  std::deque<ConfigureLine>::iterator at;
  const std::deque<ConfigureLine>::iterator end;
};

}  // namespace

bool ConfigureBlock::Read(ConfigureSource& source) {
  type = nullptr;
  isList = listIsBad = false;
  for (size = 0;;) {
    if (size == lines.size()) lines.emplace_back();
    ConfigureLine& line = lines[size++];
    if (!source.Read(line)) return false;
    const EntryKeyword keyword = line.entry->keyword;
    if (keyword == EntryKeyword::kEnd) return true;
    if (line.words.size() != 2) continue;
    if (keyword == EntryKeyword::kType && type == nullptr) type = &line;
    if (keyword == EntryKeyword::kList && !QZStringToNumber(line.words[1], isList)) listIsBad = true;
  }
}

void FillParameter(QZParameter& parameter, ConfigureBlock& block) { BlockReader(parameter, block).Read(); }

}  // namespace QZSystem
