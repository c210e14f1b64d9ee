#include "qz/system/cli/parameterfile.h"

#include <string>
#include <utility>
#include <vector>

#include "qz/system/cli/interface_impl.h"
#include "qz/system/cli/keytable_impl.h"
#include "qz/system/cli/parsevalues_impl.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr char kUnknownKey[] = "Unknown parameter %s in parameter file (begin comment lines with #)";
constexpr char kNoValue[] = "In parameter file key %s is not followed by a value";
constexpr char kIllegalValue[] = "%s is not a legal setting for parameter %s (specified in parameter file)%s";
constexpr char kNotLoaded[] = "Unable to load parameter %s listed in parameter file, check that %s is a valid setting";
constexpr char kSeveralValues[] = "Problem in parameter file with key %s.  Key is followed by multiple values.";

constexpr char kQuotes[] = "'\"";

bool IsQuote(char c) { return c == kQuotes[0] || c == kQuotes[1]; }

void CutQuotes(std::string& token) {
  if (token.size() >= 2 && IsQuote(token.front()) && IsQuote(token.back())) token = token.substr(1, token.size() - 2);
}

class ParameterFile {
 public:
  ParameterFile(const KeyTable& table, bool addToValues, unsigned int errorLevel)
      : keys(table), overwrite(addToValues), level(errorLevel) {}

  bool Read(qzistream& in) {
    for (std::string line; in.getline(line);) TakeLine(line);
    return good;
  }

 private:
  void TakeLine(const std::string& line) {
    QZStringTokenizeQuoted(tokens, line, " \t\n", kQuotes, true);
    for (std::string& token : tokens) CutQuotes(token);
    if (tokens.empty() || tokens.front().empty() || tokens.front().front() == '#') return;
    const std::string key = std::move(tokens.front());
    tokens.erase(tokens.begin());
    QZParameter* parameter = keys.Find(key);
    if (parameter == nullptr) {
      good = false;
      QZThrow.Msg(level, kUnknownKey, key.c_str());
    } else if (tokens.empty()) {
      good = false;
      QZThrow.Msg(level, kNoValue, key.c_str());
    } else if (overwrite || !parameter->GetHasValue(0)) {
      TakeValues(*parameter, key);
    }
  }

  void TakeValues(QZParameter& parameter, const std::string& key) {
    const bool tooMany = tokens.size() > 1 && !parameter.GetIsList();
    if (tooMany) tokens.resize(1);
    TakeAllTexts(parameter, tokens,
                 [&](std::size_t i, Intake::Failure failure) { TellOf(parameter, key, tokens[i], failure); });
    if (!tooMany) return;
    good = false;
    QZThrow.Msg(level, kSeveralValues, key.c_str());
  }

  void TellOf(const QZParameter& parameter, const std::string& key, const std::string& text, Intake::Failure failure) {
    good = false;
    if (failure == Intake::kRefused)
      QZThrow.Msg(level, kIllegalValue, text.c_str(), key.c_str(), LimitsText(parameter, Legal::kAsDeclared).c_str());
    else
      QZThrow.Msg(level, kNotLoaded, key.c_str(), text.c_str());
  }

  const KeyTable& keys;
  const bool overwrite;
  const unsigned int level;
  std::vector<std::string> tokens;
  bool good = true;
};

}  // namespace

bool ParseParameterFile(const KeyTable& keys, qzistream& in, bool overwrite, unsigned int level) {
  return ParameterFile(keys, overwrite, level).Read(in);
}

bool QZParseParameterFile(QZInterface& itf, qzistream& in, bool overwrite, unsigned int level) {
  return ParseParameterFile(KeyTable(AllParameters(itf)), in, overwrite, level);
}

}  // namespace QZSystem
