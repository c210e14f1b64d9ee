#include "qz/system/cli/requirement.h"

#include <string>
#include <vector>

#include "qz/system/cli/interface_impl.h"
#include "qz/system/text/tokenize.h"

namespace QZSystem {

namespace {

constexpr char missingParameter[] = "Missing required parameter %s";
constexpr char notARequirement[] = "HasRequired, Problem parsing requirement\n line %s";
constexpr char badCondition[] = "HasRequired.  Problem parsing !OPTION\n line : %s";
constexpr char unknownKey[] = "HasRequired.  Unknown key %s in !OPTION\n line : %s";
constexpr char missingRequirements[] = "Missing requirements:\n%s";

// The lines of a text with their words. Lines without words and comments come like any other: within a message the
// former have a meaning.
class Lines {
 public:
  explicit Lines(const std::string& text) {
    QZStringTokenize(lines, text, "\n", true);
    Split();
  }

  bool AtEnd() const { return at == lines.size(); }
  void Next() {
    ++at;
    Split();
  }
  const std::string& Line() const { return lines[at]; }
  const std::vector<std::string>& Words() const { return words; }
  bool StartsWith(const std::string& word) const { return !words.empty() && words.front() == word; }
  bool IsKeyword() const { return !words.empty() && words.front().front() == '!'; }
  bool IsComment() const { return !words.empty() && words.front().front() == '#'; }

 private:
  void Split() {
    words.clear();
    if (!AtEnd()) QZStringTokenize(words, Line(), " \t\n", true);
  }

  std::vector<std::string> lines;
  std::vector<std::string> words;
  std::size_t at = 0;
};

// One condition of an option: a key, negated or not, and perhaps a value.
bool holds(const QZParameter& parameter, const std::string* value) {
  if (value != nullptr) return parameter.IsSetToString(*value);
  return parameter.GetHasValue(0) || parameter.GetHasDefault(0);
}

// Reads the requirements of a text one by one against an interface. False stands for a report that was sent.
class Checker {
 public:
  Checker(const QZInterface& checked, unsigned int reportLevel, const std::string& text)
      : itf(checked), level(reportLevel), lines(text) {}

  // All of them, up to the first that fails.
  bool CheckAll() {
    for (; !lines.AtEnd(); lines.Next()) {
      if (lines.Words().empty() || lines.IsComment()) continue;
      if (!lines.StartsWith("!REQUIREMENT")) {
        QZThrow.Msg(level, notARequirement, lines.Line().c_str());
        return false;
      }
      lines.Next();
      if (!CheckOne()) return false;
      if (lines.AtEnd()) break;
    }
    return true;
  }

 private:
  // From behind the first line of a requirement to its end, where the lines stand afterwards.
  bool CheckOne() {
    bool met = false;
    std::string message;
    while (!lines.AtEnd() && !lines.StartsWith("!END")) {
      if (lines.StartsWith("!ERROR_MSG")) {
        lines.Next();
        CollectMessage(message);
        continue;
      }
      if (lines.StartsWith("!OPTION") && !CheckOption(met)) return false;
      lines.Next();
    }
    if (!met) QZThrow.Msg(level, missingRequirements, message.c_str());
    return met;
  }

  void CollectMessage(std::string& message) {
    for (; !lines.AtEnd() && !lines.IsKeyword(); lines.Next()) {
      if (lines.IsComment()) continue;
      if (!lines.Words().empty()) message += lines.Line();
      message += '\n';
    }
  }

  // Sets `met` if all conditions hold. Each is looked at, also after one that doesn't hold, so that a key that is
  // wrong shows whatever is set.
  bool CheckOption(bool& met) {
    const std::vector<std::string>& words = lines.Words();
    bool all = true;
    for (std::size_t i = 1; i < words.size(); ++i) {
      if (words[i].size() < 2) {
        QZThrow.Msg(level, badCondition, lines.Line().c_str());
        return false;
      }
      const bool negated = words[i].compare(0, 2, "!-") == 0;
      if (!negated && words[i].front() != '-') continue;
      const std::string key = words[i].substr(negated ? 1 : 0);
      const QZParameter* parameter = ParameterWithFullname(itf, key);
      if (parameter == nullptr) {
        QZThrow.Error(unknownKey, key.c_str(), lines.Line().c_str());
        return false;
      }
      const bool hasValue = i + 1 < words.size() && words[i + 1].front() != '-' && words[i + 1].front() != '!';
      if (holds(*parameter, hasValue ? &words[i + 1] : nullptr) == negated) all = false;
      if (hasValue) ++i;
    }
    met = met || all;
    return true;
  }

  const QZInterface& itf;
  unsigned int level;
  Lines lines;
};

bool hasRequiredParameters(const QZInterface& itf, unsigned int level) {
  bool complete = true;
  for (const QZParameter* parameter : AllParameters(itf)) {
    if (!parameter->GetRequired() || parameter->IsSet(0)) continue;
    QZThrow.Msg(level, missingParameter, parameter->GetName().c_str());
    complete = false;
  }
  return complete;
}

}  // namespace

bool QZHasRequired(const QZInterface& itf, const unsigned char* requirements, unsigned int level) {
  const bool complete = hasRequiredParameters(itf, level);
  if (requirements == nullptr) return complete;
  return Checker(itf, level, reinterpret_cast<const char*>(requirements)).CheckAll() && complete;
}

}  // namespace QZSystem
